#include "targetfile.h"

#include "export/wholefile.h"
#include "failures.h"
#include "text.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

namespace {

Failure cannotWrite(const QString& path, const QString& reason)
{
    return {Text::tr("%1: cannot be written: %2").arg(path, reason)};
}

} // namespace

TargetFile::TargetFile(const QString& path)
    : m_path(path), m_absolutePath(QDir::current().absoluteFilePath(path))
{
    if (path.isEmpty())
        return;
    const QFileInfo file(m_absolutePath);
    const QFileInfo folder(file.path());
    if (file.isDir())
        throw cannotWrite(path, Text::tr("it is a folder"));
    if (!folder.isDir())
        throw cannotWrite(path, Text::tr("there is no folder %1").arg(QDir(file.path()).path()));
    if (file.exists() ? !file.isWritable() : !folder.isWritable())
        throw cannotWrite(path, Text::tr("no permission"));
}

void TargetFile::write(const QByteArray& content) const
{
    errno = 0;
    if (!WriteWholeFile(m_absolutePath, content))
        throw cannotWrite(m_path, QString::fromLocal8Bit(std::strerror(errno)));
}
