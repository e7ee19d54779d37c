// Tells the host of points as they are stored.
#pragma once

#include "model/objectidentity.h"
#include "scriberasdk.h"

#include <atomic>

// The host's thread sets the callback, the driver's thread calls it; the pointer is atomic.
class CRealTimeData
{
public:
    explicit CRealTimeData(const CObjectIdentity& Identity) : m_Identity(Identity) {}

    // Host's operation; see the exported function.
    bool SetRealTimeSignDataCallback(ScriberaRealTimeSignDataCallback pfnCallback);

    // Hands a point in raw pad units to the host's callback, if there is one, with its position normalised to
    // 0..65535. usStatus: 1 pen on the pad, 0 pen lifted.
    void CheckIfNeedToSendRealTimeSignData(int nX, int nY, int nP, unsigned short usStatus) const;

private:
    const CObjectIdentity& m_Identity;
    std::atomic<ScriberaRealTimeSignDataCallback> m_pfnRealTimeSignDataCallback{nullptr};
};
