#include "signobject/signobject.h"

#include "model/results.h"
#include "signobject/liveobject.h"
#include "sync/callbackscope.h"

#include <QColor>

#include <cstring>

namespace {

constexpr int kNoEntryPoint = -1;

// What is exported of an object without a fingerprint reader.
class CNoFingerprint final : public CFingerprintInExport
{
};
const CNoFingerprint kNoFingerprint;

bool NamesModel(const char* pszVersion, const CAcceptedModel& Accepted)
{
    return std::strncmp(pszVersion, Accepted.m_pszModel, static_cast<std::size_t>(Accepted.m_nCompared)) == 0;
}

} // namespace

CSignObject::CSignObject(const CObjectIdentity& Identity, const CDriverCallbacks& Callbacks)
    : m_Identity(Identity), m_Canvas(m_Identity), m_PenSetup(Identity.m_Model), m_KeyActions(m_Identity),
      m_RealTimeData(m_Identity),
      m_PenPipeline(m_Identity, m_PenSetup, m_Canvas, m_Points, m_KeyActions, m_RealTimeData),
      m_Driver(m_Identity, Callbacks),
      m_pFingerprint(Identity.m_Model.m_bHasFingerprint
                         ? std::make_unique<CFingerprint>(m_Identity, m_Canvas, m_Driver, m_bGoingToShutDown)
                         : nullptr),
      m_Export(m_Identity, m_Canvas, m_Points, m_PenSetup,
               m_pFingerprint ? static_cast<const CFingerprintInExport&>(*m_pFingerprint) : kNoFingerprint),
      m_nMaxPressure(Identity.m_Model.m_nInitialMaxPressure), m_PointQueries(m_Identity, m_Points),
      m_DeviceQueries(m_Identity, m_Driver, m_bDeviceConnected, m_nMaxPressure)
{
}

CSignObject::~CSignObject()
{
    // Threads that still run are those of the process that this one was forked from.
    for (std::unique_ptr<CWorkerThread>* const ppThread :
         {&m_pShowFPImageOnDeviceThread, &m_pDoConfirmOrCancelKeyActionThread}) {
        if (*ppThread && (*ppThread)->isRunning())
            static_cast<void>(ppThread->release());
    }
}

void CSignObject::StartThreads(const void* pOwner, int nWidth, int nHeight)
{
    const CLogLabel Label = m_Identity.ConstructorLabel();
    const EIdle eIdle = CWorkerSetting::ForNewObject(Label);
    if (m_pFingerprint)
        m_pShowFPImageOnDeviceThread = MakeShowFPImageThread(
            m_Identity, pOwner, {[this] { return ShowFPImagePass(); }, m_pFingerprint->Bell(), eIdle});
    if (m_pFingerprint && m_Identity.IsWidget())
        SCR_LOG(Label, "<%ld>-width=%d, height=%d, m_pShowFPImageOnDeviceThread=%lx", nWidth, nHeight,
                AsHex(m_pShowFPImageOnDeviceThread.get()));
    else
        SCR_LOG(Label, "<%ld>-width=%d, height=%d", nWidth, nHeight);
    m_pDoConfirmOrCancelKeyActionThread = MakeKeyActionThread(
        m_Identity, pOwner, {[this] { return KeyActionPass(); }, m_KeyActions.Bell(), eIdle});
    m_bThreadsStarted = !m_pShowFPImageOnDeviceThread || m_pShowFPImageOnDeviceThread->Launch();
    m_bThreadsStarted = m_bThreadsStarted && m_pDoConfirmOrCancelKeyActionThread->Launch();
    SCR_LOG(Label, "<%ld>-m_pDoConfirmOrCancelKeyActionThread=%lx",
            AsHex(m_pDoConfirmOrCancelKeyActionThread.get()));
    SCR_LOG(Label, "<%ld>-leave !");
}

EPass CSignObject::KeyActionPass()
{
    if (AreWeGoingToShutDown())
        return EPass::Over;
    // The key lock is left alone while nothing waits: a spinning thread that kept taking it would starve the
    // pen.
    if (!m_KeyActions.IsActionPending())
        return EPass::Idle;
    const auto Use = CLiveObject::Enter(m_Identity.m_Model, m_Identity.m_eKind);
    if (!Use) // the process exits: nothing is done any more
        return EPass::Idle;
    m_KeyActions.CheckIfWeCanDoConfirmOrCancelKeyAction();
    return EPass::Worked;
}

