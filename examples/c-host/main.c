/* scribera-c-host: takes one signature without a window, saves it as files and as an ink packet stream. */
#include <scriberasdk.h>
#include <scriberasdk_ext.h>

#include <locale.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <threads.h>
#include <time.h>

enum ExitCode
{
    SIGNED,
    FAILED,
    WRONG_USAGE,
    CANCELLED,
    TIMED_OUT
};

static const char help[] =
    "Usage: scribera-c-host [--model K210|K420|K421B|KM730|T580] [--timeout SECONDS] FILE...\n"
    "Takes one signature and saves it as each FILE: .bmp .jpg .png .pdf .svg, or .ink for the ink\n"
    "packet stream. A model may also be given as the pad names itself, SCK210 for K210. The pad's\n"
    "driver, libscriberadrv.so, is expected in the current folder.\n"
    "Exit code: 0 signed, 1 failed, 2 wrong usage, 3 cancelled, 4 no key within SECONDS (60).";

/* The families differ in their prefix alone, so that one table serves all models. */
typedef struct PadFamily
{
    int deviceType;
    const char* name;
    int canvasWidth; /* for the proportions of the pad's writing area */
    bool (*initialDevice)(int, QWidget*, int, int, int, int);
    int (*unInitialDevice)(int);
    int (*setStatusCallback)(int, ScriberaSignatureStatusCallback);
    bool (*setRealTimeCallback)(int, ScriberaRealTimeSignDataCallback);
    int (*countPoints)(int);
    int (*setClip)(int, bool, int, int);
    int (*save)(int, int, wchar_t*, int);
    char* (*encode)(int, int);
    void (*freeEncoded)(int, char*);
} PadFamily;

enum
{
    CANVAS_HEIGHT = 400
};

