#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the K421B's windowless sign object.
class CK421BObj_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
