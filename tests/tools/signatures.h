// Random signatures, the same on every machine, and those of the recordings.
#pragma once

#include "ink/inkpoints.h"
#include "model/padmodel.h"

#include <cstdint>
#include <string>
#include <vector>

// What a person might write on the pad, and what a stream may hold beside that: none, an unfinished stroke,
// ends without a stroke, pauses. Times count from 0 and there is no date, as in formats that know neither.
CInkSnapshot randomSignature(const CPadModel& pad, std::uint64_t seed);

// Points of any numbers that a stream can hold.
CInkSnapshot randomPoints(std::uint64_t seed);

// All pads in turn.
const CPadModel& padOf(std::uint64_t seed);

// What the pens of the recordings wrote, all on a T580.
std::vector<CInkSnapshot> recordedSignatures();

// The first difference in words, empty when there is none.
std::string difference(const CInkSnapshot& one, const CInkSnapshot& other);
