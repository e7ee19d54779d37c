#include "fingerprint/fingerprint.h"

#include <optional>
#include <utility>

CFingerprint::CFingerprint(const CObjectIdentity& Identity, CSignCanvas& Canvas,
                           const CScriberaDriver& Driver, bool& bGoingToShutDown)
    : m_Identity(Identity), m_Canvas(Canvas), m_Merge(Identity),
      m_Intake(Identity, Canvas, m_Merge, Driver, bGoingToShutDown)
{
    Canvas.SetLayer(m_Merge);
}

int CFingerprint::PlaceOnCanvas(const CLogLabel& Label, const QRect& rcFP, const QSize& CanvasSize)
{
    const bool bInside = HasCornersWithin(rcFP, CanvasSize.width(), CanvasSize.height());
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        m_Merge.SetFPRect(rcFP);
        if (bInside)
            m_Merge.SetActionID(NFPPA_SIGN_FP_SAME_WIDGET);
    }
    return LeaveFPPlacement(Label, bInside);
}

void CFingerprint::UsePicture(std::shared_ptr<CFPPicture> pPicture)
{
    std::shared_ptr<CFPPicture> pReplaced;
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        pReplaced = m_Merge.SetPicture(std::move(pPicture));
    }
    if (pReplaced)
        pReplaced->ReleaseView();
}

int CFingerprint::LeavePicturePlacement(const CLogLabel& Label, int nPlacementResult, int nActionID)
{
    if (nPlacementResult != ARI_SUCCESS) {
        SCR_LOG(Label, "<%ld>-leave due to m_pNewFPWidget->SetDisplayedFPImageAt() failed, nResult=%d",
                nPlacementResult);
        return nPlacementResult;
    }
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        m_Merge.SetActionID(nActionID);
    }
    SCR_LOG(Label, "<%ld>-leave with ARI_SUCCESS...");
    return ARI_SUCCESS;
}

char* CFingerprint::GetFPImageBase64Data(const CSignExport& Export, int nImageTypeID, bool bFPImageOnly) const
{
    const CLogLabel Label = m_Identity.Label("GetFPImageBase64Data()");
    SCR_LOG(Label, "<%ld>-enter, nImageTypeID=%d, bFPImageOnly=%d", nImageTypeID, bFPImageOnly);
    int nActionID = NFPPA_NONE;
    QRect rcFP;
    std::shared_ptr<CFPPicture> pPicture;
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        nActionID = m_Merge.ActionID();
        rcFP = m_Merge.FPRect();
        pPicture = m_Merge.Picture();
    }
    const int nSeparateAction =
        m_Identity.IsWidget() ? NFPPA_SIGN_FP_DIFFERENT_WIDGET : NFPPA_FP_ON_CANVAS_FROM_JS;
    char* pFPImageBase64Data = nullptr;
    if (nActionID == nSeparateAction) {
        if (pPicture)
            pFPImageBase64Data = pPicture->EncodeBase64SignImage(Export.Clip(), bFPImageOnly, nImageTypeID);
    } else if (m_Identity.IsWidget()) {
        // In the middle of the signature the fingerprint has no rectangle of its own to be cut out.
        const bool bOnly = bFPImageOnly && nActionID == NFPPA_SIGN_FP_SAME_WIDGET;
        pFPImageBase64Data =
            Export.EncodeBase64SignImage(nImageTypeID, bOnly ? std::optional(rcFP) : std::nullopt);
    }
    SCR_LOG(Label, "<%ld>-leave with pFPImageBase64Data=%lx !", AsHex(pFPImageBase64Data));
    return pFPImageBase64Data;
}

bool CFingerprint::IsThere() const
{
    const CLocker Lock(m_Canvas.CanvasMutex());
    return m_Merge.Score() > 0;
}

QImage CFingerprint::PictureForSvg() const
{
    const CLocker Lock(m_Canvas.CanvasMutex());
    return m_Merge.Score() > 0 && m_Merge.IsPlacedOnCanvas() ? m_Merge.FPOnlyCanvas() : QImage();
}

void CFingerprint::Shutdown()
{
    std::shared_ptr<CFPPicture> pInUse;
    std::vector<std::shared_ptr<CFPPicture>> Pictures;
    {
        const CLocker Lock(m_Canvas.CanvasMutex());
        pInUse = m_Merge.Picture();
        Pictures = m_Merge.TakePictures();
    }
    if (pInUse) {
        pInUse->Clear();
        pInUse->Shutdown();
    }
    for (const std::shared_ptr<CFPPicture>& pPicture : Pictures)
        pPicture->ReleaseView();
}
