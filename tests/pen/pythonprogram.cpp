#include "pythonprogram.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace scribera::test {

std::string runPython(const std::string& program, const std::vector<std::string>& arguments,
                      const std::string& input)
{
    const std::string inputFile = program + ".input";
    if (!(std::ofstream(inputFile) << input).flush())
        throw std::runtime_error("cannot write " + inputFile);
    std::string command = "LD_PRELOAD= " SCRIBERA_PYTHON " -B " SCRIBERA_PEN_PROGRAMS "/" + program;
    for (const std::string& argument : arguments)
        command += " '" + argument + "'";
    command += " <" + inputFile;
    FILE* const pipe = popen(command.c_str(), "re");
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string output;
    char part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof part, pipe))
        output.append(part, count);
    if (pclose(pipe) != 0)
        throw std::runtime_error("failed: " + command);
    return output;
}

} // namespace scribera::test
