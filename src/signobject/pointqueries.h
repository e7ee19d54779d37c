// What a host asks of the stored points.
#pragma once

#include "ink/inkpoints.h"
#include "model/objectidentity.h"

// On any thread; the list locks itself. See the exported functions.
class CPointQueries
{
public:
    CPointQueries(const CObjectIdentity& Identity, const CInkPointList& Points)
        : m_Identity(Identity), m_Points(Points)
    {
    }

    int GetTotalInkPointsNumber() const;
    int GetPACKETS(_PACKETS& Packets) const;
    char* GetInkPointTime(int nIndex) const;

private:
    const CObjectIdentity& m_Identity;
    const CInkPointList& m_Points;
};
