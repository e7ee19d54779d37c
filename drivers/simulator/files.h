// Whole files, as the simulated pad and its tools read and write them.
#pragma once

#include <string>

namespace simulator {

// Reads a regular file of at most 64 MiB. False with "path: reason".
bool readFile(const std::string& path, std::string& content, std::string& error);

// Writes to a file, or to standard output when the path is "-". False with "path: reason"; a partly written
// file is then removed.
bool writeFile(const std::string& text, const std::string& path, std::string& error);

} // namespace simulator
