// What the worker threads of a sign object share.
#pragma once

#include "signcore/signobject.h"
#include "sync/sdkthread.h"

// A thread that repeats one pass until its sign object shuts down, without a pause in between: what waits for
// it starts at once.
class CWorkerThread : public CSdkThread
{
protected:
    // pOwner is the sign object as its own class, which the log shows.
    CWorkerThread(void* pOwner, CSignObject& Object, const CTypeNames& Names);

    virtual void Pass(CSignObject& Object) = 0;

private:
    void Body() final;

    CSignObject& m_Object;
    const CTypeNames& m_Names;
};
