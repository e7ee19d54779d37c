// What the driver and the virtual pad say to each other: messages to bytes and bytes to messages, without any
// socket. README.md describes the bytes.
#pragma once

#include "fingerprint.h"
#include "scriberasim.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace simulator::padlink {

constexpr std::uint32_t ProtocolVersion = 1;

// Limits of the payloads; whoever exceeds one is disconnected.
constexpr std::size_t LongestModel = 64;
constexpr std::size_t LongestText = 255;
constexpr std::size_t MostSamples = 256;
constexpr int LargestPictureSide = 512;
constexpr std::size_t LargestPayload = 4 + std::size_t{LargestPictureSide} * LargestPictureSide * 2;

// A peer that has not introduced itself by then is none.
constexpr std::chrono::seconds IntroductionTime{5};

// From the driver.

struct Hello
{
    std::uint32_t version = ProtocolVersion;
    std::int32_t deviceType = 0;

    bool operator==(const Hello&) const = default;
};

struct Screen
{
    bool on = false;

    bool operator==(const Screen&) const = default;
};

struct Clear
{
    bool operator==(const Clear&) const = default;
};

struct VersionInfo
{
    bool shown = false;
    std::string text; // lines of printable ASCII

    bool operator==(const VersionInfo&) const = default;
};

struct PenStyle
{
    bool withPressure = true;

    bool operator==(const PenStyle&) const = default;
};

// RGB565, the byte with red first.
struct Picture
{
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;

    bool operator==(const Picture&) const = default;
};

// From the pad.

struct Welcome
{
    std::uint32_t version = ProtocolVersion;
    std::string model; // printable ASCII

    bool operator==(const Welcome&) const = default;
};

struct Refusal
{
    std::string reason;

    bool operator==(const Refusal&) const = default;
};

struct Samples
{
    std::vector<ScrSimSample> samples; // 1 to MostSamples

    bool operator==(const Samples& other) const;
};

struct FingerprintScan
{
    int score = 0;
    std::vector<unsigned char> pixels; // FingerprintSize

    bool operator==(const FingerprintScan&) const = default;
};

using Message = std::variant<Hello, Screen, Clear, VersionInfo, PenStyle, Picture, Welcome, Refusal, Samples,
                             FingerprintScan>;

// The message's frame. The message has to keep within the limits; texts are made to.
std::string encode(const Message& message);

// Takes the bytes of one peer as they come and hands on whole messages.
class Parser
{
public:
    enum class Peer
    {
        Driver,
        Pad,
    };

    // False ends the connection; the sink has its own reason then.
    using Sink = std::function<bool(Message&&)>;

    explicit Parser(Peer peer) : m_peer(peer) {}

    // False when the bytes are no messages of this peer, or when the sink ended it. Nothing is taken any more
    // then. Keeps the beginning of one message at most.
    bool take(std::string_view bytes, const Sink& sink);

    // Why take() refused; empty when the sink ended it.
    const std::string& error() const { return m_error; }

private:
    struct Header;

    bool refuse(std::string reason);
    bool parseHeader(Header& header);
    bool parseMessage(const Header& header, std::string_view payload, Message& message);
    bool parsePicture(std::string_view payload, Message& message);
    bool parseSamples(std::string_view payload, Message& message);

    Peer m_peer;
    std::string m_pending;
    std::string m_error;
    bool m_isIntroduced = false;
    bool m_hasEnded = false;
};

} // namespace simulator::padlink
