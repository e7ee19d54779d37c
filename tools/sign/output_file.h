// A file that is to appear whole or not at all.
#pragma once

#include "secret.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class OutputFile
{
public:
    enum class Readers
    {
        AsUsual, // those of the file before, or as the umask says
        Owner
    };

    // Throws Failure when the file clearly cannot be written or is one of those that are read, so that nobody
    // signs in vain. Empty paths are no files.
    OutputFile(const QString& path, const QStringList& inputs, Readers readers = Readers::AsUsual);

    // Under another name in the same folder first, where the check may still refuse it. Throws what that
    // throws, Failure and Interrupted.
    void write(const std::vector<std::string_view>& parts,
               const std::function<void(const std::string& draft)>& check) const;

private:
    QString m_path;       // as it was given
    std::string m_target; // where links lead to
    Readers m_readers;
};

// Throws Failure for what is no regular file or cannot be read.
std::string readDocument(const QString& path);
sign::Secret readSecret(const QString& path);
