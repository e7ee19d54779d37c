#include "sdk/operations.h"

#include "gui/guithread.h"
#include "log/logfileutil.h"
#include "signcore/results.h"
#include "signcore/signobject.h"
#include "signobj/ck421bsignobj.h"
#include "signwidget/ck421bsignwidget.h"
#include "sync/atomicmember.h"
#include "sync/callbackscope.h"

#include <QMessageBox>
#include <QString>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include <cxxabi.h>

namespace {

// Results of the exported layer itself.
constexpr int kNoObject = -1;

constexpr int kLowDPI = 150;
constexpr int kHighDPI = 300;

// Ways out of a call with a wrong device type, by what the operation returns.
constexpr char kLeaveResult[] = "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nDeviceType != %s) !";
constexpr char kLeavePointer[] = "<%ld>-leave with nullptr due to (nDeviceType != %s) !";
constexpr char kLeaveNothing[] = "<%ld>-leave due to (nDeviceType != %s) !";
constexpr char kLeaveFalse[] = "<%ld>-leave with false due to (nDeviceType != %s) !";

constexpr char kLeaveWithResult[] = "<%ld>-leave with nResult=%d !";

constexpr char kProductLine[] = "Scribera SDK on Linux OS";
constexpr char kVersionLine[] = "Version : 3.0.0.0";
constexpr char kNoticeLine[] = "Copyright 2024 Corvenna";

bool IsEncodableType(int nImageTypeID)
{
    return IsRasterType(nImageTypeID) || nImageTypeID == EBITI_INK;
}

bool IsSavableType(int nImageTypeID)
{
    return IsRasterType(nImageTypeID) || nImageTypeID == EBITI_PDF || nImageTypeID == EBITI_SVG;
}

QWidget* FindWidget(unsigned long long ullWId)
{
    return IsGuiThread() ? QWidget::find(static_cast<WId>(ullWId)) : nullptr;
}

// A host may exit while a pen signs. Qt destroys its global objects in the opposite order of their making, so
// drawing makes those it needs first and the gate, which is closed before any of them goes, is registered
// after.
void PrepareForExit()
{
    static std::once_flag s_Once;
    std::call_once(s_Once, [] {
        WarmUpDrawing();
        std::atexit([] { CLiveObject::CloseForExit(); });
    });
}

} // namespace

bool COperations::AcceptsDevice(const CLogLabel& Label, int nDeviceType, const char* pszFailure) const
{
    if (IsOwnDevice(nDeviceType))
        return true;
    SCR_LOG(Label, pszFailure, m_Model.m_pszDeviceName);
    return false;
}

// Calls the operation on the live object, if it is of this family.
template <typename TResult, typename TCall>
TResult COperations::OnObject(TResult Missing, TCall Call) const
{
    const CLiveObject::CUse Use;
    // A callback that outlasts the start of an exit finds nothing; the exiting thread itself still ends its
    // device.
    if (CCallbackScope::IsActive() && CLiveObject::IsClosedForExit())
        return Missing;
    CSignObject* const pObject = Use.ObjectOf(m_Model);
    return pObject ? Call(*pObject) : Missing;
}

template <typename TCall>
int COperations::CallForResult(const CLogLabel& Label, int nMissing, const char* pszLeaveLine,
                               TCall Call) const
{
    const int nResult = OnObject(nMissing, Call);
    SCR_LOG(Label, pszLeaveLine, nResult);
    return nResult;
}

template <typename TCall>
char* COperations::CallForText(const CLogLabel& Label, const char* pszLeaveLine, TCall Call) const
{
    char* const pText = OnObject(static_cast<char*>(nullptr), Call);
    SCR_LOG(Label, pszLeaveLine, AsHex(pText));
    return pText;
}

void COperations::FreeText(const char* pszFunction, const char* pszArgument, int nDeviceType, char* pText,
                           void (CSignObject::*pfnFree)(char*)) const
{
    const CLogLabel L = Label(pszFunction);
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, %s=%lx", nDeviceType, pszArgument, AsHex(pText));
    if (!AcceptsDevice(L, nDeviceType, kLeaveNothing))
        return;
    OnObject(false, [=](CSignObject& Object) {
        (Object.*pfnFree)(pText);
        return true;
    });
    SCR_LOG(L, "<%ld>-leave !");
}

