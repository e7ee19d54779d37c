// What is written for people, in their language: Text::tr("...").
#pragma once

#include "catalogues.h"

#include <QCoreApplication>
#include <QList>
#include <QPair>
#include <QString>

class Text
{
    Q_DECLARE_TR_FUNCTIONS(Tools)
};

template <typename T>
QString numberText(T whole)
{
    return localeOfTexts().toString(static_cast<qlonglong>(whole));
}

inline QString numberText(double value, int decimals)
{
    return localeOfTexts().toString(value, 'f', decimals);
}

// Lines of a name and its value. Names take this width, or that of the longest, so that the values are
// aligned.
class NamedLines
{
public:
    explicit NamedLines(int width) : m_width(width) {}

    void add(const QString& name, const QString& value);
    QString text() const;

private:
    int m_width;
    QList<QPair<QString, QString>> m_lines;
};
