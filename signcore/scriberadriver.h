// Binding of the pad's driver library.
#pragma once

#include "signcore/drivercallbacks.h"
#include "signcore/objectidentity.h"

#include <QLibrary>

#include <array>
#include <memory>

// One sign object's hold on the driver. Loaded, started, asked and unloaded on the host's thread; the host
// may also ask it from its callbacks, which end before the driver is unloaded.
class CScriberaDriver
{
public:
    explicit CScriberaDriver(const CObjectIdentity& Identity) : m_Identity(Identity) {}

    // Loads "./libscriberadrv.so", resolves the model's entry points and starts the driver, which may call
    // back from then on. False when the file does not load, lacks a required entry point or does not start;
    // what was reached stays for ShutdownScriberaDriver().
    bool LoadScriberaDriver();

    // Stops and unloads the driver. After it returns the driver calls back no more. Always true.
    bool ShutdownScriberaDriver();

    // The pad's version text, which begins with its model name; always terminated.
    using CVersionText = std::array<char, 33>;
    int ReadPartsVersion(CVersionText& Version) const;

    // Clears the pad and switches its screen on, as far as the model has these calls.
    void PreparePad() const;

    // Entry points, null until resolved. A model resolves those it has.
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

private:
    bool ResolveEntryPoints();
    void ForgetEntryPoints();

    // Clears the pad. Widget classes of the models that log it write lines around the call.
    void ClearPad(const char* pszFunction) const;

    const CObjectIdentity& m_Identity;
    std::unique_ptr<QLibrary> m_pDriverLibrary;
};
