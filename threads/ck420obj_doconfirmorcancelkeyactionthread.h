#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the K420's windowless sign object.
class CK420Obj_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
