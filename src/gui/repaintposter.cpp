#include "gui/repaintposter.h"

#include "sync/attempt.h"
#include "sync/tsan.h"

#include <QCoreApplication>

#include <utility>

#include <pthread.h>

namespace {

// Whether events may be posted. An application that is being destroyed takes its event dispatcher with it,
// under the hands of another thread that posts just then. s_Mutex protects the answer and is held while Qt
// posts an event. A driver's thread may outlive main().
class CPostingGate
{
public:
    // On the GUI thread, while there is an application.
    static void Open()
    {
        const CLocker Lock(s_Mutex.m_Mutex);
        if (s_bOpen)
            return;
        qAddPostRoutine(Close); // called at the beginning of the application's end
        s_bOpen = true;
        // Nobody posts while the process forks, so that the child finds no lock taken when a widget goes
        // there.
        [[maybe_unused]] static const int s_nResult =
            pthread_atfork([] { s_Mutex.m_Mutex.lock(); }, [] { s_Mutex.m_Mutex.unlock(); },
                           [] { s_Mutex.m_Mutex.unlock(); });
    }

    template <typename TPost>
    static void PassThrough(TPost Post)
    {
        const CLocker Lock(s_Mutex.m_Mutex);
        if (s_bOpen)
            Post();
    }

private:
    static void Close()
    {
        const CLocker Lock(s_Mutex.m_Mutex);
        s_bOpen = false;
    }

    static CStaticMutex s_Mutex;
    static bool s_bOpen;
};

constinit CStaticMutex CPostingGate::s_Mutex;
constinit bool CPostingGate::s_bOpen = false;

class CRepaintEvent final : public QEvent
{
public:
    CRepaintEvent(QEvent::Type eType, std::shared_ptr<CRepaintDebt> pDebt, unsigned nEvent)
        : QEvent(eType), m_pDebt(std::move(pDebt)), m_nEvent(nEvent)
    {
        TsanRelease(this);
    }
    // On the GUI thread; Qt's own queue orders this after the constructor.
    ~CRepaintEvent() override
    {
        TsanAcquire(this);
        m_pDebt->NoteEventGone(m_nEvent);
    }
    CRepaintEvent(const CRepaintEvent&) = delete;
    CRepaintEvent& operator=(const CRepaintEvent&) = delete;

private:
    const std::shared_ptr<CRepaintDebt> m_pDebt;
    const unsigned m_nEvent;
};

} // namespace

unsigned CRepaintDebt::Add(const QRect& rcChanged)
{
    const CLocker Lock(m_Mutex);
    m_rcDirty |= rcChanged;
    if (m_nUnderWay != 0)
        return 0;
    if (++m_nLast == 0)
        ++m_nLast;
    m_nUnderWay = m_nLast;
    return m_nUnderWay;
}

QRect CRepaintDebt::Take()
{
    const CLocker Lock(m_Mutex);
    m_nUnderWay = 0;
    return std::exchange(m_rcDirty, QRect());
}

void CRepaintDebt::NoteEventGone(unsigned nEvent)
{
    const CLocker Lock(m_Mutex);
    if (m_nUnderWay == nEvent)
        m_nUnderWay = 0;
}

CRepaintPoster::CRepaintPoster(QWidget& Widget) : m_Widget(Widget), m_pDebt(std::make_shared<CRepaintDebt>())
{
    EventType(); // registered before another thread needs it
    CPostingGate::Open();
}

QEvent::Type CRepaintPoster::EventType()
{
    static const auto s_eType = static_cast<QEvent::Type>(QEvent::registerEventType());
    return s_eType;
}

void CRepaintPoster::Repaint(const QRect& rcChanged)
{
    // Not by asking Qt, which would make itself a record of a thread that it does not know yet.
    if (std::this_thread::get_id() == m_WidgetThread) {
        if (!Attempt([&] { m_Widget.update(rcChanged); }))
            RepaintLater(rcChanged);
        return;
    }
    CPostingGate::PassThrough([&] {
        const unsigned nEvent = m_pDebt->Add(rcChanged);
        const auto Post = [&] {
            QCoreApplication::postEvent(&m_Widget, new CRepaintEvent(EventType(), m_pDebt, nEvent));
        };
        if (nEvent != 0 && !Attempt(Post))
            m_pDebt->NoteEventGone(nEvent);
    });
}

void CRepaintPoster::RepaintLater(const QRect& rcPart)
{
    if (const unsigned nEvent = m_pDebt->Add(rcPart))
        m_pDebt->NoteEventGone(nEvent);
}

bool CRepaintPoster::TakesEvent(const QEvent& Event)
{
    if (Event.type() != EventType())
        return false;
    Repaint(m_pDebt->Take());
    return true;
}
