// The fingerprint of a sign object, on models with a reader.
#pragma once

#include "canvas/signcanvas.h"
#include "driver/scriberadriver.h"
#include "export/signexport.h"
#include "fingerprint/fingerprintmerge.h"
#include "fingerprint/fpintake.h"
#include "fingerprint/fppicture.h"

#include <memory>

// The one door to the room, but for the picture's widget, which the kind of sign object makes: intake,
// picture, placement, merge and export. A sign object has one or none.
//
// The driver's thread takes fingerprints in, the display thread shows them on the pad, the host's threads
// place and export. What is merged into the canvas, score and placement among it, is protected by the canvas
// lock; the intake has a lock of its own for the picture that it hands over.
//
// What is taken in, under the canvas lock:
//
//                a better score: picture and score taken
//     none ---------------------------------------------------> taken --.  a better score; a resize, which
//      ^                                                          |  ^  |  whitens it and keeps the score
//      |                                                          |  '--'
//      '----------------------------------------------------------'
//                clear: picture and score gone
//
// And its way to the pad's own display, which a clear does not stop:
//
//                a better score              pass of the display thread
//     nothing -------------------> waiting ---------------------------> in transfer
//      ^  ^                         |   ^                                    |
//      |  |  no entry point for it  |   |  a better score                    |  the pad has answered
//      |  '-------------------------'   |                                    v
//      |                                '-------------------------------- to merge --.  out of memory
//      |                                                                     |   ^   |
//      |                                                                     |   '---'
//      '---------------------------------------------------------------------'
//                merged, or out of memory for the hundredth time
//
// A better score during a transfer waits for the pass after it. A merge that was given up is left to the next
// segment.
class CFingerprint final : public CFingerprintInExport
{
public:
    // bGoingToShutDown is the object's shut-down flag: the driver polls it during a transfer.
    CFingerprint(const CObjectIdentity& Identity, CSignCanvas& Canvas, const CScriberaDriver& Driver,
                 bool& bGoingToShutDown);

    // The driver's callback: a raw image of 208 x 288 grey bytes, row by row, and its score.
    void RxSignPadFPRawData(const unsigned char* pucRawData, int nDataLength, int nScore)
    {
        m_Intake.RxSignPadFPRawData(pucRawData, nDataLength, nScore);
    }

    // Rung when there is something for the display thread.
    CWorkBell& Bell() { return m_Intake.Bell(); }

    // The two steps of the display thread's loop. The second has something to do only while HasWork().
    void CheckIfAnyNewFPImageRawDataOnDeviceAvailable()
    {
        m_Intake.CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
    }
    bool HasWork() const { return m_Intake.HasWork(); }
    void ProcessShowFPImgaeRawDataOnDevice() { m_Intake.ProcessShowFPImgaeRawDataOnDevice(); }

    // Placement on the signing canvas of the given size. The rectangle counts also when it is refused.
    int PlaceOnCanvas(const CLogLabel& Label, const QRect& rcFP, const QSize& CanvasSize);

    // Placement in a separate picture: takes it in use, in place of an earlier one, and, when it was placed,
    // takes up its action.
    void UsePicture(std::shared_ptr<CFPPicture> pPicture);
    int LeavePicturePlacement(const CLogLabel& Label, int nPlacementResult, int nActionID);

    // See the exported function.
    char* GetFPImageBase64Data(const CSignExport& Export, int nImageTypeID, bool bFPImageOnly) const;

    bool IsThere() const override;
    QImage PictureForSvg() const override;

    // Ends the separate pictures. Nobody else works on the object any more.
    void Shutdown();

private:
    const CObjectIdentity& m_Identity;
    CSignCanvas& m_Canvas;
    CFingerprintMerge m_Merge; // protected by the canvas lock
    CFingerprintIntake m_Intake;
};
