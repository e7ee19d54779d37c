#include "threads/workerthread.h"

#include <cxxabi.h>

CWorkerThread::CWorkerThread(void* pOwner, CSignObject& Object, const CTypeNames& Names)
    : m_Object(Object), m_Names(Names)
{
    const CLogLabel Label{m_Names.m_pszClass, "::", m_Names.m_pszConstructor};
    if (Object.Identity().IsWidget())
        SCR_LOG_INTHREAD(Label, "<%ld>-enter, m_pSignWidget=%lx", AsHex(pOwner));
    else
        SCR_LOG_INTHREAD(Label, "<%ld>-enter, m_pSignObj=%lx", AsHex(pOwner));
}

void CWorkerThread::Body()
{
    const CLogLabel Label{m_Names.m_pszClass, "::", "run()"};
    SCR_LOG_INTHREAD(Label, "<%ld>-enter");
    while (!m_Object.AreWeGoingToShutDown()) {
        try {
            Pass(m_Object);
        } catch (const abi::__forced_unwind&) {
            throw; // pthread_exit() or a cancellation in the host's callback
        } catch (...) {
            SCR_LOG_INTHREAD(Label, "<%ld>-pass left due to (exception) !");
        }
    }
    SCR_LOG_INTHREAD(Label, "<%ld>-Leave !");
}
