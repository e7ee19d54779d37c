// What a host takes away of a signature, and what it brings back.
#pragma once

#include "canvas/signcanvas.h"
#include "export/boundingbox.h"
#include "export/wholefile.h"
#include "ink/inkpoints.h"
#include "model/objectidentity.h"
#include "pen/pensetup.h"
#include "sync/mutex.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>

#include <functional>
#include <optional>

// What a fingerprint adds to the exports of a signature. This one adds nothing.
class CFingerprintInExport
{
public:
    // Whether a fingerprint was taken; alone it is enough for a picture.
    virtual bool IsThere() const { return false; }

    // The fingerprint as the signature's vector form shows it; null when it shows none.
    virtual QImage PictureForSvg() const { return {}; }

protected:
    ~CFingerprintInExport() = default;
};

// The export and import of one sign object. Every export works on a snapshot of the canvas and of the points
// and holds no lock meanwhile, so that the pen goes on.
//
// The host's threads call it, also from its callbacks. m_ClipMutex, a leaf lock, protects the clip settings;
// the decoded points lock themselves.
class CSignExport
{
public:
    CSignExport(const CObjectIdentity& Identity, const CSignCanvas& Canvas, const CInkPointList& Points,
                const CPenSetup& PenSetup, const CFingerprintInExport& Fingerprint)
        : m_Identity(Identity), m_Canvas(Canvas), m_Points(Points), m_PenSetup(PenSetup),
          m_Fingerprint(Fingerprint)
    {
    }

    // Host's operations; see the exported functions.
    int SetSaveClipImageMargin(bool bClipImage, int nClipMarginX, int nClipMarginY);
    int SaveDrawingImage(int nImageTypeID, const wchar_t* pImageFilePath, int nDPI) const;
    char* Base64Encode(int nImageTypeID) const;
    char* Base64EncodeEx(int nImageTypeID, bool bEnableTransparentBackground) const;
    char* GetSVGImageBase64Data() const;
    int Base64Decode(int nImageTypeID, const char* pEncodedData, const wchar_t* pImageFilePath);
    int GetTotalDecodeInkPointsNumber() const;
    int GetDecodePACKETS(int nIndex, int nTypeID) const;

    // Of every sign class, though no exported function leads there.
    QRect CheckSignImageBoundingBox() const;
    void MakeAsTransparentImage(QImage& Image, const QColor& Color) const;

    // A clear of the pad ends clipping and keeps the margins.
    void EndClipping();
    CClipSettings Clip() const;

    // Base64 text of the clipped canvas, or, without clipping, of the part of it in rcPart or of all of it.
    char* EncodeBase64SignImage(int nImageTypeID, const std::optional<QRect>& rcPart = {}) const;

    // Frees the decoded points.
    void Shutdown() { m_DecodedPoints.Clear(); }

private:
    // What an export takes of a canvas.
    struct CSource
    {
        QImage m_Image;                // the canvas or the clipped part of it; null when nothing is left
        std::optional<QRect> m_rcClip; // set when clipping

        // Whether there was no memory for the part.
        bool IsRefused() const { return m_Image.isNull() && m_rcClip && m_rcClip->isValid(); }
    };

    QRect ScanInk(const CSharedImage& Canvas, const CClipSettings& Clip) const;
    CSource TakeSource(const CSharedImage& Canvas) const;
    bool SaveDrawingImageAsPDFFile(const QImage& Image, const QString& strPath, int nDPI) const;
    bool SaveDrawingImageAsSVGFile(const CSource& Source, int nDPI,
                                   const std::function<bool(const FnHandOver&)>& Write) const;
    char* EncodeBase64SignImageEx(int nImageTypeID, bool bEnableTransparentBackground) const;
    template <typename TEncodeImage>
    char* EncodeByType(const CLogLabel& Label, int nImageTypeID, TEncodeImage EncodeSignImage) const;

    const CObjectIdentity& m_Identity;
    const CSignCanvas& m_Canvas;
    const CInkPointList& m_Points;
    const CPenSetup& m_PenSetup;
    const CFingerprintInExport& m_Fingerprint;

    mutable CMutex m_ClipMutex;
    CClipSettings m_Clip;

    CInkPointList m_DecodedPoints;
};
