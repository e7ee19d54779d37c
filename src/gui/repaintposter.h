// Repainting of a widget whose picture changes on other threads.
#pragma once

#include "sync/mutex.h"

#include <QEvent>
#include <QRect>
#include <QWidget>

#include <memory>
#include <thread>

// What is still to be repainted, and which event is under way to have it done. Shared with that event: it may
// be deleted after the poster. Drawing threads add, the GUI thread takes; m_Mutex, a leaf lock, protects all.
class CRepaintDebt
{
public:
    // Gives the number of an event to be posted; 0 while one is under way.
    unsigned Add(const QRect& rcChanged);

    // The event has arrived.
    QRect Take();

    // The event is deleted, whether it arrived or somebody swallowed or removed it.
    void NoteEventGone(unsigned nEvent);

private:
    CMutex m_Mutex;
    QRect m_rcDirty;
    unsigned m_nUnderWay = 0; // 0 none
    unsigned m_nLast = 0;
};

// Has changed parts of a widget repainted. From another thread that is posted, once for all changes until
// the GUI thread gets to it. An event that does not arrive only delays: the next change posts another one.
class CRepaintPoster
{
public:
    // On the widget's thread.
    explicit CRepaintPoster(QWidget& Widget);

    // On any thread; only notes the part.
    void Repaint(const QRect& rcChanged);

    // Adds a part that could not be repainted to the next change.
    void RepaintLater(const QRect& rcPart);

    // To be offered every event of the widget: takes the posted one.
    bool TakesEvent(const QEvent& Event);

private:
    static QEvent::Type EventType();

    QWidget& m_Widget;
    const std::thread::id m_WidgetThread = std::this_thread::get_id();
    const std::shared_ptr<CRepaintDebt> m_pDebt;
};
