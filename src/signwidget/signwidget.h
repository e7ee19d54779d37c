// What an on-screen sign object adds: a widget that shows the canvas and gives it its size.
#pragma once

#include "gui/repaintposter.h"
#include "signobject/signobject.h"

#include <QWidget>

#include <memory>

// Base of the five widget classes. Lives on the GUI thread; QWidget comes first, so that the widget's address
// is the object's.
class CSignWidget : public QWidget, public CSignObject, private ICanvasObserver
{
public:
    ~CSignWidget() override;

    // Sizes the canvas before the host's window is shown; with a visible parent the resize event does that.
    void ResizeUnderInvisibleParentWidget(int nSignCanvasWidth, int nSignCanvasHeight);

protected:
    CSignWidget(QWidget* pParent, const CPadModel& Model);

    bool event(QEvent* pEvent) override;
    void mouseMoveEvent(QMouseEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;
    void resizeEvent(QResizeEvent* pEvent) override;

private:
    // On this canvas if the request names this widget's own parent, else in a widget of its own that covers
    // the parent. On the GUI thread.
    int PlaceFingerprint(CFingerprint& Fingerprint, const CFPRequest& Request) override;

    void CanvasChanged(const QRect& rcChanged) override { m_RepaintPoster.Repaint(rcChanged); }

    CRepaintPoster m_RepaintPoster{*this};
};

// The on-screen sign object of the model's own class. It belongs to its parent as soon as it is let go.
std::unique_ptr<CSignWidget> MakeSignWidget(const CPadModel& Model, QWidget* pParent);
