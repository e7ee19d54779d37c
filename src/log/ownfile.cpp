#include "log/ownfile.h"

#include <fcntl.h>
#include <sys/stat.h>

CFileDescriptor OpenOwnFile(const char* pszPath, int nFlags)
{
    // The wish to create makes the system refuse other users' files in sticky folders, where it is set up to.
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    CFileDescriptor File(open(pszPath, kFlags | nFlags, 0666));
    struct stat Status;
    const bool bOwn = File.IsOpen() && fstat(File.Number(), &Status) == 0 && S_ISREG(Status.st_mode) &&
                      Status.st_nlink == 1 && Status.st_uid == geteuid();
    return bOwn ? std::move(File) : CFileDescriptor();
}
