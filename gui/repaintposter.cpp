#include "gui/repaintposter.h"

#include <QCoreApplication>
#include <QThread>

#include <utility>

CRepaintPoster::CRepaintPoster(QWidget& Widget) : m_Widget(Widget)
{
    EventType(); // registered before another thread needs it
}

QEvent::Type CRepaintPoster::EventType()
{
    static const auto s_eType = static_cast<QEvent::Type>(QEvent::registerEventType());
    return s_eType;
}

void CRepaintPoster::CanvasChanged(const QRect& rcChanged)
{
    if (QThread::currentThread() == m_Widget.thread()) {
        m_Widget.update(rcChanged);
        return;
    }
    {
        const CLocker Lock(m_DirtyMutex);
        const bool bPosted = !m_rcDirty.isNull();
        m_rcDirty |= rcChanged;
        if (bPosted)
            return;
    }
    QCoreApplication::postEvent(&m_Widget, new QEvent(EventType()));
}

bool CRepaintPoster::TakesEvent(const QEvent& Event)
{
    if (Event.type() != EventType())
        return false;
    m_Widget.update(TakeDirty());
    return true;
}

QRect CRepaintPoster::TakeDirty()
{
    const CLocker Lock(m_DirtyMutex);
    return std::exchange(m_rcDirty, QRect());
}
