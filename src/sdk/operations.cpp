#include "sdk/operations.h"

#include "export/imagefiles.h"
#include "gui/guithread.h"
#include "model/results.h"
#include "sdk/otherqt.h"
#include "signobject/liveobject.h"
#include "signobject/signobject.h"

// Results and last lines of an operation.
template <typename TResult>
struct CWaysOut
{
    const char* m_pszLeaveLine;
    TResult m_NoObject;
    TResult m_WrongDevice;
    const char* m_pszWrongDeviceLine;
};

namespace {

constexpr int kLowDPI = 150;
constexpr int kHighDPI = 300;

constexpr char kLeaveWithResult[] = "<%ld>-leave with nResult=%d !";

constexpr CWaysOut<int> LeavesWith(const char* pszLeaveLine, int nNoObject)
{
    return {pszLeaveLine, nNoObject, ARI_INVALID_PARAMETERS, kLeaveResult};
}

constexpr CWaysOut<char*> LeavesWith(const char* pszLeaveLine)
{
    return {pszLeaveLine, nullptr, nullptr, kLeavePointer};
}

constexpr CWaysOut<int> kResult = LeavesWith(kLeaveWithResult, kNoObject);
constexpr CWaysOut<int> kKeyStatus = LeavesWith("<%ld>-leave with nKeyStatus=%d !", kNoObject);
constexpr CWaysOut<int> kInkCount = LeavesWith("<%ld>-leave with nInkCount=%d !", kNotDone);
constexpr CWaysOut<int> kDecodedInkCount = LeavesWith("<%ld>-leave with nDecodedInkCount=%d !", kNotDone);
constexpr CWaysOut<int> kPACKETS = LeavesWith("<%ld>-leave with nPACKETS=%d !", kNoObject);
constexpr CWaysOut<char*> kInkPointTime = LeavesWith("<%ld>-leave with pInkPointTime=%lx !");
constexpr CWaysOut<char*> kEncodeBase64Image = LeavesWith("<%ld>-leave with pEncodeBase64Image=%lx !");
constexpr CWaysOut<char*> kSVGBase64Image = LeavesWith("<%ld>-leave with pSVGBase64Image=%lx !");
constexpr CWaysOut<char*> kFPImageBase64Data = LeavesWith("<%ld>-leave with pFPImageBase64Data=%lx !");

int AsLogged(int nResult)
{
    return nResult;
}

unsigned long AsLogged(char* pText)
{
    return AsHex(pText);
}

bool IsEncodableType(int nImageTypeID)
{
    return IsRasterType(nImageTypeID) || nImageTypeID == EBITI_INK;
}

bool IsSavableType(int nImageTypeID)
{
    return IsRasterType(nImageTypeID) || nImageTypeID == EBITI_PDF || nImageTypeID == EBITI_SVG;
}

} // namespace

// Calls the operation on the live object, if it is of this family.
template <typename TResult, typename TCall>
TResult COperations::OnObject(TResult Missing, TCall Call) const
{
    const CLiveObject::CUse Use = CLiveObject::Enter(m_Model);
    return Use ? Call(*Use) : Missing;
}

// The common shape of an operation after its entry line and its own checks.
template <typename TResult, typename TCall>
TResult COperations::Forward(const CLogLabel& Label, int nDeviceType, const CWaysOut<TResult>& WaysOut,
                             TCall Call) const
{
    if (!AcceptsDevice(Label, nDeviceType, WaysOut.m_pszWrongDeviceLine))
        return WaysOut.m_WrongDevice;
    const TResult Result = OnObject(WaysOut.m_NoObject, Call);
    SCR_LOG(Label, WaysOut.m_pszLeaveLine, AsLogged(Result));
    return Result;
}

// What all free functions do. pszMethod is the operation of the sign object, which writes lines of its own.
void COperations::FreeText(const char* pszFunction, const char* pszMethod, const char* pszArgument,
                           int nDeviceType, const char* pText) const
{
    const CLogLabel L = Label(pszFunction);
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, %s=%lx", nDeviceType, pszArgument, AsHex(pText));
    if (!AcceptsDevice(L, nDeviceType, kLeaveNothing))
        return;
    OnObject(false, [=](CSignObject& Object) {
        FreeTextOfHost(Object.Identity().Label(pszMethod), pszArgument, pText);
        return true;
    });
    SCR_LOG(L, "<%ld>-leave !");
}

