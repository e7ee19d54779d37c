#pragma once

#include "threads/keyactionthread.h"

// Key-action thread of the KM730's on-screen sign object.
class CKM730Widget_DoConfirmOrCancelKeyActionThread final : public CKeyActionThread
{
    Q_OBJECT

public:
    using CKeyActionThread::CKeyActionThread;
};
