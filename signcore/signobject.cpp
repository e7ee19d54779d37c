#include "signcore/signobject.h"

#include "signcore/liveobject.h"
#include "signcore/results.h"
#include "sync/callbackscope.h"

#include <QColor>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>

namespace {

constexpr int kNoEntryPoint = -1;
constexpr int kNoSuchPoint = -1;

constexpr char kVendorName[] = "Corvenna";
constexpr std::int32_t kDriverVersion[] = {3, 0};

bool NamesModel(const char* pszVersion, const CAcceptedModel& Accepted)
{
    return std::strncmp(pszVersion, Accepted.m_pszModel, static_cast<std::size_t>(Accepted.m_nCompared)) == 0;
}

} // namespace

CSignObject::CSignObject(const CPadModel& Model, EObjectKind eKind)
    : m_Identity{Model, eKind}, m_Canvas(m_Identity), m_PenSetup(Model), m_KeyActions(m_Identity),
      m_RealTimeData(m_Identity),
      m_PenPipeline(m_Identity, m_PenSetup, m_Canvas, m_KeyActions, m_RealTimeData), m_Driver(m_Identity),
      m_pFingerprint(Model.m_bHasFingerprint ? std::make_unique<CFingerprintIntake>(
                                                   m_Identity, m_Canvas, m_Driver, m_bGoingToShutDown)
                                             : nullptr),
      m_nMaxPressure(Model.m_nInitialMaxPressure), m_pPointDataList(new (std::nothrow) CInkPointList),
      m_pDecodedPointDataList(new (std::nothrow) CInkPointList)
{
}

CSignObject::~CSignObject()
{
    // Threads that still run are those of the process that this one was forked from.
    for (std::unique_ptr<CSdkThread>* const ppThread :
         {&m_pShowFPImageOnDeviceThread, &m_pDoConfirmOrCancelKeyActionThread}) {
        if (*ppThread && (*ppThread)->isRunning())
            static_cast<void>(ppThread->release());
    }
}

void CSignObject::StartThreads(void* pOwner, int nWidth, int nHeight, PfnMakeThread pfnKeyAction,
                               PfnMakeThread pfnShowFPImage)
{
    const CLogLabel Label = m_Identity.ConstructorLabel();
    if (pfnShowFPImage)
        m_pShowFPImageOnDeviceThread = pfnShowFPImage(pOwner, *this);
    if (pfnShowFPImage && m_Identity.IsWidget())
        SCR_LOG(Label, "<%ld>-width=%d, height=%d, m_pShowFPImageOnDeviceThread=%lx", nWidth, nHeight,
                AsHex(m_pShowFPImageOnDeviceThread.get()));
    else
        SCR_LOG(Label, "<%ld>-width=%d, height=%d", nWidth, nHeight);
    m_pDoConfirmOrCancelKeyActionThread = pfnKeyAction(pOwner, *this);
    m_bThreadsStarted = !m_pShowFPImageOnDeviceThread || m_pShowFPImageOnDeviceThread->Launch();
    m_bThreadsStarted = m_bThreadsStarted && m_pDoConfirmOrCancelKeyActionThread->Launch();
    SCR_LOG(Label, "<%ld>-m_pDoConfirmOrCancelKeyActionThread=%lx",
            AsHex(m_pDoConfirmOrCancelKeyActionThread.get()));
    SCR_LOG(Label, "<%ld>-leave !");
}

void CSignObject::FitMapping(int nWidth, int nHeight)
{
    m_PenSetup.FitCanvas(nWidth, nHeight, LoadShared(m_nMaxPressure));
}

bool CSignObject::IsDeviceConnected()
{
    const CLogLabel Label = m_Identity.Label("IsDeviceConnected()");
    SCR_LOG(Label, "<%ld>-enter...");
    if (!m_bThreadsStarted)
        SCR_LOG(Label, "<%ld>-(worker thread not started), no more threads !!!");
    bool bConnected = m_bThreadsStarted && m_Driver.LoadScriberaDriver();
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
        if (pAccepted) {
            StoreShared(m_nMaxPressure, pAccepted->m_nMaxPressure);
            m_Driver.PreparePad();
            if (!m_pPointDataList || !m_pDecodedPointDataList) {
                SCR_LOG(
                    Label,
                    "<%ld>-((m_pPointDataList || m_pDecodedPointDataList) == nullptr), out of memory !!!");
                bConnected = false;
            }
        }
    }
    StoreShared(m_bDeviceConnected, bConnected);
    SCR_LOG(Label, "<%ld>-leave with m_bDeviceConnected=%d", bConnected);
    return bConnected;
}

