// The function families: which model each serves and which objects it creates.
#pragma once

#include "signcore/padmodel.h"

class CSignObject;
class CSignWidget;
class QWidget;

struct CFamily
{
    const CPadModel& m_Model;
    CSignWidget* (*m_pfnMakeWidget)(QWidget* pParentWidget); // owned by its parent
    CSignObject* (*m_pfnMakeObj)(int nWidth, int nHeight);   // owned by the caller
};

extern const CFamily g_FamilyK210;
extern const CFamily g_FamilyK420;
extern const CFamily g_FamilyK421B;
extern const CFamily g_FamilyKM730;
extern const CFamily g_FamilyT580;
