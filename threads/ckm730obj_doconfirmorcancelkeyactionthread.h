#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the KM730's windowless sign object.
class CKM730Obj_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
