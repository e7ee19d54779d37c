#include "export/wholefile.h"

#include "sync/mutex.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/xattr.h>

namespace {

FnTakeBytes WriterOf(const CFileDescriptor& File)
{
    return [&File](const char* pBytes, std::size_t nSize) { return WriteAll(File.Number(), pBytes, nSize); };
}

std::string FolderOf(const std::string& strPath)
{
    const std::size_t nSlash = strPath.rfind('/');
    return nSlash == std::string::npos ? "." : strPath.substr(0, nSlash + 1);
}

std::string NameOf(const std::string& strPath)
{
    return strPath.substr(strPath.rfind('/') + 1); // all of it when there is no slash
}

// ---- the older file's attributes, access list included

using Attributes = std::set<std::string>;

std::optional<Attributes> AttributesOf(int nFile)
{
    const ssize_t nSize = flistxattr(nFile, nullptr, 0);
    if (nSize < 0)
        return errno == ENOTSUP ? std::optional(Attributes()) : std::nullopt;
    std::vector<char> Names(static_cast<std::size_t>(nSize));
    if (flistxattr(nFile, Names.data(), Names.size()) != nSize)
        return std::nullopt;
    Attributes All;
    for (auto pName = Names.begin(); pName != Names.end();) {
        const auto pEnd = std::find(pName, Names.end(), '\0');
        All.emplace(pName, pEnd);
        pName = pEnd == Names.end() ? pEnd : pEnd + 1;
    }
    return All;
}

std::optional<std::vector<char>> ValueOf(int nFile, const std::string& strName)
{
    const ssize_t nSize = fgetxattr(nFile, strName.c_str(), nullptr, 0);
    if (nSize < 0)
        return std::nullopt;
    std::vector<char> Value(static_cast<std::size_t>(nSize));
    if (fgetxattr(nFile, strName.c_str(), Value.data(), Value.size()) != nSize)
        return std::nullopt;
    return Value;
}

bool CopyAttributes(int nFrom, int nTo)
{
    const std::optional<Attributes> Wanted = AttributesOf(nFrom);
    const std::optional<Attributes> There = AttributesOf(nTo);
    if (!Wanted || !There)
        return false;
    for (const std::string& strName : *There)
        if (!Wanted->contains(strName) && fremovexattr(nTo, strName.c_str()) != 0)
            return false;
    for (const std::string& strName : *Wanted) {
        const std::optional<std::vector<char>> Value = ValueOf(nFrom, strName);
        if (!Value || (ValueOf(nTo, strName) != Value &&
                       fsetxattr(nTo, strName.c_str(), Value->data(), Value->size(), 0) != 0))
            return false;
    }
    return true;
}

// Makes the new file look as the older one does.
bool CopyLooks(const struct stat& Older, int nFrom, int nTo)
{
    struct stat Newer;
    return CopyAttributes(nFrom, nTo) && fchmod(nTo, Older.st_mode & 0777) == 0 && fstat(nTo, &Newer) == 0 &&
           Newer.st_mode == Older.st_mode && Newer.st_uid == Older.st_uid && Newer.st_gid == Older.st_gid;
}

// ---- a new file that gets its name when it is complete

CFileDescriptor OpenFolder(const std::string& strPath)
{
    return CFileDescriptor(open(FolderOf(strPath).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

CFileDescriptor OpenNameless(const CFileDescriptor& Folder)
{
    return CFileDescriptor(openat(Folder.Number(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666));
}

bool GiveName(const CFileDescriptor& File, const CFileDescriptor& Folder, const std::string& strName)
{
    std::array<char, 32> Self;
    std::snprintf(Self.data(), Self.size(), "/proc/self/fd/%d", File.Number());
    return linkat(AT_FDCWD, Self.data(), Folder.Number(), strName.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// Where the links of a path lead. None when one is the system's own, which stands for an open file.
std::optional<std::string> FollowLinks(std::string strPath)
{
    constexpr int kMostLinks = 40; // as the system has it
    for (int nLink = 0; nLink < kMostLinks; ++nLink) {
        const CFileDescriptor File(open(strPath.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat Status;
        struct statfs System;
        if (!File.IsOpen() || fstat(File.Number(), &Status) != 0 || fstatfs(File.Number(), &System) != 0)
            return std::nullopt;
        if (!S_ISLNK(Status.st_mode))
            return strPath;
        std::array<char, PATH_MAX> Target;
        const ssize_t nSize = readlinkat(File.Number(), "", Target.data(), Target.size());
        if (System.f_type == PROC_SUPER_MAGIC || nSize <= 0 ||
            static_cast<std::size_t>(nSize) == Target.size())
            return std::nullopt;
        const std::string strTarget(Target.data(), static_cast<std::size_t>(nSize));
        strPath = strTarget.front() == '/' ? strTarget : FolderOf(strPath).append("/").append(strTarget);
    }
    return std::nullopt;
}

// Whether the name in the folder is the file, and nothing begins there that a new file would hide.
bool IsPlainNameOf(const struct stat& File, const CFileDescriptor& Folder, const std::string& strName)
{
    struct stat Named;
    struct statx Extended;
    return fstatat(Folder.Number(), strName.c_str(), &Named, AT_SYMLINK_NOFOLLOW) == 0 &&
           Named.st_dev == File.st_dev && Named.st_ino == File.st_ino &&
           statx(Folder.Number(), strName.c_str(), AT_SYMLINK_NOFOLLOW, 0, &Extended) == 0 &&
           (Extended.stx_attributes & STATX_ATTR_MOUNT_ROOT) == 0;
}

bool IsOwnFile(const struct stat& File)
{
    constexpr mode_t kSpecial = S_ISUID | S_ISGID | S_ISVTX;
    return File.st_nlink == 1 && File.st_uid == geteuid() && File.st_gid == getegid() &&
           (File.st_mode & kSpecial) == 0;
}

bool IsOwnersFolder(const CFileDescriptor& Folder)
{
    struct stat Status;
    return fstat(Folder.Number(), &Status) == 0 &&
           ((Status.st_mode & S_ISVTX) == 0 || Status.st_uid == geteuid());
}

// Removes what a process left that was killed at the wrong moment.
void RemoveLeftover(const CFileDescriptor& Folder, const std::string& strName)
{
    struct stat Status;
    if (fstatat(Folder.Number(), strName.c_str(), &Status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(Status.st_mode) && IsOwnFile(Status))
        unlinkat(Folder.Number(), strName.c_str(), 0);
}

// Keeps threads that save the same file from taking each other's new one for a leftover.
constinit CStaticMutex s_NewNameMutex;

// False when the older file has to be written in its place.
bool Replace(const std::string& strPath, const CFileDescriptor& Older, const struct stat& Status,
             const FnHandOver& HandOver)
{
    const std::optional<std::string> strTarget = FollowLinks(strPath);
    if (!strTarget || !IsOwnFile(Status))
        return false;
    const CFileDescriptor Folder = OpenFolder(*strTarget);
    const std::string strName = NameOf(*strTarget);
    if (!Folder.IsOpen() || !IsOwnersFolder(Folder) || !IsPlainNameOf(Status, Folder, strName))
        return false;
    const CFileDescriptor Newer = OpenNameless(Folder);
    if (!Newer.IsOpen() || !CopyLooks(Status, Older.Number(), Newer.Number()) || !HandOver(WriterOf(Newer)))
        return false;
    const std::string strNewName = "." + strName + ".scribera-new";
    const CLocker Lock(s_NewNameMutex.m_Mutex);
    RemoveLeftover(Folder, strNewName);
    if (!GiveName(Newer, Folder, strNewName))
        return false;
    if (renameat(Folder.Number(), strNewName.c_str(), Folder.Number(), strName.c_str()) == 0)
        return true;
    unlinkat(Folder.Number(), strNewName.c_str(), 0);
    return false;
}

// ---- a file in its place

std::optional<std::int64_t> SizeOf(const FnHandOver& HandOver)
{
    std::int64_t nSize = 0;
    const bool bAll = HandOver([&nSize](const char*, std::size_t nPiece) {
        nSize += static_cast<std::int64_t>(nPiece);
        return true;
    });
    return bAll ? std::optional(nSize) : std::nullopt;
}

// Has the system set the room aside. Changes nothing that can be read before the old end.
bool Reserve(const CFileDescriptor& File, std::int64_t nOldSize, std::int64_t nSize)
{
    if (nSize == 0)
        return true;
    int nFailed = 0;
    do // a signal to the thread interrupts it on some file systems
        nFailed = fallocate(File.Number(), FALLOC_FL_KEEP_SIZE, 0, nSize);
    while (nFailed != 0 && errno == EINTR);
    if (nFailed == 0)
        return true;
    if (errno != EOPNOTSUPP && errno != ENOSYS)
        return false;
    // A file system that cannot do that takes zeros behind the end.
    if (lseek(File.Number(), 0, SEEK_END) < 0)
        return false;
    const std::vector<char> Zeros(65536);
    for (std::int64_t nLeft = nSize - nOldSize; nLeft > 0;) {
        const std::int64_t nPiece = std::min<std::int64_t>(nLeft, static_cast<std::int64_t>(Zeros.size()));
        if (!WriteAll(File.Number(), Zeros.data(), static_cast<std::size_t>(nPiece)))
            return false;
        nLeft -= nPiece;
    }
    return lseek(File.Number(), 0, SEEK_SET) == 0;
}

bool Cut(const CFileDescriptor& File, std::int64_t nSize)
{
    return ftruncate(File.Number(), nSize) == 0;
}

bool WriteInPlace(CFileDescriptor& File, std::int64_t nOldSize, const FnHandOver& HandOver)
{
    const std::optional<std::int64_t> nSize = SizeOf(HandOver);
    if (!nSize)
        return false;
    if (!Reserve(File, nOldSize, *nSize)) {
        Cut(File, nOldSize); // gives back what was set aside
        return false;
    }
    bool bWritten = false;
    try {
        bWritten = HandOver(WriterOf(File)) && Cut(File, *nSize);
    } catch (...) {
        Cut(File, 0);
        throw;
    }
    if (!bWritten)
        Cut(File, 0); // nothing rather than a part
    return File.Close() && bWritten;
}

// ---- by what there is

bool WriteExisting(const std::string& strPath, const FnHandOver& HandOver)
{
    // The wish to create makes the system refuse other users' files in sticky folders, where it is set up to.
    CFileDescriptor File(open(strPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    struct stat Status;
    if (!File.IsOpen() || fstat(File.Number(), &Status) != 0)
        return false;
    if (!S_ISREG(Status.st_mode))
        return HandOver(WriterOf(File)) && File.Close();
    return Replace(strPath, File, Status, HandOver) || WriteInPlace(File, Status.st_size, HandOver);
}

bool WriteNew(const std::string& strPath, const FnHandOver& HandOver)
{
    const CFileDescriptor Folder = OpenFolder(strPath);
    CFileDescriptor File = OpenNameless(Folder);
    if (File.IsOpen()) {
        if (!HandOver(WriterOf(File)))
            return false;
        if (GiveName(File, Folder, NameOf(strPath)))
            return File.Close();
    }
    // The file system knows no files without a name, or there is a link that leads nowhere yet.
    File = CFileDescriptor(open(strPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!File.IsOpen())
        return errno == EEXIST && WriteExisting(strPath, HandOver);
    try {
        if (HandOver(WriterOf(File)) && File.Close())
            return true;
    } catch (...) {
        unlink(strPath.c_str());
        throw;
    }
    unlink(strPath.c_str());
    return false;
}

FnHandOver HandOverOf(const QByteArray& Bytes)
{
    return [&Bytes](const FnTakeBytes& Take) {
        return Take(Bytes.constData(), static_cast<std::size_t>(Bytes.size()));
    };
}

} // namespace

bool WriteWholeFile(const QString& strPath, const FnHandOver& HandOver)
{
    const std::string strName = QFile::encodeName(strPath).toStdString();
    struct stat Status;
    if (stat(strName.c_str(), &Status) == 0)
        return WriteExisting(strName, HandOver);
    return errno == ENOENT && !strName.empty() && WriteNew(strName, HandOver);
}

bool WriteWholeFile(const QString& strPath, const QByteArray& Bytes)
{
    return WriteWholeFile(strPath, HandOverOf(Bytes));
}

bool OverwriteFile(CFileDescriptor& File, const QByteArray& Bytes)
{
    struct stat Status;
    return fstat(File.Number(), &Status) == 0 && WriteInPlace(File, Status.st_size, HandOverOf(Bytes));
}
