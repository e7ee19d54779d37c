#include "signcore/drivercallbacks.h"

#include "signcore/liveobject.h"
#include "signcore/signobject.h"
#include "sync/callbackscope.h"

#include <cxxabi.h>

namespace {

// Calls Work on the live object if it is of the class that the callback belongs to. Nothing that goes wrong
// in there may reach the driver.
template <typename TWork>
void OnLiveObject(const CPadModel& Model, EObjectKind eKind, TWork Work)
{
    if (CLiveObject::IsClosedForExit())
        return;
    const CLiveObject::CUse Use;
    // Looked at again now that the use is counted: an exiting process waits for the uses that it can see.
    if (CLiveObject::IsClosedForExit())
        return;
    const CCallbackScope Scope;
    try {
        if (CSignObject* const pObject = Use.ObjectOf(Model, eKind))
            Work(*pObject);
    } catch (const abi::__forced_unwind&) {
        throw; // pthread_exit() or a cancellation in the host's callback
    } catch (...) {
        SCR_LOG((CLogLabel{Model.NamesOf(eKind).m_SignObject.m_pszClass, "::", Model.m_pszRawDataFunction}),
                "<%ld>-leave due to (exception) !");
    }
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

PEN_CALLBACK(RxK210SignPadRawDataCallback, g_PadK210, EObjectKind::Widget)
PEN_CALLBACK(RxK210SignObjRawDataCallback, g_PadK210, EObjectKind::Windowless)
PEN_CALLBACK(RxK420SignPadRawDataCallback, g_PadK420, EObjectKind::Widget)
PEN_CALLBACK(RxK420SignObjRawDataCallback, g_PadK420, EObjectKind::Windowless)
PEN_CALLBACK(RxK421BSignPadRawDataCallback, g_PadK421B, EObjectKind::Widget)
PEN_CALLBACK(RxK421BSignObjRawDataCallback, g_PadK421B, EObjectKind::Windowless)
PEN_CALLBACK(RxKM730SignPadRawDataCallback, g_PadKM730, EObjectKind::Widget)
PEN_CALLBACK(RxKM730SignObjRawDataCallback, g_PadKM730, EObjectKind::Windowless)
PEN_CALLBACK(RxT580SignPadRawDataCallback, g_PadT580, EObjectKind::Widget)
PEN_CALLBACK(RxT580SignObjRawDataCallback, g_PadT580, EObjectKind::Windowless)
FINGERPRINT_CALLBACK(RxK421BSignPadFPRawDataCallback, g_PadK421B, EObjectKind::Widget)
FINGERPRINT_CALLBACK(RxK421BSignObjFPRawDataCallback, g_PadK421B, EObjectKind::Windowless)

CDriverCallbacks DriverCallbacksOf(const CPadModel& Model, EObjectKind eKind)
{
    struct CRow
    {
        const CPadModel* m_pModel;
        CDriverCallbacks m_Widget;
        CDriverCallbacks m_Windowless;
    };
    static constexpr CRow kRows[] = {
        {&g_PadK210, {RxK210SignPadRawDataCallback, nullptr}, {RxK210SignObjRawDataCallback, nullptr}},
        {&g_PadK420, {RxK420SignPadRawDataCallback, nullptr}, {RxK420SignObjRawDataCallback, nullptr}},
        {&g_PadK421B,
         {RxK421BSignPadRawDataCallback, RxK421BSignPadFPRawDataCallback},
         {RxK421BSignObjRawDataCallback, RxK421BSignObjFPRawDataCallback}},
        {&g_PadKM730, {RxKM730SignPadRawDataCallback, nullptr}, {RxKM730SignObjRawDataCallback, nullptr}},
        {&g_PadT580, {RxT580SignPadRawDataCallback, nullptr}, {RxT580SignObjRawDataCallback, nullptr}},
    };
    for (const CRow& Row : kRows) {
        if (Row.m_pModel == &Model)
            return eKind == EObjectKind::Widget ? Row.m_Widget : Row.m_Windowless;
    }
    return {};
}
