// Ctrl-C and the other ways to tell a program that it shall end.
#pragma once

#include <vector>

// The first signal asks the program to end: whoever waits throws this, and all that is open is closed on the
// way out.
struct Interrupted
{
    int signal;
};

// From now on. A second signal, for a driver that does not come back, removes what is left in the file
// system, restores the terminal and ends the program at once.
void catchInterrupts();

// Throws Interrupted once the program shall end.
void throwIfInterrupted();

// Readable once the program shall end.
int interruptDescriptor();

// Waits until one of the descriptors (those below 0 are none) can be read or the time is over. Throws
// Interrupted.
void waitFor(const std::vector<int>& descriptors, int milliseconds);

// Ends the program by the signal, so that a shell knows; returns its exit code where it does not.
int endBy(const Interrupted& interrupted);
