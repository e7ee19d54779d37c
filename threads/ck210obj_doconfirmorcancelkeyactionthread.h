#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the K210's windowless sign object.
class CK210Obj_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
