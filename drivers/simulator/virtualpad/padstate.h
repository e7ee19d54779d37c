// What is to be seen on the pad: its screen and what is drawn there, and its keys. No widgets.
#pragma once

#include "padlink.h"
#include "pads.h"
#include "recording.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace virtualpad {

enum class Key
{
    Cancel,
    Confirm,
};

// A point of ink, in fractions of the writing area and of the largest pressure.
struct InkPoint
{
    float x = 0;
    float y = 0;
    float pressure = 0;
    bool beginsStroke = false;
};

// Pads of the other device types have no screen of their own; the pen leaves its ink on paper.
bool hasScreen(const simulator::Pad& pad);
bool hasFingerprintSensor(const simulator::Pad& pad);

class PadState
{
public:
    explicit PadState(const simulator::Pad& pad) : m_pad(&pad) {}

    const simulator::Pad& pad() const { return *m_pad; }
    // Another pad: blank.
    void setPad(const simulator::Pad& pad);

    // A host takes the pad, or leaves it. Without one the screen is on, so that somebody can try the pen.
    void hostCame();
    void hostLeft();
    bool hasHost() const { return m_hasHost; }

    void showScreen(bool on);
    void clear();
    void showVersion(bool shown, std::string text);
    void setPenStyle(bool withPressure) { m_withPressure = withPressure; }
    void showPicture(simulator::padlink::Picture picture);

    // What the pen does, in pad units. Let go, the cancel key clears the pad.
    void apply(const simulator::RecordedSample& sample);

    // Always, where there is paper.
    bool isLit() const { return m_screenOn || !hasScreen(*m_pad); }
    bool isWithPressure() const { return m_withPressure; }
    bool isVersionShown() const { return m_versionShown; }
    const std::string& versionText() const { return m_versionText; }
    const std::optional<simulator::padlink::Picture>& picture() const { return m_picture; }
    const std::optional<Key>& pressedKey() const { return m_pressedKey; }
    bool isPenDown() const { return m_isPenDown; }

    const std::vector<InkPoint>& ink() const { return m_ink; }
    // Grows whenever ink is taken away; as long as it stays, ink() only gets longer.
    int sheet() const { return m_sheet; }

    // Ink beyond this is not shown; two hours of writing.
    static constexpr std::size_t MostInk = 1'500'000;

private:
    void removeInk();

    const simulator::Pad* m_pad;
    bool m_hasHost = false;
    bool m_screenOn = true;
    bool m_withPressure = true;
    bool m_versionShown = false;
    std::string m_versionText;
    std::optional<simulator::padlink::Picture> m_picture;
    std::optional<Key> m_pressedKey;
    bool m_isPenDown = false;
    bool m_isStrokeBegun = false;
    std::vector<InkPoint> m_ink;
    int m_sheet = 0;
};

} // namespace virtualpad
