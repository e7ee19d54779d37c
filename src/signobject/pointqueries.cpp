#include "signobject/pointqueries.h"

#include "model/results.h"

#include <cstdio>
#include <ctime>

namespace {

constexpr int kNoSuchPoint = -1;

} // namespace

int CPointQueries::GetTotalInkPointsNumber() const
{
    SCR_LOG(m_Identity.Label("GetTotalInkPointsNumber()"), "<%ld>-enter...");
    const int nCount = m_Points.Count();
    const int nInkCount = nCount > 0 ? nCount : kNotDone;
    // The leave line has always stood under this other name.
    SCR_LOG(m_Identity.Label("SetSignatureStatusCallback()"), "<%ld>-leave with nInkCount=%d", nInkCount);
    return nInkCount;
}

int CPointQueries::GetPACKETS(_PACKETS& Packets) const
{
    const CLogLabel Label = m_Identity.Label("GetPACKETS()");
    SCR_LOG(Label, "<%ld>-enter...");
    int nResult = kNoSuchPoint;
    _POINTDATA Point;
    if (m_Points.At(Packets.nIndex, Point)) {
        Packets.usX = Point.usX;
        Packets.sY = Point.sY;
        Packets.sPressure = Point.sPressure;
        Packets.ucStatus = Point.ucStatus;
        nResult = ARI_SUCCESS;
    }
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", nResult);
    return nResult;
}

char* CPointQueries::GetInkPointTime(int nIndex) const
{
    constexpr std::size_t kTextSize = 100;
    const CLogLabel Label = m_Identity.Label("GetInkPointTime()");
    SCR_LOG(Label, "<%ld>-enter, nIndex=%d", nIndex);
    char* pInkPointTime = nullptr;
    _POINTDATA Point;
    if (m_Points.At(nIndex, Point)) {
        const std::time_t nSeconds = Point.llSeconds;
        std::tm Local{};
        tzset(); // localtime_r alone would not notice a changed time zone
        localtime_r(&nSeconds, &Local);
        pInkPointTime = new char[kTextSize]();
        std::snprintf(pInkPointTime, kTextSize, "%04d-%02d-%02d %02d:%02d:%02d.%03d", Local.tm_year + 1900,
                      Local.tm_mon + 1, Local.tm_mday, Local.tm_hour, Local.tm_min, Local.tm_sec,
                      static_cast<int>(Point.llTick % 1000));
    }
    SCR_LOG(Label, "<%ld>-leave !");
    return pInkPointTime;
}
