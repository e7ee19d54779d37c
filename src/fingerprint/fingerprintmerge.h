// The fingerprint's part in the signing canvas of a model that has a fingerprint reader.
#pragma once

#include "canvas/canvaslayer.h"
#include "fingerprint/fppicture.h"
#include "model/objectidentity.h"

#include <QImage>
#include <QRect>
#include <QRectF>

#include <memory>
#include <vector>

// Keeps the two-colour fingerprint, its score and where the host wants it, and merges it with the strokes.
// Everything here is protected by the lock of the canvas over which it lies.
//
// A merge is a bitwise AND of strokes and fingerprint: strokes stay where the fingerprint is white, white
// canvas turns red where it is red. So a picture of the canvas's size with nothing but the fingerprint in
// place, made once, lets a stroke segment merge just the pixels that it touched.
class CFingerprintMerge final : public ICanvasLayer
{
public:
    explicit CFingerprintMerge(const CObjectIdentity& Identity);

    // The fingerprint in 208 x 288 pixels, and its score; 0 without one.
    const QImage& FPOnlyCanvas() const { return m_FPOnlyCanvas; }
    int Score() const { return m_nFPScore; }

    // Takes a fingerprint, unless the canvas was cleared since Clears() gave this number: a clear in between
    // has taken it back already.
    void SetFingerprint(QImage Fingerprint, int nScore, int nClears);
    int Clears() const { return m_nClears; }

    // Placement. None of these merges; the next merge owes the whole canvas.
    int ActionID() const { return m_nNewFPProcessActionID; }
    void SetActionID(int nActionID);
    const QRect& FPRect() const { return m_rcFP; }
    void SetFPRect(const QRect& rcFP);

    // The separate picture, or null. One that is replaced is kept by a widget until the pictures are taken;
    // a windowless object has it given back.
    std::shared_ptr<CFPPicture> Picture() const;
    std::shared_ptr<CFPPicture> SetPicture(std::shared_ptr<CFPPicture> pPicture);
    std::vector<std::shared_ptr<CFPPicture>> TakePictures();

    // Whether the host wants the fingerprint on the signing canvas.
    bool IsPlacedOnCanvas() const;

    void CanvasResized() override;
    void CanvasCleared() override;
    bool ShowsInCanvas() const override { return !m_bFPBlank && IsPlacedOnCanvas(); }
    QRect Merge(QImage& SignCanvas, const QImage& Strokes, const QRect& rcTouched, ELogFile eFile) override;
    void OweFullMerge() override { m_bFullMergeOwed = true; }
    bool IsFullMergeOwed() const override { return m_bFullMergeOwed; }

private:
    QRectF TargetRect(const QSize& CanvasSize, const CLogLabel& Label, ELogFile eFile, bool& bHandedOn);
    // False when memory was short: a whole merge is still owed.
    bool MergeAll(QImage& SignCanvas, const QImage& Strokes, const QRectF& rcTargetFP);
    bool MergePart(QImage& SignCanvas, const QImage& Strokes, const QRect& rcPart) const;

    const CObjectIdentity& m_Identity;
    const QImage m_BlankFingerprint; // ready, so that a clear needs no memory
    QImage m_FPOnlyCanvas;
    bool m_bFPBlank = true; // the fingerprint is all white
    int m_nFPScore = 0;
    int m_nClears = 0;
    int m_nNewFPProcessActionID;
    QRect m_rcFP{QPoint(0, 0), QPoint(-1, -1)};
    std::vector<std::shared_ptr<CFPPicture>> m_Pictures; // the last one is in use
    bool m_bFullMergeOwed = true;
    QImage m_FPLayer; // the fingerprint in place on white, canvas size; null while nothing of it shows
};
