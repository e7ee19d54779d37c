// Repainting of a widget whose picture changes on other threads.
#pragma once

#include "signcore/signcanvas.h"
#include "sync/mutex.h"

#include <QEvent>
#include <QRect>
#include <QWidget>

// Has the changed parts of a canvas repainted. From another thread that is posted, once for all changes until
// the GUI thread gets to it.
class CRepaintPoster final : public ICanvasObserver
{
public:
    explicit CRepaintPoster(QWidget& Widget);

    void CanvasChanged(const QRect& rcChanged) override;

    // To be offered every event of the widget: takes the posted one.
    bool TakesEvent(const QEvent& Event);

private:
    static QEvent::Type EventType();
    QRect TakeDirty();

    QWidget& m_Widget;

    // Drawing threads add, the GUI thread takes; m_DirtyMutex, a leaf lock, protects it.
    CMutex m_DirtyMutex;
    QRect m_rcDirty;
};
