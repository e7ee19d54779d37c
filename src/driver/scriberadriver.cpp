#include "driver/scriberadriver.h"

const CDriverCalls CScriberaDriver::s_NoCalls;

bool CScriberaDriver::LoadScriberaDriver()
{
    const CLogLabel Label = m_Identity.Label("LoadScriberaDriver()");
    SCR_LOG(Label, "<%ld>-Enter...");
    bool bRet = false;
    m_pDriverLibrary = std::make_unique<QLibrary>(QStringLiteral("./libscriberadrv.so"));
    if (!m_pDriverLibrary->load()) {
        SCR_LOG(Label, "<%ld>-'libscriberadrv.so' Library is not loaded !");
    } else if (!ResolveEntryPoints()) {
        SCR_LOG(Label, "<%ld>-'libscriberadrv.so' Library APIs failed to load !");
    } else {
        const int nResult = m_Calls.m_pfn_SCRDAPI_Initial(m_Identity.m_Model.m_nDeviceType,
                                                          m_Callbacks.m_pfnPen, m_Callbacks.m_pfnFingerprint);
        SCR_LOG(Label, "<%ld>-after call m_pfn_SCRDAPI_Initial(), nResult=%d", nResult);
        bRet = nResult == 0;
    }
    SCR_LOG(Label, "<%ld>-leave with bRet=%d", bRet);
    return bRet;
}

bool CScriberaDriver::ResolveEntryPoints()
{
    const auto Resolve = [this]<typename TFunction>(TFunction*& pfn, const char* pszName) {
        pfn = reinterpret_cast<TFunction*>(m_pDriverLibrary->resolve(pszName));
        return pfn != nullptr;
    };
    const CPadModel& Model = m_Identity.m_Model;

    // All are looked up, so that a failed start leaves as much to shut down as the driver offers.
    bool bComplete = Resolve(m_Calls.m_pfn_SCRDAPI_Initial, "SCRDAPI_Initial");
    bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_UnInitial, "SCRDAPI_UnInitial");
    if (Model.m_bHasScreen)
        Resolve(m_Calls.m_pfn_SCRDAPI_OpenDeviceLCD, "SCRDAPI_OpenDeviceLCD"); // some pads' drivers have none
    bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_ClearDeviceContent, "SCRDAPI_ClearDeviceContent");
    if (Model.m_bHasScreen)
        bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_GetDevicePenID, "SCRDAPI_GetDevicePenID");
    bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_GetDevicePadID, "SCRDAPI_GetDevicePadID");
    if (Model.m_bHasScreen)
        bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_GetDeviceSecureID, "SCRDAPI_GetDeviceSecureID");
    bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_GetDevicePartsVersion, "SCRDAPI_GetDevicePartsVersion");
    if (Model.m_bHasScreen)
        bComplete &=
            Resolve(m_Calls.m_pfn_SCRDAPI_ShowVersionInfoOnDevice, "SCRDAPI_ShowVersionInfoOnDevice");
    bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_SetDevicePenStyle, "SCRDAPI_SetDevicePenStyle");
    if (Model.m_bHasFingerprint)
        bComplete &= Resolve(m_Calls.m_pfn_SCRDAPI_ShowFPImageOnDevice, "SCRDAPI_ShowFPImageOnDevice");
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
