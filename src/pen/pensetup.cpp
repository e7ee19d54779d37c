#include "pen/pensetup.h"

CPenState CPenSetup::Read() const
{
    const CLocker Lock(m_Mutex);
    return m_State;
}

void CPenSetup::FitCanvas(int nWidth, int nHeight, int nMaxPressure)
{
    const CLocker Lock(m_Mutex);
    m_State.m_Mapping.m_bFitted = true;
    m_State.m_Mapping.m_nPadOriginX = m_Model.m_nPadOriginX;
    m_State.m_Mapping.m_nPadOriginY = m_Model.m_nPadOriginY;
    m_State.m_Mapping.m_dblXScale = static_cast<double>(nWidth) / m_Model.m_nAreaWidth;
    m_State.m_Mapping.m_dblYScale = static_cast<double>(nHeight) / m_Model.m_nAreaHeight;
    m_State.m_Mapping.m_dblPressureScale = m_Model.PressureScale(m_State.m_nPenWidth, nMaxPressure);
}

void CPenSetup::SetWidth(int nPenWidth, int nMaxPressure)
{
    const CLocker Lock(m_Mutex);
    m_State.m_nPenWidth = nPenWidth;
    m_State.m_Mapping.m_dblPressureScale = m_Model.PressureScale(nPenWidth, nMaxPressure);
}

void CPenSetup::SetColor(const QColor& Color)
{
    const CLocker Lock(m_Mutex);
    m_State.m_PenColor = Color;
}

void CPenSetup::SetPressureMode(bool bWithPressureValue)
{
    const CLocker Lock(m_Mutex);
    m_State.m_bWithPressureValue = bWithPressureValue;
}
