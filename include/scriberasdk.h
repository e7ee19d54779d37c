/**
 * @file scriberasdk.h
 *
 * The public interface of the Scribera SDK, libscriberasdk.so.1: signatures from Scribera pen pads on
 * Linux. Plain C functions for C11 and C++11 or later; no Qt header is needed to include this file.
 *
 * A person signs on the pad. The library draws the signature on a canvas, keeps every ink point with
 * its time, and hands the signature over as an image file, as Base64 text of an image, as a Base64
 * stream of the ink points, point by point on request, or point by point while the person signs.
 *
 * What holds for all functions is said here once, the rest with each function.
 *
 *
 * Pads and families
 * =================
 *
 * Each pad model has a family of functions with its own prefix. The families are alike: every
 * operation is described at the SCK210_ family, the fingerprint operations at the SCK421B_ family, and
 * what differs from model to model is in this table. Nearly every function takes the device type of
 * its family as its first argument and refuses any other.
 *
 *     prefix    device type      accepted model names         writing area       highest    pen width
 *                                                             (pad units)        pressure   rule
 *     --------  ---------------  ---------------------------  -----------------  ---------  ---------
 *     SCK210_   SCK210_DEVICE 2  SCT470 SCK210R1 SCT480R1     (160,220)          1024       A
 *                                SCK190 SCN210                2360 x 1430
 *                                SCK210 SCT12                 (160,220)          2048       A
 *                                                             2360 x 1430
 *     SCK420_   SCK420_DEVICE 5  SCK420                       (200,200)          2048       A
 *                                                             2300 x 1300
 *     SCK421B_  SCK421B_DEVICE 7 SCK421B                      (2050,1750)        2048       A
 *                                                             21170 x 11490
 *     SCKM730_  SCKM730_DEVICE 3 SCKM730                      (550,180)          8192       B
 *                                                             29870 x 20120
 *     SCT580_   SCT580_DEVICE 4  SCT580                       (550,180)          8192       B
 *                                                             29870 x 20120
 *
 *  - Model names: the pad's own model text has to begin with one of them. The first that fits counts,
 *    in the order of the table, so that "SCK210R1" is a pad of 1024 pressure levels.
 *  - Writing area: its top left corner and its size as the pad counts. The canvas shows the whole
 *    area, stretched to the canvas's size; a sample outside lands on the nearest edge.
 *  - A pen move with a pressure above the highest is dropped.
 *  - Pen width rule, for SetPenStyle with pressure: on A a segment is
 *    (pressure * pen width / 306) pixels wide, on B (pressure * 3 * pen width / highest pressure).
 *  - OpenLCD, GetHWPenID and DisplayHWVersion exist for K210, K420 and K421B only.
 *  - The confirm and cancel keys act when the pen is lifted from them; on KM730 and T580 they act when
 *    they are touched.
 *
 *
 * Lifecycle
 * =========
 *
 * One pad is open at a time in a process, and it belongs to one family. InitialDevice opens it and
 * makes the process's one sign object, of one of two kinds:
 *
 *  - a widget, when the host gives a parent: the canvas appears in the host's window. The process
 *    needs a QApplication and a running event loop, and InitialDevice and UnInitialDevice have to be
 *    called on the GUI thread;
 *  - windowless, when the host gives none: the canvas is an image in memory. No window, no
 *    application object and no event loop are needed.
 *
 * UnInitialDevice closes the pad and destroys the object; after that any family and kind may be
 * opened. Do not mix families or kinds without UnInitialDevice in between: as long as a pad is open,
 * each InitialDevice returns true and changes nothing, and the functions of another family behave as
 * if no pad were open. "No live object" below means no open pad of the called family.
 *
 * The driver of the pads, libscriberadrv.so, is loaded by InitialDevice from the process's current
 * directory ("./libscriberadrv.so") and unloaded by UnInitialDevice.
 *
 * A process may exit, and a host may unload this library, without UnInitialDevice; the library itself
 * stays in memory until the process ends. When the host's window takes the widget with it, the pad is
 * closed as by UnInitialDevice.
 *
 * While a pad is open, one thread of the library (two on the K421B) polls without sleeping and keeps a
 * processor core busy, unless the host lets it wait: SCRX_SetWorkers in scriberasdk_ext.h. Open the pad
 * when a signature is wanted and close it afterwards.
 *
 * A complete program, windowless:
 *
 * @code
 * #include <scriberasdk.h>
 * #include <stdatomic.h>
 * #include <stdio.h>
 * #include <threads.h>
 *
 * static atomic_int g_nKey = -1;
 *
 * static void OnKey(int nStatus) // on the key-action thread: take note and return
 * {
 *     atomic_store(&g_nKey, nStatus);
 * }
 *
 * int main(void)
 * {
 *     wchar_t wszPath[] = L"signature.png";
 *     int nResult = -1;
 *
 *     if (!SCK210_InitialDevice(SCK210_DEVICE, NULL, 0, 0, 800, 485))
 *     {
 *         fprintf(stderr, "no pad\n");
 *         return 1;
 *     }
 *     SCK210_SignatureStatusCallback(SCK210_DEVICE, OnKey);
 *     while (atomic_load(&g_nKey) < 0) // the person signs, then taps a key of the pad
 *     {
 *         thrd_sleep(&(struct timespec){.tv_nsec = 10000000}, NULL);
 *     }
 *     if (atomic_load(&g_nKey) == 1)
 *     {
 *         SCK210_SetSaveCenterImageClip(SCK210_DEVICE, true, 10, 10);
 *         nResult = SCK210_SaveDrawingImage(SCK210_DEVICE, EBITI_PNG, wszPath, 1);
 *         char* pInk = SCK210_PacketsBase64Encode(SCK210_DEVICE, EBITI_INK);
 *         if (pInk != NULL)
 *         {
 *             puts(pInk);
 *             SCK210_PacketsBase64EncodeFree(SCK210_DEVICE, pInk);
 *         }
 *     }
 *     SCK210_UnInitialDevice(SCK210_DEVICE);
 *     return nResult == ARI_SUCCESS ? 0 : 1;
 * }
 * @endcode
 *
 *
 * Results
 * =======
 *
 * Functions report by their result alone; none throws.
 *
 *     int      0   success, named ARI_SUCCESS
 *             -1   no live object; also: not possible here, as said at the function. No name.
 *             -2   an argument is out of range, the device type among them, named
 *                  ARI_INVALID_PARAMETERS
 *             -8   nothing there, or not done: counting, saving and decoding. No name.
 *              any other value: the driver's own code, passed on by the functions that say so
 *     bool     false for every failure
 *     pointer  null for every failure
 *     void     a call with a bad argument or without a live object does nothing
 *
 * The arguments that a function checks itself are checked before it looks for the live object, unless
 * the function says otherwise: a wrong device type gives -2 also when no pad is open.
 *
 *
 * Memory
 * ======
 *
 *  - Every text that the library returns as char* is allocated by the library, ends with a zero byte
 *    and stays unchanged and valid until the host gives it back through the matching function of the
 *    same family, never through free() or delete:
 *
 *        GetInkPointTime          FreeInkPointTime
 *        PacketsBase64Encode      PacketsBase64EncodeFree
 *        PacketsBase64EncodeEx    PacketsBase64EncodeExFree
 *        GetSVGImageBase64Data    FreeSVGImageBase64Data
 *        GetFPImageBase64Data     FreeFPImageBase64Data
 *
 *    Give it back before UnInitialDevice: without a live object these functions do nothing, and the
 *    memory stays taken. Null is ignored.
 *  - Buffers and records that the host passes stay the host's. The library reads or writes them during
 *    the call only and keeps no pointer to them.
 *  - File paths are wide strings of 32-bit units (UCS-4), ended by a zero unit; a relative path starts
 *    at the process's current directory. Texts of the pad and of the library are plain bytes.
 *  - Parent widgets stay the host's and have to live at least as long as the call.
 *
 *
 * Threads
 * =======
 *
 *     host thread             calls the functions; with a widget this is the GUI thread, which also
 *                             paints it
 *     driver thread           belongs to the driver: brings every pen sample and fingerprint, draws,
 *                             stores the point, and calls the real-time callback
 *     key-action thread       belongs to the library: calls the signature status callback
 *     fingerprint display     belongs to the library, K421B only: sends the fingerprint to the pad's
 *     thread                  screen and merges it into the canvas; calls no host function
 *
 * Call the functions from one thread of your own; the points, the canvas and the pen settings may be
 * read, saved, cleared and changed there at any time, also in the middle of a stroke. Where a second host
 * thread calls too, its calls find the live object until the driver has stopped. UnInitialDevice waits for
 * those that are under way then; later ones find none, and InitialDevice waits until the pad is closed
 * before it opens one. A second UnInitialDevice waits for the first and gives 0.
 *
 * For callbacks:
 *
 *  - They run on the threads named above; the real-time callback also on the thread that closes the
 *    pad, where the driver brings its last samples there. Widgets must not be touched in them: tell your
 *    own thread.
 *  - They may call any function of the open family but UnInitialDevice, which refuses there with -1.
 *    Away from the GUI thread the About boxes show nothing, and placing a fingerprint for a widget gives
 *    -1.
 *  - While UnInitialDevice runs, both find the live object, and InitialDevice gives true, until the driver
 *    has stopped. The status callback comes no more once its thread has stopped, which is done first. The
 *    real-time callback comes for every sample until then; from the moment at which the driver is told
 *    to stop, the functions that ask it behave as if it lacked their entry points. A callback that a
 *    driver leaves running beyond its stop finds no live object, and InitialDevice gives false in it.
 *  - They should return quickly. The real-time callback holds up the pad's next sample; while the
 *    status callback runs, the next pen-down and key touch wait.
 *  - UnInitialDevice waits for a callback that is running. A callback must therefore never wait for the
 *    thread that calls UnInitialDevice, nor for the other callback.
 *  - No exception may leave them; one that does is dropped. pthread_exit() ends the thread: after that in
 *    the status callback, keys call nobody until the pad is opened again. The functions of this library
 *    are no cancellation points.
 *
 *
 * Log files
 * =========
 *
 * With g_bEnableLog set, every call and every pen sample is written to /tmp/scriberasdk.log, and the
 * work of the library's own threads and the painting to /tmp/scriberasdk_inthread.log, a line a step:
 *
 *     [SCK210_OpenLCD()]:<83521907>-Enter, nDeviceType=2, bOn=1,
 *
 * The number is the tick clock: milliseconds of the system's monotonic clock. The library only
 * appends; it never cuts or removes these files. A file that cannot be opened is left out silently, and
 * so is one that is no plain file, has a second name or belongs to another user.
 * Logging costs an open, a write and a close for every line, and with it on the clipped forms of a
 * signature write a line or more for each pixel of ink.
 */
