#include "export/svgdrawing.h"

#include "canvas/drawing.h"
#include "export/imagefiles.h"

#include <QBuffer>
#include <QLineF>
#include <QPainter>
#include <QSvgGenerator>

#include <limits>
#include <memory>
#include <utility>

namespace {

constexpr int kLinesAtATime = 1024;

struct CLine
{
    QLineF m_Line;
    double m_dblWidth;
};

// A document with some of the lines.
class CSheet
{
public:
    CSheet(const CSvgContent& Content, int nDPI) : m_Color(Content.m_Pen.m_PenColor)
    {
        m_Generator.setOutputDevice(&m_Buffer);
        m_Generator.setSize(Content.m_Size);
        m_Generator.setViewBox(QRect(QPoint(0, 0), Content.m_Size));
        m_Generator.setResolution(nDPI);
    }

    bool Begin() { return m_Buffer.open(QIODevice::WriteOnly) && m_Painter.begin(&m_Generator); }
    QPainter& Painter() { return m_Painter; }
    void Draw(const CLine& Line) { DrawStrokeSegment(m_Painter, Line.m_Line, Line.m_dblWidth, m_Color); }
    const QByteArray& End()
    {
        m_Painter.end();
        return m_Buffer.data();
    }

private:
    const QColor m_Color;
    QBuffer m_Buffer;
    QSvgGenerator m_Generator;
    QPainter m_Painter;
};

// The document ends the groups that are open after its last line.
int EndOfLines(const QByteArray& Document)
{
    return Document.indexOf("</g>", Document.lastIndexOf("/>"));
}

// Draws on one sheet after the other and hands over what is new on each. A sheet that continues another
// begins with the line before it: so it has the state that a line changes only when its pen differs, and what
// it repeats is as long as a sheet with this line alone.
class CSvgWriter
{
public:
    CSvgWriter(const CSvgContent& Content, int nDPI, const FnTakeBytes& Take)
        : m_Content(Content), m_nDPI(nDPI), m_Take(Take)
    {
    }
    ~CSvgWriter()
    {
        static_cast<void>(m_pSheet.release()); // still there only when an exception ended the work
    }
    CSvgWriter(const CSvgWriter&) = delete;
    CSvgWriter& operator=(const CSvgWriter&) = delete;

    bool Begin() { return OpenSheet(); }
    QPainter& Painter() { return m_pSheet->Painter(); }
    bool Draw(const CLine& Line)
    {
        if (m_nLines == kLinesAtATime && !TurnSheet())
            return false;
        m_pSheet->Draw(Line);
        m_Last = Line;
        ++m_nLines;
        return true;
    }
    bool End() { return HandOverSheet(true); }

private:
    bool OpenSheet()
    {
        m_pSheet = std::make_unique<CSheet>(m_Content, m_nDPI);
        return m_pSheet->Begin();
    }

    QByteArray CloseSheet()
    {
        QByteArray Document = m_pSheet->End();
        m_pSheet.reset();
        return Document;
    }

    bool TurnSheet()
    {
        if (!HandOverSheet(false) || !OpenSheet())
            return false;
        m_pSheet->Draw(m_Last);
        m_nRepeated = EndOfLines(CloseSheet());
        if (!OpenSheet())
            return false;
        m_pSheet->Draw(m_Last);
        m_nLines = 0;
        return true;
    }

    bool HandOverSheet(bool bLast)
    {
        const QByteArray Document = CloseSheet();
        const int nEnd = bLast ? Document.size() : EndOfLines(Document);
        return m_Take(Document.constData() + m_nRepeated, static_cast<std::size_t>(nEnd - m_nRepeated));
    }

    const CSvgContent& m_Content;
    const int m_nDPI;
    const FnTakeBytes& m_Take;
    std::unique_ptr<CSheet> m_pSheet;
    CLine m_Last{};
    int m_nLines = 0;    // on this sheet, without the repeated one
    int m_nRepeated = 0; // bytes at the beginning of this sheet that were handed over
};

// Calls Draw with each line of the strokes until it gives false, and gives false then.
template <typename TDraw>
bool ForEachLine(const CSvgContent& Content, bool bLogs, TDraw Draw)
{
    std::optional<QPointF> Previous; // set while a stroke is open
    bool bGoesOn = true;
    Content.m_Points.ForEachRun([&](const _POINTDATA* pFirst, std::size_t nCount) {
        for (const _POINTDATA* pPoint = pFirst; bGoesOn && pPoint != pFirst + nCount; ++pPoint) {
            if (pPoint->ucStatus != kStatusOnStroke) {
                Previous.reset();
                continue;
            }
            const CPadMapping& Mapping = Content.m_Pen.m_Mapping;
            const CCanvasSample Sample =
                bLogs ? ConvertSignRawDataToSignWndData(Content.m_Identity, Mapping, pPoint->usX, pPoint->sY,
                                                        pPoint->sPressure)
                      : Mapping.ConvertSignRawDataToSignWndData(Content.m_Identity.m_Model, pPoint->usX,
                                                                pPoint->sY, pPoint->sPressure);
            const QPointF Point =
                QPointF(Sample.m_dblX, Sample.m_dblY) - QPointF(Content.m_Origin.x(), Content.m_Origin.y());
            if (Previous)
                bGoesOn =
                    Draw(CLine{QLineF(*Previous, Point), Content.m_Pen.StrokeWidth(Sample.m_dblPressure)});
            Previous = Point;
        }
    });
    return bGoesOn;
}

} // namespace

bool HandOverSvg(const CSvgContent& Content, int nDPI, const FnTakeBytes& Take, bool bLogs)
{
    CSvgWriter Writer(Content, nDPI, Take);
    if (!Writer.Begin())
        return false;
    if (!Content.m_Fingerprint.isNull()) {
        // Without an alpha channel it is embedded as a pixmap would be.
        QImage Fingerprint = Content.m_Fingerprint.convertToFormat(QImage::Format_RGB32);
        SetResolution(Fingerprint, nDPI);
        Writer.Painter().drawImage((Content.m_Size.width() - Fingerprint.width()) / 2,
                                   (Content.m_Size.height() - Fingerprint.height()) / 2, Fingerprint);
    }
    return ForEachLine(Content, bLogs, [&Writer](const CLine& Line) { return Writer.Draw(Line); }) &&
           Writer.End();
}

std::optional<QByteArray> SvgBytes(const FnHandOver& HandOver)
{
    constexpr int kMaxSize = std::numeric_limits<int>::max() / 4 * 3 - 64;
    QByteArray Bytes;
    const bool bAll = HandOver([&Bytes](const char* pBytes, std::size_t nSize) {
        if (nSize > static_cast<std::size_t>(kMaxSize - Bytes.size()))
            return false;
        Bytes.append(pBytes, static_cast<int>(nSize));
        return true;
    });
    return bAll ? std::optional(Bytes) : std::nullopt;
}
