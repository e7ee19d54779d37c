#include "request.h"

#include <boost/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <limits>

namespace json = boost::json;

namespace bridge {
namespace {

constexpr int invalidRequest = -32600;
constexpr int unknownMethod = -32601;
constexpr int invalidParameters = -32602;
constexpr int parseError = -32700;

constexpr std::uint64_t largestInteger = 9007199254740991; // that a client counts exactly

struct NamedFormat
{
    const char* name;
    Format format;
    const char* mediaType;
};
constexpr NamedFormat formats[] = {{"png", Format::Png, "image/png"},
                                   {"jpeg", Format::Jpeg, "image/jpeg"},
                                   {"bmp", Format::Bmp, "image/bmp"},
                                   {"pdf", Format::Pdf, "application/pdf"}};

// A parameter that cannot be taken.
struct WrongParameter
{
    std::string reason;
};

std::optional<std::uint64_t> integerIn(const json::value& value, std::uint64_t smallest,
                                       std::uint64_t largest)
{
    std::uint64_t number = 0;
    if (const std::int64_t* const plain = value.if_int64(); plain && *plain >= 0)
        number = static_cast<std::uint64_t>(*plain);
    else if (const std::uint64_t* const large = value.if_uint64())
        number = *large;
    else
        return std::nullopt;
    if (number < smallest || number > largest)
        return std::nullopt;
    return number;
}

// The parameters of a request, each taken once by its name. What is left over is refused.
class Parameters
{
public:
    explicit Parameters(const json::value* given)
    {
        static const json::object none;
        m_given = given ? given->if_object() : &none;
        if (!m_given)
            throw WrongParameter{"parameters go by name"};
    }

