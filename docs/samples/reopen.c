/* Waits for the pad, and opens it again when it was unplugged. K210. */
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

static void pause100ms(void)
{
    const struct timespec pause = {.tv_nsec = 100000000};
    thrd_sleep(&pause, NULL);
}

static int openPad(void)
{
    return SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 485);
}

/* Whether the driver still reaches the pad. SCK210_getDeviceInfo cannot tell: it says how the opening went.
 */
static int isThere(void)
{
    char id[64] = "";
    return SCK210_GetHWPadID(SCK210_DEVICE, id, (int)sizeof id - 1) == 0;
}

int main(void)
{
    int open = 0;
    int key = -1;

    setvbuf(stdout, NULL, _IOLBF, BUFSIZ);
    for (int turn = 0; key < 0 && turn < 600; ++turn) {
        if (!open && (open = openPad()))
            puts("please sign");
        if (!open && turn == 0)
            puts("please plug in the pad");
        if (open && !isThere()) {
            SCK210_UnInitialDevice(SCK210_DEVICE); /* points and canvas go with it */
            open = 0;
            puts("the pad is gone, please plug it in again");
        }
        if (open)
            key = SCK210_GetDeviceConfirmOrCancelKeyStatus(SCK210_DEVICE);
        pause100ms();
    }
    printf("key %d, %d points\n", key, SCK210_GetTotalPacketsNumber(SCK210_DEVICE));
    SCK210_UnInitialDevice(SCK210_DEVICE); /* 0 also when none is open */
    return key == 1 ? 0 : 1;
}
