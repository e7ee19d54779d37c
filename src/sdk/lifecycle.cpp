#include "sdk/lifecycle.h"

#include "canvas/drawing.h"
#include "gui/guithread.h"
#include "model/results.h"
#include "sdk/otherqt.h"
#include "signobj/signobj.h"
#include "signwidget/signwidget.h"
#include "sync/atomicmember.h"
#include "sync/attempt.h"
#include "sync/callbackscope.h"

#include <cstdlib>
#include <memory>
#include <mutex>

namespace {

using EAnswer = CLiveObject::CStart::EAnswer;

// A host may exit while a pen signs. Qt destroys its global objects in the opposite order of their making, so
// drawing makes those it needs first and the gate, which is closed before any of them goes, is registered
// after.
void PrepareForExit()
{
    static std::once_flag s_Once;
    std::call_once(s_Once, [] {
        WarmUpDrawing();
        std::atexit([] { CLiveObject::CloseForExit(); });
    });
}

void TellWhyNoWidget(const CLogLabel& Label, unsigned long long ullWId, CStartFailure& Failure)
{
    switch (WhyNoWidget()) {
    case ENoWidget::Elsewhere:
        Failure.Set(SCRX_START_WRONG_THREAD,
                    "A pad in a window has to be opened on the thread of the QApplication");
        break;
    case ENoWidget::NoApplication:
        Failure.Set(SCRX_START_NO_APPLICATION, "A pad in a window needs a QApplication, and there is none");
        break;
    case ENoWidget::OtherQt:
        LogOtherQt(Label);
        Failure.Set(
            SCRX_START_WRONG_QT,
            "A pad in a window needs a widget of Qt %d, and this process has another Qt: open it windowless, "
            "or take the library that is built for that Qt",
            QT_VERSION_MAJOR);
        break;
    case ENoWidget::NotFound:
        Failure.Set(SCRX_START_NO_WINDOW, "No widget of this process has the window id %llu", ullWId);
        break;
    }
}

} // namespace

bool CLifeCycle::AcceptsStart(const CLogLabel& Label, int nDeviceType, CStartFailure& Failure) const
{
    if (AcceptsDevice(Label, nDeviceType, kLeaveFalse))
        return true;
    Failure.Set(SCRX_START_WRONG_DEVICE_TYPE, "The device type is %d, and %s takes %d only", nDeviceType,
                m_Model.m_pszFamily, m_Model.m_nDeviceType);
    return false;
}

// What both ways of starting share: the flag, and the last lines of calls that end here.
EAnswer CLifeCycle::BeginStart(const CLogLabel& Label, CLiveObject::CStart& Start, bool bWindowless,
                               CStartFailure& Failure)
{
    const auto ShowKind = [bWindowless] {
        if (bWindowless)
            StoreShared<unsigned char>(g_bUseSignObj, 1);
    };
    // The flag comes before the test: hosts see the kind that they asked for last.
    ShowKind();
    // A callback meets no live object only while UnInitialDevice waits for it. What it started then would be
    // in the way of that end.
    const EAnswer eAnswer = Start.Begin(!CCallbackScope::IsActive());
    switch (eAnswer) {
    case EAnswer::Begun:
        ShowKind(); // once more, since the end that was waited for has taken it back
        break;
    case EAnswer::AlreadyLive:
        SCR_LOG(Label, "<%ld>-leave with true due to g_pSignWidget already created !");
        break;
    case EAnswer::Refused:
        SCR_LOG(Label, "<%ld>-leave with false due to (called inside a callback) !");
        Failure.Set(SCRX_START_IN_CALLBACK,
                    "A callback or an event cannot open a pad while another one is being opened or closed");
        break;
    }
    return eAnswer;
}

bool CLifeCycle::StartObject(const CLogLabel& Label, CLiveObject::CStart& Start, const CRequest& Request,
                             CStartFailure& Failure) const
{
    PrepareForExit();
    bool bRet = false;
    // Out of memory is a failed start like any other: what was made so far is undone below.
    bRet = Attempt([&] { bRet = MakeAndConnect(Label, Start, Request, Failure); }) && bRet;
    Start.Finish();
    if (!bRet)
        UnInitialDevice(m_Model.m_nDeviceType);
    SCR_LOG(Label, "<%ld>-leave with bRet=%d !", bRet);
    return bRet;
}