    // Whether it is there.
    const json::value* find(const char* name)
    {
        const json::value* const value = m_given->if_contains(name);
        m_taken += value ? 1 : 0;
        return value;
    }
    const json::value& need(const char* name)
    {
        const json::value* const value = find(name);
        if (!value)
            throw WrongParameter{std::string(name) + " is missing"};
        return *value;
    }
    std::uint64_t integer(const char* name, std::uint64_t smallest, std::uint64_t largest)
    {
        return integerOf(need(name), name, smallest, largest);
    }
    static std::uint64_t integerOf(const json::value& value, const char* name, std::uint64_t smallest,
                                   std::uint64_t largest)
    {
        const std::optional<std::uint64_t> number = integerIn(value, smallest, largest);
        if (!number)
            throw WrongParameter{std::string(name) + " has to be a whole number from " +
                                 std::to_string(smallest) + " to " + std::to_string(largest)};
        return *number;
    }
    static std::string_view textOf(const json::value& value, const char* name)
    {
        const json::string* const text = value.if_string();
        if (!text)
            throw WrongParameter{std::string(name) + " has to be a text"};
        return {text->data(), text->size()};
    }
    static bool truthOf(const json::value& value, const char* name)
    {
        const bool* const truth = value.if_bool();
        if (!truth)
            throw WrongParameter{std::string(name) + " has to be true or false"};
        return *truth;
    }
    void end() const
    {
        if (m_taken != m_given->size())
            throw WrongParameter{"there are parameters that the method does not know"};
    }
    bool isEmpty() const { return m_given->empty(); }

private:
    const json::object* m_given;
    std::size_t m_taken = 0;
};

Open readOpen(Parameters& parameters)
{
    const std::string_view name = Parameters::textOf(parameters.need("model"), "model");
    const auto* const model = std::find_if(std::begin(padModels), std::end(padModels),
                                           [&](const PadModel& row) { return name == row.name; });
    if (model == std::end(padModels))
        throw WrongParameter{"model has to be one of K210, K420, K421B, KM730, T580"};
    Open open;
    open.model = model;
    open.width = static_cast<int>(parameters.integer("width", 1, 4096));
    open.height = static_cast<int>(parameters.integer("height", 1, 4096));
    return open;
}

bool isTokenByte(char byte)
{
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
           byte == '-' || byte == '_';
}

Resume readResume(Parameters& parameters)
{
    constexpr std::size_t tokenLength = 43;
    const std::string_view token = Parameters::textOf(parameters.need("token"), "token");
    if (token.size() != tokenLength || !std::all_of(token.begin(), token.end(), isTokenByte))
        throw WrongParameter{"token has to be one that the service gave"};
    Resume resume;
    resume.token = token;
    resume.clears = parameters.integer("clears", 0, largestInteger);
    resume.points = parameters.integer("points", 0, largestInteger);
    resume.keys = parameters.integer("keys", 0, largestInteger);
    return resume;
}

int readColor(std::string_view text)
{
    constexpr int bitsOfDigit = 4;
    constexpr std::string_view digits = "0123456789abcdef";
    int color = text.size() == 7 && text.front() == '#' ? 0 : -1;
    for (std::size_t index = 1; color >= 0 && index < text.size(); ++index) {
        const char lower = text[index] >= 'A' && text[index] <= 'F'
                               ? static_cast<char>(text[index] + ('a' - 'A'))
                               : text[index];
        const std::size_t digit = digits.find(lower);
        color = digit == std::string_view::npos ? -1 : (color << bitsOfDigit) + static_cast<int>(digit);
    }
    if (color < 0)
        throw WrongParameter{"color has to be #rrggbb"};
    return color;
}

PenRecord readPen(Parameters& parameters)
{
    PenRecord pen;
    if (parameters.isEmpty())
        throw WrongParameter{"one of width, color and pressure is needed"};
    if (const json::value* const width = parameters.find("width"))
        pen.width = static_cast<int>(Parameters::integerOf(*width, "width", 1, 10));
    if (const json::value* const color = parameters.find("color"))
        pen.color = readColor(Parameters::textOf(*color, "color"));
    if (const json::value* const pressure = parameters.find("pressure"))
        pen.byPressure = Parameters::truthOf(*pressure, "pressure") ? 1 : 0;
    return pen;
}

Points readPoints(Parameters& parameters)
{
    Points points;
    points.from = parameters.integer("from", 0, largestInteger);
    points.count = parameters.integer("count", 1, 10'000);
    return points;
}

Wait readWait(Parameters& parameters)
{
    return {static_cast<int>(parameters.integer("timeout", 0, 3'600'000))};
}

Format readFormat(Parameters& parameters, bool hasPdf)
{
    const std::string_view name = Parameters::textOf(parameters.need("format"), "format");
    for (const NamedFormat& row : formats)
        if (name == row.name && (hasPdf || row.format != Format::Pdf))
            return row.format;
    throw WrongParameter{hasPdf ? "format has to be one of png, jpeg, bmp, pdf"
                                : "format has to be one of png, jpeg, bmp"};
}

void readClip(Parameters& parameters, PictureRecord& picture)
{
    const json::value* const clip = parameters.find("clip");
    if (!clip)
        return;
    constexpr std::uint64_t widest = 4096;
    const json::array* const margins = clip->if_array();
    std::optional<std::uint64_t> x;
    std::optional<std::uint64_t> y;
    if (margins && margins->size() == 2) {
        x = integerIn((*margins)[0], 0, widest);
        y = integerIn((*margins)[1], 0, widest);
    }
    if (!x || !y || (*x == 0 && *y == 0))
        throw WrongParameter{"clip has to be two whole numbers from 0 to 4096, not both 0"};
    picture.marginX = static_cast<int>(*x);
    picture.marginY = static_cast<int>(*y);
}

Image readImage(Parameters& parameters)
{
    constexpr int coarse = 150;
    constexpr int fine = 300;
    PictureRecord picture;
    picture.format = readFormat(parameters, true);
    if (const json::value* const dpi = parameters.find("dpi")) {
        const std::optional<std::uint64_t> dots = integerIn(*dpi, coarse, fine);
        if (!dots || (*dots != coarse && *dots != fine))
            throw WrongParameter{"dpi has to be 150 or 300"};
        picture.dotsPerInch = static_cast<int>(*dots);
    }
    readClip(parameters, picture);
    if (const json::value* const transparent = parameters.find("transparent"))
        picture.isTransparent = Parameters::truthOf(*transparent, "transparent") ? 1 : 0;
    return {picture};
}

Svg readSvg(Parameters& parameters)
{
    Svg svg;
    readClip(parameters, svg.record);
    return svg;
}

Fingerprint readFingerprint(Parameters& parameters)
{
    Fingerprint fingerprint;
    fingerprint.record.format = readFormat(parameters, false);
    return fingerprint;
}

template <typename Plain>
Plain readPlain(Parameters&)
{
    return {};
}

template <auto read>
Method readAs(Parameters& parameters)
{
    return read(parameters);
}

struct Row
{
    const char* name;
    Method (*read)(Parameters& parameters);
};
constexpr Row methods[] = {
    {"open", readAs<readOpen>},
    {"resume", readAs<readResume>},
    {"close", readAs<readPlain<Close>>},
    {"clear", readAs<readPlain<Clear>>},
    {"pen", readAs<readPen>},
    {"points", readAs<readPoints>},
    {"wait", readAs<readWait>},
    {"image", readAs<readImage>},
    {"svg", readAs<readSvg>},
    {"ink", readAs<readPlain<Ink>>},
    {"device", readAs<readPlain<Device>>},
    {"fingerprint", readAs<readFingerprint>},
};

std::variant<Request, Refusal> readObject(const json::object& object)
{
    Refusal refusal;
    const json::value* const id = object.if_contains("id");
    if (id)
        refusal.id = integerIn(*id, 0, largestInteger);
    const auto refuse = [&](int code, std::string message) {
        refusal.code = code;
        refusal.message = std::move(message);
        return refusal;
    };
    if (!refusal.id)
        return refuse(invalidRequest, "id has to be a whole number");
    const json::value* const version = object.if_contains("jsonrpc");
    const json::value* const method = object.if_contains("method");
    const json::value* const parameters = object.if_contains("params");
    if (!version || *version != "2.0")
        return refuse(invalidRequest, "jsonrpc has to be \"2.0\"");
    if (!method || !method->is_string())
        return refuse(invalidRequest, "method has to be a text");
    if (object.size() != 3U + (parameters ? 1U : 0U))
        return refuse(invalidRequest, "there are members that a request does not have");
    const auto* const row = std::find_if(std::begin(methods), std::end(methods),
                                         [&](const Row& one) { return method->as_string() == one.name; });
    if (row == std::end(methods))
        return refuse(unknownMethod, "there is no such method");
    try {
        Parameters given(parameters);
        Request request;
        request.id = *refusal.id;
        request.method = row->read(given);
        given.end();
        return request;
    } catch (const WrongParameter& wrong) {
        return refuse(invalidParameters, wrong.reason);
    }
}

} // namespace

std::variant<Request, Refusal> readRequest(std::string_view text)
{
    constexpr std::size_t deepest = 4;
    json::parse_options options;
    options.max_depth = deepest;
    boost::system::error_code error;
    const json::value value = json::parse({text.data(), text.size()}, error, {}, options);
    if (error)
        return Refusal{std::nullopt, parseError, "this is no JSON"};
    const json::object* const object = value.if_object();
    if (!object)
        return Refusal{std::nullopt, invalidRequest, "a request is one object"};
    return readObject(*object);
}

const char* mediaTypeOf(Format format)
{
    return std::find_if(std::begin(formats), std::end(formats),
                        [&](const NamedFormat& row) { return row.format == format; })
        ->mediaType;
}

} // namespace bridge
