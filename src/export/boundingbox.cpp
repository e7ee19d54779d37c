#include "export/boundingbox.h"

#include <QColor>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

// Edges that no ink has moved yet.
constexpr int kNoInkMin = 99999;
constexpr int kNoInkMax = -1;

struct CEdges
{
    int m_nLeft = kNoInkMin;
    int m_nTop = kNoInkMin;
    int m_nRight = kNoInkMax;
    int m_nBottom = kNoInkMax;
};

bool IsInk(QRgb Pixel)
{
    return (Pixel & RGB_MASK) != RGB_MASK;
}

const QRgb* RowOf(const QImage& Image, int nY)
{
    return reinterpret_cast<const QRgb*>(Image.constScanLine(nY));
}

// Whether none of kBlock pixels is ink. Two pixels at a time, and without a look at any result in between.
constexpr int kBlock = 16;

bool IsBlankBlock(const QRgb* pPixels)
{
    constexpr std::uint64_t kTwoBlank = std::uint64_t{RGB_MASK} << 32 | RGB_MASK;
    std::array<std::uint64_t, kBlock / 2> Pairs;
    std::memcpy(Pairs.data(), pPixels, sizeof Pairs);
    std::uint64_t ullCommon = kTwoBlank;
    for (const std::uint64_t ullPair : Pairs)
        ullCommon &= ullPair;
    return ullCommon == kTwoBlank;
}

// The first ink in [nFrom, nTo) of a row; nTo without any.
int FirstInk(const QRgb* pRow, int nFrom, int nTo)
{
    while (nTo - nFrom >= kBlock && IsBlankBlock(pRow + nFrom))
        nFrom += kBlock;
    while (nFrom < nTo && !IsInk(pRow[nFrom]))
        ++nFrom;
    return nFrom;
}

// The last ink in [nFrom, nTo) of a row; nFrom - 1 without any.
int LastInk(const QRgb* pRow, int nFrom, int nTo)
{
    while (nTo - nFrom >= kBlock && IsBlankBlock(pRow + nTo - kBlock))
        nTo -= kBlock;
    while (nFrom < nTo && !IsInk(pRow[nTo - 1]))
        --nTo;
    return nTo - 1;
}

// The plain scan: from above and from below to the first row with ink, then in the rows between them from
// either side to the edge that is known so far. What lies within the box is not looked at.
CEdges ScanEdges(const QImage& Image, const QRect& rcInkArea)
{
    CEdges Edges;
    const int nBegin = rcInkArea.left();
    const int nEnd = rcInkArea.right() + 1;
    const auto HasInk = [&](int nY) { return FirstInk(RowOf(Image, nY), nBegin, nEnd) < nEnd; };

    int nTop = rcInkArea.top();
    while (nTop <= rcInkArea.bottom() && !HasInk(nTop))
        ++nTop;
    if (nTop > rcInkArea.bottom())
        return Edges;
    int nBottom = rcInkArea.bottom();
    while (!HasInk(nBottom))
        --nBottom;
    int nLeft = nEnd;
    int nRight = nBegin - 1;
    for (int nY = nTop; nY <= nBottom; ++nY) {
        const QRgb* const pRow = RowOf(Image, nY);
        nLeft = FirstInk(pRow, nBegin, nLeft);
        nRight = LastInk(pRow, nRight + 1, nEnd);
    }
    return {std::min(nLeft, kNoInkMin), std::min(nTop, kNoInkMin), nRight, nBottom};
}

void WritePixelLine(const CLogLabel& Label, int nX, int nY, QRgb Pixel)
{
    if (IsLogEnabled())
        WriteLogLine(ELogFile::Main, Label, "[%d, %d]-<R=%d, G=%d, B=%d, A=%d> ", nX, nY, qRed(Pixel),
                     qGreen(Pixel), qBlue(Pixel), qAlpha(Pixel));
}

