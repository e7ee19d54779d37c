/* Goes before every source of the build that counts coverage: has the counters of the program or library
 * written by _exit() too, for children and hosts that end by it. See dump_at_exit.c. */
#ifndef SCRIBERA_DUMP_AT_EXIT_H
#define SCRIBERA_DUMP_AT_EXIT_H

#ifdef __cplusplus
extern "C" {
#endif

void __gcov_dump(void); /* each program and library has one of its own */
__attribute__((weak)) void scribera_dump_at_exit(void (*dump)(void));
__attribute__((weak)) void scribera_forget_dump(void (*dump)(void));

__attribute__((constructor)) static void scribera_register_dump(void)
{
    if (scribera_dump_at_exit)
        scribera_dump_at_exit(__gcov_dump);
}

__attribute__((destructor)) static void scribera_unregister_dump(void)
{
    if (scribera_forget_dump)
        scribera_forget_dump(__gcov_dump);
}

#ifdef __cplusplus
}
#endif

#endif
