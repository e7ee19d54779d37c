#include "signobj/ck421bsignobj.h"

#include "fingerprint/ck421bfpwidget.h"
#include "gui/guithread.h"
#include "threads/ck421bobj_doconfirmorcancelkeyactionthread.h"
#include "threads/ck421bobj_showfpimageondevicethread.h"

namespace {

// The size of a fresh widget without a parent, for the picture that stands in for one.
constexpr int kStandInWidth = 640;
constexpr int kStandInHeight = 480;

std::shared_ptr<CFPPicture> MakePicture()
{
    if (!IsGuiThread())
        return std::make_shared<CFPPicture>(kStandInWidth, kStandInHeight);
    // Freed through its picture when the sign object shuts down.
    return (new CK421BFPWidget(nullptr))->Picture();
}

} // namespace

CK421BSignObj::CK421BSignObj(int nWidth, int nHeight)
    : CSignObj(nWidth, nHeight, g_PadK421B, MakeThread<CK421BObj_DoConfirmOrCancelKeyActionThread>,
               MakeThread<CK421BObj_ShowFPImageOnDeviceThread>)
{
}

int CK421BSignObj::SetDisplayedFPImageAt(int nCanvasWidth, int nCanvasHeight, int nFPLeft, int nFPTop,
                                         int nFPWidth, int nFPHeight)
{
    const CLogLabel Label = Identity().Label("SetDisplayedFPImageAt()");
    SCR_LOG(
        Label,
        "<%ld>-Enter, nCanvasWidth=%d, nCanvasHeight=%d, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
        nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight);
    const std::shared_ptr<CFPPicture> pPicture = MakePicture();
    Canvas().SetFPPicture(pPicture); // first: its widget has no parent that would free it
    const int nPlacementResult =
        pPicture->SetDisplayedFPImageAt(nCanvasWidth, nCanvasHeight, {nFPLeft, nFPTop, nFPWidth, nFPHeight});
    return LeavePicturePlacement(Label, nPlacementResult, NFPPA_FP_ON_CANVAS_FROM_JS);
}
