// Binding of the pad's driver library.
#pragma once

#include "model/objectidentity.h"
#include "model/startfailure.h"

#include <QLibrary>

#include <array>
#include <atomic>
#include <memory>

using PfnPenCallback = void (*)(int nX, int nY, int nP, int nPenStatus);
using PfnFingerprintCallback = void (*)(unsigned char* pucRawData, int nDataLength, int nScore);

// What the driver calls, on its own thread.
struct CDriverCallbacks
{
    PfnPenCallback m_pfnPen;
    PfnFingerprintCallback m_pfnFingerprint; // null for models without a fingerprint reader
};

// The driver's entry points, null where there is none. A model resolves those it has.
struct CDriverCalls
{
    int (*m_pfn_SCRDAPI_Initial)(int, PfnPenCallback, PfnFingerprintCallback) = nullptr;
    int (*m_pfn_SCRDAPI_UnInitial)() = nullptr;
    int (*m_pfn_SCRDAPI_OpenDeviceLCD)(bool) = nullptr;
    int (*m_pfn_SCRDAPI_ClearDeviceContent)() = nullptr;
    int (*m_pfn_SCRDAPI_GetDevicePenID)(char*, int) = nullptr;
    int (*m_pfn_SCRDAPI_GetDevicePadID)(char*, int) = nullptr;
    int (*m_pfn_SCRDAPI_GetDeviceSecureID)(char*, int) = nullptr;
    int (*m_pfn_SCRDAPI_GetDevicePartsVersion)(char*, int) = nullptr;
    int (*m_pfn_SCRDAPI_ShowVersionInfoOnDevice)(bool) = nullptr;
    int (*m_pfn_SCRDAPI_SetDevicePenStyle)(bool) = nullptr;
    int (*m_pfn_SCRDAPI_ShowFPImageOnDevice)(unsigned char*, int, int, int, bool*) = nullptr;
};

// One sign object's hold on the driver. One thread loads and starts it, one stops and unloads it; meanwhile
// any thread may ask it. Nothing is locked while the driver is called.
class CScriberaDriver
{
public:
    CScriberaDriver(const CObjectIdentity& Identity, const CDriverCallbacks& Callbacks)
        : m_Identity(Identity), m_Callbacks(Callbacks)
    {
    }

    // Loads "./libscriberadrv.so", resolves the model's entry points and starts the driver, which may call
    // back from then on. False when the file does not load, lacks a required entry point or does not start;
    // what was reached stays for ShutdownScriberaDriver().
    bool LoadScriberaDriver(CStartFailure& Failure);

    // Stops the driver, calls pfnStopped, and unloads it. From the moment at which it is told to stop,
    // Calls() is empty; whoever took them before has to be done with them when pfnStopped returns. Always
    // true.
    bool ShutdownScriberaDriver(void (*pfnStopped)());

    // What can be asked of the driver now. For one call of the host: take them once.
    const CDriverCalls& Calls() const { return *m_pCalls.load(); }

    // The pad's version text, which begins with its model name; always terminated.
    using CVersionText = std::array<char, 33>;
    int ReadPartsVersion(CVersionText& Version) const;

    // Clears the pad and switches its screen on, as far as the model has these calls.
    void PreparePad() const;

private:
    void TellWhyNotLoaded(CStartFailure& Failure) const;
    bool ResolveEntryPoints(CStartFailure& Failure);

    // Clears the pad. Widget classes of the models that log it write lines around the call.
    void ClearPad(const char* pszFunction) const;

    const CObjectIdentity& m_Identity;
    const CDriverCallbacks m_Callbacks;
    std::unique_ptr<QLibrary> m_pDriverLibrary; // of the thread that loads, later of the one that unloads
    CDriverCalls m_Calls;                       // filled before m_pCalls shows it, unchanged from then on

    // What any thread may call: nothing before the driver is loaded and once it is told to stop.
    static const CDriverCalls s_NoCalls;
    std::atomic<const CDriverCalls*> m_pCalls{&s_NoCalls};
};

// Asks the driver for something and writes the leave line with its answer; -1 without the entry point.
template <typename... TParameters, typename... TArguments>
int AskDriver(const CLogLabel& Label, int (*pfnEntry)(TParameters...), TArguments... Arguments)
{
    constexpr int kNoEntryPoint = -1;
    const int nResult = pfnEntry ? pfnEntry(Arguments...) : kNoEntryPoint;
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", nResult);
    return nResult;
}
