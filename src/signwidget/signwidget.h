// What an on-screen sign object adds: a widget that shows the canvas and gives it its size.
#pragma once

#include "gui/repaintposter.h"
#include "signobject/signobject.h"

#include <QWidget>

#include <memory>

// Base of the five widget classes. Lives on the GUI thread; QWidget comes first, so that the widget's address
// is the object's.
class CSignWidget : public QWidget, public CSignObject
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

    // A part of the widget, since a pen may still sign while the widget's destructor runs, and what a virtual
    // call on the widget itself finds changes with each step of that.
    class CObserver final : public ICanvasObserver
    {
    public:
        explicit CObserver(CSignWidget& Widget) : m_Widget(Widget) {}
        void CanvasChanged(const QRect& rcChanged) override { m_Widget.m_RepaintPoster.Repaint(rcChanged); }

    private:
        CSignWidget& m_Widget;
    };

    CRepaintPoster m_RepaintPoster{*this};
    CObserver m_Observer{*this};
};

// The on-screen sign object of the model's own class. It belongs to its parent as soon as it is let go.
std::unique_ptr<CSignWidget> MakeSignWidget(const CPadModel& Model, QWidget* pParent);
