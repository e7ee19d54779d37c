// The one live sign object of the process, and the order of its life.
#pragma once

#include "model/objectidentity.h"

#include <atomic>
#include <cstdint>
#include <optional>

#include <sys/types.h>

class CSignObject;

// Knows the live object by its identity, whatever g_pSignWidget and g_bUseSignObj show. Everybody who works
// on it enters it and holds a CUse meanwhile. One thread starts an object (CStart), one ends it (CEnding).
// The object is found from its publication until it is closed, that is, until its driver has stopped.
// Whoever comes after that finds none, whoever is inside is waited for, and only then do its resources go.
//
// No lock is held on the way, in particular none while the driver is called. tests/order has a copy of the
// steps, which a checker runs in every order that C++ allows; change both.
//
//           CStart::Begin            CStart::Finish          CEnding
//     none ----------------> starting --------------> live ----------> ending
//      ^                        |                                         |
//      |   CStart::Finish,      |                                         |
//      |   nothing published    |                                         |
//      |<-----------------------'                                         |
//      '------------------------------------------------------------------'
//           CEnding::Finish
//
// The door for uses is open from Publish(), while starting, to Close(), while ending. In a forked child the
// parent's object is forgotten by whoever starts or ends next, from any of these.
class CLiveObject
{
public:
    // A thread's start of an object. At its end the published object is live; without one there is none.
    class CStart
    {
    public:
        enum class EAnswer
        {
            Begun,       // this thread makes the object
            AlreadyLive, // there is one
            Refused      // one is just being made or ended, and this thread must not wait for it
        };

        CStart() = default;
        ~CStart() { Finish(); }
        CStart(const CStart&) = delete;
        CStart& operator=(const CStart&) = delete;

        // Waits for another thread that is starting an object, or ending one that is closed, if it may.
        EAnswer Begin(bool bMayWait);

        // Makes the object the live one and shows it, as pExported, in g_pSignWidget. The identity lives as
        // long as the object.
        void Publish(CSignObject& Object, const CObjectIdentity& Identity, void* pExported);

        // From here on the object may be ended. Done once.
        void Finish();

    private:
        bool m_bBegun = false;
    };

    // A thread's end of an object, from its claim until there is none any more. A start or an end on another
    // thread is waited for.
    class CEnding
    {
    public:
        // Claims the live object if it is of this model.
        explicit CEnding(const CPadModel& Model);
        // Claims this object if it is the live one.
        explicit CEnding(const CSignObject& Object);
        ~CEnding() { Finish(); }
        CEnding(const CEnding&) = delete;
        CEnding& operator=(const CEnding&) = delete;

        // The object that this thread has to end, or null.
        CSignObject* Object() const { return m_pObject; }

        // Clears g_bUseSignObj and g_pSignWidget: a new object may be started. Done once.
        void Finish();

    private:
        CSignObject* m_pObject;
    };

    // Lets nobody in any more and returns when no other thread works on the object. For the thread that ends
    // it.
    static void Close();

    // From here on no callback of the driver and no key action reaches a sign object: the process is exiting,
    // and what they need of Qt is about to be destroyed. Waits a moment for those under way.
    static void CloseForExit();

    // Work on the live object. False when there is none, or not of the class that was asked for.
    class CUse
    {
    public:
        ~CUse();
        CUse(const CUse&) = delete;
        CUse& operator=(const CUse&) = delete;

        explicit operator bool() const { return m_pObject != nullptr; }
        CSignObject& operator*() const { return *m_pObject; }

    private:
        friend class CLiveObject;
        // IsMeant is given the live object, when there is one, and its identity.
        template <typename TIsMeant>
        explicit CUse(TIsMeant IsMeant);

        bool m_bCounted = false;
        CSignObject* m_pObject = nullptr;
    };

    // The one way in. Once the process is exiting, callbacks and worker threads find nothing; the exiting
    // thread itself still ends its device.
    static CUse Enter(const CPadModel& Model, std::optional<EObjectKind> eKind = {});

private:
    enum EPhase : int
    {
        kNone,
        kStarting,
        kLive,
        kEnding
    };

    template <typename TIsMeant>
    static CSignObject* Claim(TIsMeant IsMeant);
    static bool IsClosedForExit();
    static bool ForgetInForkedChild();
    static void EnterPhase(EPhase ePhase);

    // Written by the thread that starts or ends the object, read by all.
    static std::atomic<CSignObject*> s_pObject;
    static std::atomic<const CObjectIdentity*> s_pIdentity;
    static std::atomic<pid_t> s_nProcess; // in which it lives; 0 without one

    // Moved on by the thread that starts or ends an object, waited on by others that want to.
    static std::atomic<int> s_nPhase;

    // Whether the object is closed, and the uses of all threads. In one word, so that nobody who comes when
    // it is closed is counted and nobody can keep the end from coming.
    static constexpr std::uint32_t kClosed = std::uint32_t{1} << 31;
    static std::atomic<std::uint32_t> s_nDoor;
    // Of this thread, in the storage that it is born with, as the depth of CCallbackScope.
    [[gnu::tls_model("initial-exec")]] static constinit thread_local std::uint32_t s_nOwnUses;

    static std::atomic<bool> s_bClosedForExit;
};
