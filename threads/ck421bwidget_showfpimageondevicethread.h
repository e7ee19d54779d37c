#pragma once

#include "threads/showfpimagethread.h"

// Fingerprint display thread of the K421B's on-screen sign object.
class CK421BWidget_ShowFPImageOnDeviceThread final : public CShowFPImageThread
{
    Q_OBJECT

public:
    using CShowFPImageThread::CShowFPImageThread;
};
