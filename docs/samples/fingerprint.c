/* A signature and a fingerprint on the K421B, in a file each. */
#include <stdio.h>
#include <threads.h>

#include <scriberasdk.h>

static void pause20ms(void)
{
    const struct timespec pause = {.tv_nsec = 20000000};
    thrd_sleep(&pause, NULL);
}

/* There is no call that asks for a fingerprint. With clipping on, its picture is an empty text as long as it
 * is white; margins of 1 switch clipping on. */
static int waitForFingerprint(int seconds)
{
    int found = 0;
    SCK421B_SetSaveCenterImageClip(SCK421B_DEVICE, true, 1, 1);
    for (int turn = 0; !found && turn < seconds * 50; ++turn) {
        char* const text = SCK421B_GetFPImageBase64Data(SCK421B_DEVICE, EBITI_PNG, false);
        found = text && *text;
        SCK421B_FreeFPImageBase64Data(SCK421B_DEVICE, text);
        if (!found)
            pause20ms();
    }
    SCK421B_SetSaveCenterImageClip(SCK421B_DEVICE, false, 0, 0);
    return found;
}

static int saveFingerprint(wchar_t* path)
{
    char* const text = SCK421B_GetFPImageBase64Data(SCK421B_DEVICE, EBITI_PNG, true);
    const int result = text ? SCK421B_Base64Decode(SCK421B_DEVICE, EBITI_PNG, text, path) : -8;
    SCK421B_FreeFPImageBase64Data(SCK421B_DEVICE, text);
    return result;
}

int main(void)
{
    wchar_t signature[] = L"signature.png";
    wchar_t fingerprint[] = L"fingerprint.png";
    int key = -1;
    int failed = 1;

    if (!SCK421B_InitialDevice(SCK421B_DEVICE, NULL, 0, 0, 800, 434)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    /* On an image of its own: the canvas then holds the strokes alone. Without this call it holds both. */
    SCK421B_SetDisplayedFPImageAt(SCK421B_DEVICE, NULL, 208, 288, 0, 0, 208, 288);
    for (int turn = 0; key < 0 && turn < 3000; ++turn) {
        key = SCK421B_GetDeviceConfirmOrCancelKeyStatus(SCK421B_DEVICE);
        pause20ms();
    }
    if (key == 1 && waitForFingerprint(10)) {
        failed = SCK421B_SaveDrawingImage(SCK421B_DEVICE, EBITI_PNG, signature, 1) != 0;
        failed += saveFingerprint(fingerprint) != 0;
    }
    SCK421B_Clear(SCK421B_DEVICE); /* the fingerprint leaves the pad's screen too */
    SCK421B_UnInitialDevice(SCK421B_DEVICE);
    puts(failed ? "not saved" : "saved");
    return failed != 0;
}
