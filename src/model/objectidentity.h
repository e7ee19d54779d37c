// What a sign object is: its model and kind, and with them its name in the log.
#pragma once

#include "log/logfileutil.h"
#include "model/padmodel.h"

struct CObjectIdentity
{
    const CPadModel& m_Model;
    EObjectKind m_eKind;

    bool IsWidget() const { return m_eKind == EObjectKind::Widget; }
    const CClassNames& Names() const { return m_Model.NamesOf(m_eKind); }

    // Label of a method of the object's class; pszFunction is "Shutdown()" and the like.
    CLogLabel Label(const char* pszFunction) const
    {
        return {Names().m_SignObject.m_pszClass, "::", pszFunction};
    }
    CLogLabel ConstructorLabel() const { return Label(Names().m_SignObject.m_pszConstructor); }
};