// What both ways of starting share: the flag, and the lines of those that end here.
CLiveObject::CStart::EAnswer COperations::BeginStart(const CLogLabel& Label, CLiveObject::CStart& Start,
                                                     bool bWindowless)
{
    const auto ShowKind = [bWindowless] {
        if (bWindowless)
            StoreShared<unsigned char>(g_bUseSignObj, 1);
    };
    // The flag comes before the test: hosts see the kind that they asked for last.
    ShowKind();
    // A callback meets no live object only while UnInitialDevice waits for it. What it started then would be
    // in the way of that end.
    const auto eAnswer = Start.Begin(!CCallbackScope::IsActive());
    switch (eAnswer) {
    case CLiveObject::CStart::EAnswer::Begun:
        ShowKind(); // once more, since the end that was waited for has taken it back
        break;
    case CLiveObject::CStart::EAnswer::AlreadyLive:
        SCR_LOG(Label, "<%ld>-leave with true due to g_pSignWidget already created !");
        break;
    case CLiveObject::CStart::EAnswer::Refused:
        SCR_LOG(Label, "<%ld>-leave with false due to (called inside a callback) !");
        break;
    }
    return eAnswer;
}

bool COperations::StartObject(const CLogLabel& Label, CLiveObject::CStart& Start, QWidget* pParentWidget,
                              bool bWindowless, int nX, int nY, int nWidth, int nHeight) const
{
    PrepareForExit();
    bool bRet = false;
    try {
        bRet = MakeAndConnect(Start, pParentWidget, bWindowless, nX, nY, nWidth, nHeight);
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        // Out of memory: what there is of the object goes the way of any failed start.
    }
    Start.Finish();
    if (!bRet)
        UnInitialDevice(m_Model.m_nDeviceType);
    SCR_LOG(Label, "<%ld>-leave with bRet=%d !", bRet);
    return bRet;
}

bool COperations::MakeAndConnect(CLiveObject::CStart& Start, QWidget* pParentWidget, bool bWindowless, int nX,
                                 int nY, int nWidth, int nHeight) const
{
    bool bRet = false;
    CSignWidget* pWidget = nullptr;
    {
        // What the host does meanwhile on this thread, in a callback or an event, must not wait for this.
        const CCallbackScope Scope;
        if (bWindowless) {
            CSignObject* const pObject = m_Family.m_pfnMakeObj(nWidth, nHeight);
            Start.Publish(*pObject, pObject);
            bRet = pObject->IsDeviceConnected();
        } else if (IsGuiThread()) {
            pWidget = m_Family.m_pfnMakeWidget(pParentWidget);
            Start.Publish(*pWidget, static_cast<QWidget*>(pWidget));
            bRet = pWidget->IsDeviceConnected();
        }
    }
    if (bRet && pWidget) {
        Start.Finish();
        pWidget->setGeometry(RectFromHost(nX, nY, nWidth, nHeight));
        pWidget->show();
        pWidget->ResizeUnderInvisibleParentWidget(nWidth, nHeight);
    }
    return bRet;
}

bool COperations::InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                                int nHeight) const
{
    const CLogLabel L = Label("InitialDevice()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pParentWidget=%lx, nX=%d, nY=%d, nWidth=%d, nHeight=%d",
            nDeviceType, AsHex(pParentWidget), nX, nY, nWidth, nHeight);
    if (!AcceptsDevice(L, nDeviceType, kLeaveFalse))
        return false;
    CLiveObject::CStart Start;
    if (const auto eAnswer = BeginStart(L, Start, pParentWidget == nullptr);
        eAnswer != CLiveObject::CStart::EAnswer::Begun)
        return eAnswer == CLiveObject::CStart::EAnswer::AlreadyLive;
    // A flag left set by an earlier windowless use decides even when there is a parent.
    return StartObject(L, Start, pParentWidget, LoadShared(g_bUseSignObj) != 0, nX, nY, nWidth, nHeight);
}

