// The exported functions: the driver's entry points and the control interface, over one Simulator.
#include "simulator.h"

#include <exception>

#define SCRIBERA_SIM_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using simulator::Entry;
using simulator::Simulator;

// Made at load and freed at unload by plain functions: a static object would be destroyed at exit under a
// sample thread that still runs. A started pad keeps the library loaded, so it meets the second one only at
// exit.
Simulator* g_simulator = nullptr;

__attribute__((constructor)) void onLoad()
{
    g_simulator = new Simulator;
}

__attribute__((destructor)) void onUnload()
{
    if (!g_simulator->isStopped())
        return;
    delete g_simulator;
    g_simulator = nullptr;
}

// No exception reaches a host that may be C.
template <typename Function>
int guarded(Function&& function)
{
    try {
        return function(*g_simulator);
    } catch (const std::exception&) {
        return -1;
    }
}

// An entry point whose effect is seen on the virtual pad.
template <typename Function>
int display(Entry entry, std::optional<int> argument, Function&& effect)
{
    return guarded([&](Simulator& pad) {
        const int result = pad.enter(entry, argument);
        return result != simulator::ResultOk ? result : effect(pad);
    });
}

int readText(Entry entry, char* buffer, int maxCount)
{
    return guarded([&](Simulator& pad) {
        const int result = pad.enter(entry, maxCount);
        return result != simulator::ResultOk ? result : pad.readText(entry, buffer, maxCount);
    });
}

} // namespace

SCRIBERA_SIM_EXPORT int SCRDAPI_Initial(int nDeviceType, simulator::PenCallback penCallback,
                                        simulator::FingerprintCallback fingerprintCallback)
{
    return guarded([&](Simulator& pad) {
        const int result = pad.enter(Entry::Initial, nDeviceType);
        return result != simulator::ResultOk ? result
                                             : pad.initial(nDeviceType, penCallback, fingerprintCallback);
    });
}

SCRIBERA_SIM_EXPORT int SCRDAPI_UnInitial()
{
    return guarded([](Simulator& pad) {
        const int result = pad.enter(Entry::UnInitial);
        return result != simulator::ResultOk ? result : pad.unInitial();
    });
}

SCRIBERA_SIM_EXPORT int SCRDAPI_OpenDeviceLCD(bool bOn)
{
    return display(Entry::OpenDeviceLCD, bOn, [&](Simulator& pad) { return pad.showScreen(bOn); });
}

SCRIBERA_SIM_EXPORT int SCRDAPI_ClearDeviceContent()
{
    return display(Entry::ClearDeviceContent, std::nullopt, [](Simulator& pad) { return pad.clearScreen(); });
}

SCRIBERA_SIM_EXPORT int SCRDAPI_GetDevicePenID(char* buffer, int nMaxCount)
{
    return readText(Entry::GetDevicePenID, buffer, nMaxCount);
}

SCRIBERA_SIM_EXPORT int SCRDAPI_GetDevicePadID(char* buffer, int nMaxCount)
{
    return readText(Entry::GetDevicePadID, buffer, nMaxCount);
}

SCRIBERA_SIM_EXPORT int SCRDAPI_GetDeviceSecureID(char* buffer, int nMaxCount)
{
    return readText(Entry::GetDeviceSecureID, buffer, nMaxCount);
}

SCRIBERA_SIM_EXPORT int SCRDAPI_GetDevicePartsVersion(char* buffer, int nMaxCount)
{
    return readText(Entry::GetDevicePartsVersion, buffer, nMaxCount);
}

SCRIBERA_SIM_EXPORT int SCRDAPI_ShowVersionInfoOnDevice(bool bOn)
{
    return display(Entry::ShowVersionInfoOnDevice, bOn, [&](Simulator& pad) { return pad.showVersion(bOn); });
}

SCRIBERA_SIM_EXPORT int SCRDAPI_SetDevicePenStyle(bool bWithPressureValue)
{
    return display(Entry::SetDevicePenStyle, bWithPressureValue,
                   [&](Simulator& pad) { return pad.setPenStyle(bWithPressureValue); });
}

SCRIBERA_SIM_EXPORT int SCRDAPI_ShowFPImageOnDevice(unsigned char* picture, int length, int width, int height,
                                                    bool* abort)
{
    return guarded([&](Simulator& pad) {
        const int result = pad.enter(Entry::ShowFPImageOnDevice, length);
        return result != simulator::ResultOk ? result
                                             : pad.showPicture(picture, length, width, height, abort);
    });
}

