#include "inkpad.h"

#include <algorithm>

QStringList padNames()
{
    QStringList names;
    for (const CPadModel* pad : AllPads())
        names += QLatin1String(pad->m_pszName);
    return names;
}

const CPadModel* padNamed(const QString& name)
{
    const auto pads = AllPads();
    const auto found = std::find_if(pads.begin(), pads.end(), [&name](const CPadModel* pad) {
        return name == QLatin1String(pad->m_pszName) ||
               name == QLatin1String("SC") + QLatin1String(pad->m_pszName);
    });
    return found == pads.end() ? nullptr : *found;
}