void CSignObject::Shutdown()
{
    const CLogLabel Label = m_Identity.Label("Shutdown()");
    SCR_LOG(Label, "<%ld>-Enter...");
    // What the host does meanwhile on this thread, in a callback that the driver makes here or in an event,
    // is part of this end: it must neither wait for it nor start anew.
    const CCallbackScope Scope;
    StopThread(m_pShowFPImageOnDeviceThread, "m_pShowFPImageOnDeviceThread");
    StopThread(m_pDoConfirmOrCancelKeyActionThread, "m_pDoConfirmOrCancelKeyActionThread");
    // Until the driver has stopped, its samples and the host's calls find the object as it was. Then nobody
    // does: who is late is dropped, and no other thread meets driver or lists on their way out.
    m_Driver.ShutdownScriberaDriver(CLiveObject::Close);
    m_pPointDataList.reset();
    m_pDecodedPointDataList.reset();
    const std::shared_ptr<CFPPicture> pInUse =
        m_Identity.m_Model.m_bHasFingerprint ? m_Canvas.FPPlacement().m_pPicture : nullptr;
    if (pInUse) {
        pInUse->Clear();
        pInUse->Shutdown();
    }
    for (const std::shared_ptr<CFPPicture>& pPicture : m_Canvas.TakeFPPictures())
        pPicture->ReleaseView();
    SCR_LOG(Label, "<%ld>-leave !");
}

void CSignObject::StopThread(std::unique_ptr<CSdkThread>& pThread, const char* pszMember)
{
    if (!pThread)
        return;
    const CLogLabel Label = m_Identity.Label("Shutdown()");
    SCR_LOG(Label, "<%ld>-b4 call %s->quit()...", pszMember);
    StoreShared(m_bGoingToShutDown, true);
    pThread->quit();
    SCR_LOG(Label, "<%ld>-b4 call %s->wait()...", pszMember);
    pThread->Join();
    pThread.reset();
    SCR_LOG(Label, "<%ld>-after call %s = nullptr...", pszMember);
}

void CSignObject::RxSignPadRawData(int nX, int nY, int nP, int nPenStatus)
{
    if (!LoadShared(m_bDeviceConnected))
        return;
    const int nPressureLimit = m_Identity.m_Model.PressureLimit(LoadShared(m_nMaxPressure));
    m_PenPipeline.RxSignPadRawData(nX, nY, nP, nPenStatus, m_pPointDataList.get(), nPressureLimit);
}

void CSignObject::RxSignPadFPRawData(unsigned char* pucRawData, int nDataLength, int nScore)
{
    if (LoadShared(m_bDeviceConnected) && pucRawData && m_pFingerprint)
        m_pFingerprint->RxSignPadFPRawData(pucRawData, nDataLength, nScore);
}