bool CLifeCycle::MakeAndConnect(const CLogLabel& Label, CLiveObject::CStart& Start, const CRequest& Request,
                                CStartFailure& Failure) const
{
    bool bRet = false;
    CSignWidget* pWidget = nullptr;
    {
        // What the host does meanwhile on this thread, in a callback or an event, must not wait for this.
        const CCallbackScope Scope;
        if (Request.m_bWindowless) {
            // Published, it belongs to the live object until it is ended.
            CSignObj* const pObject = MakeSignObj(m_Model, Request.m_nWidth, Request.m_nHeight).release();
            Start.Publish(*pObject, pObject->Identity(), pObject);
            bRet = pObject->IsDeviceConnected(Failure);
        } else if (MayMakeWidgetIn(Request.m_pParentWidget)) {
            pWidget = MakeSignWidget(m_Model, Request.m_pParentWidget).release();
            Start.Publish(*pWidget, pWidget->Identity(), static_cast<QWidget*>(pWidget));
            bRet = pWidget->IsDeviceConnected(Failure);
        } else {
            TellWhyNoWidget(Label, 0, Failure);
        }
    }
    if (bRet && pWidget) {
        Start.Finish();
        pWidget->setGeometry(RectFromHost(Request.m_nX, Request.m_nY, Request.m_nWidth, Request.m_nHeight));
        pWidget->show();
        pWidget->ResizeUnderInvisibleParentWidget(Request.m_nWidth, Request.m_nHeight);
    }
    return bRet;
}

bool CLifeCycle::InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                               int nHeight) const
{
    const CLogLabel L = Label("InitialDevice()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, pParentWidget=%lx, nX=%d, nY=%d, nWidth=%d, nHeight=%d",
            nDeviceType, AsHex(pParentWidget), nX, nY, nWidth, nHeight);
    CStartReport Report;
    CStartFailure& Failure = Report.Failure();
    if (!AcceptsStart(L, nDeviceType, Failure))
        return false;
    CLiveObject::CStart Start;
    const EAnswer eAnswer = BeginStart(L, Start, pParentWidget == nullptr, Failure);
    if (eAnswer != EAnswer::Begun)
        return Report.Leave(eAnswer == EAnswer::AlreadyLive);
    // A flag left set by an earlier windowless use decides even when there is a parent.
    const bool bWindowless = LoadShared(g_bUseSignObj) != 0;
    return Report.Leave(
        StartObject(L, Start, {pParentWidget, bWindowless, nX, nY, nWidth, nHeight}, Failure));
}

bool CLifeCycle::InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY, int nWidth,
                                    int nHeight) const
{
    const CLogLabel L = Label("InitialDeviceByWId()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d, nX=%d, nY=%d, nWidth=%d, nHeight=%d", nDeviceType, nX, nY,
            nWidth, nHeight);
    CStartReport Report;
    CStartFailure& Failure = Report.Failure();
    if (!AcceptsStart(L, nDeviceType, Failure))
        return false;
    CLiveObject::CStart Start;
    const EAnswer eAnswer = BeginStart(L, Start, ullWId == 0, Failure);
    if (eAnswer != EAnswer::Begun)
        return Report.Leave(eAnswer == EAnswer::AlreadyLive);
    const bool bWindowless = LoadShared(g_bUseSignObj) != 0;
    QWidget* const pParentWidget = bWindowless ? nullptr : FindWidget(ullWId);
    if (!bWindowless && !pParentWidget) {
        SCR_LOG(L, "<%ld>-leave with false due to (g_pSignWidget == nullptr) !");
        TellWhyNoWidget(L, ullWId, Failure);
        return false;
    }
    return Report.Leave(
        StartObject(L, Start, {pParentWidget, bWindowless, nX, nY, nWidth, nHeight}, Failure));
}

// The window that owns the widget may go as soon as the end is over, on its own thread. Hiding comes last,
// when everything is closed, since it lets the host run.
void CLifeCycle::EndWidget(CLiveObject::CEnding& Ending, CSignWidget& Widget)
{
    // If Qt has no memory for that, the widget stays until its window goes. The pad ends all the same.
    Attempt([&] { Widget.deleteLater(); });
    const bool bHides = IsGuiThread(); // without an application nothing is shown, and hiding would crash
    Ending.Finish();
    if (bHides)
        Attempt([&] { Widget.hide(); });
}

int CLifeCycle::UnInitialDevice(int nDeviceType) const
{
    const CLogLabel L = Label("UnInitialDevice()");
    SCR_LOG(L, "<%ld>-Enter, nDeviceType=%d", nDeviceType);
    if (!AcceptsDevice(L, nDeviceType, kLeaveResult))
        return ARI_INVALID_PARAMETERS;
    if (CCallbackScope::IsActive()) {
        // It would wait for the very thread that it runs on.
        SCR_LOG(L, "<%ld>-leave with nResult=-1 due to (called inside a callback) !");
        return kNoObject;
    }
    CLiveObject::CEnding Ending(m_Model);
    if (CSignObject* const pObject = Ending.Object()) {
        pObject->Shutdown();
        if (pObject->Identity().IsWidget())
            EndWidget(Ending, *static_cast<CSignWidget*>(pObject));
        else
            delete pObject;
    }
    SCR_LOG(L, "<%ld>-leave with ARI_SUCCESS...");
    return ARI_SUCCESS;
}