#ifndef SCRIBERASDK_H
#define SCRIBERASDK_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#include <wchar.h>
#endif

#if defined(__GNUC__) || defined(__clang__)
#define SCRIBERA_API __attribute__((visibility("default")))
#else
#define SCRIBERA_API
#endif

/** Qt's widget. C++ hosts pass their own widgets; C hosts pass null, or use the operations by window id. */
#ifdef __cplusplus
class QWidget;
#else
typedef struct QWidget QWidget;
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Constants
 * @{
 */

/** Device types: the first argument of each family's functions. */
enum
{
    SCK210_DEVICE = 2,  /**< SCK210_ functions. */
    SCKM730_DEVICE = 3, /**< SCKM730_ functions. */
    SCT580_DEVICE = 4,  /**< SCT580_ functions. */
    SCK420_DEVICE = 5,  /**< SCK420_ functions. */
    SCK421B_DEVICE = 7  /**< SCK421B_ functions. */
};

/**
 * All families, for code that treats them alike: each is named to X by its model, so that X(K210) can make
 * SCK210_DEVICE and SCK210_InitialDevice of it.
 */
#define SCRIBERA_FAMILIES(X) X(K210) X(K420) X(K421B) X(KM730) X(T580)
/** Of these the pads with a screen of their own, which have OpenLCD, GetHWPenID and DisplayHWVersion. */
#define SCRIBERA_FAMILIES_WITH_SCREEN(X) X(K210) X(K420) X(K421B)
/** Of these the pads with a fingerprint reader. */
#define SCRIBERA_FAMILIES_WITH_FINGERPRINT(X) X(K421B)

/**
 * Size of each pad's writing area in pad units, the same that getDeviceInfo tells once the pad is open: a
 * canvas of these proportions shows a signature as it was written.
 */
enum
{
    SCRIBERA_AREA_WIDTH_K210 = 2360,
    SCRIBERA_AREA_HEIGHT_K210 = 1430,
    SCRIBERA_AREA_WIDTH_K420 = 2300,
    SCRIBERA_AREA_HEIGHT_K420 = 1300,
    SCRIBERA_AREA_WIDTH_K421B = 21170,
    SCRIBERA_AREA_HEIGHT_K421B = 11490,
    SCRIBERA_AREA_WIDTH_KM730 = 29870,
    SCRIBERA_AREA_HEIGHT_KM730 = 20120,
    SCRIBERA_AREA_WIDTH_T580 = 29870,
    SCRIBERA_AREA_HEIGHT_T580 = 20120
};

/** Result codes that have a name. -1 and -8 have none; see "Results" above. */
enum
{
    ARI_INVALID_PARAMETERS = -2, /**< An argument is out of range, the device type among them. */
    ARI_SUCCESS = 0              /**< Done. */
};

/** Image type ids (nImageTypeID). 4 and 5 are not in use and refused everywhere. */
enum
{
    EBITI_BITMAP = 1, /**< BMP. Save, encode, decode. */
    EBITI_JPG = 2,    /**< JPEG. Save, encode, decode. */
    EBITI_PNG = 3,    /**< PNG, white made transparent unless said otherwise. Save, encode, decode. */
    EBITI_INK = 6,    /**< Ink packet stream: the points, no picture. Encode, decode. */
    EBITI_PDF = 7,    /**< One page of PDF with the picture. Save only. */
    EBITI_SVG = 8     /**< Vector drawing of the strokes. Save only; as Base64 by GetSVGImageBase64Data. */
};

/**
 * What the pad reports with a pen sample. A host meets these numbers nowhere in this interface: they are
 * what the driver delivers, for tools that record samples or play them back.
 */
enum
{
    PENSTATUS_DOWN = 0,           /**< The pen touches the writing area. */
    PENSTATUS_MOVE = 1,           /**< The pen moves while touching. */
    PENSTATUS_UP = 2,             /**< The pen is lifted from the writing area or from a key. */
    PENSTATUS_CANCELKEY_DOWN = 3, /**< The pen touches the cancel key. */
    PENSTATUS_CONFIRMKEY_DOWN = 4 /**< The pen touches the confirm key. */
};

/** What to read of a decoded point (nTypeID of SCK210_GetDecodePacketsData). */
enum
{
    INKDATATYPE_X = 1,        /**< x in pad units, read as a signed 16-bit number. */
    INKDATATYPE_Y = 2,        /**< y in pad units, read as a signed 16-bit number. */
    INKDATATYPE_STROKEEND = 3 /**< The status byte: 1 when the point ends a stroke, else 0. */
};

/** Device information indices (nIndex of SCK210_getDeviceInfo). 2 to 6 exist too and have no name. */
enum
{
    DIID_GET_STATUS = 1, /**< Whether the pad is connected. */
    DIID_GET_DRV_VER = 7 /**< Version of this library. */
};

/**
 * Where a fingerprint goes on the K421B; see "Fingerprint" at the SCK421B_ family. The library keeps the
 * number itself, and the log files name it; no function takes or returns it.
 */
enum
{
    NFPPA_NONE = 0,                     /**< No placement yet: the centre of the canvas. */
    NFPPA_SIGN_FP_SAME_WIDGET = 1,      /**< Widget: at a rectangle of the canvas. */
    NFPPA_SIGN_FP_DIFFERENT_WIDGET = 2, /**< Widget: in a widget of its own. */
    NFPPA_FP_ON_CANVAS_FROM_JS = 3      /**< Windowless: on an image of its own. */
};

/** @} */

/**
 * @name Records
 * @{
 */

/**
 * One point for getPackets. The host sets nIndex and passes the record; the library fills the rest. 12
 * bytes; the host owns it.
 */
struct _PACKETS
{
    int32_t nIndex;    /**< In: which point, from 0. */
    uint16_t usX;      /**< Out: x in pad units, as the pad delivered it. */
    int16_t sY;        /**< Out: y in pad units. */
    int16_t sPressure; /**< Out: pressure, as the pad delivered it. */
    uint8_t ucStatus;  /**< Out: 0 a point on a stroke, 1 the end of a stroke. */
};
typedef struct _PACKETS _PACKETS;

/**
 * One ink point as the library stores it, and as it stands in the ink packet stream (EBITI_INK): the
 * Base64 text holds N records of 24 bytes in the order of the points, little-endian, with no header and
 * no count, and one zero byte after the last.
 */
struct _POINTDATA
{
    uint16_t usX;      /**< x in pad units. */
    int16_t sY;        /**< y in pad units. */
    int16_t sPressure; /**< Pressure as the pad delivered it. */
    uint8_t ucStatus;  /**< 0 a point on a stroke (pen down, pen move), 1 the end of a stroke (pen up). */
    uint8_t ucPadding; /**< Written as 0; readers ignore it. */
    int64_t llTick;    /**< Milliseconds of the writer's monotonic clock when the point was stored. */
    int64_t llSeconds; /**< Seconds since 1970-01-01 00:00 UTC when the point was stored. */
};
typedef struct _POINTDATA _POINTDATA;

/** @} */

#ifdef __cplusplus
#define SCRIBERA_LAYOUT(condition) static_assert(condition, #condition)
#else
#define SCRIBERA_LAYOUT(condition) _Static_assert(condition, #condition)
#endif
SCRIBERA_LAYOUT(sizeof(_PACKETS) == 12);
SCRIBERA_LAYOUT(offsetof(_PACKETS, nIndex) == 0);
SCRIBERA_LAYOUT(offsetof(_PACKETS, usX) == 4);
SCRIBERA_LAYOUT(offsetof(_PACKETS, sY) == 6);
SCRIBERA_LAYOUT(offsetof(_PACKETS, sPressure) == 8);
SCRIBERA_LAYOUT(offsetof(_PACKETS, ucStatus) == 10);
SCRIBERA_LAYOUT(sizeof(_POINTDATA) == 24);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, usX) == 0);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, sY) == 2);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, sPressure) == 4);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, ucStatus) == 6);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, ucPadding) == 7);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, llTick) == 8);
SCRIBERA_LAYOUT(offsetof(_POINTDATA, llSeconds) == 16);
/* Paths are 32-bit units: a host built with short wide characters would pass half of each. */
SCRIBERA_LAYOUT(sizeof(wchar_t) == 4);
/* The real-time callback packs 32 bits into each of its two numbers, without a sign. */
SCRIBERA_LAYOUT(sizeof(unsigned long) == 8);
#undef SCRIBERA_LAYOUT

