// The picture of a fingerprint that is shown or held apart from the signing canvas.
#pragma once

#include "canvas/canvasobserver.h"
#include "canvas/sharedimage.h"
#include "export/boundingbox.h"
#include "sync/mutex.h"

#include <QImage>
#include <QObject>
#include <QRect>

#include <thread>

// Size of a fingerprint in pixels.
constexpr int kFPWidth = 208;
constexpr int kFPHeight = 288;

// Whether both corners, taken literally, lie within a canvas of this size.
bool HasCornersWithin(const QRect& rcRect, int nWidth, int nHeight);

// Writes the leave line of a placement that was or was not inside, and gives its result.
int LeaveFPPlacement(const CLogLabel& Label, bool bInside);

// What a CK421BFPWidget shows, and what stands in for one where no widget can be made. Shared by its widget
// and its sign object: the GUI thread paints and may destroy the widget at any time, the display and driver
// threads update, the host's threads export. m_Mutex protects all members; a change is noted for repainting
// while it is held.
class CFPPicture
{
public:
    // A white picture of this size.
    CFPPicture(int nWidth, int nHeight);

    // Connects the widget that shows the picture. It gets rid of itself when the sign object shuts down;
    // Observer is told of changes while the widget is visible.
    void Attach(QObject& View, ICanvasObserver& Observer);
    void SetVisible(bool bVisible);

    // Called by the dying widget: the picture counts as gone from here on.
    void DetachView();
    bool IsGone() const;

    // Ends the widget: at once where that is possible, else through its event loop. To be called without
    // locks.
    void ReleaseView();

    // Placement in a widget of the given own size, and on a canvas of the host's size, which the picture then
    // gets.
    int SetDisplayedFPImageAt(const void* pParentWidget, int nOwnWidth, int nOwnHeight,
                              const int (&FPRect)[4]);
    int SetDisplayedFPImageAt(int nCanvasWidth, int nCanvasHeight, const int (&FPRect)[4]);

    // Draws the fingerprint where it was placed. Writes its lines where its caller does. False when memory
    // was short: nothing is drawn then.
    bool UpdateFPImage(const QImage& Image, ELogFile eFile);
    void Clear();
    void Shutdown();

    // Base64 text of the picture; see the exported function.
    char* EncodeBase64SignImage(const CClipSettings& Clip, bool bFPImageOnly, int nImageTypeID);

    // A copy of the part of the picture that lies in the rectangle, for painting.
    QImage CopyOf(const QRect& rcPart) const;

private:
    static CLogLabel Label(const char* pszFunction) { return {"CK421BFPWidget", "::", pszFunction}; }

    // Has the part repainted if the picture is seen; the caller holds the mutex.
    void NotifyChanged(const QRect& rcChanged) const;

    mutable CMutex m_Mutex;
    QSize m_Size; // of m_FPCanvas, which is null while there is no memory for it
    QImage m_FPCanvas;
    CImageWitness m_Witness;
    QRect m_rcFP{QPoint(0, 0), QPoint(-1, -1)};
    qint64 m_nDrawnKey = 0; // identifies the fingerprint that is drawn; 0 none

    QObject* m_pView = nullptr;
    std::thread::id m_ViewThread; // on which it was made
    ICanvasObserver* m_pObserver = nullptr;
    bool m_bVisible = false;
    bool m_bGone = false;
};
