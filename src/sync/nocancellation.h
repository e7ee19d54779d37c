// Keeps the cancellation of a thread out of a piece of work.
#pragma once

#include <pthread.h>

// While one is alive, pthread_cancel() of this thread waits. For what opens and writes files, which the
// system may cancel at any step, also where nothing may be thrown.
class CNoCancellation
{
public:
    CNoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_nBefore); }
    ~CNoCancellation() { pthread_setcancelstate(m_nBefore, nullptr); }
    CNoCancellation(const CNoCancellation&) = delete;
    CNoCancellation& operator=(const CNoCancellation&) = delete;

private:
    int m_nBefore = PTHREAD_CANCEL_ENABLE;
};