/**
 * @name Callbacks
 * @{
 */

/**
 * A key of the pad was used; see SCK210_SignatureStatusCallback. Runs on the key-action thread.
 *
 * @param nStatus 1 the confirm key, 0 the cancel key.
 */
typedef void (*ScriberaSignatureStatusCallback)(int nStatus);

/**
 * An ink point was stored; see SCK210_RealTimeSignatureDataCallback. Runs on the driver thread.
 *
 * @param ulPosition Bits 0 to 15 x, bits 16 to 31 y, both scaled to the writing area; the rest 0.
 * @param lPen Bits 0 to 15 pressure, bits 16 to 31 the pen: 1 on the pad, 0 lifted; the rest 0.
 */
typedef void (*ScriberaRealTimeSignDataCallback)(unsigned long ulPosition, long lPen);

/** @} */

/**
 * @name Exported variables
 *
 * All are zero when the library is loaded. The host writes g_bEnableLog and reads the others at most.
 * @{
 */

/** Switches the log files on (any non-zero byte) and off (0). Only the host writes it; it may at any time. */
extern SCRIBERA_API unsigned char g_bEnableLog;

/** The last message written to the main log file from a function without a file path. Not for hosts. */
extern SCRIBERA_API char g_cKeyBuf[256];

/** The last message written to the log file of the library's threads. Not for hosts. */
extern SCRIBERA_API char g_cKeyBuf_InThread[256];

/** The last message written to the main log file from a function that takes a file path. Not for hosts. */
extern SCRIBERA_API wchar_t g_wszKeyBuf[256];

/** Kept so that hosts that name it can be linked; neither read nor written. */
extern SCRIBERA_API char g_cValueBuf[256];

/** Kept so that hosts that name it can be linked; neither read nor written. */
extern SCRIBERA_API char g_cValueBuf_InThread[256];

/** Kept so that hosts that name it can be linked; neither read nor written. */
extern SCRIBERA_API wchar_t g_wszValueBuf[256];

/**
 * The live sign object, or null. When g_bUseSignObj is 0, this is the address of the QWidget that shows the
 * canvas, and a C++ host on the GUI thread may cast it to QWidget* to move or resize it; it must not
 * delete it. Never write this variable.
 */
extern SCRIBERA_API void* g_pSignWidget;

/**
 * Whether the live object is windowless (non-zero) or a widget (0). UnInitialDevice of a windowless object
 * sets it back to 0. An InitialDevice without a parent sets it even when a widget is live already: the
 * widget stays usable, but the variable says the wrong thing until UnInitialDevice. While it is non-zero,
 * an InitialDevice with a parent makes a windowless object all the same, so never write this variable.
 */
extern SCRIBERA_API unsigned char g_bUseSignObj;

/** @} */

/**
 * @name K210 family
 *
 * The family in which every operation is described. For the other families read their own device type for
 * SCK210_DEVICE.
 * @{
 */

/* Opening and closing */

/**
 * Opens the pad and makes the sign object.
 *
 * Loads "./libscriberadrv.so", starts it, asks the pad for its model name, clears the pad and switches its
 * screen on where it has one. From then on the pad's samples are drawn and stored. Pen width is 3, the pen
 * black, pressure on, clipping off, no callback is set, and there are no points.
 *
 * As a widget, the canvas is placed in pParentWidget at the given place and size, and shown. When it is
 * resized later, ink keeps its place in pixels (cut off where the widget shrinks, white added where it grows)
 * and new samples are mapped to the new size. On the K421B the old picture stays only until the next segment
 * or fingerprint; from then on the canvas holds what came after the resize, while the points are all kept.
 * The fingerprint is gone with it but its score stays: only a better one is taken, until the next Clear.
 *
 * Windowless, the canvas is an image of nWidth by nHeight pixels for as long as the object lives.
 *
 * A canvas whose width or height is zero or negative, or which would take more than 1 GiB, is empty: points
 * are stored, nothing is drawn, rasters are not saved (-8) and the Base64 texts of pictures are empty.
 *
 * With a parent, call it on the GUI thread of a process with a QApplication.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pParentWidget Widget in which the canvas appears, or null for windowless use.
 * @param nX Left edge of the canvas in the parent, in pixels; not used when windowless.
 * @param nY Top edge of the canvas in the parent, in pixels; not used when windowless.
 * @param nWidth Width of the canvas in pixels.
 * @param nHeight Height of the canvas in pixels.
 * @return true when the pad is open, also when one was open before, whatever its family: then nothing is
 *         changed. false for a wrong device type, or when the driver is not found, lacks an entry point or
 *         does not start, when the pad is not one of the family's models, or when the system refuses a
 *         thread; nothing is left open then. SCRX_LastStartFailure in scriberasdk_ext.h tells which.
 */
