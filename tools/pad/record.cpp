// scribera-pad record: what the pen does, as a file that the simulated pad plays.
#include "commands.h"
#include "ending.h"
#include "failures.h"
#include "interrupts.h"
#include "optionvalues.h"
#include "output.h"
#include "program.h"
#include "strokes.h"
#include "targetfile.h"
#include "terminal.h"
#include "text.h"
#include "waiting.h"

#include "simulator/recording.h"

namespace {

using What = PadEvent::What;

// Samples as the pad has brought them, in the order of their times.
class Tape
{
public:
    explicit Tape(const CPadModel& model)
    {
        m_recording.model = simulator::canonicalModel(model.m_nDeviceType);
        const simulator::Pad& pad = *simulator::padForModel(m_recording.model);
        m_recording.area = pad.area;
        m_recording.maxPressure = pad.maxPressure;
    }

    void take(const PadEvent& event)
    {
        switch (event.what) {
        case What::Down:
            put(event, simulator::PenDown);
            break;
        case What::Move:
            put(event, simulator::PenMove);
            break;
        case What::Up:
            put(event, simulator::PenUp);
            break;
        case What::KeyTouched:
            put(event, event.isConfirm ? simulator::ConfirmKey : simulator::CancelKey);
            break;
        case What::KeyUsed: // where keys act at the touch, nobody tells when they are let go
            put(event, simulator::PenUp);
            break;
        }
    }

    bool isEmpty() const { return m_recording.samples.empty(); }

    // With the pen lifted at the end.
    std::string text()
    {
        if (m_recording.samples.back().status != simulator::PenUp) {
            m_recording.samples.push_back(m_recording.samples.back());
            m_recording.samples.back().status = simulator::PenUp;
        }
        return simulator::formatRecording(m_recording);
    }

private:
    void put(const PadEvent& event, simulator::PenStatus status)
    {
        if (isEmpty())
            m_start = event.nanoseconds;
        const std::int64_t milliseconds = (event.nanoseconds - m_start) / 1'000'000;
        if (milliseconds > simulator::LongestRecording)
            throw Failure{Text::tr("the recording is longer than the %1 ms that one may have")
                              .arg(simulator::LongestRecording)};
        m_recording.samples.push_back({milliseconds, event.x, event.y, event.pressure, status});
    }

    simulator::Recording m_recording;
    std::int64_t m_start = 0;
};

// Why the recording is over.
enum class End
{
    Asked, // by the pad's confirm key, the terminal or the clock
    Cancelled
};

End recordOn(Session& session, Tape& tape, Strokes& strokes, const Deadline& deadline)
{
    constexpr int keyInterval = 10; // ms between looks at the pad's keys
    Keyboard keyboard;
    StatusLine line(stderr);
    print(stderr, (keyboard.isThere() ? Text::tr("Recording the pad %1; its confirm key ends. So does Enter; "
                                                 "Escape drops the recording.\n")
                                      : Text::tr("Recording the pad %1; its confirm key ends.\n"))
                      .arg(QLatin1String(session.model().m_pszName)));
    Presence presence(session);
    while (!deadline.isOver()) {
        waitFor({session.descriptor(), keyboard.descriptor()}, deadline.wait(keyInterval));
        for (const PadEvent& event : session.takeEvents()) {
            strokes.take(event);
            tape.take(event);
            if (event.what == What::KeyUsed && event.isConfirm)
                return End::Asked;
        }
        switch (keyboard.read()) {
        case Keyboard::Key::Enter:
            return End::Asked;
        case Keyboard::Key::Escape:
            return End::Cancelled;
        case Keyboard::Key::None:
            break;
        }
        presence.look();
        line.show(progressText(deadline.seconds(), strokes, presence.isThere()));
    }
    return End::Asked;
}

} // namespace

void addRecordOptions(QCommandLineParser& parser)
{
    addDriverAndModel(parser);
    parser.addOption({QStringLiteral("seconds"), Text::tr("End after this time."), Text::tr("seconds")});
}

int recordPad(const QCommandLineParser& parser, const QString& file)
{
    const CPadModel& model = modelOption(parser);
    const Driver driver = driverOption(parser);
    const std::optional<int> seconds = secondsOption(parser, "seconds");
    const bool toStandardOutput = file == QLatin1String("-");
    const TargetFile target(toStandardOutput ? QString() : file);

    Tape tape(model);
    Strokes strokes;
    {
        Session session(model, driver, nullptr, canvasFor(model, 100));
        if (recordOn(session, tape, strokes, Deadline(seconds)) == End::Cancelled)
            throw Ending{Cancelled, Text::tr("cancelled; nothing is written")};
    }
    if (tape.isEmpty())
        throw Ending{NothingWritten, Text::tr("the pen has done nothing; nothing is written")};
    const QByteArray text = QByteArray::fromStdString(tape.text());
    if (toStandardOutput)
        writeOutput(text, file);
    else
        target.write(text);
    print(stderr, Text::tr("%1, %2, %3 seconds", "points, strokes")
                          .arg(pointsText(strokes.points()), strokesText(strokes.strokes()),
                               numberText(strokes.seconds(), 1)) +
                      QLatin1Char('\n'));
    return Done;
}