bool COperations::InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY, int nWidth,
                                     int nHeight) const
{
    const CLogLabel L = Label("InitialDeviceByWId()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nX=%d, nY=%d, nWidth=%d, nHeight=%d", nDeviceType, nX, nY,
            nWidth, nHeight);
    if (!AcceptsDevice(L, nDeviceType, kLeaveFalse))
        return false;
    CLiveObject::CStart Start;
    if (const auto eAnswer = BeginStart(L, Start, ullWId == 0);
        eAnswer != CLiveObject::CStart::EAnswer::Begun)
        return eAnswer == CLiveObject::CStart::EAnswer::AlreadyLive;
    const bool bWindowless = LoadShared(g_bUseSignObj) != 0;
    QWidget* const pParentWidget = bWindowless ? nullptr : FindWidget(ullWId);
    if (!bWindowless && !pParentWidget) {
        SCR_LOG(L, "<%ld>-leave with false due to (g_pSignWidget == nullptr) !");
        return false;
    }
    return StartObject(L, Start, pParentWidget, bWindowless, nX, nY, nWidth, nHeight);
}

// The window that owns the widget may go as soon as the end is over, on its own thread. Hiding comes last,
// when everything is closed, since it lets the host run.
void COperations::EndWidget(CLiveObject::CEnding& Ending, CSignWidget& Widget)
{
    const auto Try = [](auto Step) {
        try {
            Step();
        } catch (const std::bad_alloc&) {
            // What Qt gets no memory for stays until the window goes. The pad ends all the same.
        }
    };
    Try([&] { Widget.deleteLater(); });
    const bool bHides = IsGuiThread(); // without an application nothing is shown, and hiding would crash
    Ending.Finish();
    if (bHides)
        Try([&] { Widget.hide(); });
}

int COperations::UnInitialDevice(int nDeviceType) const
{
    const CLogLabel L = Label("UnInitialDevice()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    if (CCallbackScope::IsActive()) {
        // It would wait for the very thread that it runs on.
        SCR_LOG(L, "<%ld>-leave with nResult=-1 due to (called inside a callback) !");
        return kNoObject;
    }
    CLiveObject::CEnding Ending(m_Model);
    if (CSignObject* const pObject = Ending.Object()) {
        pObject->Shutdown();
        if (pObject->Identity().IsWidget())
            EndWidget(Ending, *static_cast<CSignWidget*>(pObject));
        else
            delete pObject;
    }
    SCR_LOG(L, "<%ld>-leave with ARI_SUCCESS...");
    return ARI_SUCCESS;
}

int COperations::OpenLCD(int nDeviceType, bool bOn) const
{
    const CLogLabel L = Label("OpenLCD()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bOn=%d", nDeviceType, bOn);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.OpenDeviceLCD(bOn); });
}

int COperations::Clear(int nDeviceType) const
{
    const CLogLabel L = Label("Clear()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [](CSignObject& Object) { return Object.ClearDeviceContent(); });
}

int COperations::GetHWPenID(int nDeviceType, char* pPenID, int nMaxCount) const
{
    const CLogLabel L = Label("GetHWPenID()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, pPenID=%lx, nMaxCount=%d", nDeviceType, AsHex(pPenID),
            nMaxCount);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.GetDevicePenID(pPenID, nMaxCount); });
}

int COperations::GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount) const
{
    const CLogLabel L = Label("GetHWPadID()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pPadID=%lx, nMaxCount=%d", nDeviceType, AsHex(pPadID),
            nMaxCount);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.GetDevicePadID(pPadID, nMaxCount); });
}

int COperations::GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount) const
{
    const CLogLabel L = Label("GetHWVersionID()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pVersion=%lx, nMaxCount=%d", nDeviceType, AsHex(pVersion),
            nMaxCount);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult, [=](CSignObject& Object) {
        return Object.GetDevicePartsVersion(pVersion, nMaxCount);
    });
}

int COperations::DisplayHWVersion(int nDeviceType, bool bOn) const
{
    const CLogLabel L = Label("DisplayHWVersion()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bOn=%d", nDeviceType, bOn);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.ShowVersionInfoOnDevice(bOn); });
}

int COperations::getDeviceInfo(int nDeviceType, int nIndex, void* pOutput) const
{
    const CLogLabel L = Label("getDeviceInfo()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nIndex=%d, pOutput=%lx", nDeviceType, nIndex, AsHex(pOutput));
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    if (nIndex < DIID_GET_STATUS || nIndex > DIID_GET_DRV_VER || !pOutput) {
        SCR_LOG(L, "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nIndex < DIID_GET_STATUS) || (nIndex > "
                   "DIID_GET_DRV_VER) || (pOutput == nullptr) !");
        return ARI_INVALID_PARAMETERS;
    }
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.GetDeviceInfo(nIndex, pOutput); });
}

