#pragma once

// Every exported function with one call of its own and the texts it writes to the log, as data for the tests
// that hold for all of them.

#include <functional>
#include <string>
#include <vector>

#include "harness.h"

namespace scribera::test {

enum class ResultKind
{
    Code,         // "leave with nResult=..."
    InkCount,     // "leave with nInkCount=..."
    DecodedCount, // "leave with nDecodedInkCount=..."
    Packets,      // "leave with nPACKETS=..."
    KeyStatus,    // "leave with nKeyStatus=..."
    Pointer,      // "leave with <pointerName>=..."
    Truth,        // "leave with bRet = ..."
    Nothing,      // "leave !"
    Initial,      // InitialDevice and InitialDeviceByWId
    UnInitial,
    About // no device type to check, or nothing to report
};

// What a call gave, as text that reads well in a failure: "-2", "null", "false", "nothing", "7f00a0".
struct Outcome
{
    std::string text;
    Outcome(int value) : text(std::to_string(value)) {}
    Outcome(bool value) : text(value ? "true" : "false") {}
    Outcome(char* value) : text(value ? hex(value) : "null") {}
    static Outcome nothing()
    {
        Outcome outcome(0);
        outcome.text = "nothing";
        return outcome;
    }
};

struct ExportedOperation
{
    std::string name;
    Families families;
    ResultKind kind;
    std::string pointerName;                             // of ResultKind::Pointer
    std::function<Outcome(const Operations&, int)> call; // with good arguments and this device type
    std::string entryBegin;                              // "Enter" or "enter"
    std::function<std::string()> arguments;              // what follows the device type in the entry line

    std::string entryText(int deviceType) const;
    std::string wrongTypeText(const PadModel& model) const;
    std::string wrongTypeResult() const;
    bool hasDeviceType() const; // false for the About boxes
    std::string missingObjectResult() const;
    std::string leaveText(const std::string& result) const; // of a call whose device type was right
};

std::vector<ExportedOperation> exportedOperations(const PadModel& model);
std::vector<ExportedOperation>
objectOperations(const PadModel& model); // none of the lifecycle, none of About

// A call whose arguments the exported layer refuses by itself.
struct BadArguments
{
    std::string what; // names the call in a failure
    std::string name; // operation
    std::function<Outcome(const Operations&, int)> call;
    std::string result;
    std::string leaveText;
};

std::vector<BadArguments> badArguments(const PadModel& model);

} // namespace scribera::test
