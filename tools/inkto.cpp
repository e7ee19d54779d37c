#include "inkto.h"

#include "export/svgdrawing.h"
#include "failures.h"
#include "incoming.h"
#include "ink/inkstream.h"
#include "inkjudgement.h"
#include "inksummary.h"
#include "pen/pensetup.h"
#include "simulator/recording.h"
#include "text.h"

#include <QDateTime>

#include <cstdint>
#include <optional>

namespace {

QString between(const Range& range)
{
    return Text::tr("%1 to %2").arg(numberText(range.smallest()), numberText(range.largest()));
}

// Ink from a form that knows no dates has zeros.
QString dates(const InkSummary& summary)
{
    const auto text = [](std::int64_t seconds) {
        constexpr std::int64_t year10000 = 253402300800;
        if (seconds <= 0 || seconds >= year10000)
            return Text::tr("none", "date");
        return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC)
            .toString(Text::tr("yyyy-MM-dd HH:mm:ss 'UTC'", "date and time, in Qt's letters"));
    };
    const QString first = text(summary.firstSecond);
    const QString last = text(summary.lastSecond);
    return first == last ? first : Text::tr("%1 to %2").arg(first, last);
}

simulator::PenStatus penStatus(const _POINTDATA& point, bool strokeIsOpen)
{
    if (point.ucStatus == kStatusStrokeEnd)
        return simulator::PenUp;
    return strokeIsOpen ? simulator::PenMove : simulator::PenDown;
}

} // namespace

Info toInfo(const CInkSnapshot& ink, const Circumstances& circumstances)
{
    const InkSummary summary = summarise(ink);
    const bool empty = summary.points == 0;
    const QString none = Text::tr("none", "no value");
    const std::optional<double> rate = summary.reportRate();
    const auto seconds = [](std::uint64_t milliseconds) {
        return Text::tr("%1 s", "seconds")
            .arg(numberText(milliseconds / 1000) + localeOfTexts().decimalPoint() +
                 QStringLiteral("%1").arg(milliseconds % 1000, 3, 10, QLatin1Char('0')));
    };

    NamedLines lines(14);
    lines.add(Text::tr("points:"), numberText(summary.points));
    lines.add(Text::tr("strokes:"), numberText(summary.strokes));
    lines.add(Text::tr("date:"), empty ? none : dates(summary));
    lines.add(Text::tr("duration:"), seconds(summary.duration));
    lines.add(QStringLiteral("x:"), empty ? none : between(summary.x));
    lines.add(QStringLiteral("y:"), empty ? none : between(summary.y));
    if (circumstances.unitsPerMillimetre && !empty)
        lines.add(Text::tr("size:"),
                  Text::tr("%1 x %2 mm")
                      .arg(numberText(summary.x.size() / *circumstances.unitsPerMillimetre, 1),
                           numberText(summary.y.size() / *circumstances.unitsPerMillimetre, 1)));
    lines.add(Text::tr("pressure:"), empty ? none : between(summary.pressure));
    lines.add(Text::tr("report rate:"), rate ? Text::tr("%1 points/s").arg(numberText(*rate, 1)) : none);
    lines.add(
        Text::tr("gaps:"),
        summary.gaps == 0
            ? Text::tr("none", "no gap")
            : Text::tr("%1, the longest of %2").arg(numberText(summary.gaps), seconds(summary.longestGap)));
    const Judgement judgement = judge(summary, circumstances.pad, circumstances.unitsPerMillimetre);
    lines.add(Text::tr("signed:"),
              judgement.isSigned ? Text::tr("yes") : Text::tr("no, %1").arg(judgement.reason));
    return {lines.text().toUtf8(), judgement.isSigned};
}

QByteArray toSvg(const CInkSnapshot& ink, const Drawing& drawing)
{
    CPenSetup pen(drawing.pad);
    pen.SetWidth(drawing.penWidth, drawing.pad.m_nInitialMaxPressure);
    pen.SetColor(drawing.color);
    pen.FitCanvas(drawing.size.width(), drawing.size.height(), drawing.pad.m_nInitialMaxPressure);

    const CObjectIdentity identity{drawing.pad, EObjectKind::Windowless};
    const CSvgContent content{drawing.size, QPoint(0, 0), ink, pen.Read(), identity, QImage()};
    const std::optional<QByteArray> text = SvgBytes(
        [&](const FnTakeBytes& take) { return HandOverSvg(content, drawing.dotsPerInch, take, false); });
    if (!text)
        throw Failure{Text::tr("the drawing has more than a gigabyte")};
    return *text;
}

QByteArray toRecording(const CInkSnapshot& ink, const CPadModel& pad)
{
    if (summarise(ink).duration > static_cast<std::uint64_t>(simulator::LongestRecording))
        throw Failure{Text::tr("the points span more than the %1 ms of the longest recording")
                          .arg(simulator::LongestRecording)};
    const std::string_view model = simulator::canonicalModel(pad.m_nDeviceType);
    const simulator::Pad& played = *simulator::padForModel(model);
    simulator::Recording recording;
    recording.model = model;
    recording.area = played.area;
    recording.maxPressure = played.maxPressure;
    recording.samples.reserve(ink.Count());
    bool strokeIsOpen = false;
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        recording.samples.push_back({point.llTick - ink.At(0).llTick, point.usX, point.sY, point.sPressure,
                                     penStatus(point, strokeIsOpen)});
        strokeIsOpen = point.ucStatus == kStatusOnStroke;
    }
    return QByteArray::fromStdString(simulator::formatRecording(recording));
}

CInkSnapshot fromRecording(const QByteArray& text, const QString& name)
{
    simulator::Recording recording;
    std::string error;
    if (!simulator::parseRecording({text.constData(), static_cast<std::size_t>(text.size())},
                                   name.toStdString(), recording, error))
        throw Failure{QString::fromStdString(error)};
    IncomingInk ink(name, IncomingInk::Places::Points);
    std::size_t number = 0;
    for (const simulator::RecordedSample& sample : recording.samples) {
        ++number;
        if (sample.status == simulator::CancelKey || sample.status == simulator::ConfirmKey)
            continue;
        if (sample.status < simulator::PenDown || sample.status > simulator::PenUp)
            ink.refuse(number, Text::tr("status %1 is none of a pen or a key").arg(sample.status));
        IncomingPoint point;
        point.x = sample.x;
        point.y = sample.y;
        point.pressure = sample.pressure;
        point.status = sample.status == simulator::PenUp ? kStatusStrokeEnd : kStatusOnStroke;
        point.tick = sample.milliseconds;
        ink.append(point, number);
    }
    return ink.ink();
}

QByteArray toStreamText(const CInkSnapshot& ink)
{
    const QByteArray stream = PackInkStream(ink);
    if (stream.isEmpty())
        throw Failure{Text::tr("there are more points than a stream can hold")};
    return stream.toBase64();
}