EPass CSignObject::ShowFPImagePass()
{
    if (AreWeGoingToShutDown())
        return EPass::Over;
    m_pFingerprint->CheckIfAnyNewFPImageRawDataOnDeviceAvailable();
    if (!m_pFingerprint->HasWork())
        return EPass::Idle;
    const auto Use = CLiveObject::Enter(m_Identity.m_Model, m_Identity.m_eKind);
    if (!Use) // as above
        return EPass::Idle;
    m_pFingerprint->ProcessShowFPImgaeRawDataOnDevice();
    return EPass::Worked;
}

bool CSignObject::IsDeviceConnected(CStartFailure& Failure)
{
    const CLogLabel Label = m_Identity.Label("IsDeviceConnected()");
    SCR_LOG(Label, "<%ld>-enter...");
    if (!m_bThreadsStarted) {
        SCR_LOG(Label, "<%ld>-(worker thread not started), no more threads !!!");
        Failure.Set(SCRX_START_NO_THREAD,
                    "The system gave no further thread: is a limit of processes or memory reached?");
    }
    bool bConnected = m_bThreadsStarted && m_Driver.LoadScriberaDriver(Failure);
    if (bConnected) {
        CScriberaDriver::CVersionText Version;
        const int nResult = m_Driver.ReadPartsVersion(Version);
        const CAcceptedModel* pAccepted = nullptr;
        for (const CAcceptedModel& Accepted : m_Identity.m_Model.m_Accepted) {
            if (NamesModel(Version.data(), Accepted)) {
                pAccepted = &Accepted;
                break;
            }
        }
        SCR_LOG(Label, "<%ld>-cVersion=%s, nResult=%d", Version.data(), nResult);
        bConnected = pAccepted != nullptr;
        if (!pAccepted) {
            Failure.Set(SCRX_START_MODEL_UNKNOWN, "The pad is no %s: it calls itself '%s', with result %d",
                        m_Identity.m_Model.m_pszName, Version.data(), nResult);
        } else {
            m_nMaxPressure = pAccepted->m_nMaxPressure;
            m_Driver.PreparePad();
            if (!m_Points.IsReady()) {
                SCR_LOG(
                    Label,
                    "<%ld>-((m_pPointDataList || m_pDecodedPointDataList) == nullptr), out of memory !!!");
                Failure.Set(SCRX_START_NO_MEMORY, "There was not enough memory for the points");
                bConnected = false;
            }
        }
    }
    m_bDeviceConnected = bConnected;
    SCR_LOG(Label, "<%ld>-leave with m_bDeviceConnected=%d", bConnected);
    return bConnected;
}

void CSignObject::Shutdown()
{
    const CLogLabel Label = m_Identity.Label("Shutdown()");
    SCR_LOG(Label, "<%ld>-Enter...");
    // What the host does meanwhile on this thread, in a callback that the driver makes here or in an event,
    // is part of this end: it must neither wait for it nor start another object.
    const CCallbackScope Scope;
    StopThread(m_pShowFPImageOnDeviceThread, "m_pShowFPImageOnDeviceThread");
    StopThread(m_pDoConfirmOrCancelKeyActionThread, "m_pDoConfirmOrCancelKeyActionThread");
    // Until the driver has stopped, its samples and the host's calls find the object as it was. Then nobody
    // does: whoever is late is dropped, and no other thread meets driver or lists on their way out.
    m_Driver.ShutdownScriberaDriver(CLiveObject::Close);
    m_Points.Clear();
    m_Export.Shutdown();
    if (m_pFingerprint)
        m_pFingerprint->Shutdown();
    SCR_LOG(Label, "<%ld>-leave !");
}

void CSignObject::StopThread(std::unique_ptr<CWorkerThread>& pThread, const char* pszMember)
{
    if (!pThread)
        return;
    const CLogLabel Label = m_Identity.Label("Shutdown()");
    SCR_LOG(Label, "<%ld>-b4 call %s->quit()...", pszMember);
    StoreShared(m_bGoingToShutDown, true);
    pThread->quit();
    pThread->Wake();
    SCR_LOG(Label, "<%ld>-b4 call %s->wait()...", pszMember);
    pThread->Join();
    pThread.reset();
    SCR_LOG(Label, "<%ld>-after call %s = nullptr...", pszMember);
}

