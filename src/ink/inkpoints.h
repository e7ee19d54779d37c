// The list of stored ink points.
#pragma once

#include "scriberasdk.h"
#include "sync/mutex.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

// A point in raw pad units, stamped with the tick clock and the wall clock of now. The coordinates keep the
// low 16 bits of what the driver delivered.
_POINTDATA StampedPoint(int nX, int nY, int nP, unsigned char ucStatus);

// Values of _POINTDATA::status.
constexpr unsigned char kStatusOnStroke = 0;
constexpr unsigned char kStatusStrokeEnd = 1;

// Records in fixed chunks, so that a long signature grows without ever moving what is stored. Small enough
// that the unused rest of the last one is about a fifth of a signature of 10,000 points at most.
struct CInkChunk
{
    static constexpr std::size_t kSize = 2048;
    std::array<_POINTDATA, kSize> m_Points;
};

// The points of a list at one moment. Shares the list's chunks: a record, once stored, never changes, and the
// list only writes behind the count that the snapshot holds.
class CInkSnapshot
{
public:
    CInkSnapshot() = default;
    CInkSnapshot(std::vector<std::shared_ptr<CInkChunk>> Chunks, std::size_t nCount)
        : m_Chunks(std::move(Chunks)), m_nCount(nCount)
    {
    }

    std::size_t Count() const { return m_nCount; }
    const _POINTDATA& At(std::size_t nIndex) const
    {
        return m_Chunks[nIndex / CInkChunk::kSize]->m_Points[nIndex % CInkChunk::kSize];
    }

    // Calls Visit(const _POINTDATA* pFirst, std::size_t nCount) for each run of neighbouring records, in
    // order.
    template <typename TVisit>
    void ForEachRun(TVisit Visit) const
    {
        for (std::size_t nFirst = 0; nFirst < m_nCount; nFirst += CInkChunk::kSize) {
            const std::size_t nRun = std::min(CInkChunk::kSize, m_nCount - nFirst);
            Visit(static_cast<const _POINTDATA*>(m_Chunks[nFirst / CInkChunk::kSize]->m_Points.data()), nRun);
        }
    }

private:
    std::vector<std::shared_ptr<CInkChunk>> m_Chunks;
    std::size_t m_nCount = 0;
};

// The driver's thread appends, the host's threads read and clear. A leaf lock protects the list; it is held
// for one append, one copy of a record or one clear, and never while anything outside is called.
class CInkPointList
{
public:
    CInkPointList();

    void Append(const _POINTDATA& Point);

    // Repeats the last record's position and pressure as a stroke end with a fresh stamp. False, with nothing
    // stored, when the list is empty; else Stored is the new record.
    bool AppendStrokeEnd(_POINTDATA& Stored);

    // Appends nCount records of sizeof(_POINTDATA) bytes each.
    void AppendRecords(const char* pBytes, std::size_t nCount);

    int Count() const;

    // Whether the next chunk is held ready, as it is unless memory was short.
    bool IsReady() const;

    // False, with Point untouched, when there is no such index.
    bool At(int nIndex, _POINTDATA& Point) const;

    CInkSnapshot Snapshot() const;

    // Replaces the records by those of another list, which is empty afterwards.
    void TakeFrom(CInkPointList& Source);

    // Empties the list and gives its storage back.
    void Clear();

private:
    _POINTDATA& NextSlot();
    void Prepare();

    mutable CMutex m_Mutex;
    std::vector<std::shared_ptr<CInkChunk>> m_Chunks;
    // Held ready for the next chunk, as is a place in m_Chunks: one refusal of memory then loses no point.
    std::shared_ptr<CInkChunk> m_pNext;
    std::size_t m_nCount = 0;
};
