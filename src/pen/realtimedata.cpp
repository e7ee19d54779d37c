#include "pen/realtimedata.h"

#include "pen/padmapping.h"

#include <cstdint>

namespace {

unsigned long Normalised(int nRaw, int nOrigin, int nAreaSize)
{
    // At most 29869 x 65535, which a signed 32-bit product holds.
    return static_cast<unsigned long>(OffsetInArea(nRaw, nOrigin, nAreaSize) * 65535 / nAreaSize);
}

} // namespace

bool CRealTimeData::SetRealTimeSignDataCallback(ScriberaRealTimeSignDataCallback pfnCallback)
{
    const CLogLabel Label = m_Identity.Label("SetRealTimeSignDataCallback()");
    SCR_LOG(Label, "<%ld>-Enter...");
    m_pfnRealTimeSignDataCallback = pfnCallback;
    SCR_LOG(Label, "<%ld>-leave with bRet = %d...", true);
    return true;
}

void CRealTimeData::CheckIfNeedToSendRealTimeSignData(int nX, int nY, int nP, unsigned short usStatus) const
{
    const CLogLabel Label = m_Identity.Label("CheckIfNeedToSendRealTimeSignData()");
    SCR_LOG(Label, "<%ld>-Enter...");
    if (const ScriberaRealTimeSignDataCallback pfnCallback = m_pfnRealTimeSignDataCallback) {
        const CPadModel& Model = m_Identity.m_Model;
        const unsigned long ulX = Normalised(nX, Model.m_nPadOriginX, Model.m_nAreaWidth);
        const unsigned long ulY = Normalised(nY, Model.m_nPadOriginY, Model.m_nAreaHeight);
        pfnCallback(ulY << 16 | ulX, static_cast<long>(usStatus) << 16 | static_cast<std::uint16_t>(nP));
    }
    SCR_LOG(Label, "<%ld>-leave !");
}
