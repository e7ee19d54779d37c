#pragma once

// Between the harness and the test program's main(); tests do not need it.

#include <string>
#include <vector>

namespace scribera::test {

// Gives the process a /tmp of its own, in which the directories to keep still show where they were. False
// when the system does not allow it; nothing has changed then. Call it before any thread exists.
bool makeTmpPrivate(const std::vector<std::string>& keep);

// Gives that /tmp another size, as mount() takes it. False where there is none.
bool resizePrivateTmp(const std::string& size);

// The files of the library's that have fixed names.
extern const char* const mainLogFile;
extern const char* const inThreadLogFile;
extern const char* const svgScratchFile;

// Waits until no other test of this kind uses the fixed files under /tmp, and keeps others out until the
// process ends. Removes what an earlier run left behind.
void lockSharedTmp();

int runChildProgram(const std::vector<std::string>& arguments);

} // namespace scribera::test