int COperations::SetPenStyle(int nDeviceType, bool bPressureOn) const
{
    const CLogLabel L = Label("SetPenStyle()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bPressureOn=%d", nDeviceType, bPressureOn);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.SetDevicePenStyle(bPressureOn); });
}

int COperations::SetPenWidth(int nDeviceType, int nPenWidth) const
{
    const CLogLabel L = Label("SetPenWidth()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nPenWidth=%d", nDeviceType, nPenWidth);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.SetDevicePenWidth(nPenWidth); });
}

int COperations::SetPenColor(int nDeviceType, int nR, int nG, int nB) const
{
    const CLogLabel L = Label("SetPenColor()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nR=%d, nG=%d, nB=%d", nDeviceType, nR, nG, nB);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.SetDevicePenColor(nR, nG, nB); });
}

int COperations::SignatureStatusCallback(int nDeviceType, void (*pStatus)(int)) const
{
    const CLogLabel L = Label("SignatureStatusCallback()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pStatus=%lx", nDeviceType, AsHex(pStatus));
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult,
                         [=](CSignObject& Object) { return Object.SetSignatureStatusCallback(pStatus); });
}

bool COperations::RealTimeSignatureDataCallback(int nDeviceType,
                                                void (*pfnRealTimeSignDataCallback)(unsigned long,
                                                                                    long)) const
{
    const CLogLabel L = Label("RealTimeSignatureDataCallback()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pfnRealTimeSignDataCallback=%lx", nDeviceType,
            AsHex(pfnRealTimeSignDataCallback));
    if (!IsOwnDevice(nDeviceType) || !pfnRealTimeSignDataCallback) {
        SCR_LOG(L,
                "<%ld>-leave false due to (nDeviceType != %s) || (pfnRealTimeSignDataCallback == nullptr) !",
                m_Model.m_pszDeviceName);
        return false;
    }
    const bool bRet = OnObject(false, [=](CSignObject& Object) {
        return Object.SetRealTimeSignDataCallback(pfnRealTimeSignDataCallback);
    });
    SCR_LOG(L, "<%ld>-leave with bRet = %d...", bRet);
    return bRet;
}

int COperations::GetDeviceConfirmOrCancelKeyStatus(int nDeviceType) const
{
    const CLogLabel L = Label("GetDeviceConfirmOrCancelKeyStatus()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, "<%ld>-leave with nKeyStatus=%d !",
                         [](CSignObject& Object) { return Object.GetDeviceConfirmOrCancelKeyStatus(); });
}

int COperations::GetTotalPacketsNumber(int nDeviceType) const
{
    const CLogLabel L = Label("GetTotalPacketsNumber()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNotDone, "<%ld>-leave with nInkCount=%d !",
                         [](CSignObject& Object) { return Object.GetTotalInkPointsNumber(); });
}

int COperations::getPackets(int nDeviceType, _PACKETS* pPACKETS) const
{
    const CLogLabel L = Label("getPackets()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    const int nResult = OnObject(kNoObject, [=](CSignObject& Object) {
        return pPACKETS ? Object.GetPACKETS(*pPACKETS) : ARI_INVALID_PARAMETERS;
    });
    if (nResult == ARI_INVALID_PARAMETERS)
        SCR_LOG(L, "<%ld>-leave with ARI_INVALID_PARAMETERS due to (pPACKETS == nullptr) !");
    else
        SCR_LOG(L, kLeaveWithResult, nResult);
    return nResult;
}

char* COperations::GetInkPointTime(int nDeviceType, int nIndex) const
{
    const CLogLabel L = Label("GetInkPointTime()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, nIndex=%d", nDeviceType, nIndex);
    if (!AcceptsDevice(L, nDeviceType, kLeavePointer))
        return nullptr;
    return CallForText(L, "<%ld>-leave with pInkPointTime=%lx !",
                       [=](CSignObject& Object) { return Object.GetInkPointTime(nIndex); });
}

void COperations::FreeInkPointTime(int nDeviceType, char* pInkPointTime) const
{
    FreeText("FreeInkPointTime()", "pInkPointTime", nDeviceType, pInkPointTime,
             &CSignObject::FreeInkPointTime);
}

