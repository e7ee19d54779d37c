#include "configuration.h"

#include "fingerprint.h"
#include "padsocket.h"
#include "words.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace simulator {
namespace {

constexpr std::int64_t LongestWait = 3'600'000;

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

// The readers leave the value as it is when the variable is not set. False with the reason.

bool readNumber(const char* variable, std::int64_t least, std::int64_t most, std::int64_t& value,
                std::string& error)
{
    const std::string text = environment(variable);
    if (text.empty() || (parseInteger(text, value) && value >= least && value <= most))
        return true;
    error = std::string(variable) + " is not an integer";
    if (least != INT64_MIN)
        error += " from " + std::to_string(least) + " to " + std::to_string(most);
    return false;
}

bool readWait(const char* variable, std::chrono::milliseconds& wait, std::string& error)
{
    std::int64_t number = wait.count();
    const bool read = readNumber(variable, 0, LongestWait, number, error);
    wait = std::chrono::milliseconds(number);
    return read;
}

bool readSpeed(double& speed, std::string& error)
{
    const std::string rate = environment("SCRIBERA_SIM_RATE");
    if (rate == "max") {
        speed = 0;
        return true;
    }
    const char* const textEnd = rate.data() + rate.size();
    double number = 0;
    const auto [end, code] = std::from_chars(rate.data(), textEnd, number);
    if (!rate.empty()) {
        if (code != std::errc() || end != textEnd || !std::isfinite(number) || number <= 0) {
            error = "SCRIBERA_SIM_RATE is not a number above 0 or \"max\"";
            return false;
        }
        speed = number;
    }
    return true;
}

bool readLoop(bool& loop, std::string& error)
{
    std::int64_t number = 0;
    const bool read = readNumber("SCRIBERA_SIM_LOOP", INT64_MIN, INT64_MAX, number, error);
    loop = number != 0;
    return read;
}

bool readKey(int& key, std::string& error)
{
    const std::string text = environment("SCRIBERA_SIM_KEY");
    if (text == "confirm") {
        key = 1;
    } else if (text == "cancel") {
        key = 0;
    } else if (!text.empty()) {
        error = "SCRIBERA_SIM_KEY is not \"confirm\" or \"cancel\"";
        return false;
    }
    return true;
}

bool readPadSocket(std::string& path, std::string& error)
{
    const std::string setting = environment("SCRIBERA_SIM_PAD");
    return setting.empty() || setting == "0" || padSocketPath(setting, path, error);
}

bool readFinger(std::optional<Finger>& finger, std::string& error)
{
    std::int64_t score = 80;
    std::int64_t seed = 1;
    if (!readNumber("SCRIBERA_SIM_FINGERPRINT_SCORE", INT_MIN, INT_MAX, score, error) ||
        !readNumber("SCRIBERA_SIM_FINGERPRINT_SEED", 0, UINT_MAX, seed, error))
        return false;
    const std::string source = environment("SCRIBERA_SIM_FINGERPRINT");
    if (source.empty())
        return true;
    finger.emplace();
    finger->score = static_cast<int>(score);
    if (const std::optional<RidgePattern> pattern = ridgePatternByName(source)) {
        finger->pixels = syntheticFingerprint(*pattern, static_cast<std::uint64_t>(seed));
        return true;
    }
    return readGreyMap(source, finger->pixels, error);
}

bool readPath(std::optional<Recording>& recording, std::string& error)
{
    const std::string path = environment("SCRIBERA_SIM_RECORDING");
    return path.empty() || readRecording(path, recording.emplace(), error);
}

// A pad reports whatever it likes; only the names of known pads have a short form.
std::string modelText()
{
    const std::string text = environment("SCRIBERA_SIM_MODEL");
    const Pad* const pad = padForModel(text);
    return pad == nullptr ? text : std::string(pad->model);
}

} // namespace

bool readConfiguration(int deviceType, Configuration& configuration, std::string& error)
{
    try {
        configuration.model = modelText();
        return readSpeed(configuration.speed, error) && readLoop(configuration.loop, error) &&
               readKey(configuration.keyAtEnd, error) &&
               readWait("SCRIBERA_SIM_START_MS", configuration.startPause, error) &&
               readWait("SCRIBERA_SIM_PAD_WAIT_MS", configuration.padWait, error) &&
               readPadSocket(configuration.padSocket, error) &&
               (deviceType != DeviceWithSensor || readFinger(configuration.finger, error)) &&
               readPath(configuration.recording, error);
    } catch (const std::bad_alloc&) {
        error = "out of memory";
        return false;
    }
}

} // namespace simulator
