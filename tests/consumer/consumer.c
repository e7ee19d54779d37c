/* Takes a signature off screen as soon as the confirm key is tapped, and prints what came. */
#include <scriberasdk.h>
#include <stdatomic.h>
#include <stdio.h>
#include <threads.h>
#include <time.h>

static atomic_int key = -1;

static void onKey(int status)
{
    atomic_store(&key, status);
}

int main(void)
{
    wchar_t path[] = L"consumer-c.png";
    if (!SCT580_InitialDevice(SCT580_DEVICE, NULL, 0, 0, 600, 400)) {
        fprintf(stderr, "no pad\n");
        return 1;
    }
    SCT580_SignatureStatusCallback(SCT580_DEVICE, onKey);
    const struct timespec pause = {0, 10000000};
    for (int i = 0; i < 3000 && atomic_load(&key) < 0; ++i)
        thrd_sleep(&pause, NULL);
    const int points = SCT580_GetTotalPacketsNumber(SCT580_DEVICE);
    const int saved = SCT580_SaveDrawingImage(SCT580_DEVICE, EBITI_PNG, path, 1);
    const int closed = SCT580_UnInitialDevice(SCT580_DEVICE);
    printf("key %d, points %d, saved %d, closed %d\n", atomic_load(&key), points, saved, closed);
    return atomic_load(&key) == 1 && points > 100 && saved == ARI_SUCCESS && closed == ARI_SUCCESS ? 0 : 1;
}
