// The one live sign object of the process.
#pragma once

#include "signcore/padmodel.h"

#include <atomic>

class CSignObject;

// Knows the live object's true class, whatever g_pSignWidget and g_bUseSignObj show. Everybody who works on
// the object holds a CUse meanwhile, and an object is destroyed only when nobody does.
class CLiveObject
{
public:
    // Makes the object the live one and shows it, as pExported, in g_pSignWidget.
    static void Publish(CSignObject& Object, void* pExported);

    // Ends the object's life in public: clears g_pSignWidget and g_bUseSignObj and returns when no other
    // thread works on it any more. Nothing happens when it is not, or no longer, the live one.
    static void Retire(CSignObject& Object);

    static bool Exists();

    // From here on no callback of the driver and no key action reaches a sign object: the process is exiting,
    // and what they need of Qt is about to be destroyed. Waits a moment for those under way.
    static void CloseForExit();
    static bool IsClosedForExit();

    class CUse
    {
    public:
        CUse();
        ~CUse();
        CUse(const CUse&) = delete;
        CUse& operator=(const CUse&) = delete;

        // The live object if it is of this model, or null.
        CSignObject* ObjectOf(const CPadModel& Model) const;
        // The live object if it is of exactly this class, or null.
        CSignObject* ObjectOf(const CPadModel& Model, EObjectKind eKind) const;

    private:
        CSignObject* m_pObject;
    };

private:
    static std::atomic<CSignObject*> s_pObject; // written by the host's thread, read by all
    static std::atomic<int> s_nUses;            // of all threads
    static std::atomic<bool> s_bClosed;
    static thread_local int s_nOwnUses; // of this thread
};
