#include "inkto.h"

#include "export/svgdrawing.h"
#include "failures.h"
#include "incoming.h"
#include "ink/inkstream.h"
#include "inkjudgement.h"
#include "inksummary.h"
#include "pen/pensetup.h"
#include "simulator/recording.h"

#include <QDateTime>

#include <cstdint>
#include <optional>

namespace {

QString between(const Range& range)
{
    return QStringLiteral("%1 to %2").arg(range.smallest()).arg(range.largest());
}

// Ink from a form that knows no dates has zeros.
QString dates(const InkSummary& summary)
{
    const auto text = [](std::int64_t seconds) {
        constexpr std::int64_t year10000 = 253402300800;
        if (seconds <= 0 || seconds >= year10000)
            return QStringLiteral("none");
        return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC)
            .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'"));
    };
    const QString first = text(summary.firstSecond);
    const QString last = text(summary.lastSecond);
    return first == last ? first : first + QStringLiteral(" to ") + last;
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
    const QString none = QStringLiteral("none");
    const std::optional<double> rate = summary.reportRate();
    const auto seconds = [](std::uint64_t milliseconds) {
        return QStringLiteral("%1.%2 s")
            .arg(milliseconds / 1000)
            .arg(milliseconds % 1000, 3, 10, QLatin1Char('0'));
    };

    QString text;
    const auto line = [&text](const char* name, const QString& value) {
        text += QString::fromLatin1(name).leftJustified(14) + value + QLatin1Char('\n');
    };
    line("points:", QString::number(summary.points));
    line("strokes:", QString::number(summary.strokes));
    line("date:", empty ? none : dates(summary));
    line("duration:", seconds(summary.duration));
    line("x:", empty ? none : between(summary.x));
    line("y:", empty ? none : between(summary.y));
    if (circumstances.unitsPerMillimetre && !empty)
        line("size:", QStringLiteral("%1 x %2 mm")
                          .arg(summary.x.size() / *circumstances.unitsPerMillimetre, 0, 'f', 1)
                          .arg(summary.y.size() / *circumstances.unitsPerMillimetre, 0, 'f', 1));
    line("pressure:", empty ? none : between(summary.pressure));
    line("report rate:", rate ? QString::number(*rate, 'f', 1) + QStringLiteral(" points/s") : none);
    line("gaps:",
         summary.gaps == 0
             ? none
             : QStringLiteral("%1, the longest of %2").arg(summary.gaps).arg(seconds(summary.longestGap)));
    const Judgement judgement = judge(summary, circumstances.pad, circumstances.unitsPerMillimetre);
    line("signed:", judgement.isSigned ? QStringLiteral("yes") : QStringLiteral("no, ") + judgement.reason);
    return {text.toUtf8(), judgement.isSigned};
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
        throw Failure{QStringLiteral("the drawing has more than a gigabyte")};
    return *text;
}

QByteArray toRecording(const CInkSnapshot& ink, const CPadModel& pad)
{
    if (summarise(ink).duration > static_cast<std::uint64_t>(simulator::LongestRecording))
        throw Failure{QStringLiteral("the points span more than the %1 ms of the longest recording")
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
            ink.refuse(number, QStringLiteral("status %1 is none of a pen or a key").arg(sample.status));
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
        throw Failure{QStringLiteral("there are more points than a stream can hold")};
    return stream.toBase64();
}