SCRIBERA_API bool SCK210_InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                                       int nHeight);

/**
 * Opens the pad as SCK210_InitialDevice does, with the parent given by its native window id.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param ullWId Native window id of a widget of this process (QWidget::winId()), or 0 for windowless use.
 * @param nX Left edge of the canvas in the parent, in pixels; not used when windowless.
 * @param nY Top edge of the canvas in the parent, in pixels; not used when windowless.
 * @param nWidth Width of the canvas in pixels.
 * @param nHeight Height of the canvas in pixels.
 * @return As SCK210_InitialDevice; false also when no widget of this process has the id.
 */
SCRIBERA_API bool SCK210_InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY,
                                            int nWidth, int nHeight);

/**
 * Closes the pad and destroys the sign object with its canvas, its points and its decoded points.
 *
 * Stops the library's threads, switches the pad's screen off (on KM730 and T580 clears the pad), stops the
 * driver, waits until calls and callbacks that are running have returned, and unloads the driver. Samples
 * that come before the driver has stopped are taken as ever. No callback comes afterwards. A windowless
 * object is gone on return; a widget is hidden at once and deleted when the host's event loop next runs. Give
 * back the texts that the library returned before this call.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @return 0, also when there is no live object; an open pad of another family stays open. -1 inside a
 *         callback or on one of the library's threads: nothing is closed. -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_UnInitialDevice(int nDeviceType);

/* Pad */

/**
 * Switches the screen of the pad on or off. Switching it off first clears the canvas (on the K421B the
 * fingerprint too); the points stay. K210, K420 and K421B only.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param bOn true on, false off.
 * @return The driver's own code, 0 for success; -1 without a live object, or when the driver cannot switch
 *         the screen: the canvas is left alone then; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_OpenLCD(int nDeviceType, bool bOn);

/**
 * Clears the signature: makes the canvas white, empties the points and clears the pad.
 *
 * The first call after a touch of the cancel key leaves the pad and its screen alone and returns 0. Clipping
 * is switched off (its margins are kept; call SetSaveCenterImageClip again before the next export). On the
 * K421B the fingerprint and its score go too. Kept are the pen settings, the callbacks, the decoded points,
 * the key status and a key action that is pending. A stroke in progress goes on with the next sample.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @return 0 after a touch of the cancel key, else the driver's own code, 0 for success; canvas and points
 *         are cleared whatever it is. -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_Clear(int nDeviceType);

/**
 * Reads the id of the pen. K210, K420 and K421B only.
 *
 * Buffer and size go to the driver as they are, unchecked. Fill the buffer with zeros beforehand: whether a
 * text that fills it is ended by a zero byte is up to the driver.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pPenID Buffer of the host that takes the text.
 * @param nMaxCount Size of the buffer in bytes.
 * @return The driver's own code, 0 for success; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_GetHWPenID(int nDeviceType, char* pPenID, int nMaxCount);

/**
 * Reads the id of the pad. The buffer as with SCK210_GetHWPenID.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pPadID Buffer of the host that takes the text.
 * @param nMaxCount Size of the buffer in bytes.
 * @return The driver's own code, 0 for success; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount);

/**
 * Reads the version text of the pad's parts, which begins with the model name. The buffer as with
 * SCK210_GetHWPenID; the library itself reads this text with 32 bytes.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pVersion Buffer of the host that takes the text.
 * @param nMaxCount Size of the buffer in bytes.
 * @return The driver's own code, 0 for success; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount);

/**
 * Shows or hides the version information on the pad's own screen. K210, K420 and K421B only.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param bOn true show, false hide.
 * @return The driver's own code, 0 for success; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_DisplayHWVersion(int nDeviceType, bool bOn);

/**
 * Answers a fixed question about the pad. Exactly these bytes are written to pOutput, and nothing checks that
 * there is room for them:
 *
 *     nIndex                bytes    content
 *     --------------------  -------  ----------------------------------------------------------------
 *     1 DIID_GET_STATUS     1        1 connected, 0 not
 *     2                     8        two int32_t: 0 and the width of the writing area in pad units
 *     3                     8        two int32_t: 0 and the height of the writing area in pad units
 *     4                     4        int32_t: the highest pressure
 *     5                     9        "Corvenna" and a zero byte
 *     6                     5 or 6   model name and a zero byte: "K210", "K420", "K421H", "KM730",
 *                                    "T580"; the K421B does report K421H
 *     7 DIID_GET_DRV_VER    8        two int32_t: 3 and 0, the version of this library
 *
 * Width and height are 2360 and 1430 (K210), 2300 and 1300 (K420), 21170 and 11490 (K421B), 29870 and 20120
 * (KM730, T580).
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nIndex 1 to 7.
 * @param pOutput Memory of the host, large enough for the answer.
 * @return 0; -1 without a live object; -2 for a wrong device type, another index or a null pOutput.
 */
SCRIBERA_API int SCK210_getDeviceInfo(int nDeviceType, int nIndex, void* pOutput);

/* Pen */

/**
 * Chooses whether the width of a segment follows the pressure (the default) or is the pen width throughout,
 * and tells the pad. Counts for segments drawn from now on, and for SVG, which is drawn when it is asked for,
 * for all of them. The choice holds even when the driver reports a failure.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param bPressureOn true by pressure, false constant.
 * @return The driver's own code, 0 for success; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_SetPenStyle(int nDeviceType, bool bPressureOn);

/**
 * Sets the width of the pen; 3 at the start. Without pressure a segment is this many pixels wide; with
 * pressure it follows the pen width rule of the model. Counts as in SCK210_SetPenStyle. The pad is not told.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nPenWidth 1 to 10.
 * @return 0; -1 without a live object, whatever the width; -2 for a wrong device type or another width:
 *         nothing is changed then.
 */
SCRIBERA_API int SCK210_SetPenWidth(int nDeviceType, int nPenWidth);

/**
 * Sets the colour of the pen; black at the start. Counts as in SCK210_SetPenStyle. The pad is not told. Ink
 * in pure white cannot be told from the background: clipping and transparency take it for paper.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nR Red, 0 to 255. The three are not checked: with any of them outside, the pen draws black.
 * @param nG Green, 0 to 255.
 * @param nB Blue, 0 to 255.
 * @return 0; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_SetPenColor(int nDeviceType, int nR, int nG, int nB);

/* Callbacks and keys */

/**
 * Registers the function that is told about the confirm and cancel keys.
 *
 * It is called once for each use of a key, on the key-action thread: when the pen is lifted from the key,
 * on KM730 and T580 when it touches the key. While it runs, the next pen-down and key touch wait for its
 * return. A key touch in the middle of a stroke ends the stroke without a point that marks the end. The
 * library itself does nothing about a key: saving on confirm and clearing on cancel are the host's job.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pStatus Function called with 1 for confirm and 0 for cancel. It replaces any earlier one; null
 *        ends the notification.
 * @return 0; -1 without a live object; -2 for a wrong device type.
 */
SCRIBERA_API int SCK210_SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus);

/**
 * Registers the function that is told about every ink point, right after the point is stored.
 *
 * It is called on the driver thread, which waits for it: a slow callback delays the pen. Its two numbers are
 *
 *     ulPosition    bits 0 to 15     x
 *                   bits 16 to 31    y
 *     lPen          bits 0 to 15     pressure as the pad delivered it, its low 16 bits
 *                   bits 16 to 31    1 for pen down and pen move, 0 for pen up
 *
 * and all other bits are 0. x and y are scaled alike on all models: with d the distance from the left or top
 * edge of the writing area, held within 0 to size - 1, the number is d * 65535 / size, rounded down. It stays
 * below 65535. A pen-up repeats the place and pressure of the point before it.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pfnRealTimeSignDataCallback The function; not null. It replaces any earlier one and stays until
 *        UnInitialDevice: there is no way to take it back before.
 * @return true; false for a wrong device type, a null function (an earlier one stays) or without a live
 *         object.
 */
