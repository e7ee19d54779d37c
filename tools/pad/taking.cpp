#include "taking.h"

#include "ending.h"
#include "failures.h"
#include "interrupts.h"
#include "program.h"
#include "signwindow.h"
#include "terminal.h"
#include "text.h"

#include <optional>

namespace {

using State = Signing::State;

std::optional<State> waitAtTerminal(Session& session, Signing& signing, const Deadline& deadline)
{
    constexpr int interval = 100; // ms between changes of the line
    Keyboard keyboard;
    StatusLine line(stderr);
    Presence presence(session);
    print(stderr, (keyboard.isThere()
                       ? Text::tr("Please sign on the pad %1, then touch its confirm key. Or press Enter "
                                  "here; Escape cancels.\n")
                       : Text::tr("Please sign on the pad %1, then touch its confirm key.\n"))
                      .arg(QLatin1String(session.model().m_pszName)));
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
            print(stderr, presence.isThere() ? Text::tr("The pad answers again.\n")
                                             : Text::tr("The pad does not answer.\n"));
        const Strokes& strokes = signing.strokes();
        line.show(progressText(deadline.seconds(), strokes, presence.isThere()));
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
        throw Failure{Text::tr("the pen cannot be set")};
    Signing signing(session, take);
    const std::optional<State> decided =
        window ? window->run(session, signing, deadline) : waitAtTerminal(session, signing, deadline);
    if (!decided && !session.isAnswering())
        throw Failure{Text::tr("the pad does not answer any more; nothing is saved")};
    if (!decided)
        throw Ending{TimedOut, Text::tr("nobody confirmed in time; nothing is saved")};
    if (*decided == State::Cancelled)
        throw Ending{Cancelled, Text::tr("cancelled; nothing is saved")};
    if (!signing.strokes().hasInk())
        throw Ending{NothingWritten, Text::tr("confirmed without a signature; nothing is saved")};
    return signing.strokes();
}
