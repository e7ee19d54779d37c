// A command's end that is neither success nor failure: a code of its own and a sentence.
#pragma once

#include "commands.h"

#include <QString>

struct Ending
{
    PadExitCode code;
    QString sentence;
};