SCRIBERA_SIM_EXPORT int ScrSim_SendSamples(const ScrSimSample* samples, int count)
{
    return guarded([&](Simulator& pad) { return pad.sendSamples(samples, count); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SendSample(int x, int y, int pressure, int penStatus)
{
    const ScrSimSample sample{x, y, pressure, penStatus};
    return guarded([&](Simulator& pad) { return pad.sendSamples(&sample, 1); });
}

SCRIBERA_SIM_EXPORT int ScrSim_PressKey(int key)
{
    return guarded([&](Simulator& pad) {
        if (key != 0 && key != 1)
            return pad.refuse("the key is neither 1 nor 0");
        const ScrSimSample samples[] = {
            {0, 0, 0, key == 1 ? simulator::ConfirmKey : simulator::CancelKey},
            {0, 0, 0, simulator::PenUp},
        };
        return pad.sendSamples(samples, 2);
    });
}

SCRIBERA_SIM_EXPORT int ScrSim_WaitIdle(int timeoutMs)
{
    return guarded([&](Simulator& pad) { return pad.waitIdle(timeoutMs); });
}

SCRIBERA_SIM_EXPORT int ScrSim_Play(const char* path, double speed, int loop, int keyAtEnd)
{
    return guarded([&](Simulator& pad) { return pad.play(path, speed, loop != 0, keyAtEnd); });
}

SCRIBERA_SIM_EXPORT int ScrSim_StopPlaying()
{
    return guarded([](Simulator& pad) { return pad.stopPlaying(); });
}

SCRIBERA_SIM_EXPORT int ScrSim_Progress()
{
    return guarded([](Simulator& pad) { return pad.progress(); });
}

SCRIBERA_SIM_EXPORT const char* ScrSim_LastError()
{
    // One buffer a thread, and a plain array: it needs no destructor that would keep the library loaded.
    thread_local char text[4608];
    g_simulator->copyLastError(text, sizeof text);
    return text;
}

SCRIBERA_SIM_EXPORT int ScrSim_SetResult(const char* entryPoint, int result)
{
    return guarded([&](Simulator& pad) { return pad.setResult(entryPoint, result); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SetDelay(const char* entryPoint, int milliseconds)
{
    return guarded([&](Simulator& pad) { return pad.setDelay(entryPoint, milliseconds); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SetText(const char* entryPoint, const char* bytes, int count, int terminate)
{
    return guarded([&](Simulator& pad) { return pad.setText(entryPoint, bytes, count, terminate != 0); });
}

SCRIBERA_SIM_EXPORT int ScrSim_CallCount(const char* entryPoint)
{
    return guarded([&](Simulator& pad) { return pad.callCount(entryPoint); });
}

SCRIBERA_SIM_EXPORT int ScrSim_LastArgument(const char* entryPoint)
{
    return guarded([&](Simulator& pad) { return pad.lastArgument(entryPoint); });
}

SCRIBERA_SIM_EXPORT int ScrSim_CallLog(char* out, int size)
{
    return guarded([&](Simulator& pad) { return pad.callLog(out, size); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SendFingerprint(const unsigned char* pixels, int length, int score)
{
    return guarded([&](Simulator& pad) { return pad.sendFingerprint(pixels, length, score); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SendSyntheticFingerprint(const char* pattern, unsigned seed, int score)
{
    return guarded([&](Simulator& pad) { return pad.sendSyntheticFingerprint(pattern, seed, score); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SendFingerprintFile(const char* path, int score)
{
    return guarded([&](Simulator& pad) { return pad.sendFingerprintFile(path, score); });
}

SCRIBERA_SIM_EXPORT int ScrSim_SetTransferTime(int milliseconds)
{
    return guarded([&](Simulator& pad) { return pad.setTransferTime(milliseconds); });
}

SCRIBERA_SIM_EXPORT int ScrSim_LastPicture(unsigned char* out, int size, int* width, int* height)
{
    return guarded([&](Simulator& pad) { return pad.lastPicture(out, size, width, height); });
}

SCRIBERA_SIM_EXPORT int ScrSim_TransferCount()
{
    return guarded([](Simulator& pad) { return pad.transferCount(); });
}

SCRIBERA_SIM_EXPORT int ScrSim_AbortedTransferCount()
{
    return guarded([](Simulator& pad) { return pad.abortedTransferCount(); });
}

SCRIBERA_SIM_EXPORT void ScrSim_Reset()
{
    g_simulator->reset();
}
