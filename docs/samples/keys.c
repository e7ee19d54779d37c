/* Confirm takes the signature, cancel lets the person start again, three times at most. T580. */
#include <stdatomic.h>
#include <stdio.h>
#include <string.h>
#include <threads.h>

#include <scriberasdk.h>

static _Atomic(char*) signature; /* the ink packet stream, once it is confirmed */
static atomic_int cancelled;

/* A tap leaves points, but no ink. Clipped, a picture without ink is an empty text; without points it is
 * null. */
static bool isSigned(void)
{
    SCT580_SetSaveCenterImageClip(SCT580_DEVICE, true, 1, 1);
    char* const picture = SCT580_PacketsBase64Encode(SCT580_DEVICE, EBITI_PNG);
    const bool inked = picture && *picture;
    SCT580_PacketsBase64EncodeFree(SCT580_DEVICE, picture);
    return inked;
}

/* On the key-action thread. While this runs no pen comes down: what is taken and cleared here is what the
 * person had signed when the key was touched. */
static void onKey(int key)
{
    if (atomic_load(&signature)) /* the first confirmation counts */
        return;
    if (key == 1 && isSigned()) {
        atomic_store(&signature, SCT580_PacketsBase64Encode(SCT580_DEVICE, EBITI_INK));
    } else if (key == 0) {
        SCT580_Clear(SCT580_DEVICE); /* the canvas and the points */
        SCT580_Clear(SCT580_DEVICE); /* now the pad, too */
        atomic_fetch_add(&cancelled, 1);
    }
}

int main(void)
{
    const struct timespec pause = {.tv_nsec = 10000000};
    const int attempts = 3;
    int told = 0;

    if (!SCT580_InitialDevice(SCT580_DEVICE, NULL, 0, 0, 800, 539)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    SCT580_SignatureStatusCallback(SCT580_DEVICE, onKey);
    for (int turn = 0; !atomic_load(&signature) && told < attempts && turn < 6000; ++turn) {
        if (told < atomic_load(&cancelled))
            printf("cleared, %d attempts left\n", attempts - ++told);
        else
            thrd_sleep(&pause, NULL);
    }
    char* const ink = atomic_load(&signature);
    if (ink)
        printf("confirmed: %zu points\n", strlen(ink) / 32); /* 24 bytes a point are 32 characters */
    SCT580_PacketsBase64EncodeFree(SCT580_DEVICE, ink);
    SCT580_UnInitialDevice(SCT580_DEVICE);
    return ink ? 0 : 1;
}
