/**
 * @file scriberasdk_ext.h
 *
 * Additions to the public interface of the Scribera SDK. A host that does not need them includes
 * scriberasdk.h alone and runs with every library of version 3. One that links them runs with a library of
 * at least the version that the function names; one that loads the library at run time looks each function
 * up and does without those that an older library lacks.
 *
 * They belong to no family and take no device type. Plain C functions for C11 and C++11 or later. Any
 * thread may call them at any time, callbacks included; none of them waits for the pad, throws or takes
 * memory.
 */
#ifndef SCRIBERASDK_EXT_H
#define SCRIBERASDK_EXT_H

#include "scriberasdk.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Version
 * @{
 */

#define SCRX_VERSION_MAJOR 3 /**< Of the library that this header came with. */
#define SCRX_VERSION_MINOR 1 /**< Grows with each addition. */
#define SCRX_VERSION_PATCH 0 /**< Grows with each correction. */

/** The three as one number that can be compared: 30205 is 3.2.5. */
#define SCRX_VERSION (SCRX_VERSION_MAJOR * 10000 + SCRX_VERSION_MINOR * 100 + SCRX_VERSION_PATCH)

/**
 * The version of the library that the process runs with, to be compared with SCRX_VERSION, that of the
 * header. The About text tells the version of the interface, which is another number.
 *
 * @return The version as SCRX_VERSION has it.
 * @since 3.1.0
 */
SCRIBERA_API int SCRX_Version(void);

/** @} */

/**
 * @name Failed starts
 * @{
 */

/** Why InitialDevice or InitialDeviceByWId gave false. Later versions may add further ones. */
enum
{
    SCRX_START_OK = 0,                /**< It gave true, or there was no start yet. */
    SCRX_START_DRIVER_MISSING = 1,    /**< There is no libscriberadrv.so in the current directory. */
    SCRX_START_DRIVER_NOT_LOADED = 2, /**< It is there but no library, or needs what is not there. */
    SCRX_START_DRIVER_INCOMPLETE = 3, /**< It lacks entry points that the model needs. */
    SCRX_START_DRIVER_REFUSED = 4,    /**< It does not start: SCRDAPI_Initial gave something other than 0. */
    SCRX_START_MODEL_UNKNOWN = 5,     /**< The pad's model text is none that the family accepts. */
    SCRX_START_NO_MEMORY = 6,         /**< There was not enough memory. */
    SCRX_START_NO_THREAD = 7,         /**< The system refused a worker thread. */
    SCRX_START_WRONG_THREAD = 8,      /**< A widget was asked for away from the thread of the QApplication. */
    SCRX_START_WRONG_QT = 9,          /**< The window is one of another Qt than the library is built for. */
    SCRX_START_NO_APPLICATION = 10,   /**< A widget was asked for, and there is no QApplication. */
    SCRX_START_NO_WINDOW = 11,        /**< No widget of this process has the window id. */
    SCRX_START_IN_CALLBACK = 12,      /**< Called inside a callback while the pad was opened or closed. */
    SCRX_START_WRONG_DEVICE_TYPE = 13 /**< The device type is not the family's. */
};

/**
 * Why the last InitialDevice or InitialDeviceByWId of this process gave false, as a code and as a sentence
 * for a log or a technician: English, UTF-8 where the loader's words are, one line without a full stop, and
 * with what helps to find the fault: the loader's own words, the entry points that are missing, the driver's
 * result, the model text that the pad reported. Programs go by the code; the sentence may change.
 *
 * Every start of any family and on any thread counts when it returns; of several at once, the last to
 * return. Before the first one and after one that gave true the code is SCRX_START_OK and the sentence
 * empty. UnInitialDevice changes nothing here. A forked process has what its parent had.
 *
 * @param pText  Receives the sentence and a zero byte, cut to the size at a whole character. The host's.
 *               Null: no sentence is wanted.
 * @param nSize  Size of the buffer in bytes; 1024 hold every sentence. Zero or less: no sentence is wanted.
 * @return One of the SCRX_START_ codes.
 * @since 3.1.0
 */
SCRIBERA_API int SCRX_LastStartFailure(char* pText, int nSize);

/** @} */

/**
 * @name Worker threads
 * @{
 */

/** What the library's own threads do while nothing waits for them (nMode of SCRX_SetWorkers). */
enum
{
    SCRX_WORKERS_POLL = 0, /**< They look again and again, which keeps a processor core busy. */
    SCRX_WORKERS_WAIT = 1  /**< They sleep until they are woken, and need no processor time meanwhile. */
};

/**
 * Lets the key-action thread, and on the K421B the fingerprint display thread, of each pad that is opened
 * from now on poll or sleep while they have nothing to do. Nothing else differs: neither the order of
 * things nor the log. A thread that sleeps starts a key's action a few hundredths of a millisecond later.
 *
 * A host that does not call this function has what the environment variable SCRIBERA_WORKERS says when the
 * pad is opened: "poll" or "wait"; polling without it. A call counts more than the variable. Any other value
 * polls, and the log names it when a pad is opened.
 *
 * @param nMode  SCRX_WORKERS_POLL or SCRX_WORKERS_WAIT. A pad that is open keeps what it was opened with.
 * @return ARI_SUCCESS; ARI_INVALID_PARAMETERS for any other mode, which changes nothing.
 * @since 3.1.0
 */
SCRIBERA_API int SCRX_SetWorkers(int nMode);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* SCRIBERASDK_EXT_H */
