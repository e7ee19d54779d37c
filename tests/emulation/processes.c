// For test programs that start others where the processor is emulated. Qt asks whether the system knows
// processes by descriptors, by waiting for one that is none; the emulator passes the question on to a system
// that does, but cannot start such a process itself. So the answer is that there are none, and Qt starts
// others the older way.
#define _GNU_SOURCE
#include <errno.h>
#include <stdarg.h>
#include <string.h>
#include <sys/syscall.h>

#include <dlfcn.h>

enum
{
    ByDescriptor = 3 // P_PIDFD
};

long syscall(long number, ...)
{
    long words[6];
    va_list list;
    va_start(list, number);
    for (int i = 0; i < 6; ++i)
        words[i] = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && words[0] == ByDescriptor) {
        errno = EINVAL;
        return -1;
    }
    void* const symbol = dlsym(RTLD_NEXT, "syscall");
    long (*next)(long, ...);
    memcpy(&next, &symbol, sizeof next);
    return next(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}