int COperations::SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath,
                                  int nDPILevel) const
{
    const CLogLabel L = Label("SaveDrawingImage()");
    SCR_LOG_WIDE(L, L"<%ld>-enter, nDeviceType=%d, nImageTypeID=%d, pImageFilePath=%x, nDPILevel=%d",
                 nDeviceType, nImageTypeID, AsShortHex(pImageFilePath), nDPILevel);
    if (!IsOwnDevice(nDeviceType)) {
        SCR_LOG_WIDE(L, L"<%ld>-leave with ARI_INVALID_PARAMETERS due to (nDeviceType != %s) !",
                     m_Model.m_pszDeviceName);
        return ARI_INVALID_PARAMETERS;
    }
    if (!IsSavableType(nImageTypeID)) {
        SCR_LOG_WIDE(L, L"<%ld>-leave with ARI_INVALID_PARAMETERS due to nImageTypeID out of range !");
        return ARI_INVALID_PARAMETERS;
    }
    const int nDPI = nDPILevel == 0 ? kLowDPI : kHighDPI;
    const int nResult = OnObject(kNoObject, [=](CSignObject& Object) {
        return Object.SaveDrawingImage(nImageTypeID, pImageFilePath, nDPI);
    });
    SCR_LOG_WIDE(L, L"<%ld>-leave with nResult=%d !", nResult);
    return nResult;
}

int COperations::SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX,
                                        int nClipMarginY) const
{
    const CLogLabel L = Label("SetSaveCenterImageClip()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bClipImage=%d, nClipMarginX=%d, nClipMarginY=%d", nDeviceType,
            bClipImage, nClipMarginX, nClipMarginY);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    if (nClipMarginX < 0 || nClipMarginY < 0) {
        SCR_LOG(L,
                "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nClipMarginX < 0) || (nClipMarginY < 0) !");
        return ARI_INVALID_PARAMETERS;
    }
    return CallForResult(L, kNoObject, kLeaveWithResult, [=](CSignObject& Object) {
        return Object.SetSaveClipImageMargin(bClipImage, nClipMarginX, nClipMarginY);
    });
}

// The failure line of an image type that is neither a raster nor the ink stream.
#define NOT_ENCODABLE(szWith)                                                                                \
    "<%ld>-leave with " szWith " due to (nImageTypeID < EBITI_BITMAP) || ((nImageTypeID > EBITI_PNG) && "    \
    "(nImageTypeID != EBITI_INK)) !"

char* COperations::PacketsBase64Encode(int nDeviceType, int nImageTypeID) const
{
    const CLogLabel L = Label("PacketsBase64Encode()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nImageTypeID=%d", nDeviceType, nImageTypeID);
    if (!AcceptsDevice(L, nDeviceType, kLeavePointer))
        return nullptr;
    if (!IsEncodableType(nImageTypeID)) {
        SCR_LOG(L, NOT_ENCODABLE("nullptr"));
        return nullptr;
    }
    return CallForText(L, "<%ld>-leave with pEncodeBase64Image=%lx !",
                       [=](CSignObject& Object) { return Object.Base64Encode(nImageTypeID); });
}

void COperations::PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData) const
{
    FreeText("PacketsBase64EncodeFree()", "pEncodedData", nDeviceType, pEncodedData,
             &CSignObject::Base64EncodeFree);
}

char* COperations::PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                         bool bEnableTransparentBackground) const
{
    const CLogLabel L = Label("PacketsBase64EncodeEx()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nImageTypeID=%d, bEnableTransparentBackground=%d", nDeviceType,
            nImageTypeID, bEnableTransparentBackground);
    if (!AcceptsDevice(L, nDeviceType, kLeavePointer))
        return nullptr;
    if (!IsEncodableType(nImageTypeID)) {
        SCR_LOG(L, NOT_ENCODABLE("nullptr"));
        return nullptr;
    }
    return CallForText(L, "<%ld>-leave with pEncodeBase64Image=%lx !", [=](CSignObject& Object) {
        return Object.Base64EncodeEx(nImageTypeID, bEnableTransparentBackground);
    });
}

void COperations::PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData) const
{
    FreeText("PacketsBase64EncodeExFree()", "pEncodedData", nDeviceType, pEncodedData,
             &CSignObject::Base64EncodeExFree);
}

