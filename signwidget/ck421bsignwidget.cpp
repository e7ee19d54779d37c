#include "signwidget/ck421bsignwidget.h"

#include "fingerprint/ck421bfpwidget.h"
#include "threads/ck421bwidget_doconfirmorcancelkeyactionthread.h"
#include "threads/ck421bwidget_showfpimageondevicethread.h"

CK421BSignWidget::CK421BSignWidget(QWidget* parent)
    : CSignWidget(parent, g_PadK421B, MakeThread<CK421BWidget_DoConfirmOrCancelKeyActionThread>,
                  MakeThread<CK421BWidget_ShowFPImageOnDeviceThread>)
{
}

int CK421BSignWidget::SetDisplayedFPImageAt(QWidget* pParentWidget, int nFPLeft, int nFPTop, int nFPWidth,
                                            int nFPHeight)
{
    const CLogLabel Label = Identity().Label("SetDisplayedFPImageAt()");
    SCR_LOG(Label, "<%ld>-Enter, pParentWidget=%lx, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
            AsHex(pParentWidget), nFPLeft, nFPTop, nFPWidth, nFPHeight);
    if (pParentWidget == parentWidget()) {
        const QRect rcFP = RectFromHost(nFPLeft, nFPTop, nFPWidth, nFPHeight);
        Canvas().SetFPRect(rcFP); // also when it is refused
        const bool bInside = HasCornersWithin(rcFP, width(), height());
        if (bInside)
            Canvas().SetFPAction(NFPPA_SIGN_FP_SAME_WIDGET);
        return LeaveFPPlacement(Label, bInside);
    }
    if (!pParentWidget) {
        SCR_LOG(Label, "<%ld>-leave with ARI_INVALID_PARAMETERS due to pParentWidget == nullptr !");
        return ARI_INVALID_PARAMETERS;
    }
    auto* const pNewFPWidget = new CK421BFPWidget(pParentWidget);
    const std::shared_ptr<CFPPicture> pPicture = pNewFPWidget->Picture();
    Canvas().SetFPPicture(pPicture);
    // Checked against the fresh widget's own size, before it covers its parent.
    const int nPlacementResult = pPicture->SetDisplayedFPImageAt(
        pParentWidget, pNewFPWidget->width(), pNewFPWidget->height(), {nFPLeft, nFPTop, nFPWidth, nFPHeight});
    if (nPlacementResult == ARI_SUCCESS) {
        pNewFPWidget->setGeometry(0, 0, pParentWidget->width(), pParentWidget->height());
        pNewFPWidget->show();
    }
    return LeavePicturePlacement(Label, nPlacementResult, NFPPA_SIGN_FP_DIFFERENT_WIDGET);
}
