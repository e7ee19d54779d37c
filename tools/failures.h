// The two ways in which a command ends early.
#pragma once

#include <QString>

// The command line asks for something that does not exist. Exit code 2.
struct UsageError
{
    QString reason;
};

// The input is malformed, or a file cannot be read or written. Exit code 1.
struct Failure
{
    QString reason;
};
