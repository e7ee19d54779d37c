// Pen samples and recordings.
#pragma once

#include <string>
#include <vector>

#include "driver.h"
#include "models.h"

namespace scribera::test {

enum PenStatus
{
    PenDown = 0,
    PenMove = 1,
    PenUp = 2,
    CancelKeyDown = 3,
    ConfirmKeyDown = 4
};

struct StrokePoint // a place on the writing area in fractions of its size, and a pressure in fractions of the
                   // most
{
    double x;
    double y;
    double pressure = 0.25;
};

ScrSimSample sampleAt(const PadModel& model, const StrokePoint& point, int penStatus);
// down, moves, up
std::vector<ScrSimSample> stroke(const PadModel& model, const std::vector<StrokePoint>& points);
// A wavy line of that many moves across the middle of the area.
std::vector<ScrSimSample> wave(const PadModel& model, int moves);
// Writes a recording of strokes without end pause, for ScrSim_Play.
void writeRecording(const PadModel& model, const std::string& path, int samples);

} // namespace scribera::test
