#include "padlink.h"

#include "texts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace simulator::padlink {
namespace {

// A frame: one byte type, three bytes length of the payload, payload. Numbers are little-endian.
constexpr std::size_t HeaderSize = 4;
constexpr std::size_t SampleSize = 16;
constexpr std::string_view Signature = "SCRIBERA";

enum Type : unsigned char
{
    TypeHello = 1,
    TypeScreen = 2,
    TypeClear = 3,
    TypeVersionInfo = 4,
    TypePenStyle = 5,
    TypePicture = 6,
    TypeWelcome = 65,
    TypeRefusal = 66,
    TypeSamples = 67,
    TypeFingerprint = 68,
};

struct Rule
{
    Type type;
    Parser::Peer peer;
    std::size_t least;
    std::size_t most;
    bool introduces;
};

using Peer = Parser::Peer;
constexpr std::array<Rule, 10> Rules{{
    {TypeHello, Peer::Driver, 16, 16, true},
    {TypeScreen, Peer::Driver, 1, 1, false},
    {TypeClear, Peer::Driver, 0, 0, false},
    {TypeVersionInfo, Peer::Driver, 1, 1 + LongestText, false},
    {TypePenStyle, Peer::Driver, 1, 1, false},
    {TypePicture, Peer::Driver, 4 + 2, LargestPayload, false},
    {TypeWelcome, Peer::Pad, 12 + 1, 12 + LongestModel, true},
    {TypeRefusal, Peer::Pad, 0, LongestText, true},
    {TypeSamples, Peer::Pad, SampleSize, MostSamples* SampleSize, false},
    {TypeFingerprint, Peer::Pad, 4 + FingerprintSize, 4 + FingerprintSize, false},
}};

const Rule* ruleFor(Peer peer, unsigned char type)
{
    const auto rule = std::find_if(Rules.begin(), Rules.end(), [&](const Rule& candidate) {
        return candidate.peer == peer && candidate.type == type;
    });
    return rule == Rules.end() ? nullptr : &*rule;
}

void appendNumber(std::string& bytes, std::uint32_t value, int count)
{
    for (int index = 0; index < count; ++index)
        bytes += static_cast<char>(value >> (8 * index) & 0xff);
}

std::uint32_t numberAt(std::string_view bytes, std::size_t position, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[position + index]);
    return value;
}

std::int32_t signedAt(std::string_view bytes, std::size_t position)
{
    return static_cast<std::int32_t>(numberAt(bytes, position, 4));
}

bool isPrintable(char character)
{
    return character >= ' ' && character <= '~';
}

bool isText(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return isPrintable(character) || character == '\n'; });
}

std::string asText(std::string_view text)
{
    std::string result(text.substr(0, LongestText));
    std::replace_if(
        result.begin(), result.end(),
        [](char character) { return !isPrintable(character) && character != '\n'; }, '?');
    return result;
}

std::vector<unsigned char> asPixels(std::string_view bytes)
{
    return {bytes.begin(), bytes.end()};
}

void appendPixels(std::string& bytes, const std::vector<unsigned char>& pixels)
{
    bytes.append(pixels.begin(), pixels.end());
}

struct Encoder
{
    std::string payload;

    Type operator()(const Hello& hello)
    {
        payload = Signature;
        appendNumber(payload, hello.version, 4);
        appendNumber(payload, static_cast<std::uint32_t>(hello.deviceType), 4);
        return TypeHello;
    }

    Type operator()(const Screen& screen)
    {
        appendNumber(payload, screen.on, 1);
        return TypeScreen;
    }

    Type operator()(const Clear&) { return TypeClear; }

    Type operator()(const VersionInfo& info)
    {
        appendNumber(payload, info.shown, 1);
        payload += asText(info.text);
        return TypeVersionInfo;
    }

    Type operator()(const PenStyle& style)
    {
        appendNumber(payload, style.withPressure, 1);
        return TypePenStyle;
    }

    Type operator()(const Picture& picture)
    {
        appendNumber(payload, static_cast<std::uint32_t>(picture.width), 2);
        appendNumber(payload, static_cast<std::uint32_t>(picture.height), 2);
        appendPixels(payload, picture.pixels);
        return TypePicture;
    }

    Type operator()(const Welcome& welcome)
    {
        payload = Signature;
        appendNumber(payload, welcome.version, 4);
        payload += asText(welcome.model).substr(0, LongestModel);
        return TypeWelcome;
    }

    Type operator()(const Refusal& refusal)
    {
        payload = asText(refusal.reason);
        return TypeRefusal;
    }

    Type operator()(const Samples& samples)
    {
        for (const ScrSimSample& sample : samples.samples) {
            for (int number : {sample.x, sample.y, sample.pressure, sample.penStatus})
                appendNumber(payload, static_cast<std::uint32_t>(number), 4);
        }
        return TypeSamples;
    }

    Type operator()(const FingerprintScan& scan)
    {
        appendNumber(payload, static_cast<std::uint32_t>(scan.score), 4);
        appendPixels(payload, scan.pixels);
        return TypeFingerprint;
    }
};

} // namespace

bool Samples::operator==(const Samples& other) const
{
    return std::equal(samples.begin(), samples.end(), other.samples.begin(), other.samples.end(),
                      [](const ScrSimSample& a, const ScrSimSample& b) {
                          return a.x == b.x && a.y == b.y && a.pressure == b.pressure &&
                                 a.penStatus == b.penStatus;
                      });
}

