// What an on-screen sign object adds: a widget that shows the canvas and gives it its size.
#pragma once

#include "gui/repaintposter.h"
#include "signcore/signobject.h"

#include <QWidget>

// Base of the five widget classes. Lives on the GUI thread; QWidget comes first, so that the widget's address
// is the object's.
class CSignWidget : public QWidget, public CSignObject
{
public:
    ~CSignWidget() override;

    // Sizes the canvas before the host's window is shown; with a visible parent the resize event does that.
    void ResizeUnderInvisibleParentWidget(int nSignCanvasWidth, int nSignCanvasHeight);

protected:
    CSignWidget(QWidget* pParent, const CPadModel& Model, PfnMakeThread pfnKeyAction,
                PfnMakeThread pfnShowFPImage = nullptr);

    bool event(QEvent* pEvent) override;
    void mouseMoveEvent(QMouseEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;
    void resizeEvent(QResizeEvent* pEvent) override;

private:
    CRepaintPoster m_RepaintPoster{*this};
};
