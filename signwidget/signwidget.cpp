#include "signwidget/signwidget.h"

#include "signcore/liveobject.h"
#include "sync/attempt.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

CSignWidget::CSignWidget(QWidget* pParent, const CPadModel& Model, PfnMakeThread pfnKeyAction,
                         PfnMakeThread pfnShowFPImage)
    : QWidget(pParent), CSignObject(Model, EObjectKind::Widget)
{
    SCR_LOG(Identity().ConstructorLabel(), "<%ld>-Enter...");
    Canvas().clearCanvas(width(), height());
    Canvas().SetObserver(&m_RepaintPoster);
    StartThreads(static_cast<QWidget*>(this), width(), height(), pfnKeyAction, pfnShowFPImage);
}

CSignWidget::~CSignWidget()
{
    // A host may close its window, and the widget with it, without ending the device first.
    const CLiveObject::CEnding Ending(*this);
    if (Ending.Object())
        Shutdown();
}

void CSignWidget::ResizeUnderInvisibleParentWidget(int nSignCanvasWidth, int nSignCanvasHeight)
{
    const CLogLabel Label = Identity().Label("ResizeUnderInvisibleParentWidget()");
    const bool bParentVisible = parentWidget() && parentWidget()->isVisible();
    SCR_LOG(Label, "<%ld>Enter, width=%d, height=%d, parentWidget()->isVisible()=%d", width(), height(),
            bParentVisible);
    SCR_LOG(Label, "<%ld>nSignCanvasWidth=%d, nSignCanvasHeight=%d", nSignCanvasWidth, nSignCanvasHeight);
    if (!bParentVisible) {
        resize(nSignCanvasWidth, nSignCanvasHeight);
        SCR_LOG(Label, "<%ld>resize(nSignCanvasWidth, nSignCanvasHeight)...");
        FitMapping(width(), height());
        Canvas().clearCanvas(width(), height());
        SCR_LOG(Label, "<%ld>width=%d, height=%d", width(), height());
    }
    SCR_LOG(Label, "<%ld>-leave !");
}

bool CSignWidget::event(QEvent* pEvent)
{
    return m_RepaintPoster.TakesEvent(*pEvent) || QWidget::event(pEvent);
}

void CSignWidget::mouseMoveEvent(QMouseEvent* pEvent)
{
    if (pEvent->buttons() & Qt::LeftButton)
        repaint();
}

void CSignWidget::paintEvent(QPaintEvent* pEvent)
{
    const CLogLabel Label = Identity().Label("paintEvent()");
    SCR_LOG_INTHREAD(Label, "<%ld>-enter...");
    QWidget::paintEvent(pEvent);
    const QRect rcExposed = pEvent->rect();
    const auto Paint = [&] {
        const QImage Exposed = Canvas().CopyOf(rcExposed);
        QPainter Painter(this);
        Painter.drawImage(rcExposed.topLeft(), Exposed);
    };
    if (!Attempt(Paint))
        m_RepaintPoster.RepaintLater(rcExposed);
    SCR_LOG_INTHREAD(Label, "<%ld>-leave !");
}

void CSignWidget::resizeEvent(QResizeEvent* /*pEvent*/)
{
    SCR_LOG(Identity().Label("resizeEvent()"), "<%ld>-Enter, width=%d, height=%d", width(), height());
    FitMapping(width(), height());
    Canvas().Resize(width(), height());
    m_RepaintPoster.CanvasChanged(rect());
}
