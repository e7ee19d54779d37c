#include "signobj/signobj.h"

#include "fingerprint/ck421bfpwidget.h"
#include "gui/guithread.h"
#include "signobject/drivercallbacks.h"

namespace {

// The size of a fresh widget without a parent, for the picture that stands in for one.
constexpr int kStandInWidth = 640;
constexpr int kStandInHeight = 480;

std::shared_ptr<CFPPicture> MakePicture()
{
    if (!IsGuiThread())
        return std::make_shared<CFPPicture>(kStandInWidth, kStandInHeight);
    // Freed through its picture when that is replaced or the sign object shuts down.
    return (new CK421BFPWidget(nullptr))->Picture();
}

} // namespace

CSignObj::CSignObj(int nWidth, int nHeight, const CPadModel& Model)
    : CSignObject({Model, EObjectKind::Windowless}, DriverCallbacksOf({Model, EObjectKind::Windowless}))
{
    SCR_LOG(Identity().ConstructorLabel(), "<%ld>-Enter, nWidth=%d, nHeight=%d", nWidth, nHeight);
    FitMapping(nWidth, nHeight);
    Canvas().clearCanvas(nWidth, nHeight);
    StartThreads(this, nWidth, nHeight);
}

int CSignObj::PlaceFingerprint(CFingerprint& Fingerprint, const CFPRequest& Request)
{
    const CLogLabel Label = Identity().Label("SetDisplayedFPImageAt()");
    const auto& [nFPLeft, nFPTop, nFPWidth, nFPHeight] = Request.m_FPRect;
    SCR_LOG(
        Label,
        "<%ld>-Enter, nCanvasWidth=%d, nCanvasHeight=%d, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
        Request.m_nCanvasWidth, Request.m_nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight);
    const std::shared_ptr<CFPPicture> pPicture = MakePicture();
    Fingerprint.UsePicture(pPicture); // first: its widget has no parent that would free it
    const int nPlacementResult =
        pPicture->SetDisplayedFPImageAt(Request.m_nCanvasWidth, Request.m_nCanvasHeight, Request.m_FPRect);
    return Fingerprint.LeavePicturePlacement(Label, nPlacementResult, NFPPA_FP_ON_CANVAS_FROM_JS);
}
