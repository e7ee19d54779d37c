#include "text.h"

#include <algorithm>

void NamedLines::add(const QString& name, const QString& value)
{
    m_width = std::max(m_width, static_cast<int>(name.size()) + 1);
    m_lines.append({name, value});
}

QString NamedLines::text() const
{
    QString text;
    for (const auto& [name, value] : m_lines)
        text += name.leftJustified(m_width) + value + QLatin1Char('\n');
    return text;
}