std::string encode(const Message& message)
{
    Encoder encoder;
    const Type type = std::visit(encoder, message);
    std::string frame;
    frame.reserve(HeaderSize + encoder.payload.size());
    frame += static_cast<char>(type);
    appendNumber(frame, static_cast<std::uint32_t>(encoder.payload.size()), 3);
    return frame += encoder.payload;
}

struct Parser::Header
{
    Type type;
    std::size_t length;
};

bool Parser::refuse(std::string reason)
{
    m_error = std::move(reason);
    return false;
}

bool Parser::parseHeader(Header& header)
{
    const auto type = static_cast<unsigned char>(m_pending[0]);
    const Rule* rule = ruleFor(m_peer, type);
    if (rule == nullptr)
        return refuse(filled(trText("Simulator", "unknown message type %1"), {std::to_string(type)}));
    header.type = rule->type;
    header.length = numberAt(m_pending, 1, 3);
    if (header.length < rule->least || header.length > rule->most)
        return refuse(filled(trText("Simulator", "a message of type %1 cannot have %2 bytes"),
                             {std::to_string(type), std::to_string(header.length)}));
    if (rule->introduces == m_isIntroduced)
        return refuse(m_isIntroduced ? trText("Simulator", "a second introduction")
                                     : trText("Simulator", "the first message is no introduction"));
    return true;
}

bool Parser::take(std::string_view bytes, const Sink& sink)
{
    while (!m_hasEnded) {
        // As much as the message under way needs and no more: what is kept never exceeds one message.
        Header header{};
        std::size_t wanted = HeaderSize;
        if (m_pending.size() >= HeaderSize) {
            if (!parseHeader(header))
                break;
            wanted += header.length;
        }
        const std::size_t count = std::min(wanted - m_pending.size(), bytes.size());
        m_pending.append(bytes.substr(0, count));
        bytes.remove_prefix(count);
        if (m_pending.size() < wanted)
            return true;
        if (m_pending.size() == HeaderSize) {
            if (!parseHeader(header))
                break;
            if (header.length > 0)
                continue;
        }
        Message message;
        if (!parseMessage(header, std::string_view(m_pending).substr(HeaderSize), message))
            break;
        m_isIntroduced = true;
        m_pending.clear();
        if (!sink(std::move(message)))
            break;
    }
    m_hasEnded = true;
    return false;
}

bool Parser::parseMessage(const Header& header, std::string_view payload, Message& message)
{
    const auto flag = [&](auto&& make) {
        if (payload[0] != 0 && payload[0] != 1)
            return refuse(trText("Simulator", "a switch that is neither on nor off"));
        message = make(payload[0] == 1);
        return true;
    };
    const auto isSigned = [&] {
        return payload.starts_with(Signature) || refuse(trText("Simulator", "not this protocol"));
    };

    switch (header.type) {
    case TypeHello:
        message = Hello{numberAt(payload, 8, 4), signedAt(payload, 12)};
        return isSigned();
    case TypeScreen:
        return flag([](bool on) { return Screen{on}; });
    case TypeClear:
        message = Clear{};
        return true;
    case TypeVersionInfo:
        if (!isText(payload.substr(1)))
            return refuse(trText("Simulator", "a text that is not printable"));
        return flag([&](bool shown) { return VersionInfo{shown, std::string(payload.substr(1))}; });
    case TypePenStyle:
        return flag([](bool withPressure) { return PenStyle{withPressure}; });
    case TypePicture:
        return parsePicture(payload, message);
    case TypeWelcome: {
        Welcome welcome{numberAt(payload, 8, 4), std::string(payload.substr(12))};
        if (!std::all_of(welcome.model.begin(), welcome.model.end(), isPrintable))
            return refuse(trText("Simulator", "a model text that is not printable"));
        message = std::move(welcome);
        return isSigned();
    }
    case TypeRefusal:
        message = Refusal{std::string(payload)};
        return isText(payload) || refuse(trText("Simulator", "a text that is not printable"));
    case TypeSamples:
        return parseSamples(payload, message);
    case TypeFingerprint:
        message = FingerprintScan{signedAt(payload, 0), asPixels(payload.substr(4))};
        return true;
    }
    return refuse(trText("Simulator", "unknown message type"));
}

bool Parser::parsePicture(std::string_view payload, Message& message)
{
    const auto width = static_cast<int>(numberAt(payload, 0, 2));
    const auto height = static_cast<int>(numberAt(payload, 2, 2));
    if (width < 1 || height < 1 || width > LargestPictureSide || height > LargestPictureSide ||
        payload.size() - 4 != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 2)
        return refuse(
            trText("Simulator", "a picture whose length is not width x height x 2, or with too long a side"));
    message = Picture{width, height, asPixels(payload.substr(4))};
    return true;
}

bool Parser::parseSamples(std::string_view payload, Message& message)
{
    if (payload.size() % SampleSize != 0)
        return refuse(filled(trText("Simulator", "samples whose length is no multiple of %1"),
                             {std::to_string(SampleSize)}));
    Samples samples;
    samples.samples.reserve(payload.size() / SampleSize);
    for (std::size_t position = 0; position < payload.size(); position += SampleSize)
        samples.samples.push_back({signedAt(payload, position), signedAt(payload, position + 4),
                                   signedAt(payload, position + 8), signedAt(payload, position + 12)});
    message = std::move(samples);
    return true;
}

} // namespace simulator::padlink