SCRIBERA_API bool
SCK210_RealTimeSignatureDataCallback(int nDeviceType,
                                     ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback);

/**
 * Reads and resets the last key touched, for hosts that poll. It is set when the pen touches the key, that
 * is, on most models before the status callback comes. Each touch is reported once; of two touches between
 * two calls, the last.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @return 1 the confirm key, 0 the cancel key, -1 none since the last call or no live object; -2 for a wrong
 *         device type.
 */
SCRIBERA_API int SCK210_GetDeviceConfirmOrCancelKeyStatus(int nDeviceType);

/* Points */

/**
 * Counts the stored points. Pen down and each pen move store one point with status 0; pen up stores one with
 * status 1 that repeats the place and pressure before it. A tap without movement stores two points and leaves
 * no ink on the canvas. The count may grow between two calls while the person signs.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @return The number of points, at least 1; -8 when there are none, or no live object; -2 for a wrong device
 *         type.
 */
SCRIBERA_API int SCK210_GetTotalPacketsNumber(int nDeviceType);

/**
 * Reads one point. A point that was read once can be read again at its index until the points are cleared.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pPACKETS Record of the host; nIndex says which point, from 0. The other fields are filled on
 *        success and left alone on failure.
 * @return 0; -1 without a live object, or when there is no such point; -2 for a wrong device type or, with a
 *         live object, a null record.
 */
SCRIBERA_API int SCK210_getPackets(int nDeviceType, _PACKETS* pPACKETS);

/**
 * Gives the time of one point as text, "2024-03-09 14:05:17.482", in the process's local time zone.
 *
 * The milliseconds come from the monotonic tick clock, the rest from the wall clock. The two are not in step:
 * the milliseconds are good for the distance between points, not for the time of day.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nIndex Which point, from 0.
 * @return The text, in a buffer of 100 bytes that goes back through SCK210_FreeInkPointTime; null for a wrong
 *         device type, without a live object, or when there is no such point.
 */
SCRIBERA_API char* SCK210_GetInkPointTime(int nDeviceType, int nIndex);

/**
 * Gives back a text of SCK210_GetInkPointTime. Does nothing for a wrong device type or without a live object:
 * call it before UnInitialDevice.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pInkPointTime The text, or null.
 */
SCRIBERA_API void SCK210_FreeInkPointTime(int nDeviceType, char* pInkPointTime);

/* Pictures in files */

/**
 * Saves the signature as a file.
 *
 * The picture is the canvas or, with clipping on, its part around the ink (SCK210_SetSaveCenterImageClip).
 *
 *  - EBITI_BITMAP, EBITI_JPG, EBITI_PNG: the file's format follows the suffix of the path, not the type.
 *    EBITI_PNG makes every pure white pixel transparent, in formats that know transparency; in the others
 *    the background stays white. The resolution is written into the file.
 *  - EBITI_PDF: one A4 page with margins of 10 points. The picture stands at the top left, one pixel of the
 *    canvas for one dot of the resolution, and is cut off at the page's edge.
 *  - EBITI_SVG: the strokes are drawn again as lines from the stored points, with the pen settings and the
 *    canvas size of this moment; the drawing is as large as the picture.
 *
 * On the K421B the picture is the merged canvas; see "Fingerprint" at the SCK421B_ family.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nImageTypeID EBITI_BITMAP, EBITI_JPG, EBITI_PNG, EBITI_PDF or EBITI_SVG.
 * @param pImageFilePath Path of the file, which the call only reads; an existing file is replaced.
 * @param nDPILevel 0 for 150 dots per inch, any other value for 300.
 * @return 0; -1 without a live object; -2 for a wrong device type or another image type; -8 when there are no
 *         points (on the K421B: nor a fingerprint; no file is made), when the path is null, or when the file
 *         cannot be written, for rasters also when its suffix names no picture format or the picture is
 *         empty. A raster that could not be saved leaves an older file as it was, also on a full disk. PDF
 *         reports only whether the file could be opened and may leave a part of it; SVG reports 0 whatever
 *         happened to the file, which is whole or as it was.
 */
SCRIBERA_API int SCK210_SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath,
                                         int nDPILevel);

/**
 * Switches clipping on or off for what is saved or encoded from now on, until the next Clear. Clipped
 * pictures show the part of the canvas that holds ink and the margins around it, as far as the canvas
 * reaches. Ink is every pixel that is not pure white.
 *
 * With both margins 0 clipping stays off, also when bClipImage is true; one of them has to be at least 1.
 *
 * When all strokes are taps, the points are there but no ink: clipped rasters are then not saved (-8), their
 * Base64 text is empty, and PDF and SVG report 0 without a picture of use. Only margins near 100,000 and
 * above reach back into such a canvas, whose white is saved then.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param bClipImage true on, false off.
 * @param nClipMarginX Pixels to the left and to the right of the ink; 0 or more.
 * @param nClipMarginY Pixels above and below the ink; 0 or more.
 * @return 0; -1 without a live object; -2 for a wrong device type or a negative margin: nothing is changed
 *         then.
 */
SCRIBERA_API int SCK210_SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX,
                                               int nClipMarginY);

/* Base64 texts */

/**
 * Encodes the signature as Base64 text: standard alphabet, "=" padding, no line breaks.
 *
 * EBITI_BITMAP, EBITI_JPG and EBITI_PNG give the picture, clipped when clipping is on, without a resolution;
 * in the PNG every pure white pixel is transparent. A picture that cannot be made gives an empty text.
 * EBITI_INK gives the ink packet stream: the records of all points (_POINTDATA) and one zero byte.
 *
 * On the K421B a fingerprint alone is enough for the three pictures of a widget, but not of a windowless
 * object.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nImageTypeID EBITI_BITMAP, EBITI_JPG, EBITI_PNG or EBITI_INK.
 * @return The text, which goes back through SCK210_PacketsBase64EncodeFree; null for a wrong device type,
 *         another image type, without a live object or without points.
 */
SCRIBERA_API char* SCK210_PacketsBase64Encode(int nDeviceType, int nImageTypeID);

/**
 * Gives back a text of SCK210_PacketsBase64Encode. Does nothing for a wrong device type or without a live
 * object: call it before UnInitialDevice.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pEncodedData The text, or null.
 */
SCRIBERA_API void SCK210_PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData);

/**
 * Encodes the signature as SCK210_PacketsBase64Encode does, with a choice for the background of a PNG.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nImageTypeID EBITI_BITMAP, EBITI_JPG, EBITI_PNG or EBITI_INK.
 * @param bEnableTransparentBackground For EBITI_PNG: true makes white transparent, false keeps it white.
 *        Without effect on the others.
 * @return As SCK210_PacketsBase64Encode; the text goes back through SCK210_PacketsBase64EncodeExFree.
 */
SCRIBERA_API char* SCK210_PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                                bool bEnableTransparentBackground);

/**
 * Gives back a text of SCK210_PacketsBase64EncodeEx. Does nothing for a wrong device type or without a live
 * object: call it before UnInitialDevice.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pEncodedData The text, or null.
 */
SCRIBERA_API void SCK210_PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData);

/**
 * Encodes the signature's SVG drawing as Base64 text: the file that SCK210_SaveDrawingImage writes for
 * EBITI_SVG at 150 dots per inch.
 *
 * The drawing is also left in the file /tmp/Scrsign.svg, which every call overwrites and which stays there
 * with the signature in it. The text is that of this call, whatever other processes do. When something else
 * has the file's name, a link, a pipe or a file with a second name or of another user, it is left alone.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @return The text, which goes back through SCK210_FreeSVGImageBase64Data; null for a wrong device type,
 *         without a live object or without points, also when there is a fingerprint, and when there is no
 *         memory for it or no room for the file.
 */
SCRIBERA_API char* SCK210_GetSVGImageBase64Data(int nDeviceType);

