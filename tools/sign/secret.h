// A password or a private key, which is overwritten when it is not needed any more.
#pragma once

#include <openssl/crypto.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace sign {

class Secret
{
public:
    Secret() : Secret(std::size_t{0}) {}
    // Of so many bytes, to be filled.
    explicit Secret(std::size_t size) : m_bytes(size + 1, '\0') {}
    explicit Secret(std::string_view text) : Secret(text.size())
    {
        std::copy(text.begin(), text.end(), m_bytes.begin());
    }
    ~Secret() { OPENSSL_cleanse(m_bytes.data(), m_bytes.size()); }
    Secret(Secret&&) = default; // leaves nothing behind
    Secret(const Secret&) = delete;
    Secret& operator=(Secret&&) = delete;
    Secret& operator=(const Secret&) = delete;

    char* data() { return m_bytes.data(); }
    const char* text() const { return m_bytes.data(); } // with a zero behind it
    std::string_view view() const { return {m_bytes.data(), m_bytes.size() - 1}; }

private:
    std::vector<char> m_bytes; // on the heap, whatever its length: what is moved is no copy
};

} // namespace sign
