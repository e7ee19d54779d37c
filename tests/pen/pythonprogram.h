// The tests' own programs in Python.
#pragma once

#include <string>
#include <vector>

namespace scribera::test {

// Runs a program of this folder with an input, without what is preloaded into this process; returns its
// output. Throws std::runtime_error when it fails.
std::string runPython(const std::string& program, const std::vector<std::string>& arguments,
                      const std::string& input = {});

} // namespace scribera::test
