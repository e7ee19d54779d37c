// A file that is to be written once there is something to write.
#pragma once

#include <QByteArray>
#include <QString>

class TargetFile
{
public:
    // Throws Failure when the file clearly cannot be written, so that nobody signs in vain. An empty path is
    // no file.
    explicit TargetFile(const QString& path);

    const QString& path() const { return m_path; }
    // Whole or not at all. Throws Failure.
    void write(const QByteArray& content) const;

private:
    QString m_path; // as it was given
    QString m_absolutePath;
};
