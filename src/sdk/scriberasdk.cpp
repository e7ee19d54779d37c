// The exported functions, stamped from one list per group of families, and the two globals of the live
// object.
#include "scriberasdk.h"

#include "model/results.h"
#include "sdk/about.h"
#include "sdk/lifecycle.h"
#include "sdk/operations.h"
#include "sync/attempt.h"
#include "sync/nocancellation.h"

#include <type_traits>

#include <cxxabi.h>

void* g_pSignWidget = nullptr;
unsigned char g_bUseSignObj = 0;

namespace {

// No exception leaves the library: a call that met one gives not done, null, false or nothing. And no call is
// left in the middle by a cancellation of its thread.
template <typename TCall>
SCRIBERA_CATCHES_UNWINDING auto WithoutException(TCall Call) -> decltype(Call())
{
    using TResult = decltype(Call());
    const CNoCancellation Guard;
    try {
        return Call();
    } catch (const abi::__forced_unwind&) {
        throw; // pthread_exit() in something of the host's that the call reached
    } catch (...) {
        if constexpr (std::is_same_v<TResult, int>)
            return kNotDone;
        else
            return TResult();
    }
}

} // namespace

#define STAMP(Model, Class, Result, Name, Parameters, Arguments)                                             \
    Result SC##Model##_##Name Parameters                                                                     \
    {                                                                                                        \
        return WithoutException([=] { return Class(g_Pad##Model).Name Arguments; });                         \
    }

// What every family exports.
#define STAMP_COMMON(Model)                                                                                  \
    STAMP(Model, CLifeCycle, bool, InitialDevice,                                                            \
          (int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth, int nHeight),                \
          (nDeviceType, pParentWidget, nX, nY, nWidth, nHeight))                                             \
    STAMP(Model, CLifeCycle, bool, InitialDeviceByWId,                                                       \
          (int nDeviceType, unsigned long long ullWId, int nX, int nY, int nWidth, int nHeight),             \
          (nDeviceType, ullWId, nX, nY, nWidth, nHeight))                                                    \
    STAMP(Model, CLifeCycle, int, UnInitialDevice, (int nDeviceType), (nDeviceType))                         \
    STAMP(Model, COperations, int, Clear, (int nDeviceType), (nDeviceType))                                  \
    STAMP(Model, COperations, int, GetHWPadID, (int nDeviceType, char* pPadID, int nMaxCount),               \
          (nDeviceType, pPadID, nMaxCount))                                                                  \
    STAMP(Model, COperations, int, GetHWVersionID, (int nDeviceType, char* pVersion, int nMaxCount),         \
          (nDeviceType, pVersion, nMaxCount))                                                                \
    STAMP(Model, COperations, int, getDeviceInfo, (int nDeviceType, int nIndex, void* pOutput),              \
          (nDeviceType, nIndex, pOutput))                                                                    \
    STAMP(Model, COperations, int, SetPenStyle, (int nDeviceType, bool bPressureOn),                         \
          (nDeviceType, bPressureOn))                                                                        \
    STAMP(Model, COperations, int, SetPenWidth, (int nDeviceType, int nPenWidth), (nDeviceType, nPenWidth))  \
    STAMP(Model, COperations, int, SetPenColor, (int nDeviceType, int nR, int nG, int nB),                   \
          (nDeviceType, nR, nG, nB))                                                                         \
    STAMP(Model, COperations, int, SignatureStatusCallback,                                                  \
          (int nDeviceType, ScriberaSignatureStatusCallback pStatus), (nDeviceType, pStatus))                \
    STAMP(Model, COperations, bool, RealTimeSignatureDataCallback,                                           \
          (int nDeviceType, ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback),                   \
          (nDeviceType, pfnRealTimeSignDataCallback))                                                        \
    STAMP(Model, COperations, int, GetDeviceConfirmOrCancelKeyStatus, (int nDeviceType), (nDeviceType))      \
    STAMP(Model, COperations, int, GetTotalPacketsNumber, (int nDeviceType), (nDeviceType))                  \
    STAMP(Model, COperations, int, getPackets, (int nDeviceType, _PACKETS* pPACKETS),                        \
          (nDeviceType, pPACKETS))                                                                           \
    STAMP(Model, COperations, char*, GetInkPointTime, (int nDeviceType, int nIndex), (nDeviceType, nIndex))  \
    STAMP(Model, COperations, void, FreeInkPointTime, (int nDeviceType, char* pInkPointTime),                \
          (nDeviceType, pInkPointTime))                                                                      \
    STAMP(Model, COperations, int, SaveDrawingImage,                                                         \
          (int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath, int nDPILevel),                       \
          (nDeviceType, nImageTypeID, pImageFilePath, nDPILevel))                                            \
    STAMP(Model, COperations, int, SetSaveCenterImageClip,                                                   \
          (int nDeviceType, bool bClipImage, int nClipMarginX, int nClipMarginY),                            \
          (nDeviceType, bClipImage, nClipMarginX, nClipMarginY))                                             \
    STAMP(Model, COperations, char*, PacketsBase64Encode, (int nDeviceType, int nImageTypeID),               \
          (nDeviceType, nImageTypeID))                                                                       \
    STAMP(Model, COperations, void, PacketsBase64EncodeFree, (int nDeviceType, char* pEncodedData),          \
          (nDeviceType, pEncodedData))                                                                       \
    STAMP(Model, COperations, char*, PacketsBase64EncodeEx,                                                  \
          (int nDeviceType, int nImageTypeID, bool bEnableTransparentBackground),                            \
          (nDeviceType, nImageTypeID, bEnableTransparentBackground))                                         \
    STAMP(Model, COperations, void, PacketsBase64EncodeExFree, (int nDeviceType, char* pEncodedData),        \
          (nDeviceType, pEncodedData))                                                                       \
    STAMP(Model, COperations, int, Base64Decode,                                                             \
          (int nDeviceType, int nImageTypeID, const char* pEncodedData, wchar_t* pImageFilePath),            \
          (nDeviceType, nImageTypeID, pEncodedData, pImageFilePath))                                         \
    STAMP(Model, COperations, int, GetTotalDecodePacketsNumber, (int nDeviceType), (nDeviceType))            \
    STAMP(Model, COperations, int, GetDecodePacketsData, (int nDeviceType, int nIndex, int nTypeID),         \
          (nDeviceType, nIndex, nTypeID))                                                                    \
    STAMP(Model, COperations, char*, GetSVGImageBase64Data, (int nDeviceType), (nDeviceType))                \
    STAMP(Model, COperations, void, FreeSVGImageBase64Data, (int nDeviceType, char* pEncodedData),           \
          (nDeviceType, pEncodedData))                                                                       \
    STAMP(Model, CAbout, void, AboutBox, (QWidget * pParentWidget), (pParentWidget))                         \
    STAMP(Model, CAbout, void, AboutBoxByWId, (unsigned long long ullWId), (ullWId))                         \
    STAMP(Model, CAbout, void, GetAboutInfo, (int nDeviceType, char* pBuffer), (nDeviceType, pBuffer))

// What the families of pads with a screen export in addition.
#define STAMP_SCREEN(Model)                                                                                  \
    STAMP(Model, COperations, int, OpenLCD, (int nDeviceType, bool bOn), (nDeviceType, bOn))                 \
    STAMP(Model, COperations, int, GetHWPenID, (int nDeviceType, char* pPenID, int nMaxCount),               \
          (nDeviceType, pPenID, nMaxCount))                                                                  \
    STAMP(Model, COperations, int, DisplayHWVersion, (int nDeviceType, bool bOn), (nDeviceType, bOn))

// What the family of the pad with a fingerprint reader exports in addition.
#define STAMP_FINGERPRINT(Model)                                                                             \
    STAMP(Model, COperations, int, SetDisplayedFPImageAt,                                                    \
          (int nDeviceType, QWidget* pParentWidget, int nCanvasWidth, int nCanvasHeight, int nFPLeft,        \
           int nFPTop, int nFPWidth, int nFPHeight),                                                         \
          (nDeviceType, pParentWidget, nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight))   \
    STAMP(Model, COperations, int, SetDisplayedFPImageAtByWId,                                               \
          (int nDeviceType, unsigned long long ullWId, int nCanvasWidth, int nCanvasHeight, int nFPLeft,     \
           int nFPTop, int nFPWidth, int nFPHeight),                                                         \
          (nDeviceType, ullWId, nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight))          \
    STAMP(Model, COperations, char*, GetFPImageBase64Data,                                                   \
          (int nDeviceType, int nImageTypeID, bool bFPImageOnly), (nDeviceType, nImageTypeID, bFPImageOnly)) \
    STAMP(Model, COperations, void, FreeFPImageBase64Data, (int nDeviceType, char* pFPImageBase64Data),      \
          (nDeviceType, pFPImageBase64Data))

SCRIBERA_FAMILIES(STAMP_COMMON)
SCRIBERA_FAMILIES_WITH_SCREEN(STAMP_SCREEN)
SCRIBERA_FAMILIES_WITH_FINGERPRINT(STAMP_FINGERPRINT)