/**
 * Gives back a text of SCK210_GetSVGImageBase64Data. Does nothing for a wrong device type or without a live
 * object: call it before UnInitialDevice.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pEncodedData The text, or null.
 */
SCRIBERA_API void SCK210_FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData);

/**
 * Decodes a Base64 text: a picture into a file, or an ink packet stream into the decoded points.
 *
 * The decoded points of an earlier call are dropped first, whatever the type and the outcome. They are apart
 * from the points of the signature, which stay as they are. Characters outside the Base64 alphabet are
 * skipped. In a stream every 24 bytes are taken for a point as they come; fewer bytes at the end are ignored,
 * and a text too short for one point gives 0 and no points.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nImageTypeID EBITI_BITMAP, EBITI_JPG or EBITI_PNG: what the text holds, and the format in which the
 *        file is written, whatever its suffix; or EBITI_INK.
 * @param pEncodedData The text, ended by a zero byte; neither null nor empty.
 * @param pImageFilePath Path of the file, which the call only reads; an existing file is replaced. Not used
 *        for EBITI_INK, where it may be null.
 * @return 0; -1 without a live object; -2 for a wrong device type, another type or a null or empty text; -8
 *         when the text holds no such picture, the picture would take more than 256 MiB in memory, the path
 *         is null, or the file cannot be written.
 */
SCRIBERA_API int SCK210_Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                                     wchar_t* pImageFilePath);

/**
 * Counts the decoded points of the last SCK210_Base64Decode.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @return The number of points, at least 1; -8 when there are none, or no live object; -2 for a wrong device
 *         type.
 */
SCRIBERA_API int SCK210_GetTotalDecodePacketsNumber(int nDeviceType);

/**
 * Reads one number of one decoded point. Pressure and times cannot be read this way; whoever needs them reads
 * the stream's records (_POINTDATA).
 *
 * x and y are read with a sign, so that values above 32767 come out negative, unlike those of
 * SCK210_getPackets, and may equal a result code. Check the index against SCK210_GetTotalDecodePacketsNumber
 * and the result needs no test.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param nIndex Which point, from 0.
 * @param nTypeID INKDATATYPE_X, INKDATATYPE_Y or INKDATATYPE_STROKEEND.
 * @return The number; -1 without a live object; -2 for a wrong device type, another selector, or when there
 *         is no such point; -8 when there are no decoded points at all.
 */
SCRIBERA_API int SCK210_GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID);

/* About */

/**
 * Shows the About box of the SDK and returns when the person has closed it. Needs no open pad, but the GUI
 * thread and a QApplication; without them nothing is shown.
 *
 * @param pParentWidget Widget over which the box appears, or null.
 */
SCRIBERA_API void SCK210_AboutBox(QWidget* pParentWidget);

/**
 * Shows the About box as SCK210_AboutBox does, with the parent given by its native window id. Shows nothing
 * when no widget of this process has the id.
 *
 * @param ullWId Native window id of a widget of this process.
 */
SCRIBERA_API void SCK210_AboutBoxByWId(unsigned long long ullWId);

/**
 * Writes the text of the About box: the lines "About", an empty one, "Scribera SDK on Linux OS",
 * "Version : 3.0.0.0" and the maker's notice, with newline characters between them and a zero byte at the
 * end. Needs no open pad. Does nothing for a wrong device type or a null buffer.
 *
 * @param nDeviceType SCK210_DEVICE.
 * @param pBuffer Buffer of the host of at least 100 bytes; no size is passed and none is checked.
 */
SCRIBERA_API void SCK210_GetAboutInfo(int nDeviceType, char* pBuffer);

/** @} */

/**
 * @name K420 family
 *
 * Each function is as the SCK210_ function of the same name, with SCK420_DEVICE.
 * @{
 */

/* Opening and closing */

SCRIBERA_API bool SCK420_InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                                       int nHeight);
SCRIBERA_API bool SCK420_InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY,
                                            int nWidth, int nHeight);
SCRIBERA_API int SCK420_UnInitialDevice(int nDeviceType);

/* Pad */

SCRIBERA_API int SCK420_OpenLCD(int nDeviceType, bool bOn);
SCRIBERA_API int SCK420_Clear(int nDeviceType);
SCRIBERA_API int SCK420_GetHWPenID(int nDeviceType, char* pPenID, int nMaxCount);
SCRIBERA_API int SCK420_GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount);
SCRIBERA_API int SCK420_GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount);
SCRIBERA_API int SCK420_DisplayHWVersion(int nDeviceType, bool bOn);
SCRIBERA_API int SCK420_getDeviceInfo(int nDeviceType, int nIndex, void* pOutput);

/* Pen */

SCRIBERA_API int SCK420_SetPenStyle(int nDeviceType, bool bPressureOn);
SCRIBERA_API int SCK420_SetPenWidth(int nDeviceType, int nPenWidth);
SCRIBERA_API int SCK420_SetPenColor(int nDeviceType, int nR, int nG, int nB);

/* Callbacks and keys */

SCRIBERA_API int SCK420_SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus);
SCRIBERA_API bool
SCK420_RealTimeSignatureDataCallback(int nDeviceType,
                                     ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback);
SCRIBERA_API int SCK420_GetDeviceConfirmOrCancelKeyStatus(int nDeviceType);

/* Points */

SCRIBERA_API int SCK420_GetTotalPacketsNumber(int nDeviceType);
SCRIBERA_API int SCK420_getPackets(int nDeviceType, _PACKETS* pPACKETS);
SCRIBERA_API char* SCK420_GetInkPointTime(int nDeviceType, int nIndex);
SCRIBERA_API void SCK420_FreeInkPointTime(int nDeviceType, char* pInkPointTime);

/* Pictures in files */

SCRIBERA_API int SCK420_SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath,
                                         int nDPILevel);
SCRIBERA_API int SCK420_SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX,
                                               int nClipMarginY);

/* Base64 texts */

SCRIBERA_API char* SCK420_PacketsBase64Encode(int nDeviceType, int nImageTypeID);
SCRIBERA_API void SCK420_PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCK420_PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                                bool bEnableTransparentBackground);
SCRIBERA_API void SCK420_PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCK420_GetSVGImageBase64Data(int nDeviceType);
SCRIBERA_API void SCK420_FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData);
SCRIBERA_API int SCK420_Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                                     wchar_t* pImageFilePath);
SCRIBERA_API int SCK420_GetTotalDecodePacketsNumber(int nDeviceType);
SCRIBERA_API int SCK420_GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID);

/* About */

SCRIBERA_API void SCK420_AboutBox(QWidget* pParentWidget);
SCRIBERA_API void SCK420_AboutBoxByWId(unsigned long long ullWId);
SCRIBERA_API void SCK420_GetAboutInfo(int nDeviceType, char* pBuffer);

/** @} */

/**
 * @name K421B family
 *
 * Each function is as the SCK210_ function of the same name, with SCK421B_DEVICE.
 *
 * Fingerprint
 *
 * The pad also has a fingerprint reader. A fingerprint comes by itself, without a call and without a
 * callback, with a score from the reader. The first with a score above 0 is taken, and after it only one with
 * a higher score; a Clear, or OpenLCD with false, starts again. The picture has 208 by 288 pixels in two
 * colours: red where the fingerprint is darker than its mean, white elsewhere. The library shows it on the
 * pad's own screen too.
 *
 * Where it goes is decided by SCK421B_SetDisplayedFPImageAt. Without that call it stands in the centre of the
 * canvas, half as high as the canvas, in its own proportions. On the canvas it is merged with the strokes bit
 * by bit (AND), so that dark strokes stay dark over it; this happens after every segment, and for a new
 * fingerprint once the pad shows it.
 *
 * In what is exported:
 *
 *  - Rasters and PDF show the merged canvas.
 *  - SVG shows the fingerprint unscaled in the centre, under the strokes, wherever the canvas has it; not
 *    when it was placed outside the canvas.
 *  - A fingerprint without strokes can be saved as a file, and encoded as a picture from a widget; there is
 *    no ink packet stream and no Base64 SVG of it.
 * @{
 */

