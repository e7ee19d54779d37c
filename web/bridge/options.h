// What the service was told when it was started, by the command line and a file.
#pragma once

#include "origins.h"

#include <string>

namespace bridge {

struct Options
{
    Origins origins;
    unsigned short port = 17283;
    std::string driver = "pen";
    std::string certificate; // empty: without TLS
    std::string key;
    bool allowsNoOrigin = false;
    int openSeconds = 3600; // that a pad may be open
    int resumeSeconds = 30; // that a session waits for a connection
};

// The command line cannot be used; or the file cannot. With the exit code of the program.
struct OptionFault
{
    std::string reason;
    int exitCode;
};

// What the program shall do instead of serving: print this and end.
struct Printed
{
    std::string text;
};

// Throws OptionFault and Printed.
Options readOptions(int argc, char** argv);

} // namespace bridge
