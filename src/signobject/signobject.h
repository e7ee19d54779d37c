// Everything that a sign object is, without a widget and without an event loop.
#pragma once

#include "canvas/signcanvas.h"
#include "driver/scriberadriver.h"
#include "export/signexport.h"
#include "fingerprint/fingerprint.h"
#include "ink/inkpoints.h"
#include "model/objectidentity.h"
#include "pen/keyactions.h"
#include "pen/penpipeline.h"
#include "pen/pensetup.h"
#include "pen/realtimedata.h"
#include "signobject/devicequeries.h"
#include "signobject/pointqueries.h"
#include "sync/atomicmember.h"
#include "threads/workerthread.h"

#include <atomic>
#include <memory>

class QWidget;

// Where a host wants the fingerprint.
struct CFPRequest
{
    QWidget* m_pParentWidget; // of an on-screen sign object
    int m_nCanvasWidth;       // of a windowless one
    int m_nCanvasHeight;
    int m_FPRect[4]; // left, top, width, height
};

// Puts the components together that do the work, the same for every model and kind; what differs is in the
// identity's table row. Operations that concern one component are that component's; those here concern
// several. The comments in the public header hold for them.
//
// Threads: the host's thread constructs, connects, sets, exports and shuts down; the driver's thread enters
// through RxSignPadRawData and RxSignPadFPRawData; the worker threads run the two passes. Hosts may call the
// operations from their callbacks, which run on any of these.
class CSignObject
{
public:
    CSignObject(const CSignObject&) = delete;
    CSignObject& operator=(const CSignObject&) = delete;
    virtual ~CSignObject();

    const CObjectIdentity& Identity() const { return m_Identity; }
    CKeyActions& KeyActions() { return m_KeyActions; }
    CRealTimeData& RealTimeData() { return m_RealTimeData; }
    const CPointQueries& PointQueries() const { return m_PointQueries; }
    const CDeviceQueries& DeviceQueries() const { return m_DeviceQueries; }
    CSignExport& Export() { return m_Export; }

    // Loads and starts the driver, accepts or refuses the pad and prepares it. False, with the reason, also
    // when a worker thread could not be had.
    bool IsDeviceConnected(CStartFailure& Failure);

    // Stops the worker threads and the driver, closes the object, unloads the driver and frees the points.
    // For the thread that holds the object's CEnding, once; not to be called on any of those threads.
    void Shutdown();
    bool AreWeGoingToShutDown() const { return LoadShared(m_bGoingToShutDown); }

    // The driver's callbacks.
    void RxSignPadRawData(int nX, int nY, int nP, int nPenStatus);
    void RxSignPadFPRawData(unsigned char* pucRawData, int nDataLength, int nScore);

    // Canvas and pen.
    int ClearDeviceContent();
    int OpenDeviceLCD(bool bOn);
    int SetDevicePenWidth(int nPenWidth);
    int SetDevicePenColor(int nR, int nG, int nB);
    int SetDevicePenStyle(bool bWithPressureValue);

    // The fingerprint, where the model has a reader.
    int SetDisplayedFPImageAt(const CFPRequest& Request);
    char* GetFPImageBase64Data(int nImageTypeID, bool bFPImageOnly) const;

protected:
    CSignObject(const CObjectIdentity& Identity, const CDriverCallbacks& Callbacks);

    // Second half of construction: creates the worker threads and starts them. pOwner is the object as its
    // class shows it in the log; nWidth and nHeight are the canvas size that the log shows.
    void StartThreads(const void* pOwner, int nWidth, int nHeight);

    // Fits the pen's mapping to a canvas of this size.
    void FitMapping(int nWidth, int nHeight) { m_PenSetup.FitCanvas(nWidth, nHeight, m_nMaxPressure); }

    CSignCanvas& Canvas() { return m_Canvas; }

private:
    // What the kinds do differently.
    virtual int PlaceFingerprint(CFingerprint& Fingerprint, const CFPRequest& Request) = 0;

    // One pass of each worker thread.
    EPass KeyActionPass();
    EPass ShowFPImagePass();
    void StopThread(std::unique_ptr<CWorkerThread>& pThread, const char* pszMember);

    const CObjectIdentity m_Identity;
    CSignCanvas m_Canvas;
    CPenSetup m_PenSetup;
    CInkPointList m_Points;
    CKeyActions m_KeyActions;
    CRealTimeData m_RealTimeData;
    CPenPipeline m_PenPipeline;
    CScriberaDriver m_Driver;
    const std::unique_ptr<CFingerprint> m_pFingerprint; // null on models without a fingerprint reader
    CSignExport m_Export;

    // Written by the host's thread, read by the driver's. Connected is set last, so that a sample finds
    // everything else ready.
    std::atomic<bool> m_bDeviceConnected{false};
    std::atomic<int> m_nMaxPressure;

    const CPointQueries m_PointQueries;
    const CDeviceQueries m_DeviceQueries;

    // Set by the host's thread, read by the worker threads and, through its address, by the driver: a plain
    // member that our side accesses atomically.
    bool m_bGoingToShutDown = false;

    // Of the thread that starts the object and of the one that ends it.
    bool m_bThreadsStarted = false;
    std::unique_ptr<CWorkerThread> m_pShowFPImageOnDeviceThread;
    std::unique_ptr<CWorkerThread> m_pDoConfirmOrCancelKeyActionThread;
};
