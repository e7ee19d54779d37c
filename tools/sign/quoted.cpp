#include "quoted.h"

#include <QChar>
#include <QVector>

QString quoted(const QString& text)
{
    QString line;
    for (const char32_t character : text.toUcs4())
        line += QChar::isPrint(character) ? QString::fromUcs4(&character, 1) : QStringLiteral("?");
    return line;
}

QString quoted(const std::string& utf8)
{
    return quoted(QString::fromStdString(utf8));
}
