#include "inkplot.h"

#include "failures.h"
#include "text.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPointF>
#include <QSvgRenderer>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr int Width = 1000;
constexpr int Left = 80; // of the panels
constexpr int Right = 980;
constexpr int Top = 30;
constexpr int PanelHeight = 160;
constexpr int PanelDistance = 200;
constexpr int PanelCount = 3;
constexpr int Bottom = Top + (PanelCount - 1) * PanelDistance + PanelHeight;
constexpr int Height = Bottom + 50;

constexpr char XColor[] = "#1f5fb4";
constexpr char YColor[] = "#c2571a";
constexpr char Black[] = "#000000";

// A value over seconds; a curve breaks where the pen is lifted.
using Curve = std::vector<QPointF>;

struct Series
{
    const char* color;
    std::vector<Curve> curves;
};

struct Panel
{
    QString title;
    std::vector<Series> series;
};

struct Span
{
    double from;
    double to;
};

struct Plot
{
    Panel panels[PanelCount];
    std::vector<Span> lifts;
    double seconds = 0;
};

double secondsBetween(const _POINTDATA& from, const _POINTDATA& to)
{
    return static_cast<double>(static_cast<std::uint64_t>(to.llTick) -
                               static_cast<std::uint64_t>(from.llTick)) /
           1000;
}

Plot plotOf(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre)
{
    Series x{XColor, {}};
    Series y{YColor, {}};
    Series pressure{Black, {}};
    Series speed{Black, {}};
    std::vector<Span> lifts;
    const double unit = unitsPerMillimetre.value_or(1);
    const _POINTDATA& first = ink.At(0);
    const _POINTDATA* previous = nullptr; // while the pen is down, the point from which speed is measured
    double liftedAt = 0;
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        const double time = secondsBetween(first, point);
        if (!previous) {
            if (index > 0)
                lifts.push_back({liftedAt, time});
            for (Series* const series : {&x, &y, &pressure, &speed})
                series->curves.emplace_back();
            previous = &point;
        }
        x.curves.back().emplace_back(time, point.usX);
        y.curves.back().emplace_back(time, point.sY);
        pressure.curves.back().emplace_back(time, point.sPressure);
        if (const double step = secondsBetween(*previous, point); step > 0) {
            const double way = std::hypot(point.usX - previous->usX, point.sY - previous->sY);
            speed.curves.back().emplace_back(time, way / unit / step);
            previous = &point;
        }
        if (point.ucStatus != kStatusOnStroke) {
            previous = nullptr;
            liftedAt = time;
        }
    }
    Plot plot;
    plot.lifts = std::move(lifts);
    plot.seconds = secondsBetween(first, ink.At(ink.Count() - 1));
    plot.panels[0] = {Text::tr("position in pad units: x blue, y orange"), {std::move(x), std::move(y)}};
    plot.panels[1] = {Text::tr("pressure"), {std::move(pressure)}};
    plot.panels[2] = {unitsPerMillimetre ? Text::tr("speed in mm/s")
                                         : Text::tr("speed in pad units a second"),
                      {std::move(speed)}};
    return plot;
}

