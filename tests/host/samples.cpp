#include "samples.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <stdexcept>

namespace scribera::test {

ScrSimSample sampleAt(const PadModel& model, const StrokePoint& point, int penStatus)
{
    return {model.originX + static_cast<int>(std::lround(point.x * (model.areaWidth - 1))),
            model.originY + static_cast<int>(std::lround(point.y * (model.areaHeight - 1))),
            static_cast<int>(std::lround(point.pressure * model.maxPressure)), penStatus};
}

std::vector<ScrSimSample> stroke(const PadModel& model, const std::vector<StrokePoint>& points)
{
    std::vector<ScrSimSample> samples;
    for (const StrokePoint& point : points)
        samples.push_back(sampleAt(model, point, samples.empty() ? PenDown : PenMove));
    if (!points.empty())
        samples.push_back(sampleAt(model, points.back(), PenUp));
    return samples;
}

std::vector<ScrSimSample> wave(const PadModel& model, int moves)
{
    std::vector<StrokePoint> points;
    for (int i = 0; i <= moves; ++i) {
        const double part = static_cast<double>(i) / std::max(moves, 1);
        points.push_back(
            {0.1 + 0.8 * part, 0.5 + 0.3 * std::sin(part * 12.0), 0.1 + 0.1 * std::cos(part * 9.0)});
    }
    return stroke(model, points);
}

void writeRecording(const PadModel& model, const std::string& path, int samples)
{
    std::ofstream out(path);
    out << "# scribera recording 1\n"
        << "model: " << model.modelText << "\n"
        << "area: " << model.originX << " " << model.originY << " " << model.areaWidth << " "
        << model.areaHeight << "\n"
        << "max-pressure: " << model.maxPressure << "\n";
    int written = 0;
    while (written < samples) {
        for (const ScrSimSample& sample : wave(model, 60)) {
            out << written * 5 << " " << sample.x << " " << sample.y << " " << sample.pressure << " "
                << sample.penStatus << "\n";
            ++written;
        }
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

} // namespace scribera::test
