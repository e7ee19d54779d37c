// Everything that a sign object is, without a widget and without an event loop.
#pragma once

#include "ink/inkpoints.h"
#include "signcore/boundingbox.h"
#include "signcore/fpintake.h"
#include "signcore/fppicture.h"
#include "signcore/keyactions.h"
#include "signcore/objectidentity.h"
#include "signcore/penpipeline.h"
#include "signcore/pensetup.h"
#include "signcore/realtimedata.h"
#include "signcore/scriberadriver.h"
#include "signcore/signcanvas.h"
#include "signcore/signexport.h"
#include "signcore/wholefile.h"
#include "sync/sdkthread.h"

#include <functional>
#include <memory>

class CSignObject;

// Makes a worker thread of a sign object. pOwner is the object as its class shows it in the log.
using PfnMakeThread = std::unique_ptr<CSdkThread> (*)(void* pOwner, CSignObject& Object);

template <typename TThread>
std::unique_ptr<CSdkThread> MakeThread(void* pOwner, CSignObject& Object)
{
    return std::make_unique<TThread>(pOwner, Object);
}

// The operations that the exported functions reach, the same for every model and kind; what differs is in the
// identity's table row. The comments in the public header hold for them.
//
// Threads: the host's thread constructs, connects, sets, exports and shuts down; the driver's thread enters
// through RxSignPadRawData and RxSignPadFPRawData; the worker threads enter through the two checks of their
// loops. Hosts may call the operations from their callbacks, which run on any of these.
class CSignObject
{
public:
    CSignObject(const CSignObject&) = delete;
    CSignObject& operator=(const CSignObject&) = delete;
    virtual ~CSignObject();

    const CObjectIdentity& Identity() const { return m_Identity; }

    // Loads and starts the driver, accepts or refuses the pad and prepares it. False also when a worker
    // thread or a point list could not be had.
    bool IsDeviceConnected();

    // Stops the worker threads and the driver, closes the object, unloads the driver and frees the point
    // lists. For the thread that holds the object's CEnding, once; not to be called on any of those threads.
    void Shutdown();
    bool AreWeGoingToShutDown() const { return LoadShared(m_bGoingToShutDown); }

    // The driver's callbacks.
    void RxSignPadRawData(int nX, int nY, int nP, int nPenStatus);
    void RxSignPadFPRawData(unsigned char* pucRawData, int nDataLength, int nScore);

    // The two steps of the fingerprint display thread.
    void CheckIfAnyNewFPImageRawDataOnDeviceAvailable()
    {
        m_pFingerprint->CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
    }
    void ProcessShowFPImgaeRawDataOnDevice() { m_pFingerprint->ProcessShowFPImgaeRawDataOnDevice(); }

    // One pass of the key-action thread.
    void CheckIfWeCanDoConfirmOrCancelKeyAction() { m_KeyActions.CheckIfWeCanDoConfirmOrCancelKeyAction(); }

    // Keys and callbacks.
    int SetSignatureStatusCallback(void (*pStatus)(int))
    {
        return m_KeyActions.SetSignatureStatusCallback(pStatus);
    }
    int GetDeviceConfirmOrCancelKeyStatus() { return m_KeyActions.GetDeviceConfirmOrCancelKeyStatus(); }
    bool SetRealTimeSignDataCallback(PfnRealTimeSignData pfn)
    {
        return m_RealTimeData.SetRealTimeSignDataCallback(pfn);
    }

    // Canvas and pen.
    int ClearDeviceContent();
    int SetDevicePenWidth(int nPenWidth);
    int SetDevicePenColor(int nR, int nG, int nB);
    int SetDevicePenStyle(bool bWithPressureValue);

    // Device.
    int OpenDeviceLCD(bool bOn);
    int GetDevicePenID(char* pPenID, int nMaxCount);
    int GetDevicePadID(char* pPadID, int nMaxCount);
    int GetDeviceSecureID(char* pSecureID, int nMaxCount);
    int GetDevicePartsVersion(char* pVersion, int nMaxCount);
    int ShowVersionInfoOnDevice(bool bOn);
    int GetDeviceInfo(int nIndex, void* pOutput);

    // Points.
    int GetTotalInkPointsNumber();
    int GetPACKETS(_PACKETS& Packets);
    char* GetInkPointTime(int nIndex);
    void FreeInkPointTime(char* pInkPointTime)
    {
        FreeText("FreeInkPointTime()", "pInkPointTime", pInkPointTime);
    }

