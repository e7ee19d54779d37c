#include "token.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <stdexcept>

#include <openssl/crypto.h>
#include <sys/random.h>

namespace bridge {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

} // namespace

std::string newToken()
{
    std::array<std::uint8_t, 32> bytes{};
    ssize_t got = 0;
    do
        got = getrandom(bytes.data(), bytes.size(), 0);
    while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the system gives no random numbers");
    std::string token;
    std::uint32_t bits = 0;
    int count = 0;
    for (const std::uint8_t byte : bytes) {
        bits = bits << 8 | byte;
        for (count += 8; count >= 6; count -= 6)
            token += alphabet[bits >> (count - 6) & 63U];
    }
    token += alphabet[bits << (6 - count) & 63U];
    OPENSSL_cleanse(bytes.data(), bytes.size());
    return token;
}

bool isSameToken(std::string_view one, std::string_view other)
{
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

} // namespace bridge
