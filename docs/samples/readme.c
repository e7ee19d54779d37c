#include <scriberasdk.h>
#include <stdatomic.h>
#include <stdio.h>
#include <threads.h>
static atomic_int key = -1;
/* 1 confirm, 0 cancel; runs on the library's thread */
static void on_status(int status)
{
    key = status;
}
static int fail(const char* reason)
{
    fprintf(stderr, "host: %s\n", reason);
    return 1;
}
int main(void)
{
    /* no parent: in memory, in the proportions of the pad */
    if (!SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 660, 400))
        return fail("no pad; is it plugged in, and its driver ./libscriberadrv.so there?");
    SCK210_SignatureStatusCallback(SCK210_DEVICE, on_status);
    while (key < 0) /* the person signs, then taps a key of the pad */
        thrd_sleep(&(struct timespec){.tv_nsec = 20000000}, NULL);
    SCK210_SetSaveCenterImageClip(SCK210_DEVICE, true, 10, 10); /* just the ink and 10 pixels around it */
    int result =
        key == 1 ? SCK210_SaveDrawingImage(SCK210_DEVICE, EBITI_PNG, (wchar_t[]){L"signature.png"}, 1) : 0;
    SCK210_UnInitialDevice(SCK210_DEVICE);
    if (key != 1)
        return fail("cancelled at the pad");
    return result == ARI_SUCCESS ? 0 : fail("no signature, or signature.png cannot be written");
}
