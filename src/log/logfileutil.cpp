#include "log/logfileutil.h"

#include "log/ownfile.h"
#include "sync/mutex.h"
#include "sync/nocancellation.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <iterator>

#include <fcntl.h>

unsigned char g_bEnableLog = 0;
char g_cKeyBuf[256] = {};
char g_cKeyBuf_InThread[256] = {};
wchar_t g_wszKeyBuf[256] = {};
char g_cValueBuf[256] = {};
char g_cValueBuf_InThread[256] = {};
wchar_t g_wszValueBuf[256] = {};

namespace {

constexpr char kMainLogFile[] = "/tmp/scriberasdk.log";
constexpr char kInThreadLogFile[] = "/tmp/scriberasdk_inthread.log";

// Guards the format buffers and the order of the lines.
constinit CStaticMutex s_LogMutex;

// One write for the whole line, so that several processes do not mix theirs.
void AppendLine(const char* pszFile, const char* func, const char* text, const char* tail)
{
    const CFileDescriptor File = OpenOwnFile(pszFile, O_APPEND);
    if (!File.IsOpen())
        return;
    std::array<char, 1024> Line; // the texts of the library are far shorter together
    std::size_t nSize = 0;
    for (const char* const pszPart : {"[", func, "]:", text, ", ", tail}) {
        const std::size_t nPart = std::min(std::strlen(pszPart), Line.size() - nSize);
        std::memcpy(Line.data() + nSize, pszPart, nPart);
        nSize += nPart;
    }
    WriteAll(File.Number(), Line.data(), nSize);
}

using NarrowText = std::array<char, 256>;

NarrowText Narrow(const wchar_t* pwszText)
{
    NarrowText Result{};
    // Converts what the locale knows, up to the first character that it does not; the last byte stays zero.
    std::wcstombs(Result.data(), pwszText, Result.size() - 1);
    return Result;
}

// The label as one text. Labels are literals of the library, far shorter than this.
using LabelText = std::array<char, 192>;

LabelText TextOf(const CLogLabel& Label)
{
    LabelText Text;
    char* pNext = Text.data();
    for (const char* const pszPart : {Label.m_pszOwner, Label.m_pszJoin, Label.m_pszFunction})
        pNext = stpncpy(pNext, pszPart, static_cast<std::size_t>(Text.data() + Text.size() - 1 - pNext));
    *pNext = '\0';
    return Text;
}

} // namespace

std::uint64_t GetTickCount()
{
    timespec Now{};
    clock_gettime(CLOCK_MONOTONIC, &Now);
    return static_cast<std::uint64_t>(Now.tv_sec) * 1000 + static_cast<std::uint64_t>(Now.tv_nsec) / 1000000;
}

void MyDebug(const char* func, const char* text, const char* tail)
{
    AppendLine(kMainLogFile, func, text, tail);
}

void MyDebug(const wchar_t* func, const wchar_t* text, const wchar_t* tail)
{
    MyDebug(Narrow(func).data(), Narrow(text).data(), Narrow(tail).data());
}

void MyDebug_InsideThread(const char* func, const char* text, const char* tail)
{
    AppendLine(kInThreadLogFile, func, text, tail);
}

void WriteLogLine(ELogFile eFile, const CLogLabel& Label, const char* pszFormat, ...) noexcept
{
    const CNoCancellation Guard;
    const LabelText Text = TextOf(Label);
    const CLocker Lock(s_LogMutex.m_Mutex);
    char* const pBuffer = eFile == ELogFile::Main ? g_cKeyBuf : g_cKeyBuf_InThread;
    std::va_list Arguments;
    va_start(Arguments, pszFormat);
    std::vsnprintf(pBuffer, std::size(g_cKeyBuf), pszFormat, Arguments);
    va_end(Arguments);
    if (eFile == ELogFile::Main)
        MyDebug(Text.data(), pBuffer, "\n");
    else
        MyDebug_InsideThread(Text.data(), pBuffer, "\n");
}

void WriteWideLogLine(const CLogLabel& Label, const wchar_t* pwszFormat, ...) noexcept
{
    const CNoCancellation Guard;
    // The labels are ASCII, so widening them byte by byte is exact.
    const LabelText Text = TextOf(Label);
    std::array<wchar_t, std::tuple_size_v<LabelText>> WideText;
    std::copy(Text.begin(), Text.end(), WideText.begin());
    const CLocker Lock(s_LogMutex.m_Mutex);
    std::va_list Arguments;
    va_start(Arguments, pwszFormat);
    std::vswprintf(g_wszKeyBuf, std::size(g_wszKeyBuf), pwszFormat, Arguments);
    va_end(Arguments);
    MyDebug(WideText.data(), g_wszKeyBuf, L"\n");
}
