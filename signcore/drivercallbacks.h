// The functions that the driver calls, one set per sign-object class.
#pragma once

#include "signcore/padmodel.h"

using PfnPenCallback = void (*)(int nX, int nY, int nP, int nPenStatus);
using PfnFingerprintCallback = void (*)(unsigned char* pucRawData, int nDataLength, int nScore);

struct CDriverCallbacks
{
    PfnPenCallback m_pfnPen;
    PfnFingerprintCallback m_pfnFingerprint; // null for models without a fingerprint reader
};

// The callbacks of the class. They run on the driver's thread and forward to the live object; a call that
// finds none, or one of another class, is dropped.
CDriverCallbacks DriverCallbacksOf(const CPadModel& Model, EObjectKind eKind);
