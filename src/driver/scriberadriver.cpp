#include "driver/scriberadriver.h"

#include "sync/attempt.h"

#include <climits>

#include <unistd.h>

namespace {

constexpr char kDriverFile[] = "./libscriberadrv.so";

} // namespace

const CDriverCalls CScriberaDriver::s_NoCalls;

bool CScriberaDriver::LoadScriberaDriver(CStartFailure& Failure)
{
    const CLogLabel Label = m_Identity.Label("LoadScriberaDriver()");
    SCR_LOG(Label, "<%ld>-Enter...");
    bool bRet = false;
    m_pDriverLibrary = std::make_unique<QLibrary>(QLatin1String(kDriverFile));
    if (!m_pDriverLibrary->load()) {
        SCR_LOG(Label, "<%ld>-'libscriberadrv.so' Library is not loaded !");
        TellWhyNotLoaded(Failure);
    } else if (!ResolveEntryPoints(Failure)) {
        SCR_LOG(Label, "<%ld>-'libscriberadrv.so' Library APIs failed to load !");
    } else {
        const int nResult = m_Calls.m_pfn_SCRDAPI_Initial(m_Identity.m_Model.m_nDeviceType,
                                                          m_Callbacks.m_pfnPen, m_Callbacks.m_pfnFingerprint);
        SCR_LOG(Label, "<%ld>-after call m_pfn_SCRDAPI_Initial(), nResult=%d", nResult);
        bRet = nResult == 0;
        if (!bRet)
            Failure.Set(SCRX_START_DRIVER_REFUSED,
                        "The driver does not start, SCRDAPI_Initial gave %d: is the pad plugged in, and may "
                        "this user open it?",
                        nResult);
    }
    SCR_LOG(Label, "<%ld>-leave with bRet=%d", bRet);
    return bRet;
}

void CScriberaDriver::TellWhyNotLoaded(CStartFailure& Failure) const
{
    if (access(kDriverFile, F_OK) != 0)
        Failure.Set(SCRX_START_DRIVER_MISSING, "There is no driver");
    else
        Failure.Set(SCRX_START_DRIVER_NOT_LOADED, "The driver is not loaded");
    Attempt([&] { Failure.Add(": %s", m_pDriverLibrary->errorString().toUtf8().constData()); });
    char Folder[PATH_MAX];
    if (getcwd(Folder, sizeof Folder))
        Failure.Add("; the current directory is %s", Folder);
}

bool CScriberaDriver::ResolveEntryPoints(CStartFailure& Failure)
{
    const auto Resolve = [this]<typename TFunction>(TFunction*& pfn, const char* pszName) {
        pfn = reinterpret_cast<TFunction*>(m_pDriverLibrary->resolve(pszName));
        return pfn != nullptr;
    };
    bool bComplete = true;
    const auto Require = [&](auto*& pfn, const char* pszName) {
        if (Resolve(pfn, pszName))
            return;
        if (bComplete)
            Failure.Set(SCRX_START_DRIVER_INCOMPLETE, "The driver lacks what a %s needs: %s",
                        m_Identity.m_Model.m_pszName, pszName);
        else
            Failure.Add(", %s", pszName);
        bComplete = false;
    };
    const CPadModel& Model = m_Identity.m_Model;

    // All are looked up, so that a failed start leaves as much to shut down as the driver offers.
    Require(m_Calls.m_pfn_SCRDAPI_Initial, "SCRDAPI_Initial");
    Require(m_Calls.m_pfn_SCRDAPI_UnInitial, "SCRDAPI_UnInitial");
    if (Model.m_bHasScreen)
        Resolve(m_Calls.m_pfn_SCRDAPI_OpenDeviceLCD, "SCRDAPI_OpenDeviceLCD"); // some pads' drivers have none
    Require(m_Calls.m_pfn_SCRDAPI_ClearDeviceContent, "SCRDAPI_ClearDeviceContent");
    if (Model.m_bHasScreen)
        Require(m_Calls.m_pfn_SCRDAPI_GetDevicePenID, "SCRDAPI_GetDevicePenID");
    Require(m_Calls.m_pfn_SCRDAPI_GetDevicePadID, "SCRDAPI_GetDevicePadID");
    if (Model.m_bHasScreen)
        Require(m_Calls.m_pfn_SCRDAPI_GetDeviceSecureID, "SCRDAPI_GetDeviceSecureID");
    Require(m_Calls.m_pfn_SCRDAPI_GetDevicePartsVersion, "SCRDAPI_GetDevicePartsVersion");
    if (Model.m_bHasScreen)
        Require(m_Calls.m_pfn_SCRDAPI_ShowVersionInfoOnDevice, "SCRDAPI_ShowVersionInfoOnDevice");
    Require(m_Calls.m_pfn_SCRDAPI_SetDevicePenStyle, "SCRDAPI_SetDevicePenStyle");
    if (Model.m_bHasFingerprint)
        Require(m_Calls.m_pfn_SCRDAPI_ShowFPImageOnDevice, "SCRDAPI_ShowFPImageOnDevice");
    m_pCalls.store(&m_Calls);
    return bComplete;
}

bool CScriberaDriver::ShutdownScriberaDriver(void (*pfnStopped)())
{
    constexpr char kFunction[] = "ShutdownScriberaDriver()";
    const CLogLabel Label = m_Identity.Label(kFunction);
    SCR_LOG(Label, "<%ld>-Enter...");
    if (m_pDriverLibrary) {
        if (!m_Identity.m_Model.m_bHasScreen)
            ClearPad(kFunction);
        else if (m_Calls.m_pfn_SCRDAPI_OpenDeviceLCD)
            m_Calls.m_pfn_SCRDAPI_OpenDeviceLCD(false);
        m_pCalls.store(&s_NoCalls);
        if (m_Calls.m_pfn_SCRDAPI_UnInitial)
            m_Calls.m_pfn_SCRDAPI_UnInitial();
    }
    pfnStopped();
    if (m_pDriverLibrary) {
        m_pDriverLibrary->unload();
        m_pDriverLibrary.reset();
    }
    SCR_LOG(Label, "<%ld>-leave !");
    return true;
}

int CScriberaDriver::ReadPartsVersion(CVersionText& Version) const
{
    Version.fill('\0');
    // The last byte is not the driver's, so that a text without a terminator ends there.
    return m_Calls.m_pfn_SCRDAPI_GetDevicePartsVersion(Version.data(), static_cast<int>(Version.size()) - 1);
}

void CScriberaDriver::PreparePad() const
{
    ClearPad("IsDeviceConnected()");
    if (m_Calls.m_pfn_SCRDAPI_OpenDeviceLCD)
        m_Calls.m_pfn_SCRDAPI_OpenDeviceLCD(true);
}

void CScriberaDriver::ClearPad(const char* pszFunction) const
{
    if (!m_Calls.m_pfn_SCRDAPI_ClearDeviceContent)
        return;
    const bool bLogs = m_Identity.m_Model.m_bLogsClearCall && m_Identity.IsWidget();
    if (bLogs)
        SCR_LOG(m_Identity.Label(pszFunction), "<%ld>-b4 call m_pfn_SCRDAPI_ClearDeviceContent()...");
    m_Calls.m_pfn_SCRDAPI_ClearDeviceContent();
    if (bLogs)
        SCR_LOG(m_Identity.Label(pszFunction), "<%ld>-after call m_pfn_SCRDAPI_ClearDeviceContent()...");
}
