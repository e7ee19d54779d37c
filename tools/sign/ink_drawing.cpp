#include "ink_drawing.h"

#include "pen/pensetup.h"
#include "waiting.h"

sign::Ink drawnInk(const CInkSnapshot& points, const InkPen& pen)
{
    constexpr int height = 400;
    const QSize canvas = canvasFor(pen.pad, height);
    CPenSetup setup(pen.pad);
    setup.SetWidth(pen.width, pen.pad.m_nInitialMaxPressure);
    setup.FitCanvas(canvas.width(), canvas.height(), pen.pad.m_nInitialMaxPressure);
    const CPenState state = setup.Read();

    sign::Ink ink;
    ink.areaWidth = canvas.width();
    ink.areaHeight = canvas.height();
    ink.colour = {pen.colour.redF(), pen.colour.greenF(), pen.colour.blueF()};
    CCanvasSample previous{};
    bool isOpen = false; // a stroke, with the previous sample
    for (std::size_t index = 0; index < points.Count(); ++index) {
        const _POINTDATA& point = points.At(index);
        if (point.ucStatus != kStatusOnStroke) {
            isOpen = false;
            continue;
        }
        const CCanvasSample sample =
            state.m_Mapping.ConvertSignRawDataToSignWndData(pen.pad, point.usX, point.sY, point.sPressure);
        if (isOpen)
            ink.segments.push_back({previous.m_dblX, previous.m_dblY, sample.m_dblX, sample.m_dblY,
                                    state.StrokeWidth(sample.m_dblPressure)});
        previous = sample;
        isOpen = true;
    }
    return ink;
}
