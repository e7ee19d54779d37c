/* Puts the signature into a web page: just the ink, on whatever background the page has. K420. */
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

static int writePage(const char* text)
{
    FILE* const page = fopen("signature.html", "w");
    if (!page)
        return 1;
    fprintf(page,
            "<!doctype html>\n<title>Signature</title>\n<body style=\"background: #ffe\">\n"
            "<img alt=\"Signature\" src=\"data:image/png;base64,%s\">\n",
            text);
    return fclose(page);
}

int main(void)
{
    const struct timespec pause = {.tv_nsec = 20000000};
    int key = -1;
    int failed = 1;

    if (!SCK420_InitialDevice(SCK420_DEVICE, NULL, 0, 0, 690, 390)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    SCK420_SetPenColor(SCK420_DEVICE, 0, 0, 128);
    for (int turn = 0; key < 0 && turn < 3000; ++turn) {
        key = SCK420_GetDeviceConfirmOrCancelKeyStatus(SCK420_DEVICE);
        thrd_sleep(&pause, NULL);
    }
    if (key == 1) {
        /* At least one margin has to be 1 or more, or nothing is clipped. */
        SCK420_SetSaveCenterImageClip(SCK420_DEVICE, true, 4, 4);
        char* const text = SCK420_PacketsBase64EncodeEx(SCK420_DEVICE, EBITI_PNG, true);
        if (text) {
            failed = *text ? writePage(text) : 1; /* an empty text: there is no ink to clip to */
            SCK420_PacketsBase64EncodeExFree(SCK420_DEVICE, text); /* before the pad is closed */
        }
    }
    SCK420_UnInitialDevice(SCK420_DEVICE);
    puts(failed ? "no page" : "signature.html");
    return failed;
}
