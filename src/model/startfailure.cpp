#include "model/startfailure.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

// A sentence is one line, whatever a driver, a pad or a file name puts into it.
char Printable(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? '?' : c;
}

bool ContinuesCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

} // namespace

void CStartFailure::Set(int nCode, const char* pszFormat, ...) noexcept
{
    m_nCode = nCode;
    m_nLength = 0;
    std::va_list Arguments;
    va_start(Arguments, pszFormat);
    AddList(pszFormat, Arguments);
    va_end(Arguments);
}

void CStartFailure::Add(const char* pszFormat, ...) noexcept
{
    std::va_list Arguments;
    va_start(Arguments, pszFormat);
    AddList(pszFormat, Arguments);
    va_end(Arguments);
}

void CStartFailure::AddList(const char* pszFormat, std::va_list Arguments) noexcept
{
    char* const pBegin = m_Text.data() + m_nLength;
    std::vsnprintf(pBegin, m_Text.size() - m_nLength, pszFormat, Arguments);
    char* const pEnd = pBegin + std::strlen(pBegin);
    std::transform(pBegin, pEnd, pBegin, Printable);
    m_nLength += static_cast<std::size_t>(pEnd - pBegin);
}

void CStartFailure::CopyText(char* pBuffer, std::size_t nSize) const noexcept
{
    std::size_t nLength = std::min(m_nLength, nSize - 1);
    while (nLength > 0 && ContinuesCharacter(m_Text[nLength]))
        --nLength;
    std::memcpy(pBuffer, m_Text.data(), nLength);
    pBuffer[nLength] = '\0';
}
