// A file that is there whole or as it was before.
#pragma once

#include "log/filedescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <functional>

// Takes bytes; false when they could not be taken.
using FnTakeBytes = std::function<bool(const char* pBytes, std::size_t nSize)>;

// Hands all bytes of a content to the taker, in pieces and in order. False when the taker refused some. May
// be asked several times, and then hands over the same bytes.
using FnHandOver = std::function<bool(const FnTakeBytes& Take)>;

// Writes a file as if it were opened, cut and filled, with the permissions that this gives it. True when all
// of it arrived; a full disk shows before a byte of an older file is gone.
//
// Where nobody can tell, the older file is replaced by a new one with its permissions and attributes: it has
// one name, it and its folder are the user's own, and no other file system begins there. The new file has no
// name until it is complete. Between its name ".NAME.scribera-new" and the older file's lie two calls of the
// system; a process that is killed just there leaves it behind, and the next one that writes the file removes
// it.
//
// All other files are written in their place, after the room was reserved: files with several names, of
// others, in folders of others or that cannot be written to, that are mounted, or open under a number; pipes
// and devices.
bool WriteWholeFile(const QString& strPath, const FnHandOver& HandOver);

// The same of bytes in memory.
bool WriteWholeFile(const QString& strPath, const QByteArray& Bytes);

// Writes the bytes in the place of a regular file that was just opened for writing, and closes it.
bool OverwriteFile(CFileDescriptor& File, const QByteArray& Bytes);
