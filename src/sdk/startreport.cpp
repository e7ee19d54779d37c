#include "sdk/startreport.h"

#include "sync/mutex.h"

#include <new>

namespace {

// m_Mutex, a leaf lock, protects the failure. Never destroyed, since a host's thread may still ask while the
// process is exiting; in place, so that it needs no memory.
struct CLastStart
{
    CMutex m_Mutex;
    CStartFailure m_Failure;
};

CLastStart& LastStart()
{
    alignas(CLastStart) static unsigned char s_Place[sizeof(CLastStart)];
    static CLastStart& s_LastStart = *new (s_Place) CLastStart;
    return s_LastStart;
}

} // namespace

CStartReport::~CStartReport()
{
    if (m_bSucceeded)
        m_Failure = CStartFailure();
    else if (m_Failure.Code() == SCRX_START_OK)
        m_Failure.Set(SCRX_START_NO_MEMORY, "There was not enough memory"); // which nobody was left to say
    CLastStart& Last = LastStart();
    const CLocker Lock(Last.m_Mutex);
    Last.m_Failure = m_Failure;
}

int CStartReport::LastStartFailure(char* pText, int nSize)
{
    CLastStart& Last = LastStart();
    const CLocker Lock(Last.m_Mutex);
    if (pText && nSize > 0)
        Last.m_Failure.CopyText(pText, static_cast<std::size_t>(nSize));
    return Last.m_Failure.Code();
}
