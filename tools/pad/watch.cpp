// scribera-pad watch: what comes from the pad, as it comes.
#include "commands.h"
#include "failures.h"
#include "interrupts.h"
#include "optionvalues.h"
#include "program.h"
#include "strokes.h"
#include "terminal.h"
#include "text.h"
#include "waiting.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

using What = PadEvent::What;

// As JSON has it; for people, it is translated.
const char* nameOf(What what)
{
    switch (what) {
    case What::Down:
        return QT_TRANSLATE_NOOP("Tools", "down");
    case What::Move:
        return QT_TRANSLATE_NOOP("Tools", "move");
    case What::Up:
        return QT_TRANSLATE_NOOP("Tools", "up");
    case What::KeyTouched:
        return QT_TRANSLATE_NOOP("Tools", "touched");
    case What::KeyUsed:
        break;
    }
    return QT_TRANSLATE_NOOP("Tools", "used");
}

bool isKey(const PadEvent& event)
{
    return event.what == What::KeyTouched || event.what == What::KeyUsed;
}

const char* keyOf(const PadEvent& event)
{
    return event.isConfirm ? QT_TRANSLATE_NOOP("Tools", "confirm") : QT_TRANSLATE_NOOP("Tools", "cancel");
}

QString number(double value, int digits)
{
    return QString::number(value, 'f', digits);
}

// As wide as the widest, so that what follows stands below each other.
QString motionText(What what)
{
    int width = 0;
    for (const What any : {What::Down, What::Move, What::Up})
        width = std::max(width, static_cast<int>(Text::tr(nameOf(any)).size()));
    return Text::tr(nameOf(what)).leftJustified(width);
}

QString barOf(int pressure, int highest)
{
    constexpr int length = 20;
    const int filled = std::clamp(pressure * length / std::max(highest, 1), 0, length);
    return QLatin1Char('[') + QString(filled, QLatin1Char('#')) + QString(length - filled, QLatin1Char('-')) +
           QLatin1Char(']');
}

// What is shown is a line for each event, changed in its place, or an object of JSON for each event.
class View
{
public:
    View(int highestPressure) : m_highestPressure(highestPressure) {}
    virtual ~View() = default;
    virtual void show(const PadEvent& event, double seconds, const Strokes& strokes) = 0;
    virtual void showPresence(double seconds, bool isThere) = 0;
    virtual void end(double seconds, const Strokes& strokes) = 0;

    // What was shown has to be seen now. Throws Failure.
    static void flush()
    {
        if (std::fflush(stdout) != 0 || std::ferror(stdout))
            throw Failure{
                Text::tr("%1: cannot be written: %2")
                    .arg(Text::tr("standard output"), QString::fromLocal8Bit(std::strerror(errno)))};
    }

protected:
    QString pressureOf(const PadEvent& event) const
    {
        return QStringLiteral("%1 %2").arg(event.pressure, 4).arg(barOf(event.pressure, m_highestPressure));
    }

private:
    const int m_highestPressure;
};

class Lines : public View
{
public:
    using View::View;

    void show(const PadEvent& event, double seconds, const Strokes& strokes) override
    {
        if (isKey(event)) {
            printAt(seconds, Text::tr("%1 key %2").arg(Text::tr(keyOf(event)), Text::tr(nameOf(event.what))));
            return;
        }
        QString line = Text::tr("%1 x %2 y %3 pressure %4")
                           .arg(motionText(event.what))
                           .arg(event.x, 5)
                           .arg(event.y, 5)
                           .arg(pressureOf(event));
        if (const std::optional<double> gap = strokes.gap())
            line +=
                QLatin1Char(' ') + Text::tr("gap %1 ms").arg(numberText(*gap * 1000, 1).rightJustified(6));
        printAt(seconds, line);
    }
    void showPresence(double seconds, bool isThere) override
    {
        printAt(seconds, isThere ? Text::tr("the pad answers again") : Text::tr("the pad does not answer"));
    }
    void end(double seconds, const Strokes& strokes) override
    {
        const std::optional<double> rate = strokes.rate();
        printLine(Text::tr("%1 s, %2, %3, %4 points/s, longest gap %5 ms", "seconds, points, strokes")
                      .arg(numberText(seconds, 1), pointsText(strokes.points()),
                           strokesText(strokes.strokes()),
                           rate ? numberText(*rate, 1) : Text::tr("no", "points/s"),
                           numberText(strokes.longestGap() * 1000, 1)));
    }

protected:
    virtual void printLine(const QString& line) { print(stdout, line + QLatin1Char('\n')); }

private:
    void printAt(double seconds, const QString& text)
    {
        printLine(numberText(seconds, 3).rightJustified(9) + QStringLiteral(" s  ") + text);
    }
};

