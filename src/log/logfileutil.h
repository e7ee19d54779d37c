// Log files, their format buffers and the tick clock.
//
// Every line of the library goes through SCR_LOG, SCR_LOG_INTHREAD, SCR_LOG_TO or SCR_LOG_WIDE. They look at
// g_bEnableLog before each single line, so that logging costs one byte test while it is off and a host that
// switches it during a call sees the change from the next line on.
#pragma once

#include "scriberasdk.h"

#include <atomic>
#include <cstdint>

// Milliseconds of the monotonic clock since an arbitrary fixed point. Source: CLOCK_MONOTONIC.
std::uint64_t GetTickCount();

// Appends "[func]:text, tail" to the main log file, a kilobyte at most. Opens and closes the file each time;
// does nothing when it cannot be opened or is not the effective user's own. Does not look at g_bEnableLog.
void MyDebug(const char* func, const char* text, const char* tail);

// The same for wide texts, converted with the process's locale. A character that it lacks ends the text.
void MyDebug(const wchar_t* func, const wchar_t* text, const wchar_t* tail);

// The same for the in-thread log file.
void MyDebug_InsideThread(const char* func, const char* text, const char* tail);

// The writer of a line: the two texts together stand in its brackets, for example {"SCK210_", "",
// "Clear()"} or {"CK210SignWidget", "::", "Shutdown()"}. The texts are literals; a label does not own them.
struct CLogLabel
{
    const char* m_pszOwner;
    const char* m_pszJoin;
    const char* m_pszFunction;
};

enum class ELogFile
{
    Main,    // calls into the library, whichever thread they run on
    InThread // the library's worker threads and paint handling
};

#if defined(SCRIBERA_WITHOUT_LOG)
// A build without its lines shows what they cost while they are off.
constexpr bool IsLogEnabled()
{
    return false;
}
#else
inline bool IsLogEnabled()
{
    return std::atomic_ref<unsigned char>(g_bEnableLog).load(std::memory_order_relaxed) != 0;
}
#endif

// Formats into the global buffer of the file and writes the line. Lines of several threads do not mix.
// Allocates nothing, so that a line can be written when memory has run out.
void WriteLogLine(ELogFile eFile, const CLogLabel& Label, const char* pszFormat, ...) noexcept
    __attribute__((format(printf, 3, 4)));

// The same for functions that take wide file paths: formats into g_wszKeyBuf, writes the main file.
void WriteWideLogLine(const CLogLabel& Label, const wchar_t* pwszFormat, ...) noexcept;

// A pointer as the "%lx" of the log lines shows it.
template <typename T>
unsigned long AsHex(T* pAddress)
{
    return reinterpret_cast<unsigned long>(pAddress);
}

// A pointer as the "%x" of the wide log lines shows it: its low 32 bits.
template <typename T>
unsigned int AsShortHex(T* pAddress)
{
    return static_cast<unsigned int>(AsHex(pAddress));
}

// The tick as the "<%ld>" of the log lines takes it.
inline long LogTick()
{
    return static_cast<long>(GetTickCount());
}

// Writes a line that begins with the tick: SCR_LOG(Label, "<%ld>-leave with nResult=%d !", nResult).
#define SCR_LOG_TO(eFile, Label, pszFormat, ...)                                                             \
    do {                                                                                                     \
        if (IsLogEnabled())                                                                                  \
            WriteLogLine((eFile), (Label), pszFormat, LogTick() __VA_OPT__(, ) __VA_ARGS__);                 \
    } while (false)

#define SCR_LOG(Label, pszFormat, ...) SCR_LOG_TO(ELogFile::Main, Label, pszFormat __VA_OPT__(, ) __VA_ARGS__)

#define SCR_LOG_INTHREAD(Label, pszFormat, ...)                                                              \
    SCR_LOG_TO(ELogFile::InThread, Label, pszFormat __VA_OPT__(, ) __VA_ARGS__)

#define SCR_LOG_WIDE(Label, pwszFormat, ...)                                                                 \
    do {                                                                                                     \
        if (IsLogEnabled())                                                                                  \
            WriteWideLogLine((Label), pwszFormat, LogTick() __VA_OPT__(, ) __VA_ARGS__);                     \
    } while (false)
