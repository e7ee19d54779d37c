// What the environment says about the pad, read and checked whole before anything is started.
#pragma once

#include "recording.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

// Where the control interface takes 1 for the confirm key and 0 for the cancel key.
constexpr int NoKey = -1;

// The one kind of pad that has a fingerprint sensor.
constexpr int DeviceWithSensor = 7;

struct Finger
{
    std::vector<unsigned char> pixels;
    int score = 80;
};

struct Configuration
{
    std::string model; // empty: that of the device type
    std::optional<Recording> recording;
    double speed = 1; // 0: as fast as the host takes the samples
    bool loop = false;
    int keyAtEnd = NoKey;
    std::chrono::milliseconds startPause{200};
    std::optional<Finger> finger;
    std::string padSocket; // empty: no virtual pad is looked for
    std::chrono::milliseconds padWait{200};

    bool playsAnything() const { return recording || finger || keyAtEnd != NoKey; }
};

// False with the reason when a variable has a value that cannot be used, whether or not it would matter.
bool readConfiguration(int deviceType, Configuration& configuration, std::string& error);

} // namespace simulator
