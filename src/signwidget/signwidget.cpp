#include "signwidget/signwidget.h"

#include "canvas/drawing.h"
#include "fingerprint/ck421bfpwidget.h"
#include "signobject/drivercallbacks.h"
#include "signobject/liveobject.h"
#include "sync/attempt.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

CSignWidget::CSignWidget(QWidget* pParent, const CPadModel& Model)
    : QWidget(pParent),
      CSignObject({Model, EObjectKind::Widget}, DriverCallbacksOf({Model, EObjectKind::Widget}))
{
    SCR_LOG(Identity().ConstructorLabel(), "<%ld>-Enter...");
    Canvas().SetObserver(m_Observer);
    Canvas().clearCanvas(width(), height());
    StartThreads(static_cast<QWidget*>(this), width(), height());
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
        const QImage Exposed = Opaque(Canvas().CopyOf(rcExposed));
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
    m_RepaintPoster.Repaint(rect());
}

int CSignWidget::PlaceFingerprint(CFingerprint& Fingerprint, const CFPRequest& Request)
{
    const CLogLabel Label = Identity().Label("SetDisplayedFPImageAt()");
    QWidget* const pParentWidget = Request.m_pParentWidget;
    const auto& [nFPLeft, nFPTop, nFPWidth, nFPHeight] = Request.m_FPRect;
    SCR_LOG(Label, "<%ld>-Enter, pParentWidget=%lx, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
            AsHex(pParentWidget), nFPLeft, nFPTop, nFPWidth, nFPHeight);
    if (pParentWidget == parentWidget())
        return Fingerprint.PlaceOnCanvas(Label, RectFromHost(nFPLeft, nFPTop, nFPWidth, nFPHeight), size());
    if (!pParentWidget) {
        SCR_LOG(Label, "<%ld>-leave with ARI_INVALID_PARAMETERS due to pParentWidget == nullptr !");
        return ARI_INVALID_PARAMETERS;
    }
    auto* const pNewFPWidget = new CK421BFPWidget(pParentWidget);
    const std::shared_ptr<CFPPicture> pPicture = pNewFPWidget->Picture();
    Fingerprint.UsePicture(pPicture);
    // Checked against the fresh widget's own size, before it covers its parent.
    const int nPlacementResult = pPicture->SetDisplayedFPImageAt(pParentWidget, pNewFPWidget->width(),
                                                                 pNewFPWidget->height(), Request.m_FPRect);
    if (nPlacementResult == ARI_SUCCESS) {
        pNewFPWidget->setGeometry(0, 0, pParentWidget->width(), pParentWidget->height());
        pNewFPWidget->show();
    }
    return Fingerprint.LeavePicturePlacement(Label, nPlacementResult, NFPPA_SIGN_FP_DIFFERENT_WIDGET);
}
