// The pad's confirm and cancel keys: what was touched, and the action that waits for the key-action thread.
#pragma once

#include "model/objectidentity.h"
#include "scriberasdk.h"
#include "sync/mutex.h"
#include "sync/workbell.h"

#include <atomic>

constexpr int kNoKey = -1;
constexpr int kCancelKey = 0;
constexpr int kConfirmKey = 1;

// Key state of one sign object. The driver's thread notes touches and arms actions, the key-action thread
// runs them, the host's thread polls. m_KeyActionMutex guards the pending action together with the start of a
// stroke, so that neither begins while the other is under way; the other members are atomic.
//
//                    armed by the touch or the release of a key
//     no action ------------------------------------------> pending
//         ^                                                  |  next pass of the key-action thread
//         |          host's callback returned or threw       v
//         '----------------------------------------------- running
//                                                            |  host's callback ended the thread
//                                                            v
//                                                          no thread: nothing is armed any more
class CKeyActions
{
public:
    explicit CKeyActions(const CObjectIdentity& Identity) : m_Identity(Identity) {}

    // Held by the driver's thread for a whole pen-down or key-down.
    CMutex& KeyActionMutex() { return m_KeyActionMutex; }

    // Whether an action waits or runs. The answer stays true as long as the mutex is held; without it, it is
    // a hint.
    bool IsActionPending() const { return m_nDoClickConfirmOrCancelKeyActionFlag >= 0; }

    // Notes a touch of the key; the caller holds the mutex.
    void NoteTouch(int nKey);

    // Lets the key-action thread run the key's action. Arm() takes the mutex, ArmLocked() wants it held.
    void Arm(int nKey);
    void ArmLocked(int nKey);

    // Rung when an action waits.
    CWorkBell& Bell() { return m_Bell; }

    // One pass of the key-action thread: runs the pending action, with the mutex held while the host is
    // called.
    void CheckIfWeCanDoConfirmOrCancelKeyAction();

    // Host's operations; see the exported functions.
    int SetSignatureStatusCallback(ScriberaSignatureStatusCallback pStatus);
    int GetDeviceConfirmOrCancelKeyStatus();

    // Whether the cancel key was touched since the last call.
    bool TakeCancelTouch();

private:
    void DoClickConfirmKeyAction();
    void DoClickCancelKeyAction();
    void DoClickKeyAction(int nKey, const char* pszFunction, const char* pszLine);

    const CObjectIdentity& m_Identity;
    CMutex m_KeyActionMutex;
    CWorkBell m_Bell;
    std::atomic<int> m_nDoClickConfirmOrCancelKeyActionFlag{kNoKey};
    bool m_bThreadEnded = false; // by the host's callback; under the mutex
    std::atomic<int> m_nKeyStatus{kNoKey};
    std::atomic<bool> m_bPenDownOnCancelButton{false};
    std::atomic<ScriberaSignatureStatusCallback> m_pfnSignatureStatusCallback{nullptr};
};
