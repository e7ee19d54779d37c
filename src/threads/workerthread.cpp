#include "threads/workerthread.h"

#include "sync/attempt.h"

#include <utility>

// Each model and kind has thread classes of its own, since their names show in the log and in className().
#define THREAD_CLASS(Name)                                                                                   \
    class Name final : public CWorkerThread                                                                  \
    {                                                                                                        \
        Q_OBJECT                                                                                             \
                                                                                                             \
    public:                                                                                                  \
        using CWorkerThread::CWorkerThread;                                                                  \
    };
#define KEY_ACTION_THREADS(Model)                                                                            \
    THREAD_CLASS(C##Model##Widget_DoConfirmOrCancelKeyActionThread)                                          \
    THREAD_CLASS(C##Model##Obj_DoConfirmOrCancelKeyActionThread)
#define SHOW_FP_IMAGE_THREADS(Model)                                                                         \
    THREAD_CLASS(C##Model##Widget_ShowFPImageOnDeviceThread)                                                 \
    THREAD_CLASS(C##Model##Obj_ShowFPImageOnDeviceThread)

SCRIBERA_FAMILIES(KEY_ACTION_THREADS)
SCRIBERA_FAMILIES_WITH_FINGERPRINT(SHOW_FP_IMAGE_THREADS)

namespace {

using PfnMakeThread = std::unique_ptr<CWorkerThread> (*)(const CObjectIdentity& Identity,
                                                         const CTypeNames& Names, const void* pOwner,
                                                         CWorkerThread::Pass OnePass);

struct CThreadMakers
{
    const CPadModel& m_Model;
    PfnMakeThread m_pfnWidget;
    PfnMakeThread m_pfnWindowless;
};

template <typename TThread>
std::unique_ptr<CWorkerThread> MakeThread(const CObjectIdentity& Identity, const CTypeNames& Names,
                                          const void* pOwner, CWorkerThread::Pass OnePass)
{
    return std::make_unique<TThread>(Identity, Names, pOwner, std::move(OnePass));
}

#define KEY_ACTION_MAKERS(Model)                                                                             \
    {g_Pad##Model, MakeThread<C##Model##Widget_DoConfirmOrCancelKeyActionThread>,                            \
     MakeThread<C##Model##Obj_DoConfirmOrCancelKeyActionThread>},
#define SHOW_FP_IMAGE_MAKERS(Model)                                                                          \
    {g_Pad##Model, MakeThread<C##Model##Widget_ShowFPImageOnDeviceThread>,                                   \
     MakeThread<C##Model##Obj_ShowFPImageOnDeviceThread>},

constexpr CThreadMakers kKeyActionMakers[] = {SCRIBERA_FAMILIES(KEY_ACTION_MAKERS)};
constexpr CThreadMakers kShowFPImageMakers[] = {SCRIBERA_FAMILIES_WITH_FINGERPRINT(SHOW_FP_IMAGE_MAKERS)};

template <std::size_t nModels>
PfnMakeThread MakerFor(const CObjectIdentity& Identity, const CThreadMakers (&Makers)[nModels])
{
    const CThreadMakers* pMakers = Makers;
    while (&pMakers->m_Model != &Identity.m_Model)
        ++pMakers;
    return Identity.IsWidget() ? pMakers->m_pfnWidget : pMakers->m_pfnWindowless;
}

} // namespace

CWorkerThread::CWorkerThread(const CObjectIdentity& Identity, const CTypeNames& Names, const void* pOwner,
                             Pass OnePass)
    : m_Names(Names), m_Pass(std::move(OnePass))
{
    const CLogLabel Label{m_Names.m_pszClass, "::", m_Names.m_pszConstructor};
    if (Identity.IsWidget())
        SCR_LOG_INTHREAD(Label, "<%ld>-enter, m_pSignWidget=%lx", AsHex(pOwner));
    else
        SCR_LOG_INTHREAD(Label, "<%ld>-enter, m_pSignObj=%lx", AsHex(pOwner));
}

void CWorkerThread::Body()
{
    const CLogLabel Label{m_Names.m_pszClass, "::", "run()"};
    SCR_LOG_INTHREAD(Label, "<%ld>-enter");
    bool bGoesOn = true;
    while (bGoesOn) {
        if (!Attempt([&] { bGoesOn = m_Pass(); }))
            SCR_LOG_INTHREAD(Label, "<%ld>-pass left due to (exception) !");
    }
    SCR_LOG_INTHREAD(Label, "<%ld>-Leave !");
}

std::unique_ptr<CWorkerThread> MakeKeyActionThread(const CObjectIdentity& Identity, const void* pOwner,
                                                   CWorkerThread::Pass OnePass)
{
    return MakerFor(Identity, kKeyActionMakers)(Identity, Identity.Names().m_KeyActionThread, pOwner,
                                                std::move(OnePass));
}

std::unique_ptr<CWorkerThread> MakeShowFPImageThread(const CObjectIdentity& Identity, const void* pOwner,
                                                     CWorkerThread::Pass OnePass)
{
    return MakerFor(Identity, kShowFPImageMakers)(Identity, Identity.Names().m_ShowFPImageThread, pOwner,
                                                  std::move(OnePass));
}

#include "workerthread.moc"
