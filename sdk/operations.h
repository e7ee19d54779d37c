// The exported operations, written once for all families.
#pragma once

#include "log/logfileutil.h"
#include "scriberasdk.h"
#include "sdk/family.h"
#include "signcore/liveobject.h"

class CSignObject;
class CSignWidget;

// One call into a family's functions: checks the arguments, finds the live object and forwards. Stateless;
// each method is the exported function of the same name. May be used on any thread on which the host calls.
class COperations
{
public:
    explicit COperations(const CFamily& Family) : m_Family(Family), m_Model(Family.m_Model) {}

    bool InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                       int nHeight) const;
    bool InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY, int nWidth,
                            int nHeight) const;
    int UnInitialDevice(int nDeviceType) const;

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

    int SignatureStatusCallback(int nDeviceType, void (*pStatus)(int)) const;
    bool RealTimeSignatureDataCallback(int nDeviceType,
                                       void (*pfnRealTimeSignDataCallback)(unsigned long, long)) const;
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

    void AboutBox(QWidget* pParentWidget) const;
    void AboutBoxByWId(unsigned long long ullWId) const;
    void GetAboutInfo(int nDeviceType, char* pBuffer) const;

private:
    CLogLabel Label(const char* pszFunction) const { return {m_Model.m_pszFamily, "", pszFunction}; }
    bool IsOwnDevice(int nDeviceType) const { return nDeviceType == m_Model.m_nDeviceType; }
    bool AcceptsDevice(const CLogLabel& Label, int nDeviceType, const char* pszFailure) const;

    template <typename TResult, typename TCall>
    TResult OnObject(TResult Missing, TCall Call) const;
    template <typename TCall>
    int CallForResult(const CLogLabel& Label, int nMissing, const char* pszLeaveLine, TCall Call) const;
    template <typename TCall>
    char* CallForText(const CLogLabel& Label, const char* pszLeaveLine, TCall Call) const;
    void FreeText(const char* pszFunction, const char* pszArgument, int nDeviceType, char* pText,
                  void (CSignObject::*pfnFree)(char*)) const;

    bool StartObject(const CLogLabel& Label, CLiveObject::CStart& Start, QWidget* pParentWidget,
                     bool bWindowless, int nX, int nY, int nWidth, int nHeight) const;
    static int PlaceFingerprint(CSignObject& Object, QWidget* pParentWidget, const int (&CanvasSize)[2],
                                const int (&FPRect)[4]);
    static void ShowAboutBox(QWidget* pParentWidget);
    bool MakeAndConnect(CLiveObject::CStart& Start, QWidget* pParentWidget, bool bWindowless, int nX, int nY,
                        int nWidth, int nHeight) const;
    static void EndWidget(CLiveObject::CEnding& Ending, CSignWidget& Widget);
    static CLiveObject::CStart::EAnswer BeginStart(const CLogLabel& Label, CLiveObject::CStart& Start,
                                                   bool bWindowless);

    const CFamily& m_Family;
    const CPadModel& m_Model;
};
