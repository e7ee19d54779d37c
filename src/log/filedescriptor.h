// Files below Qt, whose classes follow links and read more into a name than a name.
#pragma once

#include <cerrno>
#include <cstddef>
#include <utility>

#include <unistd.h>

// An open file, or none.
class CFileDescriptor
{
public:
    CFileDescriptor() = default;
    explicit CFileDescriptor(int nFile) : m_nFile(nFile) {}
    CFileDescriptor(CFileDescriptor&& Other) noexcept : m_nFile(Other.Release()) {}
    CFileDescriptor& operator=(CFileDescriptor&& Other) noexcept
    {
        std::swap(m_nFile, Other.m_nFile);
        return *this;
    }
    ~CFileDescriptor() { Close(); }

    bool IsOpen() const { return m_nFile >= 0; }
    int Number() const { return m_nFile; }

    // The caller closes it.
    int Release() { return std::exchange(m_nFile, -1); }

    // False when the system reports only now that something was not written.
    bool Close() { return m_nFile < 0 || close(Release()) == 0; }

private:
    int m_nFile = -1;
};

// Writes all bytes, however many calls that takes.
inline bool WriteAll(int nFile, const char* pBytes, std::size_t nSize)
{
    while (nSize > 0) {
        const ssize_t nWritten = write(nFile, pBytes, nSize);
        if (nWritten < 0 && errno != EINTR)
            return false;
        if (nWritten > 0) {
            pBytes += nWritten;
            nSize -= static_cast<std::size_t>(nWritten);
        }
    }
    return true;
}
