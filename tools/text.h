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

// NamedLines of a name and what stands under it, the latter below each other. The names have this width, or
// that of the longest.
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
