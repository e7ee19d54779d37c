#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the T580's windowless sign object.
class CT580Obj_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