/* Opening and closing */

SCRIBERA_API bool SCK421B_InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                                        int nHeight);
SCRIBERA_API bool SCK421B_InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY,
                                             int nWidth, int nHeight);
SCRIBERA_API int SCK421B_UnInitialDevice(int nDeviceType);

/* Pad */

SCRIBERA_API int SCK421B_OpenLCD(int nDeviceType, bool bOn);
SCRIBERA_API int SCK421B_Clear(int nDeviceType);
SCRIBERA_API int SCK421B_GetHWPenID(int nDeviceType, char* pPenID, int nMaxCount);
SCRIBERA_API int SCK421B_GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount);
SCRIBERA_API int SCK421B_GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount);
SCRIBERA_API int SCK421B_DisplayHWVersion(int nDeviceType, bool bOn);
SCRIBERA_API int SCK421B_getDeviceInfo(int nDeviceType, int nIndex, void* pOutput);

/* Pen */

SCRIBERA_API int SCK421B_SetPenStyle(int nDeviceType, bool bPressureOn);
SCRIBERA_API int SCK421B_SetPenWidth(int nDeviceType, int nPenWidth);
SCRIBERA_API int SCK421B_SetPenColor(int nDeviceType, int nR, int nG, int nB);

/* Callbacks and keys */

SCRIBERA_API int SCK421B_SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus);
SCRIBERA_API bool
SCK421B_RealTimeSignatureDataCallback(int nDeviceType,
                                      ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback);
SCRIBERA_API int SCK421B_GetDeviceConfirmOrCancelKeyStatus(int nDeviceType);

/* Points */

SCRIBERA_API int SCK421B_GetTotalPacketsNumber(int nDeviceType);
SCRIBERA_API int SCK421B_getPackets(int nDeviceType, _PACKETS* pPACKETS);
SCRIBERA_API char* SCK421B_GetInkPointTime(int nDeviceType, int nIndex);
SCRIBERA_API void SCK421B_FreeInkPointTime(int nDeviceType, char* pInkPointTime);

/* Pictures in files */

SCRIBERA_API int SCK421B_SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath,
                                          int nDPILevel);
SCRIBERA_API int SCK421B_SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX,
                                                int nClipMarginY);

/* Base64 texts */

SCRIBERA_API char* SCK421B_PacketsBase64Encode(int nDeviceType, int nImageTypeID);
SCRIBERA_API void SCK421B_PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCK421B_PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                                 bool bEnableTransparentBackground);
SCRIBERA_API void SCK421B_PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCK421B_GetSVGImageBase64Data(int nDeviceType);
SCRIBERA_API void SCK421B_FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData);
SCRIBERA_API int SCK421B_Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                                      wchar_t* pImageFilePath);
SCRIBERA_API int SCK421B_GetTotalDecodePacketsNumber(int nDeviceType);
SCRIBERA_API int SCK421B_GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID);

/* About */

SCRIBERA_API void SCK421B_AboutBox(QWidget* pParentWidget);
SCRIBERA_API void SCK421B_AboutBoxByWId(unsigned long long ullWId);
SCRIBERA_API void SCK421B_GetAboutInfo(int nDeviceType, char* pBuffer);

/* Fingerprint */

/**
 * Places the fingerprint; see "Fingerprint" above. The placement holds until the next one that succeeds, and
 * UnInitialDevice ends it. The picture moves with the next segment or fingerprint, not with this call.
 *
 * For a widget, the parent decides:
 *
 *  - the sign widget's own parent: the fingerprint is merged into the canvas at the rectangle, which has to
 *    lie within the canvas;
 *  - any other widget: the fingerprint appears in a new widget that is laid over all of that parent, its
 *    other children included. The picture in it always has the 100 by 30 pixels that Qt gives to a new
 *    child widget, whatever the size of the parent: the rectangle is checked against them, and
 *    GetFPImageBase64Data gives just them. The canvas holds no fingerprint then, and SVG shows none. A
 *    widget of an earlier placement stays where it is, with its fingerprint until the next Clear, and is
 *    freed by UnInitialDevice.
 *
 * For a windowless object, the fingerprint is drawn onto an image of its own of nCanvasWidth by nCanvasHeight
 * pixels, within which the rectangle has to lie; the canvas holds no fingerprint. The image is read with
 * SCK421B_GetFPImageBase64Data.
 *
 * The last two forms start with a blank picture. When the rectangle is refused, an earlier picture of these
 * forms is replaced by the blank one all the same, though the placement is unchanged. A refused rectangle for
 * the sign widget's own parent is kept too: where that placement holds already, the next segment or
 * fingerprint takes the fingerprint there.
 *
 * The corners alone are checked. A rectangle whose width or height is zero or negative passes when both lie
 * inside.
 *
 * For a widget, call it on the GUI thread.
 *
 * @param nDeviceType SCK421B_DEVICE.
 * @param pParentWidget Parent, for a widget; not used when windowless.
 * @param nCanvasWidth Width of the image in pixels, when windowless; not used for a widget.
 * @param nCanvasHeight Height of the image in pixels, when windowless; not used for a widget.
 * @param nFPLeft Left edge of the fingerprint in pixels.
 * @param nFPTop Top edge of the fingerprint in pixels.
 * @param nFPWidth Width in pixels to which the fingerprint is stretched.
 * @param nFPHeight Height in pixels to which the fingerprint is stretched.
 * @return 0; -1 without a live object, or for a widget away from the GUI thread; -2 for a wrong device type,
 *         a null parent for a widget, or a rectangle that does not fit.
 */
SCRIBERA_API int SCK421B_SetDisplayedFPImageAt(int nDeviceType, QWidget* pParentWidget, int nCanvasWidth,
                                               int nCanvasHeight, int nFPLeft, int nFPTop, int nFPWidth,
                                               int nFPHeight);

/**
 * Places the fingerprint as SCK421B_SetDisplayedFPImageAt does, with the parent given by its native window
 * id.
 *
 * @param nDeviceType SCK421B_DEVICE.
 * @param ullWId Native window id of a widget of this process, for a widget; not used when windowless.
 * @param nCanvasWidth Width of the image in pixels, when windowless; not used for a widget.
 * @param nCanvasHeight Height of the image in pixels, when windowless; not used for a widget.
 * @param nFPLeft Left edge of the fingerprint in pixels.
 * @param nFPTop Top edge of the fingerprint in pixels.
 * @param nFPWidth Width in pixels to which the fingerprint is stretched.
 * @param nFPHeight Height in pixels to which the fingerprint is stretched.
 * @return As SCK421B_SetDisplayedFPImageAt; for a widget -1 also when no widget of this process has the id.
 */
SCRIBERA_API int SCK421B_SetDisplayedFPImageAtByWId(int nDeviceType, unsigned long long ullWId,
                                                    int nCanvasWidth, int nCanvasHeight, int nFPLeft,
                                                    int nFPTop, int nFPWidth, int nFPHeight);

/**
 * Encodes the picture with the fingerprint as Base64 text, as SCK210_PacketsBase64Encode does. It needs
 * neither points nor a fingerprint: without them the picture is blank.
 *
 *     placement                       picture
 *     ------------------------------  ----------------------------------------------------------------
 *     widget, none                    the canvas; bFPImageOnly is ignored
 *     widget, own parent              the canvas, or with bFPImageOnly its part in the rectangle
 *     widget, other parent            the fingerprint's widget, or with bFPImageOnly its part in the
 *                                     rectangle
 *     windowless, none                null
 *     windowless, placed              the image, or with bFPImageOnly its part in the rectangle
 *
 * With clipping on, the part around everything that is not white takes the place of each, whatever
 * bFPImageOnly says; when everything is white the text is empty, but for margins near 100,000 and above.
 *
 * @param nDeviceType SCK421B_DEVICE.
 * @param nImageTypeID EBITI_BITMAP, EBITI_JPG or EBITI_PNG; in the PNG every pure white pixel is transparent.
 * @param bFPImageOnly true for the fingerprint's rectangle alone.
 * @return The text, which goes back through SCK421B_FreeFPImageBase64Data; null for a wrong device type,
 *         another image type, without a live object, or where the table says so.
 */
