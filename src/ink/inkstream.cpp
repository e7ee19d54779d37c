#include "ink/inkstream.h"

#include "ink/base64text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

// The stream is the record as it lies in memory.
static_assert(sizeof(_POINTDATA) == 24);
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

namespace {

constexpr int kRecordSize = sizeof(_POINTDATA);

bool IsLineBreak(char c)
{
    return c == '\n' || c == '\r';
}

bool IsBlank(char c)
{
    return IsLineBreak(c) || c == ' ' || c == '\t';
}

bool IsBase64Digit(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

int SizeWithoutTrailing(const QByteArray& Text, int nSize, bool (*IsLeftOut)(char))
{
    while (nSize > 0 && IsLeftOut(Text.at(nSize - 1)))
        --nSize;
    return nSize;
}

// What is to be decoded: the text without its line breaks and without the blanks behind it. Shares the bytes
// of a text that is no more than that.
QByteArray WithoutBreaks(const QByteArray& Text)
{
    QByteArray Bare = Text.left(SizeWithoutTrailing(Text, Text.size(), IsBlank));
    if (std::any_of(Bare.cbegin(), Bare.cend(), IsLineBreak))
        Bare.truncate(static_cast<int>(std::remove_if(Bare.begin(), Bare.end(), IsLineBreak) - Bare.begin()));
    return Bare;
}

// Where the text has the character at this offset of WithoutBreaks(), or ends.
int OffsetWithBreaks(const QByteArray& Text, int nBare)
{
    const int nEnd = SizeWithoutTrailing(Text, Text.size(), IsBlank);
    int nAt = 0;
    for (int nBefore = 0; nAt < nEnd; ++nAt)
        if (!IsLineBreak(Text.at(nAt)) && nBefore++ == nBare)
            break;
    return nAt;
}

// Where a text without breaks carries the first bits of a byte of the stream.
int OffsetInText(int nByte)
{
    return nByte / 3 * 4 + nByte % 3;
}

CInkStreamFault Fault(int nOffset, const QString& strReason)
{
    return {nOffset, strReason};
}

// Decodes Base64 without breaks that leaves no choice: complete groups, no foreign characters, no spare bits.
std::optional<CInkStreamFault> DecodeWholeText(const QByteArray& Text, QByteArray& Stream)
{
    const int nSize = Text.size();
    if (nSize == 0)
        return Fault(0, QStringLiteral("there is no text"));
    const int nDigits = SizeWithoutTrailing(Text, nSize, [](char c) { return c == '='; });
    for (int nAt = 0; nAt < nDigits; ++nAt)
        if (!IsBase64Digit(Text.at(nAt)))
            return Fault(nAt, QStringLiteral("not a Base64 character"));
    if (nSize % 4 != 0)
        return Fault(nSize, QStringLiteral("the Base64 text ends within a group of four characters"));
    if (nSize - nDigits > 2)
        return Fault(nDigits, QStringLiteral("more than two padding characters"));
    Stream = DecodeBase64(Text.constData(), nSize);
    // The encoder leaves the bits of the last digit that belong to no byte at zero.
    if (Stream.right(3 - (nSize - nDigits)).toBase64() != Text.right(4))
        return Fault(nDigits - 1,
                     QStringLiteral("the last Base64 character has bits that belong to no byte"));
    return std::nullopt;
}

std::optional<CInkStreamFault> CheckEnding(const QByteArray& Stream, int nTextEnd)
{
    if (Stream.size() % kRecordSize != 1)
        return Fault(nTextEnd,
                     QStringLiteral("the stream ends after %1 bytes, which are not whole records of %2 "
                                    "bytes and one more")
                         .arg(Stream.size())
                         .arg(kRecordSize));
    const int nLast = Stream.size() - 1;
    if (Stream.at(nLast) != '\0')
        return Fault(
            OffsetInText(nLast),
            QStringLiteral("the byte after the last record, byte %1 of the stream, is not zero").arg(nLast));
    return std::nullopt;
}

CInkStreamFault RecordFault(int nRecord, std::size_t nField, const QString& strReason)
{
    const int nStart = nRecord * kRecordSize;
    return Fault(OffsetInText(nStart + static_cast<int>(nField)),
                 QStringLiteral("record %1, at byte %2 of the stream: %3")
                     .arg(nRecord + 1)
                     .arg(nStart)
                     .arg(strReason));
}

std::optional<CInkStreamFault> CheckRecords(const QByteArray& Stream)
{
    std::int64_t llPreviousTick = std::numeric_limits<std::int64_t>::min();
    for (int nRecord = 0; nRecord < Stream.size() / kRecordSize; ++nRecord) {
        _POINTDATA Point;
        std::memcpy(&Point, Stream.constData() + std::ptrdiff_t{nRecord} * kRecordSize, sizeof Point);
        if (Point.ucStatus != kStatusOnStroke && Point.ucStatus != kStatusStrokeEnd)
            return RecordFault(nRecord, offsetof(_POINTDATA, ucStatus),
                               QStringLiteral("status %1 is neither 0 nor 1").arg(Point.ucStatus));
        if (Point.llTick < llPreviousTick)
            return RecordFault(nRecord, offsetof(_POINTDATA, llTick),
                               QStringLiteral("tick %1 is before the previous record's, %2")
                                   .arg(Point.llTick)
                                   .arg(llPreviousTick));
        llPreviousTick = Point.llTick;
    }
    return std::nullopt;
}

} // namespace

QByteArray PackInkStream(const CInkSnapshot& Points)
{
    // Base64 makes 4 bytes of 3, and the text must fit into a byte array too.
    constexpr std::size_t kMaxSize = std::numeric_limits<int>::max() / 4 * 3 - 64;
    const std::size_t nSize = InkStreamSize(Points.Count());
    if (nSize > kMaxSize)
        return {};
    QByteArray Stream(static_cast<int>(nSize), Qt::Uninitialized);
    char* pNext = Stream.data();
    Points.ForEachRun([&pNext](const _POINTDATA* pFirst, std::size_t nCount) {
        std::memcpy(pNext, pFirst, nCount * sizeof(_POINTDATA));
        pNext += nCount * sizeof(_POINTDATA);
    });
    *pNext = '\0';
    return Stream;
}

void DecodeInkText(const char* pText, std::size_t nSize, CInkPointList& Points)
{
    // A piece that leaves nothing out fills a chunk of the list.
    constexpr std::size_t kPieceSize = sizeof(CInkChunk) / 3 * 4;
    std::vector<char> Bytes(CBase64Decoder::Room(kPieceSize) + kRecordSize);
    CBase64Decoder Decoder;
    CInkPointList Decoded;
    std::size_t nBytes = 0; // with those that did not make a record yet
    while (nSize > 0) {
        const std::size_t nPiece = std::min(nSize, kPieceSize);
        nBytes += Decoder.Decode(pText, nPiece, Bytes.data() + nBytes);
        pText += nPiece;
        nSize -= nPiece;
        const std::size_t nWhole = nBytes / kRecordSize * kRecordSize;
        Decoded.AppendRecords(Bytes.data(), nWhole / kRecordSize);
        nBytes -= nWhole;
        std::memmove(Bytes.data(), Bytes.data() + nWhole, nBytes);
    }
    Points.TakeFrom(Decoded);
}

std::optional<CInkStreamFault> ReadInkStreamText(const QByteArray& Text, CInkPointList& Points)
{
    const QByteArray Bare = WithoutBreaks(Text);
    QByteArray Stream;
    std::optional<CInkStreamFault> Found = DecodeWholeText(Bare, Stream);
    if (!Found)
        Found = CheckEnding(Stream, Bare.size());
    if (!Found)
        Found = CheckRecords(Stream);
    if (Found)
        Found->m_nOffset = OffsetWithBreaks(Text, Found->m_nOffset);
    else
        Points.AppendRecords(Stream.constData(), static_cast<std::size_t>(Stream.size()) / kRecordSize);
    return Found;
}