    // Export and import.
    int SetSaveClipImageMargin(bool bClipImage, int nClipMarginX, int nClipMarginY);
    void CheckSignImageBoundingBox(QRect& rcBoundBox);
    void MakeAsTransparentImage(QImage& Image, QColor Color);
    int SaveDrawingImage(int nImageTypeID, wchar_t* pImageFilePath, int nDPI);
    char* Base64Encode(int nImageTypeID);
    char* Base64EncodeEx(int nImageTypeID, bool bEnableTransparentBackground);
    char* GetSVGImageBase64Data();
    void Base64EncodeFree(char* pEncodedData)
    {
        FreeText("Base64EncodeFree()", "pEncodedData", pEncodedData);
    }
    void Base64EncodeExFree(char* pEncodedData)
    {
        FreeText("Base64EncodeExFree()", "pEncodedData", pEncodedData);
    }
    void FreeSVGImageBase64Data(char* pEncodedData)
    {
        FreeText("FreeSVGImageBase64Data()", "pEncodedData", pEncodedData);
    }
    int Base64Decode(int nImageTypeID, const char* pEncodedData, wchar_t* pImageFilePath);
    char* GetFPImageBase64Data(int nImageTypeID, bool bFPImageOnly);
    void FreeFPImageBase64Data(char* pFPImageBase64Data)
    {
        FreeText("FreeFPImageBase64Data()", "pFPImageBase64Data", pFPImageBase64Data);
    }
    int GetTotalDecodeInkPointsNumber();
    int GetDecodePACKETS(int nIndex, int nTypeID);

protected:
    CSignObject(const CPadModel& Model, EObjectKind eKind);

    // Second half of construction: creates the worker threads and starts them. nWidth and nHeight are the
    // canvas size that the log shows. pfnShowFPImage is null for models without a fingerprint reader.
    void StartThreads(void* pOwner, int nWidth, int nHeight, PfnMakeThread pfnKeyAction,
                      PfnMakeThread pfnShowFPImage);

    // Fits the pen's mapping to a canvas of this size.
    void FitMapping(int nWidth, int nHeight);

    CSignCanvas& Canvas() { return m_Canvas; }
    CKeyActions& KeyActions() { return m_KeyActions; }

    // Ends a placement of the fingerprint in a separate picture, which the canvas already holds: takes up its
    // action if it was placed well. A badly placed one has replaced the earlier one all the same.
    int LeavePicturePlacement(const CLogLabel& Label, int nPlacementResult, int nActionID);

private:
    void StopThread(std::unique_ptr<CSdkThread>& pThread, const char* pszMember);
    CClipSettings ReadClip() const;
    CInkSnapshot ReadPoints() const;
    bool HasPoints() const;
    QRect ScanInk(const CSharedImage& Canvas, const CClipSettings& Clip) const;
    CExportSource TakeExportSource(const CSharedImage& Canvas, bool& bClipped) const;
    bool SaveDrawingImageAsPDFFile(const QImage& Image, const QString& strPath, int nDPI) const;
    // Write is given the drawing to write it somewhere, and gives false when it could not.
    bool SaveDrawingImageAsSVGFile(const CExportSource& Source, bool bClipped, int nDPI,
                                   const std::function<bool(const FnHandOver&)>& Write) const;
    char* EncodeBase64SignImage(int nImageTypeID, bool bFPImageOnly = false) const;
    char* EncodeBase64SignImageEx(int nImageTypeID, bool bEnableTransparentBackground) const;
    char* EncodeInk(const CLogLabel& Label, const CInkSnapshot& Points) const;
    void FreeText(const char* pszFunction, const char* pszArgument, char* pText) const;
    char* EncodeSource(const CLogLabel& Label, const QImage& Image, int nImageTypeID,
                       bool bTransparentWhite) const;
    QImage TakeRaster(const CSharedImage& Canvas, bool bFPImageOnly) const;
    template <typename TEncodeImage>
    char* EncodeByType(const CLogLabel& Label, int nImageTypeID, TEncodeImage EncodeSignImage) const;

    template <typename... TParameters, typename... TArguments>
    int AskDriver(const CLogLabel& Label, int (*pfnEntry)(TParameters...), TArguments... Arguments) const;

    const CObjectIdentity m_Identity;
    CSignCanvas m_Canvas;
    CPenSetup m_PenSetup;
    CKeyActions m_KeyActions;
    CRealTimeData m_RealTimeData;
    CPenPipeline m_PenPipeline;
    CScriberaDriver m_Driver;
    std::unique_ptr<CFingerprintIntake> m_pFingerprint; // null on models without a fingerprint reader

    // Written by the host's thread, read by the driver's; accessed atomically. Set last, so that a sample
    // finds everything else ready.
    bool m_bDeviceConnected = false;
    int m_nMaxPressure;

    // Made with the object and freed when it is closed; the lists lock themselves.
    std::unique_ptr<CInkPointList> m_pPointDataList;
    std::unique_ptr<CInkPointList> m_pDecodedPointDataList;

    // Clip settings; m_ClipMutex, a leaf lock, protects them.
    mutable CMutex m_ClipMutex;
    CClipSettings m_Clip;

    // Set by the host's thread, read by the worker threads and, through its address, by the driver.
    bool m_bGoingToShutDown = false;

    // Of the thread that starts the object and of the one that ends it.
    bool m_bThreadsStarted = false;
    std::unique_ptr<CSdkThread> m_pShowFPImageOnDeviceThread;
    std::unique_ptr<CSdkThread> m_pDoConfirmOrCancelKeyActionThread;
};
