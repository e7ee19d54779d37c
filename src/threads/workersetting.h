// What the host and its environment say about the worker threads.
#pragma once

#include "model/objectidentity.h"

// How a worker spends the time in which nothing waits for it.
enum class EIdle
{
    Poll, // gives its turn away and looks again: what comes starts at once, and a core is busy
    Wait  // sleeps until its bell rings
};

// One setting for the process. Holds for the threads of objects that are made afterwards.
class CWorkerSetting
{
public:
    // What the host says; on any thread.
    static void Choose(EIdle eIdle);

    // What it said, else what SCRIBERA_WORKERS in the environment says, else polling. An unknown value is
    // told in a line under the label.
    static EIdle ForNewObject(const CLogLabel& Label);
};
