#pragma once

#include "threads/showfpimagethread.h"

// Fingerprint display thread of the K421B's windowless sign object.
class CK421BObj_ShowFPImageOnDeviceThread final : public CShowFPImageThread
{
    Q_OBJECT

public:
    using CShowFPImageThread::CShowFPImageThread;
};
