// The simulated pad's recordings: the input as a recording, and as an ink packet stream; and the virtual
// pad's screen, on which they are played.

#include "recording.h"
#include "fuzzer.h"
#include "pads.h"
#include "padstate.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

using namespace simulator;

const std::string Name = "input";

const Pad& otherPad()
{
    const Pad* const pad = padForDevice(4, {});
    require(pad != nullptr, "there is a pad of that type");
    return *pad;
}

void requireTimesInOrder(const Recording& recording)
{
    std::int64_t last = 0;
    for (const RecordedSample& sample : recording.samples) {
        require(sample.milliseconds >= last && sample.milliseconds <= LongestRecording,
                "times are in order and within bounds");
        last = sample.milliseconds;
    }
}

bool isInside(const RecordedSample& sample, const Area& area, int maxPressure)
{
    return sample.x >= area.originX && sample.x < area.originX + area.width && sample.y >= area.originY &&
           sample.y < area.originY + area.height && sample.pressure >= 0 && sample.pressure <= maxPressure;
}

void requireInkOnScreen(const Recording& recording, const Pad& pad)
{
    virtualpad::PadState screen(pad);
    for (const RecordedSample& sample : recording.samples)
        screen.apply(sample);
    for (const virtualpad::InkPoint& point : screen.ink())
        require(point.x >= 0 && point.x <= 1 && point.y >= 0 && point.y <= 1 && point.pressure >= 0 &&
                    point.pressure <= 1,
                "ink stays on the screen");
}

void readRecordingText(std::string_view text)
{
    Recording recording;
    std::string error;
    if (!parseRecording(text, Name, recording, error)) {
        require(error.starts_with(Name + ":"), "a refusal names the file and the line");
        require(error.find('\n') == std::string::npos, "a refusal is one line");
        return;
    }
    requireTimesInOrder(recording);
    require(recording.area.width > 0 && recording.area.height > 0 && recording.maxPressure > 0,
            "an accepted pad has an area and a pressure");

    Recording again;
    require(parseRecording(formatRecording(recording), Name, again, error), "what is written can be read");
    require(again.model == recording.model && again.samples == recording.samples &&
                again.maxPressure == recording.maxPressure,
            "what is written is what was read");

    const Pad& pad = otherPad();
    const bool sameArea = recording.area == pad.area;
    scaleRecording(again, pad.area, pad.maxPressure);
    require(again.samples.size() == recording.samples.size(), "scaling keeps every sample");
    requireTimesInOrder(again);
    requireInkOnScreen(again, pad);
    if (sameArea || recording.maxPressure == pad.maxPressure)
        return; // then it is not scaled, and stays where it was
    for (const RecordedSample& sample : again.samples)
        require(sample.status < PenDown || sample.status > PenUp ||
                    isInside(sample, pad.area, pad.maxPressure),
                "a scaled place lies inside");
}

void readStreamText(std::string_view text)
{
    Recording recording;
    std::string error;
    if (!parsePacketStream(text, Name, recording, error)) {
        require(error.starts_with(Name + ":"), "a refusal names the file and the place");
        return;
    }
    requireTimesInOrder(recording);
    require(!recording.scalable, "a stream names no pad");
    requireInkOnScreen(recording, otherPad());
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    readRecordingText(text);
    readStreamText(text);
    return 0;
}
