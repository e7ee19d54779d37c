#include "ink/inkpoints.h"

#include "log/logfileutil.h"
#include "sync/attempt.h"

#include <cstring>
#include <ctime>
#include <utility>

_POINTDATA StampedPoint(int nX, int nY, int nP, unsigned char ucStatus)
{
    _POINTDATA Point{};
    Point.usX = static_cast<std::uint16_t>(nX);
    Point.sY = static_cast<std::int16_t>(nY);
    Point.sPressure = static_cast<std::int16_t>(nP);
    Point.ucStatus = ucStatus;
    Point.llTick = static_cast<std::int64_t>(GetTickCount());
    Point.llSeconds = static_cast<std::int64_t>(std::time(nullptr));
    return Point;
}

CInkPointList::CInkPointList()
{
    Attempt([this] { Prepare(); });
}

// Makes ready what the next chunk needs, as far as it is missing.
void CInkPointList::Prepare()
{
    if (m_Chunks.size() == m_Chunks.capacity())
        m_Chunks.reserve(2 * m_Chunks.size() + 1);
    if (!m_pNext)
        m_pNext = std::make_shared_for_overwrite<CInkChunk>();
}

_POINTDATA& CInkPointList::NextSlot()
{
    if (m_nCount % CInkChunk::kSize == 0) {
        Prepare();
        m_Chunks.push_back(std::move(m_pNext));
        Attempt([this] { Prepare(); });
    }
    _POINTDATA& Slot = m_Chunks.back()->m_Points[m_nCount % CInkChunk::kSize];
    ++m_nCount;
    return Slot;
}

void CInkPointList::Append(const _POINTDATA& Point)
{
    const CLocker Lock(m_Mutex);
    NextSlot() = Point;
}

bool CInkPointList::AppendStrokeEnd(_POINTDATA& Stored)
{
    const CLocker Lock(m_Mutex);
    if (m_nCount == 0)
        return false;
    const std::size_t nLast = m_nCount - 1;
    const _POINTDATA Last = m_Chunks[nLast / CInkChunk::kSize]->m_Points[nLast % CInkChunk::kSize];
    Stored = StampedPoint(Last.usX, Last.sY, Last.sPressure, kStatusStrokeEnd);
    NextSlot() = Stored;
    return true;
}

void CInkPointList::AppendRecords(const char* pBytes, std::size_t nCount)
{
    const CLocker Lock(m_Mutex);
    while (nCount > 0) {
        const std::size_t nUsed = m_nCount % CInkChunk::kSize;
        if (nUsed == 0)
            m_Chunks.push_back(std::make_shared_for_overwrite<CInkChunk>());
        const std::size_t nRun = std::min(nCount, CInkChunk::kSize - nUsed);
        std::memcpy(&m_Chunks.back()->m_Points[nUsed], pBytes, nRun * sizeof(_POINTDATA));
        pBytes += nRun * sizeof(_POINTDATA);
        m_nCount += nRun;
        nCount -= nRun;
    }
}

bool CInkPointList::IsReady() const
{
    const CLocker Lock(m_Mutex);
    return m_pNext != nullptr;
}

int CInkPointList::Count() const
{
    const CLocker Lock(m_Mutex);
    return static_cast<int>(m_nCount);
}

bool CInkPointList::At(int nIndex, _POINTDATA& Point) const
{
    const CLocker Lock(m_Mutex);
    if (nIndex < 0 || static_cast<std::size_t>(nIndex) >= m_nCount)
        return false;
    const auto nAt = static_cast<std::size_t>(nIndex);
    Point = m_Chunks[nAt / CInkChunk::kSize]->m_Points[nAt % CInkChunk::kSize];
    return true;
}

CInkSnapshot CInkPointList::Snapshot() const
{
    const CLocker Lock(m_Mutex);
    return {m_Chunks, m_nCount};
}

void CInkPointList::TakeFrom(CInkPointList& Source)
{
    std::vector<std::shared_ptr<CInkChunk>> Chunks; // holds in turn the records of both, without a lock
    std::size_t nCount = 0;
    {
        const CLocker Lock(Source.m_Mutex);
        Chunks.swap(Source.m_Chunks);
        std::swap(nCount, Source.m_nCount);
    }
    const CLocker Lock(m_Mutex);
    Chunks.swap(m_Chunks);
    m_nCount = nCount;
}

void CInkPointList::Clear()
{
    std::vector<std::shared_ptr<CInkChunk>> Released; // freed after the lock
    const CLocker Lock(m_Mutex);
    Released.swap(m_Chunks);
    m_nCount = 0;
    Attempt([this] { Prepare(); });
}
