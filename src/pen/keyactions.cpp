#include "pen/keyactions.h"

#include "sync/attempt.h"

#include <cxxabi.h>

void CKeyActions::NoteTouch(int nKey)
{
    if (nKey == kCancelKey)
        m_bPenDownOnCancelButton = true;
    m_nKeyStatus = nKey;
}

void CKeyActions::Arm(int nKey)
{
    const CLocker Lock(m_KeyActionMutex);
    ArmLocked(nKey);
}

void CKeyActions::ArmLocked(int nKey)
{
    m_nDoClickConfirmOrCancelKeyActionFlag = m_bThreadEnded ? kNoKey : nKey;
    if (nKey != kNoKey)
        m_Bell.Ring();
}

void CKeyActions::CheckIfWeCanDoConfirmOrCancelKeyAction()
{
    const CLocker Lock(m_KeyActionMutex);
    const int nKey = m_nDoClickConfirmOrCancelKeyActionFlag.load();
    if (nKey == kConfirmKey)
        DoClickConfirmKeyAction();
    else if (nKey == kCancelKey)
        DoClickCancelKeyAction();
}

void CKeyActions::DoClickConfirmKeyAction()
{
    DoClickKeyAction(kConfirmKey, "DoClickConfirmKeyAction()", "<%ld>-Pen_Down_On_Confirm_Key !");
}

void CKeyActions::DoClickCancelKeyAction()
{
    DoClickKeyAction(kCancelKey, "DoClickCancelKeyAction()", "<%ld>-Pen_Down_On_Cancel_Key !");
}

SCRIBERA_CATCHES_UNWINDING void CKeyActions::DoClickKeyAction(int nKey, const char* pszFunction,
                                                              const char* pszLine)
{
    const CLogLabel Label = m_Identity.Label(pszFunction);
    SCR_LOG_INTHREAD(Label, "<%ld>-Enter...");
    try {
        if (const auto pfnStatus = m_pfnSignatureStatusCallback.load())
            pfnStatus(nKey);
    } catch (const abi::__forced_unwind&) {
        // The callback ends this thread. Nobody is left to run an action, and one that waited would keep the
        // pen off for ever.
        m_bThreadEnded = true;
        ArmLocked(kNoKey);
        throw;
    } catch (...) {
        ArmLocked(kNoKey);
        throw;
    }
    SCR_LOG_INTHREAD(Label, pszLine);
    ArmLocked(kNoKey);
    SCR_LOG_INTHREAD(Label, "<%ld>-leave !");
}

int CKeyActions::SetSignatureStatusCallback(ScriberaSignatureStatusCallback pStatus)
{
    const CLogLabel Label = m_Identity.Label("SetSignatureStatusCallback()");
    SCR_LOG(Label, "<%ld>-enter, pStatus=%lx", AsHex(pStatus));
    m_pfnSignatureStatusCallback = pStatus;
    SCR_LOG(Label, "<%ld>-leave with nResult=%d", ARI_SUCCESS);
    return ARI_SUCCESS;
}

int CKeyActions::GetDeviceConfirmOrCancelKeyStatus()
{
    const CLogLabel Label = m_Identity.Label("GetDeviceConfirmOrCancelKeyStatus()");
    SCR_LOG(Label, "<%ld>-enter...");
    const int nKeyStatus = m_nKeyStatus.exchange(kNoKey);
    SCR_LOG(Label, "<%ld>-leave with nKeyStatus=%d", nKeyStatus);
    return nKeyStatus;
}

bool CKeyActions::TakeCancelTouch()
{
    return m_bPenDownOnCancelButton.exchange(false);
}
