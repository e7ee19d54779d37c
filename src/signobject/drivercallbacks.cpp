#include "signobject/drivercallbacks.h"

#include "signobject/liveobject.h"
#include "signobject/signobject.h"
#include "sync/attempt.h"
#include "sync/callbackscope.h"

#include <cstddef>

namespace {

// Calls Work on the live object if it is of the class that the callback belongs to. Nothing that goes wrong
// in there may reach the driver.
template <typename TWork>
void OnLiveObject(const CPadModel& Model, EObjectKind eKind, TWork Work)
{
    const CCallbackScope Scope;
    const CLiveObject::CUse Use = CLiveObject::Enter(Model, eKind);
    if (Use && !Attempt([&] { Work(*Use); }))
        SCR_LOG((CLogLabel{Model.NamesOf(eKind).m_SignObject.m_pszClass, "::", Model.m_pszRawDataFunction}),
                "<%ld>-leave due to (exception) !");
}

} // namespace

#define PEN_CALLBACK(FunctionName, Model, eKind)                                                             \
    static void FunctionName(int nX, int nY, int nP, int nPenStatus)                                         \
    {                                                                                                        \
        OnLiveObject(Model, eKind,                                                                           \
                     [=](CSignObject& Object) { Object.RxSignPadRawData(nX, nY, nP, nPenStatus); });         \
    }

#define FINGERPRINT_CALLBACK(FunctionName, Model, eKind)                                                     \
    static void FunctionName(unsigned char* pucRawData, int nDataLength, int nScore)                         \
    {                                                                                                        \
        OnLiveObject(Model, eKind, [=](CSignObject& Object) {                                                \
            Object.RxSignPadFPRawData(pucRawData, nDataLength, nScore);                                      \
        });                                                                                                  \
    }

#define PEN_CALLBACKS(Model)                                                                                 \
    PEN_CALLBACK(Rx##Model##SignPadRawDataCallback, g_Pad##Model, EObjectKind::Widget)                       \
    PEN_CALLBACK(Rx##Model##SignObjRawDataCallback, g_Pad##Model, EObjectKind::Windowless)
#define FINGERPRINT_CALLBACKS(Model)                                                                         \
    FINGERPRINT_CALLBACK(Rx##Model##SignPadFPRawDataCallback, g_Pad##Model, EObjectKind::Widget)             \
    FINGERPRINT_CALLBACK(Rx##Model##SignObjFPRawDataCallback, g_Pad##Model, EObjectKind::Windowless)

SCRIBERA_FAMILIES(PEN_CALLBACKS)
SCRIBERA_FAMILIES_WITH_FINGERPRINT(FINGERPRINT_CALLBACKS)

namespace {

template <typename TCallback>
struct CRow
{
    const CPadModel& m_Model;
    TCallback m_pfnWidget;
    TCallback m_pfnWindowless;
};

#define PEN_ROW(Model) {g_Pad##Model, Rx##Model##SignPadRawDataCallback, Rx##Model##SignObjRawDataCallback},
#define FINGERPRINT_ROW(Model)                                                                               \
    {g_Pad##Model, Rx##Model##SignPadFPRawDataCallback, Rx##Model##SignObjFPRawDataCallback},

constexpr CRow<PfnPenCallback> kPen[] = {SCRIBERA_FAMILIES(PEN_ROW)};
constexpr CRow<PfnFingerprintCallback> kFingerprint[] = {SCRIBERA_FAMILIES_WITH_FINGERPRINT(FINGERPRINT_ROW)};

// The class's function in the table; null for a model without a row.
template <typename TCallback, std::size_t nRows>
TCallback CallbackIn(const CRow<TCallback> (&Rows)[nRows], const CObjectIdentity& Identity)
{
    for (const CRow<TCallback>& Row : Rows)
        if (&Row.m_Model == &Identity.m_Model)
            return Identity.IsWidget() ? Row.m_pfnWidget : Row.m_pfnWindowless;
    return nullptr;
}

} // namespace

CDriverCallbacks DriverCallbacksOf(const CObjectIdentity& Identity)
{
    return {CallbackIn(kPen, Identity), CallbackIn(kFingerprint, Identity)};
}
