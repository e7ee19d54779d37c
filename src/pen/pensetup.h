// What the host sets of the pen, and the mapping that follows from it.
#pragma once

#include "canvas/signcanvas.h"
#include "pen/padmapping.h"
#include "sync/mutex.h"

#include <QColor>

#include <optional>

// Everything that turns a raw sample into a line on a canvas.
struct CPenState
{
    QColor m_PenColor = Qt::black;
    int m_nPenWidth = 3; // 1 to 10
    bool m_bWithPressureValue = true;
    CPadMapping m_Mapping;

    // Width in pixels of a segment whose end sample maps to dblPressure.
    double StrokeWidth(double dblPressure) const
    {
        return m_bWithPressureValue ? dblPressure : static_cast<double>(m_nPenWidth);
    }

    // The look of such a segment; nothing as long as there is no mapping.
    std::optional<CStrokeStyle> StyleOf(double dblPressure) const
    {
        if (!m_Mapping.m_bFitted)
            return std::nullopt;
        return CStrokeStyle{StrokeWidth(dblPressure), m_PenColor};
    }
};

// The pen state of one sign object. The host's thread writes it, the driver's and the exporting threads read
// whole copies of it; a leaf lock of its own protects it.
class CPenSetup
{
public:
    explicit CPenSetup(const CPadModel& Model) : m_Model(Model) {}

    CPenState Read() const;

    // Fits the mapping to a canvas of this size.
    void FitCanvas(int nWidth, int nHeight, int nMaxPressure);
    void SetWidth(int nPenWidth, int nMaxPressure);
    void SetColor(const QColor& Color);
    void SetPressureMode(bool bWithPressureValue);

private:
    const CPadModel& m_Model;
    mutable CMutex m_Mutex;
    CPenState m_State;
};
