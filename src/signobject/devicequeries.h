// What a host asks of the pad itself, and of its model.
#pragma once

#include "driver/scriberadriver.h"
#include "model/objectidentity.h"

#include <atomic>

// On any thread. See the exported functions.
class CDeviceQueries
{
public:
    CDeviceQueries(const CObjectIdentity& Identity, const CScriberaDriver& Driver,
                   const std::atomic<bool>& bDeviceConnected, const std::atomic<int>& nMaxPressure)
        : m_Identity(Identity), m_Driver(Driver), m_bDeviceConnected(bDeviceConnected),
          m_nMaxPressure(nMaxPressure)
    {
    }

    int GetDevicePenID(char* pPenID, int nMaxCount) const;
    int GetDevicePadID(char* pPadID, int nMaxCount) const;
    int GetDeviceSecureID(char* pSecureID, int nMaxCount) const;
    int GetDevicePartsVersion(char* pVersion, int nMaxCount) const;
    int ShowVersionInfoOnDevice(bool bOn) const;
    int GetDeviceInfo(int nIndex, void* pOutput) const;

private:
    const CObjectIdentity& m_Identity;
    const CScriberaDriver& m_Driver;
    const std::atomic<bool>& m_bDeviceConnected;
    const std::atomic<int>& m_nMaxPressure;
};
