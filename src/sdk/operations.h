// The exported operations that forward to the live object, written once for all families.
#pragma once

#include "sdk/familycall.h"

template <typename TResult>
struct CWaysOut;

// Each method is the exported function of the same name: it checks the arguments, finds the live object and
// forwards.
class COperations : public CFamilyCall
{
public:
    explicit COperations(const CPadModel& Model) : CFamilyCall(Model) {}

    int OpenLCD(int nDeviceType, bool bOn) const;
    int Clear(int nDeviceType) const;
    int GetHWPenID(int nDeviceType, char* pPenID, int nMaxCount) const;
    int GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount) const;
    int GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount) const;
    int DisplayHWVersion(int nDeviceType, bool bOn) const;
    int getDeviceInfo(int nDeviceType, int nIndex, void* pOutput) const;
    int SetPenStyle(int nDeviceType, bool bPressureOn) const;
    int SetPenWidth(int nDeviceType, int nPenWidth) const;
    int SetPenColor(int nDeviceType, int nR, int nG, int nB) const;

    int SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus) const;
    bool RealTimeSignatureDataCallback(int nDeviceType,
                                       ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback) const;
    int GetDeviceConfirmOrCancelKeyStatus(int nDeviceType) const;

    int GetTotalPacketsNumber(int nDeviceType) const;
    int getPackets(int nDeviceType, _PACKETS* pPACKETS) const;
    char* GetInkPointTime(int nDeviceType, int nIndex) const;
    void FreeInkPointTime(int nDeviceType, char* pInkPointTime) const;

    int SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath, int nDPILevel) const;
    int SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX, int nClipMarginY) const;
    char* PacketsBase64Encode(int nDeviceType, int nImageTypeID) const;
    void PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData) const;
    char* PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID, bool bEnableTransparentBackground) const;
    void PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData) const;
    int Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                     wchar_t* pImageFilePath) const;
    int GetTotalDecodePacketsNumber(int nDeviceType) const;
    int GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID) const;
    char* GetSVGImageBase64Data(int nDeviceType) const;
    void FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData) const;

    int SetDisplayedFPImageAt(int nDeviceType, QWidget* pParentWidget, int nCanvasWidth, int nCanvasHeight,
                              int nFPLeft, int nFPTop, int nFPWidth, int nFPHeight) const;
    int SetDisplayedFPImageAtByWId(int nDeviceType, unsigned long long ullWId, int nCanvasWidth,
                                   int nCanvasHeight, int nFPLeft, int nFPTop, int nFPWidth,
                                   int nFPHeight) const;
    char* GetFPImageBase64Data(int nDeviceType, int nImageTypeID, bool bFPImageOnly) const;
    void FreeFPImageBase64Data(int nDeviceType, char* pFPImageBase64Data) const;

private:
    template <typename TResult, typename TCall>
    TResult OnObject(TResult Missing, TCall Call) const;
    template <typename TResult, typename TCall>
    TResult Forward(const CLogLabel& Label, int nDeviceType, const CWaysOut<TResult>& WaysOut,
                    TCall Call) const;
    void FreeText(const char* pszFunction, const char* pszMethod, const char* pszArgument, int nDeviceType,
                  const char* pText) const;
};
