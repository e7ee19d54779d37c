#include "sync/sdkthread.h"

#include "sync/callbackscope.h"
#include "sync/tsan.h"

void CSdkThread::Launch()
{
    TsanRelease(this);
    start(QThread::InheritPriority);
}

void CSdkThread::Join()
{
    wait();
    TsanAcquire(this);
}

void CSdkThread::run()
{
    TsanAcquire(this);
    {
        const CCallbackScope Scope;
        Body();
    }
    TsanRelease(this);
}
