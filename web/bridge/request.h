// What a client asks for. Nothing of it is used before it was checked here.
#pragma once

#include "worker_link.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace bridge {

// The pads, in the order of their names in the protocol.
struct PadModel
{
    const char* name;
    int deviceType;
};
inline constexpr PadModel padModels[] = {{"K210", 2}, {"K420", 5}, {"K421B", 7}, {"KM730", 3}, {"T580", 4}};

struct Open
{
    const PadModel* model = nullptr;
    int width = 0;
    int height = 0;
};

struct Resume
{
    std::string token; // not checked
    std::uint64_t clears = 0;
    std::uint64_t points = 0;
    std::uint64_t keys = 0;
};

struct Close
{
};

struct Clear
{
};

struct Points
{
    std::uint64_t from = 0;
    std::uint64_t count = 0;
};

struct Wait
{
    int milliseconds = 0;
};

struct Image
{
    PictureRecord record;
};

struct Svg
{
    PictureRecord record;
};

struct Ink
{
};

struct Device
{
};

struct Fingerprint
{
    PictureRecord record;
};

using Method =
    std::variant<Open, Resume, Close, Clear, PenRecord, Points, Wait, Image, Svg, Ink, Device, Fingerprint>;

struct Request
{
    std::uint64_t id = 0;
    Method method;
};

// Why a message is no request.
struct Refusal
{
    std::optional<std::uint64_t> id;
    int code = 0;
    std::string message;
};

std::variant<Request, Refusal> readRequest(std::string_view text);

// The media type of a format.
const char* mediaTypeOf(Format format);

} // namespace bridge
