// A driver that calls back when it should not: inside SCRDAPI_Initial, on the caller's thread and on its own,
// and all through SCRDAPI_UnInitial. Between the two its thread streams strokes without pause. Or it keeps
// quiet and lets the test call from inside SCRDAPI_UnInitial.

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

#include "model/padmodel.h"

#define EAGER_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using PenCallback = void (*)(int, int, int, int);
using FingerprintCallback = void (*)(unsigned char*, int, int);

// Plain, so that the library can be unloaded like any driver.
PenCallback penCallback = nullptr;
FingerprintCallback fingerprintCallback = nullptr;
int deviceType = 0;
std::thread* streamer = nullptr;
std::atomic<bool> streaming = false;
std::atomic<int> streamed = 0;
using Stop = void (*)(PenCallback, FingerprintCallback);
Stop insideStop = nullptr;
unsigned char print[208 * 288];

// Samples come one after the other, whichever thread brings them.
std::mutex oneAtATime;

int stroke(int length)
{
    const std::lock_guard lock(oneAtATime);
    int calls = 0;
    for (int i = 0; i <= length; ++i, ++calls)
        penCallback(3000 + 40 * i, 3000 + 20 * i, 200, i == 0 ? 0 : 1);
    penCallback(3000, 3000, 200, 2);
    penCallback(0, 0, 0, 4);
    penCallback(0, 0, 0, 2);
    if (fingerprintCallback) {
        fingerprintCallback(print, sizeof print, 50);
        ++calls;
    }
    return calls + 3;
}

void waitForStreamed(int count)
{
    while (streamed.load() < count)
        std::this_thread::yield();
}

int resultFor(const char* buffer, int size)
{
    return buffer && size > 0 ? 0 : -2;
}

// The name of the model in the form in which the pad reports it.
std::string modelText()
{
    for (const CPadModel* model : AllPads())
        if (model->m_nDeviceType == deviceType)
            return std::string("SC") + model->m_pszName;
    return {};
}

} // namespace

// From the next SCRDAPI_Initial on: no call of the driver's own, and stop in place of what SCRDAPI_UnInitial
// does.
EAGER_EXPORT void Eager_KeepQuiet(Stop stop)
{
    insideStop = stop;
}

// The callbacks of a started driver, for a thread of the test.
EAGER_EXPORT PenCallback Eager_PenCallback()
{
    return penCallback;
}

EAGER_EXPORT int SCRDAPI_Initial(int nDeviceType, PenCallback pen, FingerprintCallback fingerprint)
{
    deviceType = nDeviceType;
    penCallback = pen;
    fingerprintCallback = fingerprint;
    if (insideStop)
        return 0;
    stroke(20);
    streaming = true;
    streamed = 0;
    streamer = new std::thread([] {
        while (streaming.load())
            streamed += stroke(20);
    });
    waitForStreamed(200);
    const char* const result = std::getenv("EAGER_RESULT");
    return result ? std::atoi(result) : 0;
}

EAGER_EXPORT int SCRDAPI_UnInitial()
{
    if (insideStop) {
        insideStop(penCallback, fingerprintCallback);
        return 0;
    }
    if (!streamer)
        return -1;
    stroke(20);
    waitForStreamed(streamed.load() + 200);
    streaming = false;
    streamer->join();
    delete streamer;
    streamer = nullptr;
    stroke(20);
    return 0;
}

EAGER_EXPORT int SCRDAPI_GetDevicePartsVersion(char* buffer, int size)
{
    if (resultFor(buffer, size) != 0)
        return -2;
    std::strncpy(buffer, modelText().c_str(), static_cast<std::size_t>(size));
    if (!insideStop)
        waitForStreamed(streamed.load() + 200);
    return 0;
}

EAGER_EXPORT int SCRDAPI_OpenDeviceLCD(bool)
{
    return 0;
}

EAGER_EXPORT int SCRDAPI_ClearDeviceContent()
{
    return 0;
}

EAGER_EXPORT int SCRDAPI_GetDevicePenID(char* buffer, int size)
{
    return resultFor(buffer, size);
}

EAGER_EXPORT int SCRDAPI_GetDevicePadID(char* buffer, int size)
{
    return resultFor(buffer, size);
}

EAGER_EXPORT int SCRDAPI_GetDeviceSecureID(char* buffer, int size)
{
    return resultFor(buffer, size);
}

EAGER_EXPORT int SCRDAPI_ShowVersionInfoOnDevice(bool)
{
    return 0;
}

EAGER_EXPORT int SCRDAPI_SetDevicePenStyle(bool)
{
    return 0;
}

EAGER_EXPORT int SCRDAPI_ShowFPImageOnDevice(const unsigned char*, int, int, int, bool*)
{
    return 0;
}