#define PAD_FAMILY(model)                                                                                    \
    {SC##model##_DEVICE,                                                                                     \
     #model,                                                                                                 \
     (CANVAS_HEIGHT * SCRIBERA_AREA_WIDTH_##model + SCRIBERA_AREA_HEIGHT_##model / 2) /                      \
         SCRIBERA_AREA_HEIGHT_##model,                                                                       \
     SC##model##_InitialDevice,                                                                              \
     SC##model##_UnInitialDevice,                                                                            \
     SC##model##_SignatureStatusCallback,                                                                    \
     SC##model##_RealTimeSignatureDataCallback,                                                              \
     SC##model##_GetTotalPacketsNumber,                                                                      \
     SC##model##_SetSaveCenterImageClip,                                                                     \
     SC##model##_SaveDrawingImage,                                                                           \
     SC##model##_PacketsBase64Encode,                                                                        \
     SC##model##_PacketsBase64EncodeFree},

static const PadFamily families[] = {SCRIBERA_FAMILIES(PAD_FAMILY)};

static const char* const suffixes[] = {[EBITI_BITMAP] = ".bmp", [EBITI_JPG] = ".jpg", [EBITI_PNG] = ".png",
                                       [EBITI_INK] = ".ink",    [EBITI_PDF] = ".pdf", [EBITI_SVG] = ".svg"};

/* Written on the library's threads, read on ours. */
static atomic_int pressedKey = -1, strokes;
static atomic_llong firstPointMs, lastPointMs;

static long long nowMs(void)
{
    struct timespec now;
    timespec_get(&now, TIME_UTC);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

static void onKey(int status)
{
    atomic_store(&pressedKey, status);
}

static void onPoint(unsigned long position, long pen)
{
    (void)position;
    atomic_store(&lastPointMs, nowMs());
    if (atomic_load(&firstPointMs) == 0)
        atomic_store(&firstPointMs, atomic_load(&lastPointMs));
    atomic_fetch_add(&strokes, pen >> 16 == 0); /* the pen is lifted */
}

static int fail(int code, const char* what, const char* detail)
{
    fprintf(stderr, "scribera-c-host: %s%s\n", what, detail);
    return code;
}

static const PadFamily* familyNamed(const char* name)
{
    if (strncmp(name, "SC", 2) == 0)
        name += 2;
    for (size_t i = 0; i < sizeof families / sizeof *families; ++i)
        if (strcmp(families[i].name, name) == 0)
            return &families[i];
    return NULL;
}

static long secondsOf(const char* text)
{
    char* end;
    const long seconds = strtol(text, &end, 10);
    return *end == 0 && seconds <= 86400 ? seconds : 0;
}

static int imageTypeOf(const char* path)
{
    const char* const suffix = strrchr(path, '.');
    for (int type = 0; suffix && type < (int)(sizeof suffixes / sizeof *suffixes); ++type)
        if (suffixes[type] && strcmp(suffix, suffixes[type]) == 0)
            return type;
    return 0;
}

static bool saveInk(const PadFamily* pad, const char* path)
{
    char* const text = pad->encode(pad->deviceType, EBITI_INK);
    FILE* const file = text ? fopen(path, "w") : NULL;
    const bool written = file && fputs(text, file) >= 0;
    pad->freeEncoded(pad->deviceType, text);
    return file && fclose(file) == 0 && written; /* a full disk may show only now */
}

static bool savePicture(const PadFamily* pad, int type, const char* path)
{
    wchar_t widePath[4096];
    if (mbstowcs(widePath, path, 4096) >= 4096) /* too long, or no text of this locale */
        return false;
    remove(path); /* an older file must not pass for a saved one */
    const int result = pad->save(pad->deviceType, type, widePath, 1);
    /* PDF and SVG do not report a disk that is full or a folder that is not there. */
    FILE* const file = result == ARI_SUCCESS ? fopen(path, "rb") : NULL;
    const bool saved = file && fgetc(file) != EOF;
    if (file)
        fclose(file);
    return saved;
}

static int waitForKey(const PadFamily* pad, long timeoutSeconds)
{
    if (pad->setStatusCallback(pad->deviceType, onKey) != ARI_SUCCESS ||
        !pad->setRealTimeCallback(pad->deviceType, onPoint))
        return fail(FAILED, "the pad's callbacks cannot be set", "");
    fprintf(stderr, "Please sign on the %s, then touch its confirm key.\n", pad->name);
    const long long deadline = nowMs() + timeoutSeconds * 1000LL;
    while (atomic_load(&pressedKey) < 0 && nowMs() < deadline)
        thrd_sleep(&(struct timespec){.tv_nsec = 10000000}, NULL);
    const int key = atomic_load(&pressedKey);
    if (key < 0)
        return fail(TIMED_OUT, "no key was touched in time", "");
    return key == 1 ? SIGNED : fail(CANCELLED, "cancelled at the pad", "");
}

static int saveFiles(const PadFamily* pad, char* const* files, int fileCount)
{
    const int points = pad->countPoints(pad->deviceType);
    if (points < 1)
        return fail(FAILED, "confirmed without a signature", "");
    printf("%s: %d points, %d strokes, %.1f seconds\n", pad->name, points, atomic_load(&strokes),
           (double)(atomic_load(&lastPointMs) - atomic_load(&firstPointMs)) / 1000);
    if (pad->setClip(pad->deviceType, true, 10, 10) != ARI_SUCCESS) /* the ink and 10 pixels around it */
        return fail(FAILED, "clipping cannot be set", "");
    for (int i = 0; i < fileCount; ++i) {
        const int type = imageTypeOf(files[i]);
        if (!(type == EBITI_INK ? saveInk(pad, files[i]) : savePicture(pad, type, files[i])))
            return fail(FAILED, "cannot save ", files[i]);
        printf("%s\n", files[i]);
    }
    return SIGNED;
}

int main(int argc, char* argv[])
{
    const PadFamily* pad = &families[0];
    long seconds = 60;
    int first = 1;
    setlocale(LC_CTYPE, ""); /* for paths beyond ASCII */
    if (argc == 2 && (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "--version") == 0))
        return puts(argv[1][2] == 'h' ? help : "scribera-c-host " SCRIBERA_VERSION) < 0;
    for (; first + 1 < argc && argv[first][0] == '-'; first += 2) {
        if (strcmp(argv[first], "--model") == 0)
            pad = familyNamed(argv[first + 1]);
        else if (strcmp(argv[first], "--timeout") == 0)
            seconds = secondsOf(argv[first + 1]);
        else
            return fail(WRONG_USAGE, "no such option (see --help): ", argv[first]);
        if (!pad || seconds < 1)
            return fail(WRONG_USAGE, "not possible (see --help): ", argv[first + 1]);
    }
    if (first >= argc)
        return fail(WRONG_USAGE, "no file named (see --help)", "");
    for (int i = first; i < argc; ++i)
        if (imageTypeOf(argv[i]) == 0)
            return fail(WRONG_USAGE, "neither an option nor a kind of file (see --help): ", argv[i]);
    SCRX_SetWorkers(SCRX_WORKERS_WAIT); /* a person takes a while, and nothing has to poll meanwhile */
    if (!pad->initialDevice(pad->deviceType, NULL, 0, 0, pad->canvasWidth, CANVAS_HEIGHT)) {
        char reason[1024];
        SCRX_LastStartFailure(reason, sizeof reason);
        return fail(FAILED, "no pad: ", reason);
    }
    int code = waitForKey(pad, seconds);
    if (code == SIGNED)
        code = saveFiles(pad, argv + first, argc - first);
    if (pad->unInitialDevice(pad->deviceType) != ARI_SUCCESS)
        return fail(FAILED, "the pad cannot be closed", "");
    return code;
}
