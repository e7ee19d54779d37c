#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the K421B's on-screen sign object.
class CK421BWidget_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
