// The exported functions that belong to no family.
#include "scriberasdk_ext.h"

#include "sdk/startreport.h"
#include "threads/workersetting.h"

int SCRX_Version()
{
    return SCRX_VERSION;
}

int SCRX_LastStartFailure(char* pText, int nSize)
{
    return CStartReport::LastStartFailure(pText, nSize);
}

int SCRX_SetWorkers(int nMode)
{
    switch (nMode) {
    case SCRX_WORKERS_POLL:
        CWorkerSetting::Choose(EIdle::Poll);
        return ARI_SUCCESS;
    case SCRX_WORKERS_WAIT:
        CWorkerSetting::Choose(EIdle::Wait);
        return ARI_SUCCESS;
    default:
        return ARI_INVALID_PARAMETERS;
    }
}