int COperations::OpenLCD(int nDeviceType, bool bOn) const
{
    const CLogLabel L = Label("OpenLCD()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bOn=%d", nDeviceType, bOn);
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) { return Object.OpenDeviceLCD(bOn); });
}

int COperations::Clear(int nDeviceType) const
{
    const CLogLabel L = Label("Clear()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    return Forward(L, nDeviceType, kResult, [](CSignObject& Object) { return Object.ClearDeviceContent(); });
}

int COperations::GetHWPenID(int nDeviceType, char* pPenID, int nMaxCount) const
{
    const CLogLabel L = Label("GetHWPenID()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, pPenID=%lx, nMaxCount=%d", nDeviceType, AsHex(pPenID),
            nMaxCount);
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        return Object.DeviceQueries().GetDevicePenID(pPenID, nMaxCount);
    });
}

int COperations::GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount) const
{
    const CLogLabel L = Label("GetHWPadID()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pPadID=%lx, nMaxCount=%d", nDeviceType, AsHex(pPadID),
            nMaxCount);
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        return Object.DeviceQueries().GetDevicePadID(pPadID, nMaxCount);
    });
}

int COperations::GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount) const
{
    const CLogLabel L = Label("GetHWVersionID()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pVersion=%lx, nMaxCount=%d", nDeviceType, AsHex(pVersion),
            nMaxCount);
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        return Object.DeviceQueries().GetDevicePartsVersion(pVersion, nMaxCount);
    });
}

int COperations::DisplayHWVersion(int nDeviceType, bool bOn) const
{
    const CLogLabel L = Label("DisplayHWVersion()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bOn=%d", nDeviceType, bOn);
    return Forward(L, nDeviceType, kResult,
                   [=](CSignObject& Object) { return Object.DeviceQueries().ShowVersionInfoOnDevice(bOn); });
}

int COperations::getDeviceInfo(int nDeviceType, int nIndex, void* pOutput) const
{
    const CLogLabel L = Label("getDeviceInfo()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nIndex=%d, pOutput=%lx", nDeviceType, nIndex, AsHex(pOutput));
    if (IsOwnDevice(nDeviceType) && (nIndex < DIID_GET_STATUS || nIndex > DIID_GET_DRV_VER || !pOutput)) {
        SCR_LOG(L, "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nIndex < DIID_GET_STATUS) || (nIndex > "
                   "DIID_GET_DRV_VER) || (pOutput == nullptr) !");
        return ARI_INVALID_PARAMETERS;
    }
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        return Object.DeviceQueries().GetDeviceInfo(nIndex, pOutput);
    });
}

int COperations::SetPenStyle(int nDeviceType, bool bPressureOn) const
{
    const CLogLabel L = Label("SetPenStyle()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, bPressureOn=%d", nDeviceType, bPressureOn);
    return Forward(L, nDeviceType, kResult,
                   [=](CSignObject& Object) { return Object.SetDevicePenStyle(bPressureOn); });
}

int COperations::SetPenWidth(int nDeviceType, int nPenWidth) const
{
    const CLogLabel L = Label("SetPenWidth()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nPenWidth=%d", nDeviceType, nPenWidth);
    return Forward(L, nDeviceType, kResult,
                   [=](CSignObject& Object) { return Object.SetDevicePenWidth(nPenWidth); });
}

int COperations::SetPenColor(int nDeviceType, int nR, int nG, int nB) const
{
    const CLogLabel L = Label("SetPenColor()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nR=%d, nG=%d, nB=%d", nDeviceType, nR, nG, nB);
    return Forward(L, nDeviceType, kResult,
                   [=](CSignObject& Object) { return Object.SetDevicePenColor(nR, nG, nB); });
}

int COperations::SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus) const
{
    const CLogLabel L = Label("SignatureStatusCallback()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pStatus=%lx", nDeviceType, AsHex(pStatus));
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        return Object.KeyActions().SetSignatureStatusCallback(pStatus);
    });
}

