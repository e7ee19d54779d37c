// The library's only lock.
#pragma once

#include "sync/tsan.h"

#include <QMutex>

#include <mutex>

// A non-recursive QMutex that announces itself to ThreadSanitizer. Lock it with CLocker.
class CMutex
{
public:
    CMutex() = default;
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    void lock()
    {
        m_Mutex.lock();
        TsanAcquire(this);
    }
    void unlock()
    {
        TsanRelease(this);
        m_Mutex.unlock();
    }

private:
    QMutex m_Mutex;
};

using CLocker = std::lock_guard<CMutex>;
