// Files with fixed names in a folder where everybody can make files.
#pragma once

#include "log/filedescriptor.h"

// Opens a file for reading and writing, and makes it when there is none. None unless it is a regular file
// with no other name and belongs to the effective user: others may have put a file of their own, a link or a
// pipe there. Follows no link as the last part of the path and never waits. nFlags: more flags of open().
CFileDescriptor OpenOwnFile(const char* pszPath, int nFlags);
