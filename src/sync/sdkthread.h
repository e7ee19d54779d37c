// Base of the library's worker threads.
#pragma once

#include <QThread>

#include <atomic>

#include <sys/types.h>

class CSdkThread : public QThread
{
public:
    // Starts the thread with the priority of the caller. False when the system refuses one more thread.
    bool Launch();

    // Waits, without a time limit, until Body() has returned, and then for the system's thread to be gone.
    // Not to be called on this thread.
    void Join();

protected:
    CSdkThread() = default;

    // The thread's work.
    virtual void Body() = 0;

private:
    void run() final;

    std::atomic<pid_t> m_nSystemId{0}; // written by the thread itself, read by whoever waits for it
};
