/* Keeps the ink packet stream in a file, and reads it back through the library. K210. */
#include <stdio.h>
#include <stdlib.h>
#include <threads.h>

#include <scriberasdk.h>

static int writeText(const char* path, const char* text)
{
    FILE* const file = fopen(path, "w");
    if (!file)
        return 0;
    const int written = fputs(text, file) >= 0;
    return fclose(file) == 0 && written;
}

static char* readText(const char* path)
{
    FILE* const file = fopen(path, "r");
    if (!file)
        return NULL;
    fseek(file, 0, SEEK_END);
    const long size = ftell(file);
    rewind(file);
    char* const text = size >= 0 ? malloc((size_t)size + 1) : NULL;
    if (text)
        text[fread(text, 1, (size_t)size, file)] = '\0';
    fclose(file);
    return text;
}

static int keep(const char* path)
{
    char* const text = SCK210_PacketsBase64Encode(SCK210_DEVICE, EBITI_INK);
    const int kept = text && writeText(path, text);
    SCK210_PacketsBase64EncodeFree(SCK210_DEVICE, text);
    return kept;
}

/* The decoded points are apart from those of a signature that is being made. */
static int readBack(const char* path)
{
    char* const text = readText(path);
    const int result = text ? SCK210_Base64Decode(SCK210_DEVICE, EBITI_INK, text, NULL) : -8;
    free(text);
    if (result != ARI_SUCCESS)
        return result;

    const int count = SCK210_GetTotalDecodePacketsNumber(SCK210_DEVICE);
    int strokes = 0;
    for (int at = 0; at < count; ++at)
        strokes += SCK210_GetDecodePacketsData(SCK210_DEVICE, at, INKDATATYPE_STROKEEND) == 1;
    if (count > 0)
        printf("%d points in %d strokes, the first at %d, %d\n", count, strokes,
               SCK210_GetDecodePacketsData(SCK210_DEVICE, 0, INKDATATYPE_X),
               SCK210_GetDecodePacketsData(SCK210_DEVICE, 0, INKDATATYPE_Y));
    return count > 0 ? 0 : count;
}

int main(void)
{
    const struct timespec pause = {.tv_nsec = 20000000};
    int key = -1;
    int result = -8;

    if (!SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 485)) {
        fputs("no pad\n", stderr);
        return 1;
    }
    for (int turn = 0; key < 0 && turn < 3000; ++turn) {
        key = SCK210_GetDeviceConfirmOrCancelKeyStatus(SCK210_DEVICE);
        thrd_sleep(&pause, NULL);
    }
    if (key == 1 && keep("signature.ink"))
        result = readBack("signature.ink");
    SCK210_UnInitialDevice(SCK210_DEVICE);
    return result == 0 ? 0 : 1;
}
