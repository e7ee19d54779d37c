// The fingerprint's part in the signing canvas of a model that has a fingerprint reader.
#pragma once

#include "signcore/fppicture.h"
#include "signcore/objectidentity.h"

#include <QImage>
#include <QRect>
#include <QRectF>

#include <memory>
#include <vector>

// Keeps the two-colour fingerprint and where the host wants it, and merges it with the strokes. Everything
// here is protected by the canvas lock of the signing canvas that owns it.
//
// A merge is a bitwise AND of strokes and fingerprint: strokes stay where the fingerprint is white, white
// canvas turns red where it is red. So a picture of the canvas's size with nothing but the fingerprint in
// place, made once, lets a stroke segment merge just the pixels that it touched.
class CFingerprintMerge
{
public:
    explicit CFingerprintMerge(const CObjectIdentity& Identity);

    // The fingerprint in 208 x 288 pixels.
    const QImage& FPOnlyCanvas() const { return m_FPOnlyCanvas; }
    void SetFPOnlyCanvas(QImage Fingerprint);
    void ClearFPOnlyCanvas();

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
    void ClearPictures();

    // The next merge covers the whole canvas.
    void OweFullMerge() { m_bFullMergeOwed = true; }
    bool IsFullMergeOwed() const { return m_bFullMergeOwed; }

    // Whether the next merge leaves a fingerprint in the canvas.
    bool ShowsInCanvas() const;

    // Makes SignCanvas the merge of Strokes and the fingerprint, within rcTouched where that is enough.
    // Returns what was changed. Writes its lines to eFile. Another whole merge is owed when memory was short;
    // that may also throw.
    QRect MergeSignCanvasAndFPCanvas(QImage& SignCanvas, const QImage& Strokes, const QRect& rcTouched,
                                     ELogFile eFile);

private:
    QRectF TargetRect(const QSize& CanvasSize, const CLogLabel& Label, ELogFile eFile, bool& bHandedOn);
    // False when memory was short: a whole merge is still owed.
    bool MergeAll(QImage& SignCanvas, const QImage& Strokes, const QRectF& rcTargetFP);
    bool MergePart(QImage& SignCanvas, const QImage& Strokes, const QRect& rcPart) const;

    const CObjectIdentity& m_Identity;
    const QImage m_BlankFingerprint; // ready, so that a clear needs no memory
    QImage m_FPOnlyCanvas;
    bool m_bFPBlank = true; // the fingerprint is all white
    int m_nNewFPProcessActionID;
    QRect m_rcFP{QPoint(0, 0), QPoint(-1, -1)};
    std::vector<std::shared_ptr<CFPPicture>> m_Pictures; // the last one is in use
    bool m_bFullMergeOwed = true;
    QImage m_FPLayer; // the fingerprint in place on white, canvas size; null while nothing of it shows
};
