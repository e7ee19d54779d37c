// What a windowless sign object adds: a canvas of a fixed size.
#pragma once

#include "signcore/signobject.h"

// Base of the five windowless classes. Needs neither a widget nor an application object nor an event loop.
class CSignObj : public CSignObject
{
protected:
    CSignObj(int nWidth, int nHeight, const CPadModel& Model, PfnMakeThread pfnKeyAction,
             PfnMakeThread pfnShowFPImage = nullptr);
};
