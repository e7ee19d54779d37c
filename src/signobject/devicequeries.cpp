#include "signobject/devicequeries.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr char kVendorName[] = "Corvenna";
constexpr std::int32_t kDriverVersion[] = {3, 0};

} // namespace

int CDeviceQueries::GetDevicePenID(char* pPenID, int nMaxCount) const
{
    const CLogLabel Label = m_Identity.Label("GetDevicePenID()");
    SCR_LOG(Label, "<%ld>-enter, pPenID=%lx, nMaxCount=%d", AsHex(pPenID), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDevicePenID, pPenID, nMaxCount);
}

int CDeviceQueries::GetDevicePadID(char* pPadID, int nMaxCount) const
{
    const CLogLabel Label = m_Identity.Label("GetDevicePadID()");
    SCR_LOG(Label, "<%ld>-enter, pPadID=%lx, nMaxCount=%d", AsHex(pPadID), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDevicePadID, pPadID, nMaxCount);
}

int CDeviceQueries::GetDeviceSecureID(char* pSecureID, int nMaxCount) const
{
    const CLogLabel Label = m_Identity.Label("GetDeviceSecureID()");
    SCR_LOG(Label, "<%ld>-enter, pSecureID=%lx, nMaxCount=%d", AsHex(pSecureID), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDeviceSecureID, pSecureID, nMaxCount);
}

int CDeviceQueries::GetDevicePartsVersion(char* pVersion, int nMaxCount) const
{
    const CLogLabel Label = m_Identity.Label("GetDevicePartsVersion()");
    SCR_LOG(Label, "<%ld>-enter, pVersion=%lx, nMaxCount=%d", AsHex(pVersion), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDevicePartsVersion, pVersion, nMaxCount);
}

int CDeviceQueries::ShowVersionInfoOnDevice(bool bOn) const
{
    const CLogLabel Label = m_Identity.Label("ShowVersionInfoOnDevice()");
    SCR_LOG(Label, "<%ld>-enter, bOn=%d", bOn);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_ShowVersionInfoOnDevice, bOn);
}

int CDeviceQueries::GetDeviceInfo(int nIndex, void* pOutput) const
{
    const CLogLabel Label = m_Identity.Label("GetDeviceInfo()");
    SCR_LOG(Label, "<%ld>-Enter, nIndex=%d, pOutput=%lx", nIndex, AsHex(pOutput));
    const CPadModel& Model = m_Identity.m_Model;
    const auto Write = [pOutput](const void* pBytes, std::size_t nSize) {
        std::memcpy(pOutput, pBytes, nSize);
    };
    const auto WriteRange = [&Write](std::int32_t nEnd) {
        const std::int32_t Range[] = {0, nEnd};
        Write(Range, sizeof Range);
    };
    switch (nIndex) {
    case DIID_GET_STATUS: {
        const unsigned char ucConnected = m_bDeviceConnected ? 1 : 0;
        Write(&ucConnected, sizeof ucConnected);
        break;
    }
    case 2:
        WriteRange(Model.m_nAreaWidth);
        break;
    case 3:
        WriteRange(Model.m_nAreaHeight);
        break;
    case 4: {
        const std::int32_t nMaxPressure = m_nMaxPressure;
        Write(&nMaxPressure, sizeof nMaxPressure);
        break;
    }
    case 5:
        Write(kVendorName, sizeof kVendorName);
        break;
    case 6:
        Write(Model.m_pszReportedName, std::strlen(Model.m_pszReportedName) + 1);
        break;
    case DIID_GET_DRV_VER:
        Write(kDriverVersion, sizeof kDriverVersion);
        break;
    default:
        break;
    }
    SCR_LOG(Label, "<%ld>-leave !");
    return ARI_SUCCESS;
}
