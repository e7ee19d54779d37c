// Tells whether the current thread is one on which the library calls the host.
#pragma once

// Alive while a thread of the library or of the driver is inside the library. Whatever the host calls from
// its callbacks runs within such a scope, and tearing the sign object down there would wait for itself.
class CCallbackScope
{
public:
    CCallbackScope() { ++s_nDepth; }
    ~CCallbackScope() { --s_nDepth; }
    CCallbackScope(const CCallbackScope&) = delete;
    CCallbackScope& operator=(const CCallbackScope&) = delete;

    static bool IsActive() { return s_nDepth > 0; }

private:
    static thread_local int s_nDepth; // touched by its own thread only
};
