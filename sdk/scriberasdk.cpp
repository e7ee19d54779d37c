// The exported functions, stamped from one list per group of families, and the two globals of the live
// object.
#include "scriberasdk.h"

#include "sdk/operations.h"
#include "signcore/results.h"
#include "sync/nocancellation.h"

#include <type_traits>

#include <cxxabi.h>

void* g_pSignWidget = nullptr;
unsigned char g_bUseSignObj = 0;

namespace {

// No exception leaves the library: a call that met one gives not done, null, false or nothing. And no call is
// left in the middle by a cancellation of its thread.
template <typename TCall>
auto WithoutException(TCall Call) -> decltype(Call())
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

#define STAMP(Prefix, Family, Result, Name, Parameters, Arguments)                                           \
    Result Prefix##Name Parameters                                                                           \
    {                                                                                                        \
        return WithoutException([=] { return COperations(Family).Name Arguments; });                         \
    }

// What every family exports.
#define STAMP_COMMON(P, F)                                                                                   \
    STAMP(P, F, bool, InitialDevice,                                                                         \
          (int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth, int nHeight),                \
          (nDeviceType, pParentWidget, nX, nY, nWidth, nHeight))                                             \
    STAMP(P, F, bool, InitialDeviceByWId,                                                                    \
          (int nDeviceType, unsigned long long ullWId, int nX, int nY, int nWidth, int nHeight),             \
          (nDeviceType, ullWId, nX, nY, nWidth, nHeight))                                                    \
    STAMP(P, F, int, UnInitialDevice, (int nDeviceType), (nDeviceType))                                      \
    STAMP(P, F, int, Clear, (int nDeviceType), (nDeviceType))                                                \
    STAMP(P, F, int, GetHWPadID, (int nDeviceType, char* pPadID, int nMaxCount),                             \
          (nDeviceType, pPadID, nMaxCount))                                                                  \
    STAMP(P, F, int, GetHWVersionID, (int nDeviceType, char* pVersion, int nMaxCount),                       \
          (nDeviceType, pVersion, nMaxCount))                                                                \
    STAMP(P, F, int, getDeviceInfo, (int nDeviceType, int nIndex, void* pOutput),                            \
          (nDeviceType, nIndex, pOutput))                                                                    \
    STAMP(P, F, int, SetPenStyle, (int nDeviceType, bool bPressureOn), (nDeviceType, bPressureOn))           \
    STAMP(P, F, int, SetPenWidth, (int nDeviceType, int nPenWidth), (nDeviceType, nPenWidth))                \
    STAMP(P, F, int, SetPenColor, (int nDeviceType, int nR, int nG, int nB), (nDeviceType, nR, nG, nB))      \
    STAMP(P, F, int, SignatureStatusCallback, (int nDeviceType, void (*pStatus)(int)),                       \
          (nDeviceType, pStatus))                                                                            \
    STAMP(P, F, bool, RealTimeSignatureDataCallback,                                                         \
          (int nDeviceType, void (*pfnRealTimeSignDataCallback)(unsigned long, long)),                       \
          (nDeviceType, pfnRealTimeSignDataCallback))                                                        \
    STAMP(P, F, int, GetDeviceConfirmOrCancelKeyStatus, (int nDeviceType), (nDeviceType))                    \
    STAMP(P, F, int, GetTotalPacketsNumber, (int nDeviceType), (nDeviceType))                                \
    STAMP(P, F, int, getPackets, (int nDeviceType, _PACKETS* pPACKETS), (nDeviceType, pPACKETS))             \
    STAMP(P, F, char*, GetInkPointTime, (int nDeviceType, int nIndex), (nDeviceType, nIndex))                \
    STAMP(P, F, void, FreeInkPointTime, (int nDeviceType, char* pInkPointTime),                              \
          (nDeviceType, pInkPointTime))                                                                      \
    STAMP(P, F, int, SaveDrawingImage,                                                                       \
          (int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath, int nDPILevel),                       \
          (nDeviceType, nImageTypeID, pImageFilePath, nDPILevel))                                            \
    STAMP(P, F, int, SetSaveCenterImageClip,                                                                 \
          (int nDeviceType, bool bClipImage, int nClipMarginX, int nClipMarginY),                            \
          (nDeviceType, bClipImage, nClipMarginX, nClipMarginY))                                             \
    STAMP(P, F, char*, PacketsBase64Encode, (int nDeviceType, int nImageTypeID),                             \
          (nDeviceType, nImageTypeID))                                                                       \
    STAMP(P, F, void, PacketsBase64EncodeFree, (int nDeviceType, char* pEncodedData),                        \
          (nDeviceType, pEncodedData))                                                                       \
    STAMP(P, F, char*, PacketsBase64EncodeEx,                                                                \
          (int nDeviceType, int nImageTypeID, bool bEnableTransparentBackground),                            \
          (nDeviceType, nImageTypeID, bEnableTransparentBackground))                                         \
    STAMP(P, F, void, PacketsBase64EncodeExFree, (int nDeviceType, char* pEncodedData),                      \
          (nDeviceType, pEncodedData))                                                                       \
    STAMP(P, F, int, Base64Decode,                                                                           \
          (int nDeviceType, int nImageTypeID, const char* pEncodedData, wchar_t* pImageFilePath),            \
          (nDeviceType, nImageTypeID, pEncodedData, pImageFilePath))                                         \
    STAMP(P, F, int, GetTotalDecodePacketsNumber, (int nDeviceType), (nDeviceType))                          \
    STAMP(P, F, int, GetDecodePacketsData, (int nDeviceType, int nIndex, int nTypeID),                       \
          (nDeviceType, nIndex, nTypeID))                                                                    \
    STAMP(P, F, char*, GetSVGImageBase64Data, (int nDeviceType), (nDeviceType))                              \
    STAMP(P, F, void, FreeSVGImageBase64Data, (int nDeviceType, char* pEncodedData),                         \
          (nDeviceType, pEncodedData))                                                                       \
    STAMP(P, F, void, AboutBox, (QWidget * pParentWidget), (pParentWidget))                                  \
    STAMP(P, F, void, AboutBoxByWId, (unsigned long long ullWId), (ullWId))                                  \
    STAMP(P, F, void, GetAboutInfo, (int nDeviceType, char* pBuffer), (nDeviceType, pBuffer))

// What the families of pads with a screen export besides.
#define STAMP_SCREEN(P, F)                                                                                   \
    STAMP(P, F, int, OpenLCD, (int nDeviceType, bool bOn), (nDeviceType, bOn))                               \
    STAMP(P, F, int, GetHWPenID, (int nDeviceType, char* pPenID, int nMaxCount),                             \
          (nDeviceType, pPenID, nMaxCount))                                                                  \
    STAMP(P, F, int, DisplayHWVersion, (int nDeviceType, bool bOn), (nDeviceType, bOn))

// What the family of the pad with a fingerprint reader exports besides.
#define STAMP_FINGERPRINT(P, F)                                                                              \
    STAMP(P, F, int, SetDisplayedFPImageAt,                                                                  \
          (int nDeviceType, QWidget* pParentWidget, int nCanvasWidth, int nCanvasHeight, int nFPLeft,        \
           int nFPTop, int nFPWidth, int nFPHeight),                                                         \
          (nDeviceType, pParentWidget, nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight))   \
    STAMP(P, F, int, SetDisplayedFPImageAtByWId,                                                             \
          (int nDeviceType, unsigned long long ullWId, int nCanvasWidth, int nCanvasHeight, int nFPLeft,     \
           int nFPTop, int nFPWidth, int nFPHeight),                                                         \
          (nDeviceType, ullWId, nCanvasWidth, nCanvasHeight, nFPLeft, nFPTop, nFPWidth, nFPHeight))          \
    STAMP(P, F, char*, GetFPImageBase64Data, (int nDeviceType, int nImageTypeID, bool bFPImageOnly),         \
          (nDeviceType, nImageTypeID, bFPImageOnly))                                                         \
    STAMP(P, F, void, FreeFPImageBase64Data, (int nDeviceType, char* pFPImageBase64Data),                    \
          (nDeviceType, pFPImageBase64Data))

STAMP_COMMON(SCK210_, g_FamilyK210)
STAMP_SCREEN(SCK210_, g_FamilyK210)

STAMP_COMMON(SCK420_, g_FamilyK420)
STAMP_SCREEN(SCK420_, g_FamilyK420)

STAMP_COMMON(SCK421B_, g_FamilyK421B)
STAMP_SCREEN(SCK421B_, g_FamilyK421B)
STAMP_FINGERPRINT(SCK421B_, g_FamilyK421B)

STAMP_COMMON(SCKM730_, g_FamilyKM730)

STAMP_COMMON(SCT580_, g_FamilyT580)
