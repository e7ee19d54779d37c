#include "inkdrawing.h"

#include "canvas/drawing.h"
#include "export/imagefiles.h"
#include "failures.h"
#include "pen/pensetup.h"
#include "text.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace {

struct Line
{
    QLineF line;
    double width;
};

using Stroke = std::vector<Line>;

// Calls draw(const Stroke&) for each stroke that has a line, on a canvas that many times as large.
template <typename TDraw>
void forEachStroke(const CInkSnapshot& ink, const Drawing& drawing, double scale, TDraw draw)
{
    CPenSetup pen(drawing.pad);
    pen.SetWidth(drawing.penWidth, drawing.pad.m_nInitialMaxPressure);
    pen.FitCanvas(drawing.size.width(), drawing.size.height(), drawing.pad.m_nInitialMaxPressure);
    const CPenState state = pen.Read();
    Stroke stroke;
    std::optional<QPointF> previous; // set while a stroke is open
    const auto end = [&] {
        if (!stroke.empty())
            draw(std::as_const(stroke));
        stroke.clear();
        previous.reset();
    };
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        if (point.ucStatus != kStatusOnStroke) {
            end();
            continue;
        }
        const CCanvasSample sample = state.m_Mapping.ConvertSignRawDataToSignWndData(
            drawing.pad, point.usX, point.sY, point.sPressure);
        const QPointF at = scale * QPointF(sample.m_dblX, sample.m_dblY);
        const double width = state.StrokeWidth(sample.m_dblPressure);
        if (previous)
            stroke.push_back(
                {QLineF(*previous, at), scale * (width > 0 ? width : 1)}); // as a pen without width
        previous = at;
    }
    end();
}

void drawStrokes(QPainter& painter, const CInkSnapshot& ink, const Drawing& drawing, double scale)
{
    forEachStroke(ink, drawing, scale, [&](const Stroke& stroke) {
        for (const Line& line : stroke)
            DrawStrokeSegment(painter, line.line, line.width, drawing.color);
    });
}

// Outlines, in twentieths of a pixel: small whole numbers take little room.

constexpr int StepsPerPixel = 20;

// How far, in pixels, a corner of two lines may stand out from the round end between them, and how much their
// widths may differ.
constexpr double LargestOvershoot = 0.35;
constexpr double LargestStep = 0.8;

class PathText
{
public:
    void moveTo(QPointF point) { go(m_text.isEmpty() ? 'M' : 'm', point); }
    void lineTo(QPointF point) { go('l', point); }
    // Half around, by the right hand of who goes towards the end of the stroke.
    void halfCircleTo(QPointF point, double radius)
    {
        command('a');
        const int steps = std::max(1, static_cast<int>(std::lround(radius)));
        number(steps);
        number(steps);
        m_text += " 0 0 0";
        coordinates(point);
    }
    void close()
    {
        m_text += 'z';
        m_command = 'z';
        m_at = m_start;
    }
    const QByteArray& text() const { return m_text; }

private:
    void go(char command, QPointF point)
    {
        this->command(command);
        coordinates(point);
        if (command != 'l')
            m_start = m_at;
    }
    void command(char command)
    {
        if (command != m_command || command == 'a')
            m_text += command;
        m_command = command;
    }
    void coordinates(QPointF point)
    {
        const QPoint to = point.toPoint();
        number(to.x() - m_at.x());
        number(to.y() - m_at.y());
        m_at = to;
    }
    void number(int value)
    {
        const char last = m_text.back();
        if (value >= 0 && last >= '0' && last <= '9')
            m_text += ' ';
        m_text += QByteArray::number(value);
    }

    QByteArray m_text;
    char m_command = 0;
    QPoint m_start;
    QPoint m_at;
};

// From the line's middle to its edge.
QPointF toEdge(const Line& line)
{
    return QPointF(-line.line.dy(), line.line.dx()) * (line.width / 2 / line.line.length());
}

// From where two lines meet to the corner of their edges, on the same side as toEdge(). Nothing when a corner
// would not look like the round ends that they have: then each gets its ends.
std::optional<QPointF> toCorner(const Line& line, const Line& next)
{
    const QPointF edge = toEdge(line);
    const QPointF nextEdge = toEdge(next);
    const double radius = (line.width + next.width) / 4;
    const QPointF direction = edge / (line.width / 2) + nextEdge / (next.width / 2);
    const double cosine = std::hypot(direction.x(), direction.y()) / 2; // of half the turn
    if (cosine < 0.5 || std::abs(line.width - next.width) > LargestStep * StepsPerPixel)
        return std::nullopt;
    const double sine = std::sqrt(std::max(0.0, 1 - cosine * cosine));
    const bool fitsBetween = radius * sine / cosine <= std::min(line.line.length(), next.line.length()) / 2;
    if (!fitsBetween || radius / cosine - radius > LargestOvershoot * StepsPerPixel)
        return std::nullopt;
    return direction * (radius / (2 * cosine * cosine));
}

void addCircle(PathText& path, QPointF middle, double radius)
{
    path.moveTo(middle + QPointF(radius, 0));
    path.halfCircleTo(middle - QPointF(radius, 0), radius);
    path.halfCircleTo(middle + QPointF(radius, 0), radius);
    path.close();
}