bool COperations::RealTimeSignatureDataCallback(
    int nDeviceType, ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback) const
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
        return Object.RealTimeData().SetRealTimeSignDataCallback(pfnRealTimeSignDataCallback);
    });
    SCR_LOG(L, "<%ld>-leave with bRet = %d...", bRet);
    return bRet;
}

int COperations::GetDeviceConfirmOrCancelKeyStatus(int nDeviceType) const
{
    const CLogLabel L = Label("GetDeviceConfirmOrCancelKeyStatus()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    return Forward(L, nDeviceType, kKeyStatus, [](CSignObject& Object) {
        return Object.KeyActions().GetDeviceConfirmOrCancelKeyStatus();
    });
}

int COperations::GetTotalPacketsNumber(int nDeviceType) const
{
    const CLogLabel L = Label("GetTotalPacketsNumber()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d", nDeviceType);
    return Forward(L, nDeviceType, kInkCount,
                   [](CSignObject& Object) { return Object.PointQueries().GetTotalInkPointsNumber(); });
}

int COperations::getPackets(int nDeviceType, _PACKETS* pPACKETS) const
{
    const CLogLabel L = Label("getPackets()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    const int nResult = OnObject(kNoObject, [=](CSignObject& Object) {
        return pPACKETS ? Object.PointQueries().GetPACKETS(*pPACKETS) : ARI_INVALID_PARAMETERS;
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
    return Forward(L, nDeviceType, kInkPointTime,
                   [=](CSignObject& Object) { return Object.PointQueries().GetInkPointTime(nIndex); });
}

void COperations::FreeInkPointTime(int nDeviceType, char* pInkPointTime) const
{
    FreeText("FreeInkPointTime()", "FreeInkPointTime()", "pInkPointTime", nDeviceType, pInkPointTime);
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
        return Object.Export().SaveDrawingImage(nImageTypeID, pImageFilePath, nDPI);
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
    if (IsOwnDevice(nDeviceType) && (nClipMarginX < 0 || nClipMarginY < 0)) {
        SCR_LOG(L,
                "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nClipMarginX < 0) || (nClipMarginY < 0) !");
        return ARI_INVALID_PARAMETERS;
    }
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        return Object.Export().SetSaveClipImageMargin(bClipImage, nClipMarginX, nClipMarginY);
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
    if (IsOwnDevice(nDeviceType) && !IsEncodableType(nImageTypeID)) {
        SCR_LOG(L, NOT_ENCODABLE("nullptr"));
        return nullptr;
    }
    return Forward(L, nDeviceType, kEncodeBase64Image,
                   [=](CSignObject& Object) { return Object.Export().Base64Encode(nImageTypeID); });
}

void COperations::PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData) const
{
    FreeText("PacketsBase64EncodeFree()", "Base64EncodeFree()", "pEncodedData", nDeviceType, pEncodedData);
}

char* COperations::PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                         bool bEnableTransparentBackground) const
{
    const CLogLabel L = Label("PacketsBase64EncodeEx()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nImageTypeID=%d, bEnableTransparentBackground=%d", nDeviceType,
            nImageTypeID, bEnableTransparentBackground);
    if (IsOwnDevice(nDeviceType) && !IsEncodableType(nImageTypeID)) {
        SCR_LOG(L, NOT_ENCODABLE("nullptr"));
        return nullptr;
    }
    return Forward(L, nDeviceType, kEncodeBase64Image, [=](CSignObject& Object) {
        return Object.Export().Base64EncodeEx(nImageTypeID, bEnableTransparentBackground);
    });
}

void COperations::PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData) const
{
    FreeText("PacketsBase64EncodeExFree()", "Base64EncodeExFree()", "pEncodedData", nDeviceType,
             pEncodedData);
}

