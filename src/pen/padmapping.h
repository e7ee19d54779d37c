// From pad units to canvas pixels.
#pragma once

#include "model/objectidentity.h"

#include <algorithm>
#include <cstdint>

// A pen sample on the canvas: position and stroke width in pixels.
struct CCanvasSample
{
    double m_dblX;
    double m_dblY;
    double m_dblPressure;
};

// Distance of a raw coordinate from the writing area's edge, clamped into the area.
inline int OffsetInArea(int nRaw, int nOrigin, int nAreaSize)
{
    const std::int64_t nOffset = static_cast<std::int64_t>(nRaw) - nOrigin;
    return static_cast<int>(std::clamp<std::int64_t>(nOffset, 0, nAreaSize - 1));
}

// The mapping for one canvas size and pen width. Until the canvas has its size there is none, and what is
// mapped all the same, for the log or an SVG, lands in the canvas corner.
struct CPadMapping
{
    bool m_bFitted = false; // there is a mapping
    int m_nPadOriginX = 0;
    int m_nPadOriginY = 0;
    double m_dblXScale = 0;
    double m_dblYScale = 0;
    double m_dblPressureScale = 0;

    CCanvasSample ConvertSignRawDataToSignWndData(const CPadModel& Model, int nX, int nY, int nP) const
    {
        return {OffsetInArea(nX, m_nPadOriginX, Model.m_nAreaWidth) * m_dblXScale,
                OffsetInArea(nY, m_nPadOriginY, Model.m_nAreaHeight) * m_dblYScale, nP * m_dblPressureScale};
    }
};

// The mapping of a sample of an object, with its two lines in the log on the models that write them.
inline CCanvasSample ConvertSignRawDataToSignWndData(const CObjectIdentity& Identity,
                                                     const CPadMapping& Mapping, int nX, int nY, int nP)
{
    const bool bLogs = Identity.m_Model.m_bLogsMapping;
    const CLogLabel Label = Identity.Label("ConvertSignRawDataToSignWndData()");
    if (bLogs)
        SCR_LOG(Label, "<%ld>-Enter...");
    const CCanvasSample Sample = Mapping.ConvertSignRawDataToSignWndData(Identity.m_Model, nX, nY, nP);
    if (bLogs)
        SCR_LOG(Label, "<%ld>-leave !");
    return Sample;
}
