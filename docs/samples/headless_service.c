/* A signature for each line on standard input: the line is the number of seconds that the person has, the
 * answer a line on standard output. The pad is open only meanwhile. Ends with its input or with SIGTERM.
 * K210. */
#include <signal.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <threads.h>

#include <scriberasdk.h>
#include <scriberasdk_ext.h>

static atomic_int stopped;

static void onSignal(int number)
{
    (void)number;
    atomic_store(&stopped, 1);
}

static int waitForKey(int seconds)
{
    const struct timespec pause = {.tv_nsec = 20000000};
    for (int turn = 0; !atomic_load(&stopped) && turn < seconds * 50; ++turn) {
        const int key = SCK210_GetDeviceConfirmOrCancelKeyStatus(SCK210_DEVICE);
        if (key >= 0)
            return key;
        thrd_sleep(&pause, NULL);
    }
    return -1;
}

static void answer(int seconds)
{
    if (!SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 485)) {
        char reason[1024];
        SCRX_LastStartFailure(reason, sizeof reason);
        fprintf(stderr, "%s\n", reason);
        puts("no pad");
        return;
    }
    const int key = waitForKey(seconds);
    char* const ink = key == 1 ? SCK210_PacketsBase64Encode(SCK210_DEVICE, EBITI_INK) : NULL;
    if (ink)
        printf("signed %s\n", ink);
    else
        puts(key == 1 ? "empty" : key == 0 ? "cancelled" : "timeout");
    SCK210_PacketsBase64EncodeFree(SCK210_DEVICE, ink);
    SCK210_UnInitialDevice(SCK210_DEVICE);
}

int main(void)
{
    char line[32];

    SCRX_SetWorkers(SCRX_WORKERS_WAIT);
    umask(077); /* what the library leaves under /tmp is this user's alone */
    setvbuf(stdout, NULL, _IOLBF, BUFSIZ);
    while (!atomic_load(&stopped) && fgets(line, sizeof line, stdin)) {
        signal(SIGTERM, onSignal); /* an open pad is closed first; at other times SIGTERM just ends us */
        answer((int)strtol(line, NULL, 10));
        signal(SIGTERM, SIG_DFL);
    }
    return 0;
}
