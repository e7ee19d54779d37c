#include "sdk/startreport.h"

#include "sync/mutex.h"

namespace {

// A leaf lock, which protects the failure of the last start. Both outlive main(): a host's thread may still
// ask while the process exits.
constinit CStaticMutex s_LastFailureMutex;
constinit CStartFailure s_LastFailure;

} // namespace

CStartReport::~CStartReport()
{
    if (m_bSucceeded)
        m_Failure = CStartFailure();
    else if (m_Failure.Code() == SCRX_START_OK)
        m_Failure.Set(SCRX_START_NO_MEMORY, "There was not enough memory"); // which nobody was left to say
    const CLocker Lock(s_LastFailureMutex.m_Mutex);
    s_LastFailure = m_Failure;
}

int CStartReport::LastStartFailure(char* pText, int nSize)
{
    const CLocker Lock(s_LastFailureMutex.m_Mutex);
    if (pText && nSize > 0)
        s_LastFailure.CopyText(pText, static_cast<std::size_t>(nSize));
    return s_LastFailure.Code();
}
