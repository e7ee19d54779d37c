// A pad's driver that does nothing of its own accord and never allocates, so that every allocation counted
// while it is in use is the library's or Qt's. The test takes its callbacks and calls them on a thread of its
// own, which thereby is the driver's thread.

#include <atomic>
#include <cstring>

#define BARE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using PenCallback = void (*)(int, int, int, int);
using FingerprintCallback = void (*)(unsigned char*, int, int);

// Written while the pad starts and ends, read by the test in between.
std::atomic<PenCallback> penCallback{nullptr};
std::atomic<FingerprintCallback> fingerprintCallback{nullptr};
std::atomic<const char*> modelText{""};
std::atomic<int> transfers{0}; // counted on the library's display thread

} // namespace

BARE_EXPORT PenCallback BareDriver_Pen()
{
    return penCallback;
}

BARE_EXPORT FingerprintCallback BareDriver_Fingerprint()
{
    return fingerprintCallback;
}

BARE_EXPORT int BareDriver_Transfers()
{
    return transfers;
}

BARE_EXPORT int SCRDAPI_Initial(int deviceType, PenCallback pen, FingerprintCallback fingerprint)
{
    penCallback = pen;
    fingerprintCallback = fingerprint;
    modelText = deviceType == 7 ? "SCK421B" : "SCK210";
    return 0;
}

BARE_EXPORT int SCRDAPI_UnInitial()
{
    penCallback = nullptr;
    fingerprintCallback = nullptr;
    return 0;
}

BARE_EXPORT int SCRDAPI_GetDevicePartsVersion(char* buffer, int size)
{
    std::strncpy(buffer, modelText, static_cast<std::size_t>(size));
    return 0;
}

BARE_EXPORT int SCRDAPI_ShowFPImageOnDevice(unsigned char*, int, int, int, bool*)
{
    ++transfers;
    return 0;
}

BARE_EXPORT int SCRDAPI_OpenDeviceLCD(bool)
{
    return 0;
}

BARE_EXPORT int SCRDAPI_ClearDeviceContent()
{
    return 0;
}

BARE_EXPORT int SCRDAPI_GetDevicePenID(char*, int)
{
    return 0;
}

BARE_EXPORT int SCRDAPI_GetDevicePadID(char*, int)
{
    return 0;
}

BARE_EXPORT int SCRDAPI_GetDeviceSecureID(char*, int)
{
    return 0;
}

BARE_EXPORT int SCRDAPI_ShowVersionInfoOnDevice(bool)
{
    return 0;
}

BARE_EXPORT int SCRDAPI_SetDevicePenStyle(bool)
{
    return 0;
}