// The scan with its trace of every ink pixel.
CEdges ScanEdgesLogged(const QImage& Image, const CLogLabel& Label)
{
    CEdges Edges;
    const auto Moved = [](int nX, int nY, QRgb Pixel, const char* pszTag) {
        WritePixelLine({"", "", pszTag}, nX, nY, Pixel);
    };
    for (int nY = 0; nY < Image.height(); ++nY) {
        const QRgb* const pRow = RowOf(Image, nY);
        for (int nX = 0; nX < Image.width(); ++nX) {
            if (!IsInk(pRow[nX]))
                continue;
            if (nX < Edges.m_nLeft) {
                Edges.m_nLeft = nX;
                Moved(nX, nY, pRow[nX], "[x < nLeft]");
            }
            if (nX > Edges.m_nRight) {
                Edges.m_nRight = nX;
                Moved(nX, nY, pRow[nX], "[x > nRight]");
            }
            if (nY < Edges.m_nTop) {
                Edges.m_nTop = nY;
                Moved(nX, nY, pRow[nX], "[y < nTop]");
            }
            if (nY > Edges.m_nBottom) {
                Edges.m_nBottom = nY;
                Moved(nX, nY, pRow[nX], "[y > nBottom]");
            }
            if (IsLogEnabled())
                WriteLogLine(ELogFile::Main, Label, "<line end>");
        }
    }
    return Edges;
}

int WidenedDown(int nEdge, int nMargin)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(static_cast<std::int64_t>(nEdge) - nMargin, 0, INT32_MAX));
}

int WidenedUp(int nEdge, int nMargin, int nSize)
{
    const std::int64_t nWidened = static_cast<std::int64_t>(nEdge) + nMargin;
    return static_cast<int>(std::max<std::int64_t>(std::min<std::int64_t>(nWidened, nSize - 1), INT32_MIN));
}

} // namespace

QRect CheckSignImageBoundingBox(const QImage& Image, const QRect& rcInkArea, const CClipSettings& Clip,
                                const CLogLabel& Label)
{
    SCR_LOG(Label, "<%ld>-Enter, nWidth=%d, nHeight=%d", Image.width(), Image.height());
    const CEdges Edges =
        IsLogEnabled() ? ScanEdgesLogged(Image, Label) : ScanEdges(Image, rcInkArea & Image.rect());
    SCR_LOG(Label, "<%ld>-nLeft=%d, nRight=%d, nTop=%d, nBottom=%d", Edges.m_nLeft, Edges.m_nRight,
            Edges.m_nTop, Edges.m_nBottom);

    QRect rcBoundBox;
    rcBoundBox.setCoords(WidenedDown(Edges.m_nLeft, Clip.m_nClipMarginX),
                         WidenedDown(Edges.m_nTop, Clip.m_nClipMarginY),
                         WidenedUp(Edges.m_nRight, Clip.m_nClipMarginX, Image.width()),
                         WidenedUp(Edges.m_nBottom, Clip.m_nClipMarginY, Image.height()));
    SCR_LOG(Label, "<%ld>-leave with rcBoundBox.Left=%d, Right=%d, Top=%d, Bottom=%d", rcBoundBox.left(),
            rcBoundBox.right(), rcBoundBox.top(), rcBoundBox.bottom());
    return rcBoundBox;
}

QImage CopyOfRect(const QImage& Image, const QRect& rcRect)
{
    constexpr std::int64_t kMaxPixels = std::int64_t{1} << 28;
    const std::int64_t nWidth = std::int64_t{rcRect.right()} - rcRect.left() + 1;
    const std::int64_t nHeight = std::int64_t{rcRect.bottom()} - rcRect.top() + 1;
    if (nWidth == 0 && nHeight == 0)
        return Image;
    if (nWidth <= 0 || nHeight <= 0 || nWidth > kMaxPixels / nHeight)
        return {};
    // Moved near when all of it is outside: Qt adds place and size in 32 bits.
    const auto nX = std::clamp<std::int64_t>(rcRect.left(), -nWidth, Image.width());
    const auto nY = std::clamp<std::int64_t>(rcRect.top(), -nHeight, Image.height());
    return Image.copy(static_cast<int>(nX), static_cast<int>(nY), static_cast<int>(nWidth),
                      static_cast<int>(nHeight));
}

void MakeAsTransparentImage(QImage& Image, const QColor& Color, const CLogLabel& Label)
{
    SCR_LOG(Label, "<%ld>-Enter, nWidth=%d, nHeight=%d", Image.width(), Image.height());
    const QRgb Target = Color.rgba();
    for (int nY = 0; nY < Image.height(); ++nY) {
        auto* const pRow = reinterpret_cast<QRgb*>(Image.scanLine(nY));
        std::replace(pRow, pRow + Image.width(), Target, Target & RGB_MASK);
    }
    SCR_LOG(Label, "<%ld>-leave");
}