int COperations::Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                              wchar_t* pImageFilePath) const
{
    const CLogLabel L = Label("Base64Decode()");
    SCR_LOG_WIDE(L, L"<%ld>-enter, nDeviceType=%d, nImageTypeID=%d, pImageFilePath=%x", nDeviceType,
                 nImageTypeID, AsShortHex(pImageFilePath));
    // The failures of this operation speak of nullptr, though they return a result.
    if (!IsOwnDevice(nDeviceType)) {
        SCR_LOG_WIDE(L, L"<%ld>-leave with nullptr due to (nDeviceType != %s) !", m_Model.m_pszDeviceName);
        return ARI_INVALID_PARAMETERS;
    }
    if (!IsEncodableType(nImageTypeID)) {
        SCR_LOG_WIDE(L, L"" NOT_ENCODABLE("ARI_INVALID_PARAMETERS"));
        return ARI_INVALID_PARAMETERS;
    }
    if (!pEncodedData || *pEncodedData == '\0') {
        SCR_LOG_WIDE(L, L"<%ld>-leave with nullptr due to (pEncodedData : null or empty) !");
        return ARI_INVALID_PARAMETERS;
    }
    const int nResult = OnObject(kNoObject, [=](CSignObject& Object) {
        return Object.Base64Decode(nImageTypeID, pEncodedData, pImageFilePath);
    });
    SCR_LOG_WIDE(L, L"<%ld>-leave with nResult=%d !", nResult);
    return nResult;
}

int COperations::GetTotalDecodePacketsNumber(int nDeviceType) const
{
    const CLogLabel L = Label("GetTotalDecodePacketsNumber()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNotDone, "<%ld>-leave with nDecodedInkCount=%d !",
                         [](CSignObject& Object) { return Object.GetTotalDecodeInkPointsNumber(); });
}

int COperations::GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID) const
{
    const CLogLabel L = Label("GetDecodePacketsData()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, nIndex=%d, nTypeID=%d", nDeviceType, nIndex, nTypeID);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    if (nTypeID < INKDATATYPE_X || nTypeID > INKDATATYPE_STROKEEND) {
        SCR_LOG(L, "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nTypeID < INKDATATYPE_X) || (nTypeID > "
                   "INKDATATYPE_STROKEEND) !");
        return ARI_INVALID_PARAMETERS;
    }
    return CallForResult(L, kNoObject, "<%ld>-leave with nPACKETS=%d !",
                         [=](CSignObject& Object) { return Object.GetDecodePACKETS(nIndex, nTypeID); });
}

char* COperations::GetSVGImageBase64Data(int nDeviceType) const
{
    const CLogLabel L = Label("GetSVGImageBase64Data()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeavePointer))
        return nullptr;
    return CallForText(L, "<%ld>-leave with pSVGBase64Image=%lx !",
                       [](CSignObject& Object) { return Object.GetSVGImageBase64Data(); });
}

void COperations::FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData) const
{
    FreeText("FreeSVGImageBase64Data()", "pEncodedData", nDeviceType, pEncodedData,
             &CSignObject::FreeSVGImageBase64Data);
}

int COperations::PlaceFingerprint(CSignObject& Object, QWidget* pParentWidget, const int (&CanvasSize)[2],
                                  const int (&FPRect)[4])
{
    // A widget's class is looked at on its own thread, on which it may also be on its way out.
    if (Object.Identity().IsWidget() && !IsGuiThread())
        return kNoObject;
    if (auto* const pObj = dynamic_cast<CK421BSignObj*>(&Object))
        return pObj->SetDisplayedFPImageAt(CanvasSize[0], CanvasSize[1], FPRect[0], FPRect[1], FPRect[2],
                                           FPRect[3]);
    auto* const pWidget = dynamic_cast<CK421BSignWidget*>(&Object);
    if (!pWidget)
        return kNoObject;
    return pWidget->SetDisplayedFPImageAt(pParentWidget, FPRect[0], FPRect[1], FPRect[2], FPRect[3]);
}

int COperations::SetDisplayedFPImageAt(int nDeviceType, QWidget* pParentWidget, int nCanvasWidth,
                                       int nCanvasHeight, int nFPLeft, int nFPTop, int nFPWidth,
                                       int nFPHeight) const
{
    const CLogLabel L = Label("SetDisplayedFPImageAt()");
    SCR_LOG(L,
            "<%ld>-Enter, nDeviceType=%d, pParentWidget=%lx, nCanvasWidth=%d, nCanvasHeight=%d, nFPLeft=%d, "
            "nFPTop=%d, nFPWidth=%d, nFPHeight=%d",
            nDeviceType, AsHex(pParentWidget), nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth,
            nFPHeight);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult, [=](CSignObject& Object) {
        return PlaceFingerprint(Object, pParentWidget, {nCanvasWidth, nCanvasHeight},
                                {nFPLeft, nFPTop, nFPWidth, nFPHeight});
    });
}

