#include "ink/base64text.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace {

constexpr std::array<std::int8_t, 256> MakeDigits()
{
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::int8_t, 256> Digits{};
    Digits.fill(-1);
    for (std::size_t nAt = 0; nAt < kAlphabet.size(); ++nAt)
        Digits[static_cast<unsigned char>(kAlphabet[nAt])] = static_cast<std::int8_t>(nAt);
    return Digits;
}

constexpr std::array<std::int8_t, 256> kDigits = MakeDigits(); // -1 for what is left out

int DigitOf(char c)
{
    return kDigits[static_cast<unsigned char>(c)];
}

} // namespace

std::size_t CBase64Decoder::Decode(const char* pText, std::size_t nSize, char* pTarget)
{
    const char* const pEnd = pText + nSize;
    char* pNext = pTarget;
    while (pText != pEnd) {
        if (DigitOf(*pText) < 0) {
            ++pText;
            continue;
        }
        // Whole groups at once, as long as nothing is left out.
        for (; m_nBitCount == 0 && pEnd - pText >= 4; pText += 4) {
            const int n0 = DigitOf(pText[0]);
            const int n1 = DigitOf(pText[1]);
            const int n2 = DigitOf(pText[2]);
            const int n3 = DigitOf(pText[3]);
            if ((n0 | n1 | n2 | n3) < 0)
                break;
            const int nGroup = n0 << 18 | n1 << 12 | n2 << 6 | n3;
            *pNext++ = static_cast<char>(nGroup >> 16);
            *pNext++ = static_cast<char>(nGroup >> 8);
            *pNext++ = static_cast<char>(nGroup);
        }
        if (pText == pEnd)
            break;
        const int nDigit = DigitOf(*pText);
        if (nDigit < 0)
            continue;
        ++pText;
        m_nBits = m_nBits << 6 | static_cast<unsigned>(nDigit);
        m_nBitCount += 6;
        if (m_nBitCount >= 8) {
            m_nBitCount -= 8;
            *pNext++ = static_cast<char>(m_nBits >> m_nBitCount);
            m_nBits &= (1U << m_nBitCount) - 1;
        }
    }
    return static_cast<std::size_t>(pNext - pTarget);
}

QByteArray DecodeBase64(const char* pText, int nSize)
{
    const std::size_t nTextSize = static_cast<std::size_t>(nSize);
    QByteArray Decoded(static_cast<int>(CBase64Decoder::Room(nTextSize)), Qt::Uninitialized);
    Decoded.truncate(static_cast<int>(CBase64Decoder().Decode(pText, nTextSize, Decoded.data())));
    return Decoded;
}
