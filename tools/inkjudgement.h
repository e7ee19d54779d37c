// Whether something was signed at all: by how much was written, how long and how large, never by its shape.
#pragma once

#include "inksummary.h"
#include "model/padmodel.h"

#include <QString>

#include <optional>

struct Judgement
{
    bool isSigned;
    QString reason; // of the opposite
};

// By millimetres where the resolution is known, by shares of the writing area where the pad is, by pad units
// otherwise.
Judgement judge(const InkSummary& summary, const CPadModel* pad, std::optional<double> unitsPerMillimetre);
