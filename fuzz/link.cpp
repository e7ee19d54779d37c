// What driver and virtual pad say to each other: the first byte of the input tells whose bytes the others are
// and how they are cut into pieces on their way.

#include "fuzzer.h"
#include "padlink.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace simulator;
using padlink::Message;
using padlink::Parser;

struct Taken
{
    std::vector<Message> messages;
    bool goesOn = true;
    std::string error;
};

// The receiver hangs up at a message of its choice.
constexpr std::size_t Never = ~std::size_t{0};

Taken take(Parser::Peer peer, std::string_view bytes, std::size_t piece, std::size_t hangUpAt = Never)
{
    Taken taken;
    Parser parser(peer);
    const auto sink = [&](Message&& message) {
        taken.messages.push_back(std::move(message));
        return taken.messages.size() != hangUpAt;
    };
    for (; taken.goesOn && !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
        taken.goesOn = parser.take(bytes.substr(0, piece), sink);
    taken.error = parser.error();
    const std::size_t count = taken.messages.size();
    if (!taken.goesOn)
        require(!parser.take(std::string(64, '\0'), sink) && !parser.take({}, sink) &&
                    taken.messages.size() == count && parser.error() == taken.error,
                "nothing is taken from a peer that was disconnected");
    return taken;
}

bool introduces(const Message& message)
{
    return std::holds_alternative<padlink::Hello>(message) ||
           std::holds_alternative<padlink::Welcome>(message) ||
           std::holds_alternative<padlink::Refusal>(message);
}

// What the two ends rely on when they use a message.
void requireLimits(const Message& message)
{
    const auto isPrintable = [](const std::string& text, bool withLines) {
        return std::all_of(text.begin(), text.end(), [&](char character) {
            return (character >= ' ' && character <= '~') || (withLines && character == '\n');
        });
    };
    if (const auto* info = std::get_if<padlink::VersionInfo>(&message))
        require(info->text.size() <= padlink::LongestText && isPrintable(info->text, true),
                "a version is a text");
    if (const auto* welcome = std::get_if<padlink::Welcome>(&message))
        require(!welcome->model.empty() && welcome->model.size() <= padlink::LongestModel &&
                    isPrintable(welcome->model, false),
                "a model is a name");
    if (const auto* refusal = std::get_if<padlink::Refusal>(&message))
        require(refusal->reason.size() <= padlink::LongestText && isPrintable(refusal->reason, true),
                "a reason is a text");
    if (const auto* picture = std::get_if<padlink::Picture>(&message))
        require(picture->width >= 1 && picture->width <= padlink::LargestPictureSide &&
                    picture->height >= 1 && picture->height <= padlink::LargestPictureSide &&
                    picture->pixels.size() ==
                        std::size_t{2} * static_cast<std::size_t>(picture->width * picture->height),
                "a picture is whole");
    if (const auto* samples = std::get_if<padlink::Samples>(&message))
        require(!samples->samples.empty() && samples->samples.size() <= padlink::MostSamples,
                "samples come in blocks");
    if (const auto* scan = std::get_if<padlink::FingerprintScan>(&message))
        require(scan->pixels.size() == FingerprintSize, "a fingerprint is whole");
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Parser::Peer peer = (data[0] & 1) != 0 ? Parser::Peer::Pad : Parser::Peer::Driver;
    const std::size_t piece = std::size_t{data[0]} / 2 + 1;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);

    const Taken whole = take(peer, bytes, Never);
    const Taken pieces = take(peer, bytes, piece);
    require(whole.messages == pieces.messages && whole.goesOn == pieces.goesOn && whole.error == pieces.error,
            "how the bytes are cut changes nothing");
    require(whole.goesOn == whole.error.empty() && whole.error.find('\n') == std::string::npos,
            "a refusal has a reason of one line");

    std::string written;
    for (std::size_t index = 0; index < whole.messages.size(); ++index) {
        const Message& message = whole.messages[index];
        require(introduces(message) == (index == 0), "the introduction comes first and once");
        requireLimits(message);
        written += padlink::encode(message);
    }
    require(bytes.starts_with(written), "a message that is taken is written the same way");

    if (!whole.messages.empty()) {
        const std::size_t last = 1 + piece % whole.messages.size();
        const Taken ended = take(peer, bytes, piece, last);
        require(!ended.goesOn && ended.error.empty() && ended.messages.size() == last,
                "the receiver hangs up without a complaint");
    }
    return 0;
}
