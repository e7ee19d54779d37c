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
    // Touched by its own thread only. A few bytes of the storage that a thread is born with, which the loader
    // keeps for libraries that come late, too: any other is allocated at a thread's first touch, and the C
    // library ends the process where there is no memory then.
    [[gnu::tls_model("initial-exec")]] static constinit thread_local int s_nDepth;
};
