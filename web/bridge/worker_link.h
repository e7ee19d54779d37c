// What the service and the process of a pad say to each other, over a socket that the worker inherits. Both
// come from one build: records go as they lie in memory. The service orders one thing at a time and gets one
// answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace bridge {

// In front of every message.
struct Head
{
    std::uint32_t kind = 0;
    std::uint32_t bytes = 0; // of what follows
};

constexpr int workerDescriptor = 3;
constexpr std::size_t longestNews = 64 * 1024; // of a message of the worker's
constexpr std::size_t longestOrder = 256;      // of a message of the service's

enum class Order : std::uint32_t
{
    Open,
    Clear,
    Pen,
    Image,
    Svg,
    Ink,
    Device,
    Fingerprint,
    Alive // no order: answered at once, whatever is being done
};

enum class News : std::uint32_t
{
    Part,   // bytes of what the answer brings, before it
    Answer, // AnswerRecord
    Points, // PointsRecord and points
    Key,    // KeyRecord
    Lost,   // the pad does not answer any more
    Alive
};

enum class Fault : std::uint32_t
{
    None,
    NotOpened, // the parts tell why
    NoInk,
    NoFingerprint,
    Failed
};

enum class Format : std::int32_t
{
    Png,
    Jpeg,
    Bmp,
    Pdf
};

struct OpenRecord
{
    std::int32_t deviceType = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

// Answers Open.
struct OpenedRecord
{
    std::int32_t areaLeft = 0;
    std::int32_t areaTop = 0;
    std::int32_t areaWidth = 0;
    std::int32_t areaHeight = 0;
    std::int32_t pressureLevels = 0;
    std::int32_t hasFingerprint = 0;
};

// -1 where nothing is said.
struct PenRecord
{
    std::int32_t width = -1;
    std::int32_t color = -1; // 0xrrggbb
    std::int32_t byPressure = -1;
};

struct PictureRecord
{
    Format format = Format::Png;
    std::int32_t dotsPerInch = 300;
    std::int32_t marginX = 0; // both 0: not clipped
    std::int32_t marginY = 0;
    std::int32_t isTransparent = 0;
};

enum class Mark : std::uint16_t
{
    None,
    End,  // the pen left the pad
    Begin // the first of a stroke; a key ends one without a point
};

struct InkPoint
{
    std::uint16_t x = 0;
    std::int16_t y = 0;
    std::int16_t pressure = 0;
    Mark mark = Mark::None;
    std::int64_t time = 0; // milliseconds since 1970
};

// Points and keys say how often the signature was cleared before: what is of an older one is gone.
struct PointsRecord
{
    std::uint64_t clears = 0;
};

struct KeyRecord
{
    std::uint64_t clears = 0;
    std::uint64_t isConfirm = 0;
};

struct AnswerRecord
{
    std::uint64_t clears = 0;
    Fault fault = Fault::None;
    std::uint32_t unused = 0;
};

static_assert(sizeof(InkPoint) == 16);
static_assert(sizeof(AnswerRecord) == 16);

} // namespace bridge
