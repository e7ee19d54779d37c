// Why the last start of the process failed.
#pragma once

#include "model/startfailure.h"

// One call of InitialDevice. What it found out becomes the process's last failure when the call returns,
// however it does.
class CStartReport
{
public:
    CStartReport() = default;
    ~CStartReport();
    CStartReport(const CStartReport&) = delete;
    CStartReport& operator=(const CStartReport&) = delete;

    // For whoever finds the reason.
    CStartFailure& Failure() { return m_Failure; }

    // Notes what the call returns, and returns it.
    bool Leave(bool bRet)
    {
        m_bSucceeded = bRet;
        return bRet;
    }

    // The function of the interface.
    static int LastStartFailure(char* pText, int nSize);

private:
    CStartFailure m_Failure;
    bool m_bSucceeded = false;
};
