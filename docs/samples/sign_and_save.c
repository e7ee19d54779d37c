/* Takes one signature on a K210 and saves it as PNG, PDF and SVG. */
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

/* Asks for the key that was tapped, until there is one or the time is over: 1 confirm, 0 cancel, -1 none. */
static int waitForKey(int seconds)
{
    const struct timespec pause = {.tv_nsec = 20000000};
    for (int turn = 0; turn < seconds * 50; ++turn) {
        const int key = SCK210_GetDeviceConfirmOrCancelKeyStatus(SCK210_DEVICE);
        if (key >= 0)
            return key;
        thrd_sleep(&pause, NULL);
    }
    return -1;
}

static int save(int type, wchar_t* path)
{
    const int result = SCK210_SaveDrawingImage(SCK210_DEVICE, type, path, 1); /* 1: 300 dots per inch */
    printf("%ls: %s\n", path, result == ARI_SUCCESS ? "saved" : "not saved");
    return result;
}

int main(void)
{
    wchar_t png[] = L"signature.png";
    wchar_t pdf[] = L"signature.pdf";
    wchar_t svg[] = L"signature.svg";
    int failures = 1;

    if (!SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 485)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    if (waitForKey(60) == 1) {
        printf("%d points\n", SCK210_GetTotalPacketsNumber(SCK210_DEVICE));
        SCK210_SetSaveCenterImageClip(SCK210_DEVICE, true, 10, 10); /* the ink and 10 pixels around it */
        failures = (save(EBITI_PNG, png) != 0) + (save(EBITI_PDF, pdf) != 0) + (save(EBITI_SVG, svg) != 0);
    }
    SCK210_UnInitialDevice(SCK210_DEVICE);
    return failures == 0 ? 0 : 1;
}