void CSignObject::RxSignPadRawData(int nX, int nY, int nP, int nPenStatus)
{
    if (m_bDeviceConnected)
        m_PenPipeline.RxSignPadRawData(nX, nY, nP, nPenStatus,
                                       m_Identity.m_Model.PressureLimit(m_nMaxPressure));
}

void CSignObject::RxSignPadFPRawData(unsigned char* pucRawData, int nDataLength, int nScore)
{
    if (m_bDeviceConnected && pucRawData && m_pFingerprint)
        m_pFingerprint->RxSignPadFPRawData(pucRawData, nDataLength, nScore);
}

int CSignObject::SetDisplayedFPImageAt(const CFPRequest& Request)
{
    return m_pFingerprint ? PlaceFingerprint(*m_pFingerprint, Request) : kNoObject;
}

char* CSignObject::GetFPImageBase64Data(int nImageTypeID, bool bFPImageOnly) const
{
    return m_pFingerprint ? m_pFingerprint->GetFPImageBase64Data(m_Export, nImageTypeID, bFPImageOnly)
                          : nullptr;
}

int CSignObject::ClearDeviceContent()
{
    const CLogLabel Label = m_Identity.Label("ClearDeviceContent()");
    SCR_LOG(Label, "<%ld>-enter...");
    int nResult = kNoEntryPoint;
    if (const auto pfnClear = m_Driver.Calls().m_pfn_SCRDAPI_ClearDeviceContent) {
        m_Canvas.ClearSignCanvas();
        if (m_KeyActions.TakeCancelTouch()) {
            // A touch of the cancel key leaves the pad's own screen to the pad.
            SCR_LOG(Label, m_Identity.m_Model.m_pszCancelClearLine);
            nResult = ARI_SUCCESS;
        } else {
            const bool bLogs = m_Identity.m_Model.m_bLogsClearCall;
            if (bLogs)
                SCR_LOG(Label, "<%ld>-b4 call m_pfn_SCRDAPI_ClearDeviceContent()...");
            nResult = pfnClear();
            if (bLogs)
                SCR_LOG(Label, "<%ld>-after call m_pfn_SCRDAPI_ClearDeviceContent()...");
        }
    }
    m_Export.EndClipping();
    m_Points.Clear();
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", nResult);
    return nResult;
}

int CSignObject::SetDevicePenWidth(int nPenWidth)
{
    const CLogLabel Label = m_Identity.Label("SetDevicePenWidth()");
    SCR_LOG(Label, "<%ld>-enter, nPenWidth=%d", nPenWidth);
    if (nPenWidth < 1 || nPenWidth > 10) {
        SCR_LOG(Label, "<%ld>-leave with ARI_INVALID_PARAMETERS since nPenWidth is out of range !");
        return ARI_INVALID_PARAMETERS;
    }
    m_PenSetup.SetWidth(nPenWidth, m_nMaxPressure);
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", ARI_SUCCESS);
    return ARI_SUCCESS;
}

int CSignObject::SetDevicePenColor(int nR, int nG, int nB)
{
    // This one label has always been written without its brackets.
    const CLogLabel Label = m_Identity.Label("SetDevicePenColor");
    SCR_LOG(Label, "<%ld>-enter, nR=%d, nG=%d, nB=%d", nR, nG, nB);
    QColor Color;
    Color.setRgb(nR, nG, nB, 255);
    m_PenSetup.SetColor(Color);
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", ARI_SUCCESS);
    return ARI_SUCCESS;
}

int CSignObject::SetDevicePenStyle(bool bWithPressureValue)
{
    const CLogLabel Label = m_Identity.Label("SetDevicePenStyle()");
    SCR_LOG(Label, "<%ld>-enter, bWithPressureValue=%d", bWithPressureValue);
    const auto pfnSetStyle = m_Driver.Calls().m_pfn_SCRDAPI_SetDevicePenStyle;
    if (pfnSetStyle)
        m_PenSetup.SetPressureMode(bWithPressureValue);
    return AskDriver(Label, pfnSetStyle, bWithPressureValue);
}

int CSignObject::OpenDeviceLCD(bool bOn)
{
    const CLogLabel Label = m_Identity.Label("OpenDeviceLCD()");
    SCR_LOG(Label, "<%ld>-enter, bOn=%d", bOn);
    const auto pfnOpen = m_Driver.Calls().m_pfn_SCRDAPI_OpenDeviceLCD;
    if (!bOn && pfnOpen)
        m_Canvas.ClearSignCanvas();
    return AskDriver(Label, pfnOpen, bOn);
}
