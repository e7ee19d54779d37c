#include <scriberasdk.h>
#include <stdatomic.h>
#include <threads.h>
static atomic_int key = -1;
/* 1 confirm, 0 cancel; runs on the library's thread */
static void on_status(int status)
{
    key = status;
}
int main(void)
{
    if (!SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 400))
        return 1; /* no parent: 800 x 400 in memory */
    SCK210_SignatureStatusCallback(SCK210_DEVICE, on_status);
    while (key < 0) /* the person signs, then taps a key of the pad */
        thrd_sleep(&(struct timespec){.tv_nsec = 20000000}, NULL);
    SCK210_SetSaveCenterImageClip(SCK210_DEVICE, true, 10, 10); /* just the ink and 10 pixels around it */
    int result = SCK210_SaveDrawingImage(SCK210_DEVICE, EBITI_PNG, (wchar_t[]){L"signature.png"}, 1);
    return SCK210_UnInitialDevice(SCK210_DEVICE) != ARI_SUCCESS || key != 1 || result != ARI_SUCCESS;
}
