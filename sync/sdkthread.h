// Base of the library's worker threads.
#pragma once

#include <QThread>

class CSdkThread : public QThread
{
public:
    // Starts the thread with the priority of the caller.
    void Launch();

    // Waits, without a time limit, until Body() has returned. Not to be called on this thread.
    void Join();

protected:
    CSdkThread() = default;

    // The thread's work.
    virtual void Body() = 0;

private:
    void run() final;
};
