#include "gui/repaintposter.h"

#include "sync/attempt.h"

#include <QCoreApplication>
#include <QThread>

#include <utility>

namespace {

class CRepaintEvent final : public QEvent
{
public:
    CRepaintEvent(QEvent::Type eType, std::shared_ptr<CRepaintDebt> pDebt, unsigned nEvent)
        : QEvent(eType), m_pDebt(std::move(pDebt)), m_nEvent(nEvent)
    {
    }
    ~CRepaintEvent() override { m_pDebt->NoteEventGone(m_nEvent); }
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
}

QEvent::Type CRepaintPoster::EventType()
{
    static const auto s_eType = static_cast<QEvent::Type>(QEvent::registerEventType());
    return s_eType;
}

void CRepaintPoster::Repaint(const QRect& rcChanged)
{
    if (QThread::currentThread() == m_Widget.thread()) {
        if (!Attempt([&] { m_Widget.update(rcChanged); }))
            RepaintLater(rcChanged);
        return;
    }
    const unsigned nEvent = m_pDebt->Add(rcChanged);
    const auto Post = [&] {
        QCoreApplication::postEvent(&m_Widget, new CRepaintEvent(EventType(), m_pDebt, nEvent));
    };
    if (nEvent != 0 && !Attempt(Post))
        m_pDebt->NoteEventGone(nEvent);
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
