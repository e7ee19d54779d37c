#pragma once

// Counts the allocations of this process and refuses a chosen one. The program's own malloc() and its
// siblings stand in front of the C library's, for everything that the process has loaded; operator new ends
// there too.

namespace scribera::test {

// Lies in memory that a child shares with the process that watches it.
struct Refusal
{
    long count = 0;        // allocations between watch() and unwatch()
    bool leftOut = false;  // the chosen one was granted after all
    char place[8000] = ""; // who asked for the chosen one: "file(symbol+offset)" a line, the innermost first
};

// From now on: counts in *report, and refuses the which-th allocation, whatever thread makes it; none for 0.
// Where isLeftOut says so of the place, the allocation is granted all the same.
void watchAllocations(Refusal* report, long which, bool (*isLeftOut)(const char* place));
void unwatchAllocations();

} // namespace scribera::test
