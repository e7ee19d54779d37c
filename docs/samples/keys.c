/* Confirm ends the signing, cancel lets the person start again, three times at most. T580. */
#include <stdatomic.h>
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

static atomic_int lastKey = -1;

static void onKey(int key) /* on the key-action thread: take note and return */
{
    atomic_store(&lastKey, key);
}

int main(void)
{
    const struct timespec pause = {.tv_nsec = 10000000};
    int attempts = 3;
    int confirmed = 0;

    if (!SCT580_InitialDevice(SCT580_DEVICE, NULL, 0, 0, 800, 540)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    SCT580_SignatureStatusCallback(SCT580_DEVICE, onKey);
    for (int turn = 0; !confirmed && attempts > 0 && turn < 6000; ++turn) {
        switch (atomic_exchange(&lastKey, -1)) {
        case 1: /* confirm; with nothing signed it does not count */
            confirmed = SCT580_GetTotalPacketsNumber(SCT580_DEVICE) > 0;
            break;
        case 0: /* cancel */
            SCT580_Clear(SCT580_DEVICE);
            --attempts;
            printf("cleared, %d attempts left\n", attempts);
            break;
        default:
            thrd_sleep(&pause, NULL);
        }
    }
    if (confirmed)
        printf("confirmed: %d points\n", SCT580_GetTotalPacketsNumber(SCT580_DEVICE));
    SCT580_UnInitialDevice(SCT580_DEVICE);
    return confirmed ? 0 : 1;
}