int COperations::SetDisplayedFPImageAtByWId(int nDeviceType, unsigned long long ullWId, int nCanvasWidth,
                                            int nCanvasHeight, int nFPLeft, int nFPTop, int nFPWidth,
                                            int nFPHeight) const
{
    const CLogLabel L = Label("SetDisplayedFPImageAtByWId()");
    SCR_LOG(
        L,
        "<%ld>-Enter, nDeviceType=%d, nCanvasWidth=%d, nCanvasHeight=%d, nFPLeft=%d, nFPTop=%d, nFPWidth=%d, "
        "nFPHeight=%d",
        nDeviceType, nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    return CallForResult(L, kNoObject, kLeaveWithResult, [=](CSignObject& Object) {
        QWidget* const pParentWidget = Object.Identity().IsWidget() ? FindWidget(ullWId) : nullptr;
        if (Object.Identity().IsWidget() && !pParentWidget)
            return kNoObject;
        return PlaceFingerprint(Object, pParentWidget, {nCanvasWidth, nCanvasHeight},
                                {nFPLeft, nFPTop, nFPWidth, nFPHeight});
    });
}

char* COperations::GetFPImageBase64Data(int nDeviceType, int nImageTypeID, bool bFPImageOnly) const
{
    const CLogLabel L = Label("GetFPImageBase64Data()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, nImageTypeID=%d, bFPImageOnly=%d", nDeviceType, nImageTypeID,
            bFPImageOnly);
    if (!AcceptsDevice(L, nDeviceType, kLeavePointer))
        return nullptr;
    if (!IsRasterType(nImageTypeID)) {
        SCR_LOG(
            L,
            "<%ld>-leave with nullptr due to (nImageTypeID < EBITI_BITMAP) || (nImageTypeID > EBITI_PNG) !");
        return nullptr;
    }
    return CallForText(L, "<%ld>-leave with pFPImageBase64Data=%lx !", [=](CSignObject& Object) {
        return Object.GetFPImageBase64Data(nImageTypeID, bFPImageOnly);
    });
}

void COperations::FreeFPImageBase64Data(int nDeviceType, char* pFPImageBase64Data) const
{
    FreeText("FreeFPImageBase64Data()", "pFPImageBase64Data", nDeviceType, pFPImageBase64Data,
             &CSignObject::FreeFPImageBase64Data);
}

void COperations::AboutBox(QWidget* pParentWidget) const
{
    const CLogLabel L = Label("AboutBox()");
    SCR_LOG(L, "<%ld>-Enter...");
    ShowAboutBox(pParentWidget);
    SCR_LOG(L, "<%ld>-leave !");
}

void COperations::AboutBoxByWId(unsigned long long ullWId) const
{
    const CLogLabel L = Label("AboutBoxByWId()");
    SCR_LOG(L, "<%ld>-Enter...");
    if (QWidget* const pParentWidget = FindWidget(ullWId))
        ShowAboutBox(pParentWidget);
    SCR_LOG(L, "<%ld>-leave !");
}

void COperations::ShowAboutBox(QWidget* pParentWidget)
{
    if (!IsGuiThread())
        return;
    const QString strText =
        QStringLiteral("<p align='center'>%1<br>%2<br>%3</p>")
            .arg(QLatin1String(kProductLine), QLatin1String(kVersionLine), QLatin1String(kNoticeLine));
    QMessageBox::about(pParentWidget, QStringLiteral("About"), strText);
}

void COperations::GetAboutInfo(int nDeviceType, char* pBuffer) const
{
    const CLogLabel L = Label("GetAboutInfo()");
    SCR_LOG(L, "<%ld>-Enter...");
    if (!AcceptsDevice(L, nDeviceType, kLeaveNothing))
        return;
    if (pBuffer) {
        const std::string strText =
            std::string("About\n\n") + kProductLine + "\n" + kVersionLine + "\n" + kNoticeLine;
        std::memcpy(pBuffer, strText.c_str(), strText.size() + 1);
    }
    SCR_LOG(L, "<%ld>-leave !");
}
