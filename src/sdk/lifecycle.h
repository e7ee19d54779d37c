// Start and end of the one sign object, as the host asks for them.
#pragma once

#include "sdk/familycall.h"
#include "sdk/startreport.h"
#include "signobject/liveobject.h"

class CSignWidget;

// Each public method is the exported function of the same name.
class CLifeCycle : public CFamilyCall
{
public:
    explicit CLifeCycle(const CPadModel& Model) : CFamilyCall(Model) {}

    bool InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                       int nHeight) const;
    bool InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY, int nWidth,
                            int nHeight) const;
    int UnInitialDevice(int nDeviceType) const;

private:
    // What the host asked for.
    struct CRequest
    {
        QWidget* m_pParentWidget;
        bool m_bWindowless;
        int m_nX;
        int m_nY;
        int m_nWidth;
        int m_nHeight;
    };

    bool AcceptsStart(const CLogLabel& Label, int nDeviceType, CStartFailure& Failure) const;
    static CLiveObject::CStart::EAnswer BeginStart(const CLogLabel& Label, CLiveObject::CStart& Start,
                                                   bool bWindowless, CStartFailure& Failure);
    bool StartObject(const CLogLabel& Label, CLiveObject::CStart& Start, const CRequest& Request,
                     CStartFailure& Failure) const;
    bool MakeAndConnect(const CLogLabel& Label, CLiveObject::CStart& Start, const CRequest& Request,
                        CStartFailure& Failure) const;
    static void EndWidget(CLiveObject::CEnding& Ending, CSignWidget& Widget);
};
