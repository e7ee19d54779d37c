// What every call into a family begins with.
#pragma once

#include "log/logfileutil.h"
#include "model/padmodel.h"

// Ways out of a call with a wrong device type, by what the operation returns.
inline constexpr char kLeaveResult[] = "<%ld>-leave with ARI_INVALID_PARAMETERS due to (nDeviceType != %s) !";
inline constexpr char kLeavePointer[] = "<%ld>-leave with nullptr due to (nDeviceType != %s) !";
inline constexpr char kLeaveNothing[] = "<%ld>-leave due to (nDeviceType != %s) !";
inline constexpr char kLeaveFalse[] = "<%ld>-leave with false due to (nDeviceType != %s) !";

// One call into a family's functions. Stateless; may be used on any thread on which the host calls.
class CFamilyCall
{
protected:
    explicit CFamilyCall(const CPadModel& Model) : m_Model(Model) {}

    // Label of an exported function: "SCK210_" and "Clear()".
    CLogLabel Label(const char* pszFunction) const { return {m_Model.m_pszFamily, "", pszFunction}; }

    bool IsOwnDevice(int nDeviceType) const { return nDeviceType == m_Model.m_nDeviceType; }

    // The same, with pszFailure as the way out of a call with a wrong device type.
    bool AcceptsDevice(const CLogLabel& Label, int nDeviceType, const char* pszFailure) const
    {
        if (IsOwnDevice(nDeviceType))
            return true;
        SCR_LOG(Label, pszFailure, m_Model.m_pszDeviceName);
        return false;
    }

    const CPadModel& m_Model;
};
