#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the T580's on-screen sign object.
class CT580Widget_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
