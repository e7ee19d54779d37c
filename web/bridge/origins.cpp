#include "origins.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace bridge {
namespace {

constexpr std::string_view loopbackNames[] = {"127.0.0.1", "[::1]", "localhost"};

struct Scheme
{
    std::string_view prefix;
    int port;
};
constexpr Scheme schemes[] = {{"http://", 80}, {"https://", 443}};

struct HostAndPort
{
    std::string_view host;
    std::optional<int> port;
};

bool isNameByte(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.' ||
           byte == '_';
}

bool isAddressByte(char byte)
{
    return (byte >= 'a' && byte <= 'f') || (byte >= '0' && byte <= '9') || byte == ':' || byte == '.';
}

bool isHost(std::string_view host)
{
    if (host.size() > 2 && host.front() == '[' && host.back() == ']')
        return std::all_of(host.begin() + 1, host.end() - 1, isAddressByte);
    return !host.empty() && std::all_of(host.begin(), host.end(), isNameByte);
}

// Of a port as it is written: digits alone, no zero in front.
std::optional<int> portOf(std::string_view text)
{
    constexpr int largest = 65535;
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    const bool isPlain = !text.empty() && text.front() >= '1' && text.front() <= '9';
    if (!isPlain || error != std::errc() || end != text.data() + text.size() || port > largest)
        return std::nullopt;
    return port;
}

// Nothing when it is none.
std::optional<HostAndPort> split(std::string_view text)
{
    HostAndPort parts;
    const std::size_t colon = text.rfind(':');
    const std::size_t bracket = text.rfind(']');
    const bool hasPort =
        colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket);
    parts.host = hasPort ? text.substr(0, colon) : text;
    if (hasPort) {
        parts.port = portOf(text.substr(colon + 1));
        if (!parts.port)
            return std::nullopt;
    }
    if (!isHost(parts.host))
        return std::nullopt;
    return parts;
}

std::string lower(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char byte) {
        return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
    });
    return result;
}

bool isLoopback(std::string_view host)
{
    return std::find(std::begin(loopbackNames), std::end(loopbackNames), host) != std::end(loopbackNames);
}

} // namespace

std::string canonicalOrigin(std::string_view text)
{
    const std::string wanted = lower(text);
    for (const Scheme& scheme : schemes) {
        if (!wanted.starts_with(scheme.prefix))
            continue;
        const auto parts = split(std::string_view(wanted).substr(scheme.prefix.size()));
        if (!parts)
            return {};
        std::string origin(scheme.prefix);
        origin += parts->host;
        if (parts->port && *parts->port != scheme.port)
            origin += ':' + std::to_string(*parts->port);
        return origin;
    }
    return {};
}

bool Origins::allow(std::string_view origin)
{
    std::string canonical = canonicalOrigin(origin);
    if (canonical.empty())
        return false;
    m_allowed.push_back(std::move(canonical));
    return true;
}

bool Origins::isAllowed(std::string_view origin) const
{
    const std::string canonical = canonicalOrigin(origin);
    if (canonical.empty())
        return false;
    if (std::find(m_allowed.begin(), m_allowed.end(), canonical) != m_allowed.end())
        return true;
    const auto parts = split(std::string_view(canonical).substr(canonical.find("//") + 2));
    return m_isLoopbackAllowed && parts && isLoopback(parts->host);
}

bool isOwnHost(std::string_view host, unsigned short port, bool isSecure)
{
    const std::string wanted = lower(host);
    const auto parts = split(wanted);
    const int usual = isSecure ? 443 : 80;
    return parts && isLoopback(parts->host) && parts->port.value_or(usual) == port;
}

} // namespace bridge
