// A driver library for measurements: no thread of its own stands between the benchmark and the library, which
// the benchmark calls as a driver does, through the callbacks that it was given. Only when the benchmark asks
// for it, samples come from a thread, from the first moment on.

#include "pads.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#define BENCH_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using PenCallback = void (*)(int, int, int, int);
using FingerprintCallback = void (*)(unsigned char*, int, int);

// Written by the thread that starts and stops the driver, which is the benchmark's.
int deviceType = 0;
PenCallback pen = nullptr;
FingerprintCallback fingerprint = nullptr;
std::unique_ptr<std::thread> eagerThread;
std::atomic<bool> stops{false};

void sendEagerly(PenCallback callback, void (*delivered)(), const simulator::Area& area)
{
    for (int count = 0; !stops.load(std::memory_order_relaxed); ++count) {
        callback(area.originX + count % area.width, area.originY + count % area.height, 100, count % 64 != 0);
        delivered();
    }
}

int copyText(std::string_view text, char* buffer, int size)
{
    const auto fits = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    *std::copy_n(text.data(), fits, buffer) = '\0';
    return 0;
}

} // namespace

// Set by the benchmark that wants samples from a thread: called after each of them.
extern "C" __attribute__((weak)) void (*g_benchSampleDelivered)();

BENCH_EXPORT PenCallback BenchDriver_Pen()
{
    return pen;
}

BENCH_EXPORT FingerprintCallback BenchDriver_Fingerprint()
{
    return fingerprint;
}

BENCH_EXPORT int SCRDAPI_Initial(int nDeviceType, PenCallback penCallback,
                                 FingerprintCallback fingerprintCallback)
{
    deviceType = nDeviceType;
    pen = penCallback;
    fingerprint = fingerprintCallback;
    if (&g_benchSampleDelivered && g_benchSampleDelivered) {
        const simulator::Pad* const pad =
            simulator::padForDevice(nDeviceType, simulator::canonicalModel(nDeviceType));
        stops = false;
        eagerThread = std::make_unique<std::thread>(sendEagerly, pen, g_benchSampleDelivered, pad->area);
    }
    return 0;
}

BENCH_EXPORT int SCRDAPI_UnInitial()
{
    if (eagerThread) {
        stops = true;
        eagerThread->join();
        eagerThread.reset();
    }
    return 0;
}

BENCH_EXPORT int SCRDAPI_GetDevicePartsVersion(char* pVersion, int nMaxCount)
{
    return copyText(simulator::canonicalModel(deviceType), pVersion, nMaxCount);
}

BENCH_EXPORT int SCRDAPI_GetDevicePenID(char* pPenID, int nMaxCount)
{
    return copyText("1", pPenID, nMaxCount);
}

BENCH_EXPORT int SCRDAPI_GetDevicePadID(char* pPadID, int nMaxCount)
{
    return copyText("2", pPadID, nMaxCount);
}

BENCH_EXPORT int SCRDAPI_GetDeviceSecureID(char* pSecureID, int nMaxCount)
{
    return copyText("3", pSecureID, nMaxCount);
}

BENCH_EXPORT int SCRDAPI_ShowVersionInfoOnDevice(bool /*bOn*/)
{
    return 0;
}

BENCH_EXPORT int SCRDAPI_OpenDeviceLCD(bool /*bOn*/)
{
    return 0;
}

BENCH_EXPORT int SCRDAPI_ClearDeviceContent()
{
    return 0;
}

BENCH_EXPORT int SCRDAPI_SetDevicePenStyle(bool /*bWithPressureValue*/)
{
    return 0;
}

BENCH_EXPORT int SCRDAPI_ShowFPImageOnDevice(unsigned char* /*pucPicture*/, int /*nLength*/, int /*nWidth*/,
                                             int /*nHeight*/, bool* /*pbAbort*/)
{
    return 0;
}
