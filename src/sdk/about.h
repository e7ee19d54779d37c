// The About box and text.
#pragma once

#include "sdk/familycall.h"

// Each method is the exported function of the same name.
class CAbout : public CFamilyCall
{
public:
    explicit CAbout(const CPadModel& Model) : CFamilyCall(Model) {}

    void AboutBox(QWidget* pParentWidget) const;
    void AboutBoxByWId(unsigned long long ullWId) const;
    void GetAboutInfo(int nDeviceType, char* pBuffer) const;
};
