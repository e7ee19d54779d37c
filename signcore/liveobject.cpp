#include "signcore/liveobject.h"

#include "scriberasdk.h"
#include "signcore/signobject.h"
#include "sync/atomicmember.h"

#include <chrono>
#include <thread>

// Constant-initialised and never destroyed: the driver's thread may outlive main().
constinit std::atomic<CSignObject*> CLiveObject::s_pObject{nullptr};
constinit std::atomic<int> CLiveObject::s_nUses{0};
constinit std::atomic<bool> CLiveObject::s_bClosed{false};
thread_local int CLiveObject::s_nOwnUses = 0;

void CLiveObject::Publish(CSignObject& Object, void* pExported)
{
    StoreShared(g_pSignWidget, pExported);
    s_pObject.store(&Object);
}

void CLiveObject::Retire(CSignObject& Object)
{
    CSignObject* pExpected = &Object;
    if (!s_pObject.compare_exchange_strong(pExpected, nullptr))
        return;
    // Under a widget the flag is set only by a windowless start while it was live, which ends here too.
    StoreShared<unsigned char>(g_bUseSignObj, 0);
    StoreShared<void*>(g_pSignWidget, nullptr);
    while (s_nUses.load() > s_nOwnUses)
        std::this_thread::yield();
    // A windowless start in a callback, begun before the object was gone, may have set it once more.
    StoreShared<unsigned char>(g_bUseSignObj, 0);
}

bool CLiveObject::Exists()
{
    return s_pObject.load() != nullptr;
}

void CLiveObject::CloseForExit()
{
    s_bClosed.store(true);
    // In the opposite order to those who count their use first and look at the gate again then. A host's
    // callback may itself wait for the exiting thread, so this wait must end.
    const auto Deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (s_nUses.load() > s_nOwnUses && std::chrono::steady_clock::now() < Deadline)
        std::this_thread::yield();
}

bool CLiveObject::IsClosedForExit()
{
    return s_bClosed.load();
}

CLiveObject::CUse::CUse()
{
    // The count goes up before the pointer is read: Retire() does the two in the opposite order, so that one
    // of the two sides always sees the other.
    ++s_nOwnUses;
    s_nUses.fetch_add(1);
    m_pObject = s_pObject.load();
}

CLiveObject::CUse::~CUse()
{
    s_nUses.fetch_sub(1);
    --s_nOwnUses;
}

CSignObject* CLiveObject::CUse::ObjectOf(const CPadModel& Model) const
{
    return m_pObject && &m_pObject->Identity().m_Model == &Model ? m_pObject : nullptr;
}

CSignObject* CLiveObject::CUse::ObjectOf(const CPadModel& Model, EObjectKind eKind) const
{
    CSignObject* const pObject = ObjectOf(Model);
    return pObject && pObject->Identity().m_eKind == eKind ? pObject : nullptr;
}