// 1, 2 or 5 times a power of ten, so that there are about eight of them.
double tickStep(double seconds)
{
    const double wanted = seconds / 8;
    const double power = std::pow(10, std::floor(std::log10(wanted)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= wanted)
            return factor * power;
    return 10 * power;
}

class PlotWriter
{
public:
    PlotWriter(const Plot& plot)
        : m_plot(plot), m_seconds(plot.seconds > 0 ? plot.seconds : 1), m_xml(&m_text)
    {
    }

    QByteArray write()
    {
        m_xml.writeStartElement(QStringLiteral("svg"));
        m_xml.writeDefaultNamespace(QStringLiteral("http://www.w3.org/2000/svg"));
        attribute("width", QString::number(Width));
        attribute("height", QString::number(Height));
        attribute("viewBox", QStringLiteral("0 0 %1 %2").arg(Width).arg(Height));
        attribute("font-family", QStringLiteral("sans-serif"));
        attribute("font-size", QStringLiteral("12"));
        rectangle(0, 0, Width, Height, "#ffffff");
        for (const Span& lift : m_plot.lifts)
            rectangle(across(lift.from), Top, across(lift.to) - across(lift.from), Bottom - Top, "#e4e4e4");
        writeTimes();
        int top = Top;
        for (const Panel& panel : m_plot.panels) {
            writePanel(panel, top);
            top += PanelDistance;
        }
        m_xml.writeEndElement();
        return m_text + '\n';
    }

private:
    static QString number(double value) { return QString::number(value, 'f', 1); }
    double across(double seconds) const { return Left + (Right - Left) * seconds / m_seconds; }
    void attribute(const char* name, const QString& value)
    {
        m_xml.writeAttribute(QLatin1String(name), value);
    }

    void element(const char* name)
    {
        m_xml.writeCharacters(QStringLiteral("\n"));
        m_xml.writeEmptyElement(QLatin1String(name));
    }
    void rectangle(double left, double top, double width, double height, const char* color)
    {
        element("rect");
        attribute("x", number(left));
        attribute("y", number(top));
        attribute("width", number(width));
        attribute("height", number(height));
        attribute("fill", QLatin1String(color));
    }
    void line(double x1, double y1, double x2, double y2)
    {
        element("line");
        attribute("x1", number(x1));
        attribute("y1", number(y1));
        attribute("x2", number(x2));
        attribute("y2", number(y2));
        attribute("stroke", QStringLiteral("#808080"));
    }
    void text(double x, double y, const char* anchor, const QString& words)
    {
        m_xml.writeCharacters(QStringLiteral("\n"));
        m_xml.writeStartElement(QStringLiteral("text"));
        attribute("x", number(x));
        attribute("y", number(y));
        attribute("text-anchor", QLatin1String(anchor));
        m_xml.writeCharacters(words);
        m_xml.writeEndElement();
    }

    void writeTimes()
    {
        const double step = tickStep(m_seconds);
        for (int tick = 0; tick * step <= m_seconds; ++tick) {
            const double x = across(tick * step);
            line(x, Bottom, x, Bottom + 5);
            text(x, Bottom + 20, "middle", localeOfTexts().toString(tick * step));
        }
        text((Left + Right) / 2.0, Bottom + 40, "middle",
             Text::tr("seconds; the pen is lifted where it is grey"));
    }

    void writePanel(const Panel& panel, int top)
    {
        double least = std::numeric_limits<double>::infinity();
        double most = -least;
        for (const Series& series : panel.series)
            for (const Curve& curve : series.curves)
                for (const QPointF& point : curve) {
                    least = std::min(least, point.y());
                    most = std::max(most, point.y());
                }
        const int bottom = top + PanelHeight;
        text(Left, top - 8, "start", panel.title);
        line(Left, top, Left, bottom);
        line(Left, bottom, Right, bottom);
        if (least > most)
            return; // no speed was measured
        text(Left - 8, bottom, "end", localeOfTexts().toString(static_cast<qlonglong>(std::lround(least))));
        text(Left - 8, top + 8, "end", localeOfTexts().toString(static_cast<qlonglong>(std::lround(most))));
        const double range = most > least ? most - least : 1;
        for (const Series& series : panel.series)
            for (const Curve& curve : series.curves)
                if (!curve.empty())
                    writeCurve(curve, series.color,
                               [&](double value) { return bottom - PanelHeight * (value - least) / range; });
    }

    template <typename TUp>
    void writeCurve(const Curve& curve, const char* color, TUp up)
    {
        QString points;
        QString last;
        for (const QPointF& point : curve) {
            const QString at = number(across(point.x())) + QLatin1Char(',') + number(up(point.y()));
            if (at != last)
                points += (points.isEmpty() ? QString() : QStringLiteral(" ")) + at;
            last = at;
        }
        element("polyline");
        attribute("fill", QStringLiteral("none"));
        attribute("stroke", QLatin1String(color));
        attribute("points", points);
    }

    const Plot& m_plot;
    const double m_seconds;
    QByteArray m_text;
    QXmlStreamWriter m_xml;
};

} // namespace

QByteArray toSvgPlot(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre)
{
    if (ink.Count() == 0)
        throw Failure{Text::tr("there are no points to plot")};
    const Plot plot = plotOf(ink, unitsPerMillimetre);
    return PlotWriter(plot).write();
}

QByteArray toPngPlot(const CInkSnapshot& ink, std::optional<double> unitsPerMillimetre)
{
    QSvgRenderer renderer(toSvgPlot(ink, unitsPerMillimetre));
    QImage picture(Width, Height, QImage::Format_RGB32);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QPainter painter;
    if (renderer.isValid() && painter.begin(&picture)) {
        renderer.render(&painter);
        painter.end();
        picture.save(&buffer, "PNG");
    }
    if (bytes.isEmpty())
        throw Failure{Text::tr("the picture cannot be made")};
    return bytes;
}
