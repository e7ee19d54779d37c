#include "sync/sdkthread.h"

#include "sync/callbackscope.h"
#include "sync/tsan.h"

#include <chrono>
#include <thread>

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool IsThreadOfThisProcess(pid_t nThread)
{
    return syscall(SYS_tgkill, getpid(), nThread, 0) == 0;
}

} // namespace

bool CSdkThread::Launch()
{
    TsanRelease(this);
    start(QThread::InheritPriority);
    return isRunning() || isFinished();
}

void CSdkThread::Join()
{
    wait();
    TsanAcquire(this);
    // Qt tells that a thread has finished while it still frees what belongs to it. Whoever looks then, a host
    // that counts threads or a leak checker, would find both. The number may be given away again, so this
    // does not wait for ever.
    const auto Deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (IsThreadOfThisProcess(m_nSystemId.load()) && std::chrono::steady_clock::now() < Deadline)
        std::this_thread::yield();
}

void CSdkThread::run()
{
    TsanAcquire(this);
    m_nSystemId.store(gettid());
    // Also when a callback of the host ends the thread. A cancellation that still waits must not come any
    // more: what Qt frees after this closes descriptors where nothing may be thrown.
    struct CAnnouncedEnd
    {
        CSdkThread* m_pThread;
        ~CAnnouncedEnd()
        {
            pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
            TsanRelease(m_pThread);
        }
    };
    const CAnnouncedEnd End{this};
    const CCallbackScope Scope;
    Body();
}