int COperations::Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                              wchar_t* pImageFilePath) const
{
    const CLogLabel L = Label("Base64Decode()");
    SCR_LOG_WIDE(L, L"<%ld>-enter, nDeviceType=%d, nImageTypeID=%d, pImageFilePath=%x", nDeviceType,
                 nImageTypeID, AsShortHex(pImageFilePath));
    // All but one of this operation's failures speak of nullptr, though they return a result.
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
        return Object.Export().Base64Decode(nImageTypeID, pEncodedData, pImageFilePath);
    });
    SCR_LOG_WIDE(L, L"<%ld>-leave with nResult=%d !", nResult);
    return nResult;
}

int COperations::GetTotalDecodePacketsNumber(int nDeviceType) const
{
    const CLogLabel L = Label("GetTotalDecodePacketsNumber()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    return Forward(L, nDeviceType, kDecodedInkCount,
                   [](CSignObject& Object) { return Object.Export().GetTotalDecodeInkPointsNumber(); });
}

int COperations::GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID) const
{
    const CLogLabel L = Label("GetDecodePacketsData()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, nIndex=%d, nTypeID=%d", nDeviceType, nIndex, nTypeID);
    if (IsOwnDevice(nDeviceType) && (nTypeID < INKDATATYPE_X || nTypeID > INKDATATYPE_STROKEEND)) {
        SCR_LOG(L, "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nTypeID < INKDATATYPE_X) || (nTypeID > "
                   "INKDATATYPE_STROKEEND) !");
        return ARI_INVALID_PARAMETERS;
    }
    return Forward(L, nDeviceType, kPACKETS,
                   [=](CSignObject& Object) { return Object.Export().GetDecodePACKETS(nIndex, nTypeID); });
}

char* COperations::GetSVGImageBase64Data(int nDeviceType) const
{
    const CLogLabel L = Label("GetSVGImageBase64Data()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    return Forward(L, nDeviceType, kSVGBase64Image,
                   [](CSignObject& Object) { return Object.Export().GetSVGImageBase64Data(); });
}

void COperations::FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData) const
{
    FreeText("FreeSVGImageBase64Data()", "FreeSVGImageBase64Data()", "pEncodedData", nDeviceType,
             pEncodedData);
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
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        // Widgets are made on their own thread, on which the sign widget may also be on its way out.
        if (Object.Identity().IsWidget() && !MayMakeWidgetIn(pParentWidget)) {
            LogOtherQt(L);
            return kNoObject;
        }
        return Object.SetDisplayedFPImageAt(
            {pParentWidget, nCanvasWidth, nCanvasHeight, {nFPLeft, nFPTop, nFPWidth, nFPHeight}});
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
    return Forward(L, nDeviceType, kResult, [=](CSignObject& Object) {
        QWidget* const pParentWidget = Object.Identity().IsWidget() ? FindWidget(ullWId) : nullptr;
        if (Object.Identity().IsWidget() && !pParentWidget) {
            LogOtherQt(L);
            return kNoObject;
        }
        return Object.SetDisplayedFPImageAt(
            {pParentWidget, nCanvasWidth, nCanvasHeight, {nFPLeft, nFPTop, nFPWidth, nFPHeight}});
    });
}

char* COperations::GetFPImageBase64Data(int nDeviceType, int nImageTypeID, bool bFPImageOnly) const
{
    const CLogLabel L = Label("GetFPImageBase64Data()");
    SCR_LOG(L, "<%ld>-enter, nDeviceType=%d, nImageTypeID=%d, bFPImageOnly=%d", nDeviceType, nImageTypeID,
            bFPImageOnly);
    if (IsOwnDevice(nDeviceType) && !IsRasterType(nImageTypeID)) {
        SCR_LOG(
            L,
            "<%ld>-leave with nullptr due to (nImageTypeID < EBITI_BITMAP) || (nImageTypeID > EBITI_PNG) !");
        return nullptr;
    }
    return Forward(L, nDeviceType, kFPImageBase64Data, [=](CSignObject& Object) {
        return Object.GetFPImageBase64Data(nImageTypeID, bFPImageOnly);
    });
}

void COperations::FreeFPImageBase64Data(int nDeviceType, char* pFPImageBase64Data) const
{
    FreeText("FreeFPImageBase64Data()", "FreeFPImageBase64Data()", "pFPImageBase64Data", nDeviceType,
             pFPImageBase64Data);
}
