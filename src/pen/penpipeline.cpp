#include "pen/penpipeline.h"

namespace {

// What the host is told of a point.
constexpr unsigned short kPenOnPad = 1;
constexpr unsigned short kPenLifted = 0;

} // namespace

void CPenPipeline::RxSignPadRawData(int nX, int nY, int nP, int nPenStatus, int nPressureLimit)
{
    SCR_LOG(SampleLabel(), "<%ld>-Enter, nX=%d, nY=%d, nP=%d, nPenStatus=%d", nX, nY, nP, nPenStatus);
    switch (nPenStatus) {
    case PENSTATUS_DOWN:
        PenDown(nX, nY, nP);
        break;
    case PENSTATUS_MOVE:
        PenMove(nX, nY, nP, nPressureLimit);
        break;
    case PENSTATUS_UP:
        if (m_bPenDown)
            PenUp(nX, nY, nP);
        else
            KeyRelease();
        break;
    case PENSTATUS_CANCELKEY_DOWN:
        KeyDown(kCancelKey, "<%ld>-Pen_Down_On_Cancel_Key !!!",
                "<%ld>-Pen_Down_On_Cancel_Key, skip due to (m_nDoClickConfirmOrCancelKeyActionFlag >= 0) !");
        break;
    case PENSTATUS_CONFIRMKEY_DOWN:
        KeyDown(kConfirmKey, "<%ld>-Pen_Down_On_Confirm_Key !",
                "<%ld>-Pen_Down_On_Confirm_Key, skip due to (m_nDoClickConfirmOrCancelKeyActionFlag >= 0) !");
        break;
    default:
        break;
    }
    SCR_LOG(SampleLabel(), "<%ld>-leave !");
}

void CPenPipeline::PenDown(int nX, int nY, int nP)
{
    const CLocker Lock(m_KeyActions.KeyActionMutex());
    if (m_KeyActions.IsActionPending()) {
        SCR_LOG(KeyLabel(), "<%ld>-Pen_Down, skip due to (m_nDoClickConfirmOrCancelKeyActionFlag >= 0) !");
        return;
    }
    m_bPenDown = true;
    const CPenState Pen = m_PenSetup.Read();
    const CCanvasSample Sample = ConvertSignRawDataToSignWndData(m_Identity, Pen.m_Mapping, nX, nY, nP);
    m_Canvas.StartAt(Sample.m_dblX, Sample.m_dblY);
    RememberUnmapped(Pen, nX, nY);
    SCR_LOG(SampleLabel(), "<%ld>-Pen_Down, dblSignWndX=%f, dblSignWndY=%f, dblSignWndPressure=%f",
            Sample.m_dblX, Sample.m_dblY, Sample.m_dblPressure);
    StoreAndNotify(nX, nY, nP);
}

void CPenPipeline::PenMove(int nX, int nY, int nP, int nPressureLimit)
{
    if (!m_bPenDown)
        return;
    if (nP > nPressureLimit) {
        SCR_LOG(SampleLabel(), "<%ld>-Rx invalid pressure value, skip !");
        return;
    }
    const CPenState Pen = m_PenSetup.Read();
    if (m_Unmapped && Pen.m_Mapping.m_bFitted) {
        const CCanvasSample Last = Pen.m_Mapping.ConvertSignRawDataToSignWndData(
            m_Identity.m_Model, m_Unmapped->m_nX, m_Unmapped->m_nY, 0);
        m_Canvas.StartAt(Last.m_dblX, Last.m_dblY);
    }
    RememberUnmapped(Pen, nX, nY);
    const CCanvasSample Sample = ConvertSignRawDataToSignWndData(m_Identity, Pen.m_Mapping, nX, nY, nP);
    m_Canvas.StartSignOnCanvas(Sample.m_dblX, Sample.m_dblY, Sample.m_dblPressure,
                               Pen.StyleOf(Sample.m_dblPressure));
    SCR_LOG(SampleLabel(), "<%ld>-Pen_Move, dblSignWndX=%f, dblSignWndY=%f, dblSignWndPressure=%f",
            Sample.m_dblX, Sample.m_dblY, Sample.m_dblPressure);
    StoreAndNotify(nX, nY, nP);
}

void CPenPipeline::PenUp(int nX, int nY, int nP)
{
    m_bPenDown = false;
    const CCanvasSample Sample =
        ConvertSignRawDataToSignWndData(m_Identity, m_PenSetup.Read().m_Mapping, nX, nY, nP);
    SCR_LOG(SampleLabel(), "<%ld>-Pen_Up, dblSignWndX=%f, dblSignWndY=%f, dblSignWndPressure=%f",
            Sample.m_dblX, Sample.m_dblY, Sample.m_dblPressure);
    _POINTDATA Stored;
    if (m_Points.AppendStrokeEnd(Stored))
        m_RealTimeData.CheckIfNeedToSendRealTimeSignData(Stored.usX, Stored.sY, Stored.sPressure, kPenLifted);
}

void CPenPipeline::KeyRelease()
{
    // Models whose keys act at the touch never set the key, so nothing happens here on them.
    switch (m_nPenDownKeyID) {
    case kConfirmKey:
        SCR_LOG(KeyLabel(), "<%ld>-Pen_Up_On_Enter_Button !");
        m_KeyActions.Arm(kConfirmKey);
        break;
    case kCancelKey:
        SCR_LOG(KeyLabel(), "<%ld>-Pen_Up_On_Cancel_Button !!!");
        m_KeyActions.Arm(kCancelKey);
        break;
    default:
        break;
    }
    m_nPenDownKeyID = kNoKey;
}

void CPenPipeline::KeyDown(int nKey, const char* pszDownLine, const char* pszSkipLine)
{
    const CLocker Lock(m_KeyActions.KeyActionMutex());
    if (m_KeyActions.IsActionPending()) {
        SCR_LOG(KeyLabel(), pszSkipLine);
        return;
    }
    m_bPenDown = false;
    m_KeyActions.NoteTouch(nKey);
    if (m_Identity.m_Model.m_eKeyRule == EKeyRule::AtRelease)
        m_nPenDownKeyID = nKey;
    else
        m_KeyActions.ArmLocked(nKey);
    SCR_LOG(KeyLabel(), pszDownLine);
}

void CPenPipeline::RememberUnmapped(const CPenState& Pen, int nX, int nY)
{
    if (Pen.m_Mapping.m_bFitted)
        m_Unmapped.reset();
    else
        m_Unmapped = {nX, nY};
}

void CPenPipeline::StoreAndNotify(int nX, int nY, int nP) const
{
    m_Points.Append(StampedPoint(nX, nY, nP, kStatusOnStroke));
    m_RealTimeData.CheckIfNeedToSendRealTimeSignData(nX, nY, nP, kPenOnPad);
}
