/* Preloaded by scripts/coverage: the counters of a process would be lost where it ends by _exit(). */
#include <dlfcn.h>
#include <stdatomic.h>
#include <stdlib.h>

enum
{
    kMost = 64 /* programs and libraries with counters in a process */
};

typedef void (*Dump)(void);
static _Atomic(Dump) dumps[kMost];

/* In the place of a library's that was unloaded. */
static void dump_nothing(void) {}

void scribera_dump_at_exit(Dump dump)
{
    for (int i = 0; i < kMost; ++i) {
        Dump there = NULL;
        if (atomic_compare_exchange_strong(&dumps[i], &there, dump) || there == dump)
            return;
        if (there == dump_nothing && atomic_compare_exchange_strong(&dumps[i], &there, dump))
            return;
    }
    abort(); /* rather than a figure that is too low */
}

void scribera_forget_dump(Dump dump)
{
    for (int i = 0; i < kMost; ++i) {
        Dump there = dump;
        atomic_compare_exchange_strong(&dumps[i], &there, dump_nothing);
    }
}

void _exit(int status)
{
    for (int i = 0; i < kMost && dumps[i]; ++i)
        dumps[i]();
    void (*leave)(int) = (void (*)(int))dlsym(RTLD_NEXT, "_exit");
    leave(status);
    __builtin_unreachable();
}

void _Exit(int status)
{
    _exit(status);
    __builtin_unreachable();
}
