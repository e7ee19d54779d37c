#include "fingerprint/fppicture.h"

#include "canvas/drawing.h"
#include "export/imagefiles.h"
#include "scriberasdk.h"
#include "sync/attempt.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

std::int64_t WidthOf(const QRect& rcRect)
{
    return std::int64_t{rcRect.right()} - rcRect.left() + 1;
}

std::int64_t HeightOf(const QRect& rcRect)
{
    return std::int64_t{rcRect.bottom()} - rcRect.top() + 1;
}

} // namespace

bool HasCornersWithin(const QRect& rcRect, int nWidth, int nHeight)
{
    const auto IsWithin = [=](const QPoint& Corner) {
        return Corner.x() >= 0 && Corner.x() < nWidth && Corner.y() >= 0 && Corner.y() < nHeight;
    };
    return IsWithin(rcRect.topLeft()) && IsWithin(rcRect.bottomRight());
}

CFPPicture::CFPPicture(int nWidth, int nHeight)
    : m_Size(UsableCanvasSize(nWidth, nHeight)), m_FPCanvas(BlankCanvas(nWidth, nHeight))
{
    SCR_LOG(Label("CK421BFPWidget()"), "<%ld>-Enter...");
    SCR_LOG(Label("CK421BFPWidget()"), "<%ld>-leave !");
}

void CFPPicture::Attach(QObject& View, ICanvasObserver& Observer)
{
    const CLocker Lock(m_Mutex);
    m_pView = &View;
    m_ViewThread = std::this_thread::get_id();
    m_pObserver = &Observer;
}

void CFPPicture::SetVisible(bool bVisible)
{
    const CLocker Lock(m_Mutex);
    m_bVisible = bVisible;
}

void CFPPicture::DetachView()
{
    const CLocker Lock(m_Mutex);
    m_pView = nullptr;
    m_pObserver = nullptr;
    m_bVisible = false;
    m_bGone = true;
}

bool CFPPicture::IsGone() const
{
    const CLocker Lock(m_Mutex);
    return m_bGone;
}

void CFPPicture::ReleaseView()
{
    QObject* pToDelete = nullptr;
    {
        const CLocker Lock(m_Mutex);
        if (!m_pView)
            return;
        // Without a parent nobody else would free it, and its event loop may never run. If Qt has no memory
        // to delete it later, it stays until its parent goes.
        if (!m_pView->parent() && m_ViewThread == std::this_thread::get_id())
            pToDelete = m_pView;
        else
            Attempt([this] { m_pView->deleteLater(); });
        m_pView = nullptr;
    }
    delete pToDelete;
}

int LeaveFPPlacement(const CLogLabel& Label, bool bInside)
{
    if (!bInside) {
        SCR_LOG(Label, "<%ld>-leave with ARI_INVALID_PARAMETERS due to invalid nFPLeft, nFPTop, nFPWidth, "
                       "nFPHeight !");
        return ARI_INVALID_PARAMETERS;
    }
    SCR_LOG(Label, "<%ld>-leave with ARI_SUCCESS...");
    return ARI_SUCCESS;
}

int CFPPicture::SetDisplayedFPImageAt(const void* pParentWidget, int nOwnWidth, int nOwnHeight,
                                      const int (&FPRect)[4])
{
    const CLogLabel L = Label("SetDisplayedFPImageAt()");
    SCR_LOG(L, "<%ld>-Enter, pParentWidget=%lx, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
            AsHex(pParentWidget), FPRect[0], FPRect[1], FPRect[2], FPRect[3]);
    const QRect rcFP = RectFromHost(FPRect[0], FPRect[1], FPRect[2], FPRect[3]);
    {
        const CLocker Lock(m_Mutex);
        m_rcFP = rcFP;
        m_nDrawnKey = 0;
    }
    return LeaveFPPlacement(L, HasCornersWithin(rcFP, nOwnWidth, nOwnHeight));
}

int CFPPicture::SetDisplayedFPImageAt(int nCanvasWidth, int nCanvasHeight, const int (&FPRect)[4])
{
    const CLogLabel L = Label("SetDisplayedFPImageAt()");
    SCR_LOG(
        L, "<%ld>-Enter, nCanvasWidth=%d, nCanvasHeight=%d, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
        nCanvasWidth, nCanvasHeight, FPRect[0], FPRect[1], FPRect[2], FPRect[3]);
    const QRect rcFP = RectFromHost(FPRect[0], FPRect[1], FPRect[2], FPRect[3]);
    const bool bInside = HasCornersWithin(rcFP, nCanvasWidth, nCanvasHeight);
    {
        const CLocker Lock(m_Mutex);
        m_rcFP = rcFP;
        m_nDrawnKey = 0;
        if (bInside) {
            m_Witness.NoteWrite();
            m_Size = UsableCanvasSize(nCanvasWidth, nCanvasHeight);
            m_FPCanvas = BlankCanvas(nCanvasWidth, nCanvasHeight);
        }
    }
    return LeaveFPPlacement(L, bInside);
}

