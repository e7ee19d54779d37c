// What pages send to the service: the input as a message, as an origin and as a host.

#include "fuzzer.h"
#include "origins.h"
#include "request.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace {

using namespace bridge;

bool isBetween(std::int64_t number, std::int64_t smallest, std::int64_t largest)
{
    return number >= smallest && number <= largest;
}

constexpr std::uint64_t largestInteger = 9007199254740991;

void check(const Open& open)
{
    bool isKnown = false;
    for (const PadModel& model : padModels)
        isKnown = isKnown || &model == open.model;
    require(isKnown, "the model is one of ours");
    require(isBetween(open.width, 1, 4096) && isBetween(open.height, 1, 4096), "the picture has a size");
}

void check(const Resume& resume)
{
    require(resume.token.size() == 43, "a token has its length");
    for (const std::uint64_t count : {resume.clears, resume.points, resume.keys})
        require(count <= largestInteger, "counts are exact");
}

void check(const PenRecord& pen)
{
    require(pen.width == -1 || isBetween(pen.width, 1, 10), "the pen has a width");
    require(isBetween(pen.color, -1, 0xffffff), "the pen has a colour");
    require(isBetween(pen.byPressure, -1, 1), "pressure counts or not");
    require(pen.width != -1 || pen.color != -1 || pen.byPressure != -1, "something is said of the pen");
}

void check(const Points& points)
{
    require(points.from <= largestInteger && isBetween(static_cast<std::int64_t>(points.count), 1, 10'000),
            "points are counted");
}

void check(const Wait& wait)
{
    require(isBetween(wait.milliseconds, 0, 3'600'000), "waiting ends");
}

void check(const PictureRecord& picture)
{
    require(isBetween(static_cast<std::int64_t>(picture.format), 0, 3), "the format is one of ours");
    require(picture.dotsPerInch == 150 || picture.dotsPerInch == 300, "the resolution is one of ours");
    require(isBetween(picture.marginX, 0, 4096) && isBetween(picture.marginY, 0, 4096),
            "margins are margins");
    require(isBetween(picture.isTransparent, 0, 1), "white is transparent or not");
}

template <typename Plain>
void check(const Plain& method)
{
    if constexpr (!std::is_empty_v<Plain>)
        check(method.record);
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::variant<Request, Refusal> read = readRequest(text);
    if (const Request* const request = std::get_if<Request>(&read)) {
        require(request->id <= largestInteger, "an id is exact");
        std::visit([](const auto& method) { check(method); }, request->method);
    } else {
        const Refusal& refusal = std::get<Refusal>(read);
        require(!refusal.message.empty(), "a refusal has a reason");
        require(refusal.code == -32700 || isBetween(refusal.code, -32602, -32600), "a refusal has a code");
        require(refusal.message.find_first_not_of(" !\"#()+,-.0123456789:;=ABCDEFGHIJKLMNOPQRSTUVWXYZ_"
                                                  "abcdefghijklmnopqrstuvwxyz") == std::string::npos,
                "nothing of the message comes back");
    }
    const std::string origin = canonicalOrigin(text);
    require(origin.empty() || canonicalOrigin(origin) == origin, "what is canonical stays as it is");
    Origins origins;
    if (origins.isAllowed(text))
        require(origin.find("localhost") != std::string::npos ||
                    origin.find("127.0.0.1") != std::string::npos ||
                    origin.find("[::1]") != std::string::npos,
                "only pages of this machine are allowed unasked");
    require(origins.allow(text) == !origin.empty(), "what is no origin is not allowed");
    require(origin.empty() || origins.isAllowed(text), "what was allowed is allowed");
    if (isOwnHost(text, 17283, false))
        require(text.size() <= sizeof "127.0.0.1:17283" - 1, "a host is one of ours");
    return 0;
}
