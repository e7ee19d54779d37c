// The library's only lock.
#pragma once

#include "sync/tsan.h"

#include <QMutex>

#include <mutex>

// A non-recursive QMutex that announces itself to ThreadSanitizer. Lock it with CLocker.
class CMutex
{
public:
    constexpr CMutex() = default;
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

// A lock in static storage: made without an allocation before any code runs, and never destroyed, since a
// thread may still take it while the process exits.
union CStaticMutex
{
    constexpr CStaticMutex() : m_Mutex() {}
    ~CStaticMutex() {}
    CStaticMutex(const CStaticMutex&) = delete;
    CStaticMutex& operator=(const CStaticMutex&) = delete;

    CMutex m_Mutex;
};