int CSignObject::LeavePicturePlacement(const CLogLabel& Label, int nPlacementResult, int nActionID)
{
    if (nPlacementResult != ARI_SUCCESS) {
        SCR_LOG(Label, "<%ld>-leave due to m_pNewFPWidget->SetDisplayedFPImageAt() failed, nResult=%d",
                nPlacementResult);
        return nPlacementResult;
    }
    m_Canvas.SetFPAction(nActionID);
    SCR_LOG(Label, "<%ld>-leave with ARI_SUCCESS...");
    return ARI_SUCCESS;
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
    {
        const CLocker Lock(m_ClipMutex);
        m_Clip.m_bClipImage = false;
    }
    if (m_pPointDataList)
        m_pPointDataList->Clear();
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
    m_PenSetup.SetWidth(nPenWidth, LoadShared(m_nMaxPressure));
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

template <typename... TParameters, typename... TArguments>
int CSignObject::AskDriver(const CLogLabel& Label, int (*pfnEntry)(TParameters...),
                           TArguments... Arguments) const
{
    const int nResult = pfnEntry ? pfnEntry(Arguments...) : kNoEntryPoint;
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", nResult);
    return nResult;
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

int CSignObject::GetDevicePenID(char* pPenID, int nMaxCount)
{
    const CLogLabel Label = m_Identity.Label("GetDevicePenID()");
    SCR_LOG(Label, "<%ld>-enter, pPenID=%lx, nMaxCount=%d", AsHex(pPenID), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDevicePenID, pPenID, nMaxCount);
}

int CSignObject::GetDevicePadID(char* pPadID, int nMaxCount)
{
    const CLogLabel Label = m_Identity.Label("GetDevicePadID()");
    SCR_LOG(Label, "<%ld>-enter, pPadID=%lx, nMaxCount=%d", AsHex(pPadID), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDevicePadID, pPadID, nMaxCount);
}

int CSignObject::GetDeviceSecureID(char* pSecureID, int nMaxCount)
{
    const CLogLabel Label = m_Identity.Label("GetDeviceSecureID()");
    SCR_LOG(Label, "<%ld>-enter, pSecureID=%lx, nMaxCount=%d", AsHex(pSecureID), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDeviceSecureID, pSecureID, nMaxCount);
}

int CSignObject::GetDevicePartsVersion(char* pVersion, int nMaxCount)
{
    const CLogLabel Label = m_Identity.Label("GetDevicePartsVersion()");
    SCR_LOG(Label, "<%ld>-enter, pVersion=%lx, nMaxCount=%d", AsHex(pVersion), nMaxCount);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_GetDevicePartsVersion, pVersion, nMaxCount);
}

int CSignObject::ShowVersionInfoOnDevice(bool bOn)
{
    const CLogLabel Label = m_Identity.Label("ShowVersionInfoOnDevice()");
    SCR_LOG(Label, "<%ld>-enter, bOn=%d", bOn);
    return AskDriver(Label, m_Driver.Calls().m_pfn_SCRDAPI_ShowVersionInfoOnDevice, bOn);
}

int CSignObject::GetDeviceInfo(int nIndex, void* pOutput)
{
    const CLogLabel Label = m_Identity.Label("GetDeviceInfo()");
    SCR_LOG(Label, "<%ld>-Enter, nIndex=%d, pOutput=%lx", nIndex, AsHex(pOutput));
    const CPadModel& Model = m_Identity.m_Model;
    const auto Write = [pOutput](const void* pBytes, std::size_t nSize) {
        std::memcpy(pOutput, pBytes, nSize);
    };
    const auto WriteRange = [&Write](std::int32_t nEnd) {
        const std::int32_t Range[] = {0, nEnd};
        Write(Range, sizeof Range);
    };
    switch (nIndex) {
    case DIID_GET_STATUS: {
        const unsigned char ucConnected = LoadShared(m_bDeviceConnected) ? 1 : 0;
        Write(&ucConnected, sizeof ucConnected);
        break;
    }
    case 2:
        WriteRange(Model.m_nAreaWidth);
        break;
    case 3:
        WriteRange(Model.m_nAreaHeight);
        break;
    case 4: {
        const std::int32_t nMaxPressure = LoadShared(m_nMaxPressure);
        Write(&nMaxPressure, sizeof nMaxPressure);
        break;
    }
    case 5:
        Write(kVendorName, sizeof kVendorName);
        break;
    case 6:
        Write(Model.m_pszReportedName, std::strlen(Model.m_pszReportedName) + 1);
        break;
    case DIID_GET_DRV_VER:
        Write(kDriverVersion, sizeof kDriverVersion);
        break;
    default:
        break;
    }
    SCR_LOG(Label, "<%ld>-leave !");
    return ARI_SUCCESS;
}

int CSignObject::GetTotalInkPointsNumber()
{
    SCR_LOG(m_Identity.Label("GetTotalInkPointsNumber()"), "<%ld>-enter...");
    const int nCount = m_pPointDataList ? m_pPointDataList->Count() : 0;
    const int nInkCount = nCount > 0 ? nCount : kNotDone;
    // The leave line has always stood under this other name.
    SCR_LOG(m_Identity.Label("SetSignatureStatusCallback()"), "<%ld>-leave with nInkCount=%d", nInkCount);
    return nInkCount;
}

int CSignObject::GetPACKETS(_PACKETS& Packets)
{
    const CLogLabel Label = m_Identity.Label("GetPACKETS()");
    SCR_LOG(Label, "<%ld>-enter...");
    int nResult = kNoSuchPoint;
    _POINTDATA Point;
    if (m_pPointDataList && m_pPointDataList->At(Packets.nIndex, Point)) {
        Packets.usX = Point.usX;
        Packets.sY = Point.sY;
        Packets.sPressure = Point.sPressure;
        Packets.ucStatus = Point.ucStatus;
        nResult = ARI_SUCCESS;
    }
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", nResult);
    return nResult;
}

char* CSignObject::GetInkPointTime(int nIndex)
{
    constexpr std::size_t kTextSize = 100;
    const CLogLabel Label = m_Identity.Label("GetInkPointTime()");
    SCR_LOG(Label, "<%ld>-enter, nIndex=%d", nIndex);
    char* pInkPointTime = nullptr;
    _POINTDATA Point;
    if (m_pPointDataList && m_pPointDataList->At(nIndex, Point)) {
        const std::time_t nSeconds = Point.llSeconds;
        std::tm Local{};
        tzset(); // localtime_r alone would not notice a changed time zone
        localtime_r(&nSeconds, &Local);
        pInkPointTime = new char[kTextSize]();
        std::snprintf(pInkPointTime, kTextSize, "%04d-%02d-%02d %02d:%02d:%02d.%03d", Local.tm_year + 1900,
                      Local.tm_mon + 1, Local.tm_mday, Local.tm_hour, Local.tm_min, Local.tm_sec,
                      static_cast<int>(Point.llTick % 1000));
    }
    SCR_LOG(Label, "<%ld>-leave !");
    return pInkPointTime;
}