bool CFPPicture::UpdateFPImage(const QImage& Image, ELogFile eFile)
{
    const CLogLabel L = Label("UpdateFPImage()");
    SCR_LOG_TO(eFile, L, "<%ld>-enter...");
    const CLocker Lock(m_Mutex);
    const QRectF rcTargetFP(m_rcFP.left(), m_rcFP.top(), static_cast<double>(WidthOf(m_rcFP)),
                            static_cast<double>(HeightOf(m_rcFP)));
    const QRectF rcSourceFP(0, 0, kFPWidth, kFPHeight);
    SCR_LOG_TO(eFile, L, "<%ld>-rcTargetFP.left=%f, top=%f, width=%f, height=%f", rcTargetFP.left(),
               rcTargetFP.top(), rcTargetFP.width(), rcTargetFP.height());
    SCR_LOG_TO(eFile, L, "<%ld>-rcSourceFP.left=%f, top=%f, width=%f, height=%f", rcSourceFP.left(),
               rcSourceFP.top(), rcSourceFP.width(), rcSourceFP.height());
    // A fingerprint is handed over after every stroke segment; drawing the same one again changes nothing.
    bool bDrawn = m_Size.isEmpty() || m_nDrawnKey == Image.cacheKey();
    if (!bDrawn) {
        m_Witness.NoteWriteInPlace(m_FPCanvas);
        if (m_FPCanvas.isNull())
            m_FPCanvas = BlankCanvas(m_Size.width(), m_Size.height());
        const auto Draw = [&](QPainter& Painter) {
            Painter.setCompositionMode(QPainter::CompositionMode_Source);
            Painter.drawImage(rcTargetFP, Image, rcSourceFP);
        };
        bDrawn = MakeWritable(m_FPCanvas) && DrawInBandsOn(m_FPCanvas, Draw);
        if (bDrawn) {
            m_nDrawnKey = Image.cacheKey();
            NotifyChanged(m_FPCanvas.rect()); // a placement may draw outside of its own rectangle
        }
    }
    if (m_bVisible)
        SCR_LOG_TO(eFile, L, "<%ld>-b4 call update()...");
    SCR_LOG_TO(eFile, L, "<%ld>-leave...");
    return bDrawn;
}

void CFPPicture::Clear()
{
    const CLogLabel L = Label("Clear()");
    SCR_LOG(L, "<%ld>-enter...");
    {
        const CLocker Lock(m_Mutex);
        m_Witness.NoteWrite();
        Whiten(m_FPCanvas, m_Witness);
        m_nDrawnKey = 0;
        NotifyChanged(m_FPCanvas.rect());
    }
    SCR_LOG(L, "<%ld>-leave !");
}

void CFPPicture::Shutdown()
{
    SCR_LOG(Label("Shutdown()"), "<%ld>-Enter...");
    Clear();
    SCR_LOG(Label("Shutdown()"), "<%ld>-leave !");
}

char* CFPPicture::EncodeBase64SignImage(const CClipSettings& Clip, bool bFPImageOnly, int nImageTypeID)
{
    const CLogLabel L = Label("EncodeBase64SignImage()");
    SCR_LOG(L,
            "<%ld>-enter, bClipImage=%d, nClipMarginX=%d, nClipMarginY=%d, bFPImageOnly=%d, nImageTypeID=%d",
            Clip.m_bClipImage, Clip.m_nClipMarginX, Clip.m_nClipMarginY, bFPImageOnly, nImageTypeID);
    const auto TakeSnapshot = [this](QRect& rcFP) -> CSharedImage {
        const CLocker Lock(m_Mutex);
        m_Witness.NoteRead();
        rcFP = m_rcFP;
        return {m_FPCanvas, m_FPCanvas.rect(), m_Witness};
    };
    QRect rcFP;
    const CSharedImage Picture = TakeSnapshot(rcFP);
    QImage Source = Picture.Image();
    if (Clip.m_bClipImage)
        Source = CopyOfRect(Source, CheckSignImageBoundingBox(Source, Picture.InkArea(), Clip,
                                                              Label("CheckSignImageBoundingBox()")));
    else if (bFPImageOnly)
        Source = CopyOfRect(Source, rcFP);
    char* const pEncoded = TextForHost(EncodeImage(Source, nImageTypeID, true).toBase64());
    SCR_LOG(L, "<%ld>-leave with pEncodeBase64Image=%lx !", AsHex(pEncoded));
    return pEncoded;
}

QImage CFPPicture::CopyOf(const QRect& rcPart) const
{
    const CLocker Lock(m_Mutex);
    m_Witness.NoteRead();
    return CopyInside(m_FPCanvas, rcPart);
}

void CFPPicture::NotifyChanged(const QRect& rcChanged) const
{
    if (m_bVisible && m_pObserver)
        m_pObserver->CanvasChanged(rcChanged);
}
