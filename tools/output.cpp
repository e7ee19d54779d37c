#include "output.h"

#include "failures.h"
#include "files.h"

#include <QFile>

#include <string>

void writeOutput(const QByteArray& text, const QString& path)
{
    std::string error;
    if (!simulator::writeFile(text.toStdString(), QFile::encodeName(path).toStdString(), error))
        throw Failure{QFile::decodeName(error.c_str())};
}