// Points move a line in its place; keys and the end have lines that stay.
class MovingLine : public Lines
{
public:
    explicit MovingLine(int highestPressure) : Lines(highestPressure), m_line(stdout) {}

    void show(const PadEvent& event, double seconds, const Strokes& strokes) override
    {
        if (isKey(event)) {
            Lines::show(event, seconds, strokes);
            return;
        }
        const std::optional<double> rate = strokes.rateOfStroke();
        m_line.show(Text::tr("%1 x %2 y %3 %4 %5/s, longest gap %6 ms")
                        .arg(motionText(event.what))
                        .arg(event.x, 5)
                        .arg(event.y, 5)
                        .arg(pressureOf(event))
                        .arg(rate ? numberText(*rate, 0) : QStringLiteral("-"), 4)
                        .arg(numberText(strokes.longestGap() * 1000, 1)));
    }

private:
    void printLine(const QString& line) override
    {
        m_line.clear();
        Lines::printLine(line);
    }

    StatusLine m_line;
};

class Json : public View
{
public:
    using View::View;

    void show(const PadEvent& event, double seconds, const Strokes& strokes) override
    {
        QString object = begin(nameOf(event.what), seconds);
        if (isKey(event))
            object += QStringLiteral(",\"key\":\"%1\"").arg(QLatin1String(keyOf(event)));
        else
            object += QStringLiteral(",\"x\":%1,\"y\":%2,\"pressure\":%3")
                          .arg(event.x)
                          .arg(event.y)
                          .arg(event.pressure);
        if (const std::optional<double> gap = strokes.gap(); gap && !isKey(event))
            object += QStringLiteral(",\"gap\":") + number(*gap, 6);
        print(stdout, object + QStringLiteral("}\n"));
    }
    void showPresence(double seconds, bool isThere) override
    {
        print(stdout, begin(isThere ? "back" : "gone", seconds) + QStringLiteral("}\n"));
    }
    void end(double seconds, const Strokes& strokes) override
    {
        QString object =
            begin("end", seconds) +
            QStringLiteral(",\"points\":%1,\"strokes\":%2").arg(strokes.points()).arg(strokes.strokes());
        if (const std::optional<double> rate = strokes.rate())
            object += QStringLiteral(",\"rate\":") + number(*rate, 1);
        print(stdout, object + QStringLiteral(",\"longestGap\":%1}\n").arg(number(strokes.longestGap(), 6)));
    }

private:
    static QString begin(const char* event, double seconds)
    {
        return QStringLiteral("{\"event\":\"%1\",\"seconds\":%2")
            .arg(QLatin1String(event), number(seconds, 6));
    }
};

std::unique_ptr<View> makeView(bool json, int highestPressure)
{
    if (json)
        return std::make_unique<Json>(highestPressure);
    if (isTerminal(stdout))
        return std::make_unique<MovingLine>(highestPressure);
    return std::make_unique<Lines>(highestPressure);
}

} // namespace

void addWatchOptions(QCommandLineParser& parser)
{
    addDriverAndModel(parser);
    parser.addOptions({
        {QStringLiteral("json"), Text::tr("An object of JSON for each event, in a line of its own.")},
        {QStringLiteral("seconds"), Text::tr("End after this time; otherwise Ctrl-C ends."),
         Text::tr("seconds")},
    });
}

int watchPad(const QCommandLineParser& parser, const QString&)
{
    constexpr int keyInterval = 10; // ms between looks at the keys
    const CPadModel& model = modelOption(parser);
    const Driver driver = driverOption(parser);
    const std::optional<int> seconds = secondsOption(parser, "seconds");
    const std::int64_t start = Session::now();
    const auto secondsAt = [start](std::int64_t nanoseconds) {
        return static_cast<double>(nanoseconds - start) / 1e9;
    };
    Session session(model, driver, nullptr, canvasFor(model, 100));
    const Deadline deadline(seconds);
    Presence presence(session);
    Strokes strokes;
    const std::unique_ptr<View> view = makeView(parser.isSet(QStringLiteral("json")), session.number(4, 0));
    print(stderr, Text::tr("Watching the pad %1. Ctrl-C ends.\n").arg(QLatin1String(model.m_pszName)));
    try {
        while (!deadline.isOver()) {
            waitFor({session.descriptor()}, deadline.wait(keyInterval));
            for (const PadEvent& event : session.takeEvents()) {
                strokes.take(event);
                view->show(event, secondsAt(event.nanoseconds), strokes);
            }
            if (presence.look())
                view->showPresence(secondsAt(Session::now()), presence.isThere());
            View::flush();
        }
    } catch (const Interrupted& interrupted) {
        if (interrupted.signal != SIGINT)
            throw;
    }
    view->end(secondsAt(Session::now()), strokes);
    View::flush();
    return Done;
}