// Around the lines from first on, with these corners between them. All outlines run the same way around, so
// that where they lie on each other they are filled.
void addOutline(PathText& path, const Line* first, const std::vector<QPointF>& corners)
{
    const Line* const last = first + corners.size();
    path.moveTo(first->line.p1() + toEdge(*first));
    for (std::size_t index = 0; index < corners.size(); ++index)
        path.lineTo(first[index].line.p2() + corners[index]);
    path.lineTo(last->line.p2() + toEdge(*last));
    path.halfCircleTo(last->line.p2() - toEdge(*last), last->width / 2);
    for (std::size_t index = corners.size(); index-- > 0;)
        path.lineTo(first[index].line.p2() - corners[index]);
    path.lineTo(first->line.p1() - toEdge(*first));
    path.halfCircleTo(first->line.p1() + toEdge(*first), first->width / 2);
    path.close();
}

QByteArray outlineOf(const Stroke& stroke)
{
    PathText path;
    Stroke lines; // those with a length
    for (std::size_t index = 0; index < stroke.size(); ++index) {
        const Line& line = stroke[index];
        if (line.line.length() > 0)
            lines.push_back(line);
        else if ((index == 0 || stroke[index - 1].width < line.width) &&
                 (index + 1 == stroke.size() || stroke[index + 1].width <= line.width))
            addCircle(path, line.line.p1(), line.width / 2); // wider than what is around it
    }
    std::vector<QPointF> corners;
    for (std::size_t first = 0, index = 0; index < lines.size(); ++index) {
        const std::optional<QPointF> corner =
            index + 1 < lines.size() ? toCorner(lines[index], lines[index + 1]) : std::nullopt;
        if (corner) {
            corners.push_back(*corner);
            continue;
        }
        addOutline(path, &lines[first], corners);
        corners.clear();
        first = index + 1;
    }
    return path.text();
}

QString millimetres(int pixels)
{
    return QString::number(pixels * 25.4 / CanvasDotsPerInch, 'g', 6) + QStringLiteral("mm");
}

} // namespace

QByteArray toPng(const CInkSnapshot& ink, const Drawing& drawing)
{
    const double scale = static_cast<double>(drawing.dotsPerInch) / CanvasDotsPerInch;
    const auto scaled = [scale](int side) {
        return std::max(1, static_cast<int>(std::lround(side * scale)));
    };
    QImage canvas = BlankCanvas(scaled(drawing.size.width()), scaled(drawing.size.height()));
    if (canvas.isNull())
        throw Failure{Text::tr("the picture has more than a gigabyte, or more than there is memory")};
    SetResolution(canvas, drawing.dotsPerInch);
    QByteArray bytes;
    if (DrawOn(canvas, [&](QPainter& painter) { drawStrokes(painter, ink, drawing, scale); }))
        bytes = EncodeImage(canvas, EBITI_PNG, false);
    if (bytes.isEmpty())
        throw Failure{Text::tr("the picture cannot be made")};
    return bytes;
}

QByteArray toPdf(const CInkSnapshot& ink, const Drawing& drawing)
{
    constexpr int fineness = 8;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        constexpr double points = 72.0 / CanvasDotsPerInch;
        QPdfWriter writer(&buffer);
        writer.setCreator(QStringLiteral("scribera-ink"));
        writer.setResolution(fineness * CanvasDotsPerInch);
        writer.setPageLayout(
            QPageLayout(QPageSize(QSizeF(drawing.size) * points, QPageSize::Point, {}, QPageSize::ExactMatch),
                        QPageLayout::Portrait, QMarginsF(0, 0, 0, 0), QPageLayout::Point));
        QPainter painter;
        if (!painter.begin(&writer))
            throw Failure{Text::tr("the document cannot be made")};
        drawStrokes(painter, ink, drawing, fineness);
        painter.end();
    }
    return buffer.data();
}

QByteArray toCompactSvg(const CInkSnapshot& ink, const Drawing& drawing)
{
    constexpr int largest = 1 << 30; // of byte arrays
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.writeDefaultNamespace(QStringLiteral("http://www.w3.org/2000/svg"));
    xml.writeStartElement(QStringLiteral("http://www.w3.org/2000/svg"), QStringLiteral("svg"));
    xml.writeAttribute(QStringLiteral("width"), millimetres(drawing.size.width()));
    xml.writeAttribute(QStringLiteral("height"), millimetres(drawing.size.height()));
    xml.writeAttribute(QStringLiteral("viewBox"), QStringLiteral("0 0 %1 %2")
                                                      .arg(drawing.size.width() * StepsPerPixel)
                                                      .arg(drawing.size.height() * StepsPerPixel));
    xml.writeAttribute(QStringLiteral("fill"), drawing.color.name());
    forEachStroke(ink, drawing, StepsPerPixel, [&](const Stroke& stroke) {
        const QByteArray outline = outlineOf(stroke);
        if (text.size() > largest - outline.size())
            throw Failure{Text::tr("the drawing has more than a gigabyte")};
        xml.writeCharacters(QStringLiteral("\n"));
        xml.writeEmptyElement(QStringLiteral("path"));
        xml.writeAttribute(QStringLiteral("d"), QString::fromLatin1(outline));
    });
    xml.writeCharacters(QStringLiteral("\n"));
    xml.writeEndElement();
    return text + '\n';
}
