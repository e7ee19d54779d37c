#include "signcore/boundingbox.h"

#include <QColor>

#include <algorithm>
#include <cstdint>

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

// The plain scan: from both ends of a row to the first ink.
CEdges ScanEdges(const QImage& Image)
{
    CEdges Edges;
    const int nWidth = Image.width();
    for (int nY = 0; nY < Image.height(); ++nY) {
        const QRgb* const pRow = RowOf(Image, nY);
        const QRgb* const pFirst = std::find_if(pRow, pRow + nWidth, IsInk);
        if (pFirst == pRow + nWidth)
            continue;
        int nLast = nWidth - 1;
        while (!IsInk(pRow[nLast]))
            --nLast;
        Edges.m_nLeft = std::min(Edges.m_nLeft, static_cast<int>(pFirst - pRow));
        Edges.m_nRight = std::max(Edges.m_nRight, nLast);
        Edges.m_nTop = std::min(Edges.m_nTop, nY);
        Edges.m_nBottom = nY;
    }
    return Edges;
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

CInkBox CheckSignImageBoundingBox(const QImage& Image, const CClipSettings& Clip, const CLogLabel& Label)
{
    SCR_LOG(Label, "<%ld>-Enter, nWidth=%d, nHeight=%d", Image.width(), Image.height());
    const CEdges Edges = IsLogEnabled() ? ScanEdgesLogged(Image, Label) : ScanEdges(Image);
    SCR_LOG(Label, "<%ld>-nLeft=%d, nRight=%d, nTop=%d, nBottom=%d", Edges.m_nLeft, Edges.m_nRight,
            Edges.m_nTop, Edges.m_nBottom);

    CInkBox Box;
    Box.m_bHasInk = Edges.m_nRight != kNoInkMax;
    Box.m_rcBoundBox.setCoords(WidenedDown(Edges.m_nLeft, Clip.m_nClipMarginX),
                               WidenedDown(Edges.m_nTop, Clip.m_nClipMarginY),
                               WidenedUp(Edges.m_nRight, Clip.m_nClipMarginX, Image.width()),
                               WidenedUp(Edges.m_nBottom, Clip.m_nClipMarginY, Image.height()));
    SCR_LOG(Label, "<%ld>-leave with rcBoundBox.Left=%d, Right=%d, Top=%d, Bottom=%d",
            Box.m_rcBoundBox.left(), Box.m_rcBoundBox.right(), Box.m_rcBoundBox.top(),
            Box.m_rcBoundBox.bottom());
    return Box;
}

QImage CInkBox::CopyFrom(const QImage& Image, const CClipSettings& Clip) const
{
    // Margins below the scan's start value cannot make a box out of no ink.
    if (!m_bHasInk && (Clip.m_nClipMarginX < kNoInkMin || Clip.m_nClipMarginY < kNoInkMin))
        return {};
    return Image.copy(m_rcBoundBox);
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
