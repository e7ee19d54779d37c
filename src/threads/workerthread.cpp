#include "threads/workerthread.h"

#include "sync/attempt.h"

#include <thread>
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
                                                         CWork Work);

struct CThreadMakers
{
    const CPadModel& m_Model;
    PfnMakeThread m_pfnWidget;
    PfnMakeThread m_pfnWindowless;
};

template <typename TThread>
std::unique_ptr<CWorkerThread> MakeThread(const CObjectIdentity& Identity, const CTypeNames& Names,
                                          const void* pOwner, CWork Work)
{
    return std::make_unique<TThread>(Identity, Names, pOwner, std::move(Work));
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
                             CWork Work)
    : m_Names(Names), m_Work(std::move(Work))
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
    for (EPass ePass = EPass::Worked; ePass != EPass::Over;) {
        const unsigned nRings = m_Work.m_Bell.Rings();
        if (!Attempt([&] { ePass = m_Work.m_Pass(); }))
            SCR_LOG_INTHREAD(Label, "<%ld>-pass left due to (exception) !");
        else if (ePass == EPass::Idle && m_Work.m_eIdle == EIdle::Wait)
            m_Work.m_Bell.WaitBeyond(nRings);
        else if (ePass == EPass::Idle)
            std::this_thread::yield();
    }
    SCR_LOG_INTHREAD(Label, "<%ld>-Leave !");
}

std::unique_ptr<CWorkerThread> MakeKeyActionThread(const CObjectIdentity& Identity, const void* pOwner,
                                                   CWork Work)
{
    return MakerFor(Identity, kKeyActionMakers)(Identity, Identity.Names().m_KeyActionThread, pOwner,
                                                std::move(Work));
}

std::unique_ptr<CWorkerThread> MakeShowFPImageThread(const CObjectIdentity& Identity, const void* pOwner,
                                                     CWork Work)
{
    return MakerFor(Identity, kShowFPImageMakers)(Identity, Identity.Names().m_ShowFPImageThread, pOwner,
                                                  std::move(Work));
}

#include "workerthread.moc"
