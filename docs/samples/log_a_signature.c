/* Writes the log of one signature. Nothing is logged before and after. K210. */
#include <stdatomic.h>
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

static atomic_int lastKey = -1;

/* Asking for the key again and again would fill the log; waiting for this leaves a single line. */
static void onKey(int key)
{
    atomic_store(&lastKey, key);
}

int main(void)
{
    const struct timespec pause = {.tv_nsec = 20000000};

    g_bEnableLog = 1;
    const bool open = SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 485);
    SCK210_SignatureStatusCallback(SCK210_DEVICE, onKey);
    for (int turn = 0; open && atomic_load(&lastKey) < 0 && turn < 3000; ++turn)
        thrd_sleep(&pause, NULL);
    SCK210_GetTotalPacketsNumber(SCK210_DEVICE);
    SCK210_UnInitialDevice(SCK210_DEVICE);
    g_bEnableLog = 0;
    puts("see /tmp/scriberasdk.log");
    return open ? 0 : 1;
}
