#include "taking.h"

#include "ending.h"
#include "failures.h"
#include "interrupts.h"
#include "program.h"
#include "signwindow.h"
#include "terminal.h"

#include <optional>

namespace {

using State = Signing::State;

std::optional<State> waitAtTerminal(Session& session, Signing& signing, const Deadline& deadline)
{
    constexpr int interval = 100; // ms between changes of the line
    Keyboard keyboard;
    StatusLine line(stderr);
    Presence presence(session);
    print(stderr,
          QStringLiteral("Please sign on the pad %1, then touch its confirm key.%2\n")
              .arg(QLatin1String(session.model().m_pszName),
                   keyboard.isThere() ? QStringLiteral(" Or press Enter here; Escape cancels.") : QString()));
    for (;;) {
        waitFor({session.descriptor(), keyboard.descriptor()}, deadline.wait(interval));
        if (const State state = signing.proceed(); state != State::Going)
            return state;
        switch (keyboard.read()) {
        case Keyboard::Key::Enter:
            signing.confirm();
            break;
        case Keyboard::Key::Escape:
            return State::Cancelled;
        case Keyboard::Key::None:
            break;
        }
        if (deadline.isOver())
            return std::nullopt;
        if (presence.look() && !isTerminal(stderr))
            print(stderr, presence.isThere() ? QStringLiteral("The pad answers again.\n")
                                             : QStringLiteral("The pad does not answer.\n"));
        const Strokes& strokes = signing.strokes();
        line.show(QStringLiteral("%1 s, %2 points, %3 strokes%4")
                      .arg(deadline.seconds(), 0, 'f', 1)
                      .arg(strokes.points())
                      .arg(strokes.strokes())
                      .arg(presence.isThere() ? QString() : QStringLiteral("; the pad does not answer")));
    }
}

} // namespace

Strokes takeSignature(const CPadModel& model, const Driver& driver, const QSize& canvas, const Pen& pen,
                      const Deadline& deadline, SignWindow* window, const Taking& take)
{
    // Used in a callback, when the pad is open.
    Session* open = nullptr;
    Session session(model, driver, window ? window->canvasParent() : nullptr, canvas, [&] { take(*open); });
    open = &session;
    if (!session.setPen(pen.width, pen.color))
        throw Failure{QStringLiteral("the pen cannot be set")};
    Signing signing(session, take);
    const std::optional<State> decided =
        window ? window->run(session, signing, deadline) : waitAtTerminal(session, signing, deadline);
    if (!decided && !session.isAnswering())
        throw Failure{QStringLiteral("the pad does not answer any more; nothing is saved")};
    if (!decided)
        throw Ending{TimedOut, QStringLiteral("nobody confirmed in time; nothing is saved")};
    if (*decided == State::Cancelled)
        throw Ending{Cancelled, QStringLiteral("cancelled; nothing is saved")};
    if (!signing.strokes().hasInk())
        throw Ending{NothingWritten, QStringLiteral("confirmed without a signature; nothing is saved")};
    return signing.strokes();
}
