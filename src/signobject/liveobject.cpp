#include "signobject/liveobject.h"

#include "scriberasdk.h"
#include "sync/atomicmember.h"
#include "sync/callbackscope.h"

#include <chrono>
#include <thread>

#include <unistd.h>

// Constant-initialised and never destroyed: the driver's thread may outlive main().
constinit std::atomic<CSignObject*> CLiveObject::s_pObject{nullptr};
constinit std::atomic<const CObjectIdentity*> CLiveObject::s_pIdentity{nullptr};
constinit std::atomic<pid_t> CLiveObject::s_nProcess{0};
constinit std::atomic<int> CLiveObject::s_nPhase{kNone};
constinit std::atomic<std::uint32_t> CLiveObject::s_nDoor{kClosed};
constinit std::atomic<bool> CLiveObject::s_bClosedForExit{false};
constinit thread_local std::uint32_t CLiveObject::s_nOwnUses = 0;

template <typename TIsMeant>
CLiveObject::CUse::CUse(TIsMeant IsMeant)
{
    std::uint32_t nDoor = s_nDoor.load();
    while (!(nDoor & kClosed)) {
        if (!s_nDoor.compare_exchange_weak(nDoor, nDoor + 1))
            continue;
        ++s_nOwnUses;
        m_bCounted = true;
        if (CSignObject* const pObject = s_pObject.load(); IsMeant(pObject, *s_pIdentity.load()))
            m_pObject = pObject;
        return;
    }
}

CLiveObject::CUse::~CUse()
{
    if (!m_bCounted)
        return;
    --s_nOwnUses;
    if (s_nDoor.fetch_sub(1) & kClosed)
        s_nDoor.notify_all();
}

void CLiveObject::EnterPhase(EPhase ePhase)
{
    s_nPhase.store(ePhase);
    s_nPhase.notify_all();
}

// The object of the process that this one was forked from: neither its threads nor its driver's are here, so
// it can be neither ended nor waited for.
bool CLiveObject::ForgetInForkedChild()
{
    const pid_t nProcess = s_nProcess.load();
    if (nProcess == 0 || nProcess == getpid())
        return false;
    StoreShared<unsigned char>(g_bUseSignObj, 0);
    StoreShared<void*>(g_pSignWidget, nullptr);
    s_nDoor.store(kClosed | s_nOwnUses);
    s_pObject.store(nullptr);
    s_nProcess.store(0);
    EnterPhase(kNone);
    return true;
}

CLiveObject::CStart::EAnswer CLiveObject::CStart::Begin(bool bMayWait)
{
    for (;;) {
        if (!(s_nDoor.load() & kClosed))
            return EAnswer::AlreadyLive;
        if (!bMayWait)
            return EAnswer::Refused;
        int nPhase = kNone;
        if (s_nPhase.compare_exchange_strong(nPhase, kStarting)) {
            s_nProcess.store(getpid());
            m_bBegun = true;
            return EAnswer::Begun;
        }
        // A live one had not opened yet when this looked.
        if (nPhase != kLive && !ForgetInForkedChild())
            s_nPhase.wait(nPhase);
    }
}

void CLiveObject::CStart::Publish(CSignObject& Object, const CObjectIdentity& Identity, void* pExported)
{
    StoreShared(g_pSignWidget, pExported);
    s_pIdentity.store(&Identity);
    s_pObject.store(&Object);
    s_nDoor.fetch_and(~kClosed);
}

void CLiveObject::CStart::Finish()
{
    if (!m_bBegun)
        return;
    m_bBegun = false;
    if (s_pObject.load()) {
        EnterPhase(kLive);
        return;
    }
    StoreShared<unsigned char>(g_bUseSignObj, 0);
    s_nProcess.store(0);
    EnterPhase(kNone);
}

// The live object if it is the one that is meant and this thread is the one to end it. IsMeant is given the
// object and its identity.
template <typename TIsMeant>
CSignObject* CLiveObject::Claim(TIsMeant IsMeant)
{
    for (;;) {
        if (ForgetInForkedChild())
            return nullptr;
        int nPhase = kLive;
        {
            const CUse Use([](const CSignObject*, const CObjectIdentity&) { return true; });
            if (Use && !IsMeant(&*Use, *s_pIdentity.load())) // the object stays the live one meanwhile
                return nullptr;
            if (!Use)
                nPhase = s_nPhase.load();
            else if (s_nPhase.compare_exchange_strong(nPhase, kEnding))
                return &*Use;
        }
        if (nPhase == kNone)
            return nullptr;
        if (nPhase == kLive)
            continue; // since it was looked for
        s_nPhase.wait(nPhase);
        if (nPhase == kEnding)
            return nullptr;
    }
}

CLiveObject::CEnding::CEnding(const CPadModel& Model)
    : m_pObject(Claim([&Model](const CSignObject*, const CObjectIdentity& Identity) {
          return &Identity.m_Model == &Model;
      }))
{
}

CLiveObject::CEnding::CEnding(const CSignObject& Object)
    : m_pObject(s_pObject.load() != &Object
                    ? nullptr // ended before
                    : Claim([&Object](const CSignObject* pLive, const CObjectIdentity&) {
                          return pLive == &Object;
                      }))
{
}

void CLiveObject::CEnding::Finish()
{
    if (!m_pObject)
        return;
    m_pObject = nullptr;
    Close(); // has happened, but for an end that was broken off
    // Under a widget the flag is set only by a windowless start while it was live, which ends here too.
    StoreShared<unsigned char>(g_bUseSignObj, 0);
    StoreShared<void*>(g_pSignWidget, nullptr);
    s_pObject.store(nullptr);
    s_nProcess.store(0);
    EnterPhase(kNone);
}

void CLiveObject::Close()
{
    std::uint32_t nDoor = s_nDoor.fetch_or(kClosed) | kClosed;
    while ((nDoor & ~kClosed) > s_nOwnUses) {
        s_nDoor.wait(nDoor);
        nDoor = s_nDoor.load();
    }
}

void CLiveObject::CloseForExit()
{
    s_bClosedForExit.store(true);
    if (s_nProcess.load() != getpid())
        return; // a forked child waits for nobody
    // In the opposite order to those who count their use first and then look at the gate again. A host's
    // callback may itself wait for the exiting thread, so this wait must end.
    const auto Deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while ((s_nDoor.load() & ~kClosed) > s_nOwnUses && std::chrono::steady_clock::now() < Deadline)
        std::this_thread::yield();
}

bool CLiveObject::IsClosedForExit()
{
    return s_bClosedForExit.load();
}

CLiveObject::CUse CLiveObject::Enter(const CPadModel& Model, std::optional<EObjectKind> eKind)
{
    return CUse([&Model, eKind](const CSignObject*, const CObjectIdentity& Identity) {
        // Looked at when the use is counted: an exiting process waits for the uses that it can see.
        const bool bOpen = !CCallbackScope::IsActive() || !IsClosedForExit();
        return bOpen && &Identity.m_Model == &Model && (!eKind || *eKind == Identity.m_eKind);
    });
}
