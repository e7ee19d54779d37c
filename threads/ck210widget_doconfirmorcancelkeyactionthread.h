#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the K210's on-screen sign object.
class CK210Widget_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