SCRIBERA_API char* SCK421B_GetFPImageBase64Data(int nDeviceType, int nImageTypeID, bool bFPImageOnly);

/**
 * Gives back a text of SCK421B_GetFPImageBase64Data. Does nothing for a wrong device type or without a live
 * object: call it before UnInitialDevice.
 *
 * @param nDeviceType SCK421B_DEVICE.
 * @param pFPImageBase64Data The text, or null.
 */
SCRIBERA_API void SCK421B_FreeFPImageBase64Data(int nDeviceType, char* pFPImageBase64Data);

/** @} */

/**
 * @name KM730 family
 *
 * Each function is as the SCK210_ function of the same name, with SCKM730_DEVICE. OpenLCD, GetHWPenID
 * and DisplayHWVersion do not exist here.
 * @{
 */

/* Opening and closing */

SCRIBERA_API bool SCKM730_InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                                        int nHeight);
SCRIBERA_API bool SCKM730_InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY,
                                             int nWidth, int nHeight);
SCRIBERA_API int SCKM730_UnInitialDevice(int nDeviceType);

/* Pad */

SCRIBERA_API int SCKM730_Clear(int nDeviceType);
SCRIBERA_API int SCKM730_GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount);
SCRIBERA_API int SCKM730_GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount);
SCRIBERA_API int SCKM730_getDeviceInfo(int nDeviceType, int nIndex, void* pOutput);

/* Pen */

SCRIBERA_API int SCKM730_SetPenStyle(int nDeviceType, bool bPressureOn);
SCRIBERA_API int SCKM730_SetPenWidth(int nDeviceType, int nPenWidth);
SCRIBERA_API int SCKM730_SetPenColor(int nDeviceType, int nR, int nG, int nB);

/* Callbacks and keys */

SCRIBERA_API int SCKM730_SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus);
SCRIBERA_API bool
SCKM730_RealTimeSignatureDataCallback(int nDeviceType,
                                      ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback);
SCRIBERA_API int SCKM730_GetDeviceConfirmOrCancelKeyStatus(int nDeviceType);

/* Points */

SCRIBERA_API int SCKM730_GetTotalPacketsNumber(int nDeviceType);
SCRIBERA_API int SCKM730_getPackets(int nDeviceType, _PACKETS* pPACKETS);
SCRIBERA_API char* SCKM730_GetInkPointTime(int nDeviceType, int nIndex);
SCRIBERA_API void SCKM730_FreeInkPointTime(int nDeviceType, char* pInkPointTime);

/* Pictures in files */

SCRIBERA_API int SCKM730_SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath,
                                          int nDPILevel);
SCRIBERA_API int SCKM730_SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX,
                                                int nClipMarginY);

/* Base64 texts */

SCRIBERA_API char* SCKM730_PacketsBase64Encode(int nDeviceType, int nImageTypeID);
SCRIBERA_API void SCKM730_PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCKM730_PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                                 bool bEnableTransparentBackground);
SCRIBERA_API void SCKM730_PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCKM730_GetSVGImageBase64Data(int nDeviceType);
SCRIBERA_API void SCKM730_FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData);
SCRIBERA_API int SCKM730_Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                                      wchar_t* pImageFilePath);
SCRIBERA_API int SCKM730_GetTotalDecodePacketsNumber(int nDeviceType);
SCRIBERA_API int SCKM730_GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID);

/* About */

SCRIBERA_API void SCKM730_AboutBox(QWidget* pParentWidget);
SCRIBERA_API void SCKM730_AboutBoxByWId(unsigned long long ullWId);
SCRIBERA_API void SCKM730_GetAboutInfo(int nDeviceType, char* pBuffer);

/** @} */

/**
 * @name T580 family
 *
 * Each function is as the SCK210_ function of the same name, with SCT580_DEVICE. OpenLCD, GetHWPenID
 * and DisplayHWVersion do not exist here.
 * @{
 */

/* Opening and closing */

SCRIBERA_API bool SCT580_InitialDevice(int nDeviceType, QWidget* pParentWidget, int nX, int nY, int nWidth,
                                       int nHeight);
SCRIBERA_API bool SCT580_InitialDeviceByWId(int nDeviceType, unsigned long long ullWId, int nX, int nY,
                                            int nWidth, int nHeight);
SCRIBERA_API int SCT580_UnInitialDevice(int nDeviceType);

/* Pad */

SCRIBERA_API int SCT580_Clear(int nDeviceType);
SCRIBERA_API int SCT580_GetHWPadID(int nDeviceType, char* pPadID, int nMaxCount);
SCRIBERA_API int SCT580_GetHWVersionID(int nDeviceType, char* pVersion, int nMaxCount);
SCRIBERA_API int SCT580_getDeviceInfo(int nDeviceType, int nIndex, void* pOutput);

/* Pen */

SCRIBERA_API int SCT580_SetPenStyle(int nDeviceType, bool bPressureOn);
SCRIBERA_API int SCT580_SetPenWidth(int nDeviceType, int nPenWidth);
SCRIBERA_API int SCT580_SetPenColor(int nDeviceType, int nR, int nG, int nB);

/* Callbacks and keys */

SCRIBERA_API int SCT580_SignatureStatusCallback(int nDeviceType, ScriberaSignatureStatusCallback pStatus);
SCRIBERA_API bool
SCT580_RealTimeSignatureDataCallback(int nDeviceType,
                                     ScriberaRealTimeSignDataCallback pfnRealTimeSignDataCallback);
SCRIBERA_API int SCT580_GetDeviceConfirmOrCancelKeyStatus(int nDeviceType);

/* Points */

SCRIBERA_API int SCT580_GetTotalPacketsNumber(int nDeviceType);
SCRIBERA_API int SCT580_getPackets(int nDeviceType, _PACKETS* pPACKETS);
SCRIBERA_API char* SCT580_GetInkPointTime(int nDeviceType, int nIndex);
SCRIBERA_API void SCT580_FreeInkPointTime(int nDeviceType, char* pInkPointTime);

/* Pictures in files */

SCRIBERA_API int SCT580_SaveDrawingImage(int nDeviceType, int nImageTypeID, wchar_t* pImageFilePath,
                                         int nDPILevel);
SCRIBERA_API int SCT580_SetSaveCenterImageClip(int nDeviceType, bool bClipImage, int nClipMarginX,
                                               int nClipMarginY);

/* Base64 texts */

SCRIBERA_API char* SCT580_PacketsBase64Encode(int nDeviceType, int nImageTypeID);
SCRIBERA_API void SCT580_PacketsBase64EncodeFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCT580_PacketsBase64EncodeEx(int nDeviceType, int nImageTypeID,
                                                bool bEnableTransparentBackground);
SCRIBERA_API void SCT580_PacketsBase64EncodeExFree(int nDeviceType, char* pEncodedData);
SCRIBERA_API char* SCT580_GetSVGImageBase64Data(int nDeviceType);
SCRIBERA_API void SCT580_FreeSVGImageBase64Data(int nDeviceType, char* pEncodedData);
SCRIBERA_API int SCT580_Base64Decode(int nDeviceType, int nImageTypeID, const char* pEncodedData,
                                     wchar_t* pImageFilePath);
SCRIBERA_API int SCT580_GetTotalDecodePacketsNumber(int nDeviceType);
SCRIBERA_API int SCT580_GetDecodePacketsData(int nDeviceType, int nIndex, int nTypeID);

/* About */

SCRIBERA_API void SCT580_AboutBox(QWidget* pParentWidget);
SCRIBERA_API void SCT580_AboutBoxByWId(unsigned long long ullWId);
SCRIBERA_API void SCT580_GetAboutInfo(int nDeviceType, char* pBuffer);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* SCRIBERASDK_H */
