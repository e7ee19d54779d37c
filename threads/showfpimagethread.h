// The one body of all fingerprint display threads.
#pragma once

#include "threads/workerthread.h"

// Sends accepted fingerprints to the pad's own display and has the canvases merged afterwards.
class CShowFPImageThread : public CWorkerThread
{
public:
    CShowFPImageThread(void* pOwner, CSignObject& Object)
        : CWorkerThread(pOwner, Object, Object.Identity().Names().m_ShowFPImageThread)
    {
    }

private:
    void Pass(CSignObject& Object) final
    {
        Object.CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
        Object.ProcessShowFPImgaeRawDataOnDevice();
    }
};
