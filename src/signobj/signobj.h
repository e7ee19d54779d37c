// What a windowless sign object adds: a canvas of a fixed size.
#pragma once

#include "signobject/signobject.h"

#include <memory>

// Base of the five windowless classes. Needs neither a widget nor an application object nor an event loop.
class CSignObj : public CSignObject
{
protected:
    CSignObj(int nWidth, int nHeight, const CPadModel& Model);

private:
    // On a canvas of its own, of the host's size.
    int PlaceFingerprint(CFingerprint& Fingerprint, const CFPRequest& Request) override;
};

// The windowless sign object of the model's own class.
std::unique_ptr<CSignObj> MakeSignObj(const CPadModel& Model, int nWidth, int nHeight);
