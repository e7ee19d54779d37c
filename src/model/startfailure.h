// Why a pad could not be opened.
#pragma once

#include "scriberasdk_ext.h"

#include <array>
#include <cstdarg>
#include <cstddef>

// A code of the interface and a sentence. Filled by whoever finds the reason, on the thread that opens the
// pad. Takes no memory; what does not fit is left out.
class CStartFailure
{
public:
    int Code() const { return m_nCode; }

    // Takes the place of what was there.
    void Set(int nCode, const char* pszFormat, ...) noexcept __attribute__((format(printf, 3, 4)));

    // Goes on with the sentence.
    void Add(const char* pszFormat, ...) noexcept __attribute__((format(printf, 2, 3)));

    // Writes the sentence and a zero byte, cut to nSize bytes, at least one, at a whole character of UTF-8.
    void CopyText(char* pBuffer, std::size_t nSize) const noexcept;

private:
    void AddList(const char* pszFormat, std::va_list Arguments) noexcept;

    int m_nCode = SCRX_START_OK;
    std::size_t m_nLength = 0; // of the sentence, without the zero byte behind it
    std::array<char, 1024> m_Text{};
};
