// Base64 texts of any length, decoded without a product of their size that could wrap.
#pragma once

#include <QByteArray>

#include <cstddef>

// Decodes a text piece by piece, as one that leaves out what does not belong to the alphabet, padding
// included. The pieces may end anywhere.
class CBase64Decoder
{
public:
    // What a piece of nSize characters decodes to, at most.
    static constexpr std::size_t Room(std::size_t nSize) { return nSize / 4 * 3 + 3; }

    // Writes the bytes of the next piece to pTarget and returns their number.
    std::size_t Decode(const char* pText, std::size_t nSize, char* pTarget);

private:
    unsigned m_nBits = 0; // of the last characters, which do not make a byte yet
    unsigned m_nBitCount = 0;
};

// A whole text, of the size that a byte array can have.
QByteArray DecodeBase64(const char* pText, int nSize);
