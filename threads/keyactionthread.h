// The one body of all key-action threads.
#pragma once

#include "threads/workerthread.h"

// Runs an object's pending key actions.
class CKeyActionThread : public CWorkerThread
{
public:
    CKeyActionThread(void* pOwner, CSignObject& Object)
        : CWorkerThread(pOwner, Object, Object.Identity().Names().m_KeyActionThread)
    {
    }

private:
    void Pass(CSignObject& Object) final { Object.CheckIfWeCanDoConfirmOrCancelKeyAction(); }
};
