// The recording: what a pen did on a pad, as the simulator plays it and the tools write it. README.md
// describes the file format.
#pragma once

#include "pads.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

enum PenStatus : int
{
    PenDown = 0,
    PenMove = 1,
    PenUp = 2,
    CancelKey = 3,
    ConfirmKey = 4,
};

struct RecordedSample
{
    std::int64_t milliseconds = 0; // since the recording's start, never decreasing
    int x = 0;
    int y = 0;
    int pressure = 0;
    int status = PenDown;

    bool operator==(const RecordedSample&) const = default;
};

struct Recording
{
    std::string model;
    Area area;
    int maxPressure = 0;
    std::vector<RecordedSample> samples;
    // A packet stream names no pad: its numbers are already those of the pad it is played on.
    bool scalable = true;
};

// No recording runs longer (some 11 days), so that no arithmetic on times can overflow.
constexpr std::int64_t LongestRecording = 1'000'000'000;

// False with "name:line: reason". The result is unspecified then.
bool parseRecording(std::string_view text, const std::string& name, Recording& recording, std::string& error);

// An ink packet stream in Base64. False with "name:offset: reason", offset counted in bytes of the text.
bool parsePacketStream(std::string_view text, const std::string& name, Recording& recording,
                       std::string& error);

// Reads either of the two, told apart by the '#' with which a recording begins.
bool readRecording(const std::string& path, Recording& recording, std::string& error);

std::string formatRecording(const Recording& recording);

// To a file, or to standard output when the path is "-", as writeFile() does.
bool writeRecording(const Recording& recording, const std::string& path, std::string& error);

// Brings positions and pressures to another pad. Key touches and unknown statuses keep their numbers, since
// these are no places in the writing area.
void scaleRecording(Recording& recording, const Area& area, int maxPressure);

} // namespace simulator
