/*
 * Control interface of the simulated pad.
 *
 * The simulated pad is a driver library (libscriberadrv.so) with the entry points SCRDAPI_*; beside them it
 * exports the functions below, with which a test or a tool plays the person at the pad. Find them with
 * dlsym() in the same "./libscriberadrv.so" that the host loads: both handles name one instance.
 *
 * All functions may be called from any thread, also before SCRDAPI_Initial and after SCRDAPI_UnInitial: what
 * is set stays set until the library is unloaded or ScrSim_Reset is called. Samples and fingerprints always
 * reach the host on the simulator's own sample thread, which runs from SCRDAPI_Initial to SCRDAPI_UnInitial.
 * Functions that return int return 0 on success and -1 on failure unless they say otherwise.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* One pen sample, in the units of the pad: the four numbers of the pen callback. */
typedef struct ScrSimSample
{
    int x;
    int y;
    int pressure;
    int penStatus; /* 0 down, 1 move, 2 up, 3 cancel key, 4 confirm key; anything else is passed on too */
} ScrSimSample;

/* Queues count samples for the sample thread, which delivers them without pause in this order.
 * -1 when the pad is not started or samples is null. The samples are copied. */
int ScrSim_SendSamples(const ScrSimSample* samples, int count);

/* Queues one sample. */
int ScrSim_SendSample(int x, int y, int pressure, int penStatus);

/* Queues touch and release of a key: 1 confirm (status 4, then 2), 0 cancel (status 3, then 2). */
int ScrSim_PressKey(int key);

/* Waits until everything queued or playing has been delivered and the last callback has returned.
 * -1 when that takes more than timeoutMs milliseconds, and at once inside a callback. 0 at once when the pad
 * is not started. */
int ScrSim_WaitIdle(int timeoutMs);

/* Plays the recording file on the sample thread. speed 1.0 is true rate, N is N times that, 0 is as fast as
 * the host takes the samples. loop non-zero repeats until ScrSim_StopPlaying or SCRDAPI_UnInitial. keyAtEnd:
 * 1 confirm, 0 cancel, -1 none; at true rate it is touched 250 ms after the last sample of each pass and
 * released 90 ms later. A recording for another writing area is scaled to the started model's; an ink packet
 * stream in Base64 is played as it is. What was playing before is replaced. -1 when the pad is not started or
 * the file is refused; ScrSim_LastError tells why. */
int ScrSim_Play(const char* path, double speed, int loop, int keyAtEnd);

/* Ends playing; what was queued apart from it is still delivered. Does not wait: a callback that is under way
 * returns later, so follow with ScrSim_WaitIdle where that matters. */
int ScrSim_StopPlaying(void);

/* How much of the recording has been delivered, in thousandths; 1000 when nothing plays. */
int ScrSim_Progress(void);

/* Reason of the last refusal, "file:line: reason" for recordings; "" when there was none. The text stays
 * valid until the calling thread asks again. */
const char* ScrSim_LastError(void);

/* Makes an entry point (its full name, for example "SCRDAPI_Initial") return result from now on. A non-zero
 * result also leaves the entry point without its effect: a failing SCRDAPI_Initial starts no thread. */
int ScrSim_SetResult(const char* entryPoint, int result);

/* Makes an entry point wait this long before it does its work. 0 ends that. */
int ScrSim_SetDelay(const char* entryPoint, int milliseconds);

/* The bytes that an identity entry point (SCRDAPI_GetDevicePartsVersion, ...PadID, ...PenID, ...SecureID)
 * writes. At most the caller's nMaxCount bytes are written. With terminate non-zero a zero byte is written
 * behind them if there is room; with zero none is, and the rest of the caller's buffer is left as it was. */
int ScrSim_SetText(const char* entryPoint, const char* bytes, int count, int terminate);

/* How often the entry point was called since load or ScrSim_Reset; -1 for an unknown name. */
int ScrSim_CallCount(const char* entryPoint);

/* The integer argument that the entry point was given last (bOn, bWithPressureValue, nMaxCount, nDeviceType,
 * the picture's length); INT_MIN when it was never called or takes none. */
int ScrSim_LastArgument(const char* entryPoint);

/* The entry points called since load or ScrSim_Reset, in order, as one text of names separated by blanks, cut
 * to size bytes with its terminator. Returns the untruncated length. */
int ScrSim_CallLog(char* out, int size);

/* Queues one fingerprint: pixels null delivers a null pointer; otherwise length bytes are copied, padded with
 * 255 to at least 208*288 bytes, and delivered with the given length and score. */
int ScrSim_SendFingerprint(const unsigned char* pixels, int length, int score);

/* Queues one synthetic fingerprint of 208*288 bytes: pattern "loop", "whorl" or "arch". The same pattern and
 * seed give the same bytes on every machine. */
int ScrSim_SendSyntheticFingerprint(const char* pattern, unsigned seed, int score);

/* Queues one fingerprint from a grey PGM file (P5 or P2, largest value 255), centred: cut to 208*288 where
 * larger, filled up with 255 where smaller. -1 also when the file is refused: "file: reason". */
int ScrSim_SendFingerprintFile(const char* path, int score);

/* How long SCRDAPI_ShowFPImageOnDevice takes to transfer a picture. It looks at the abort flag every
 * millisecond meanwhile and gives up (result -1, picture not kept) once the flag is set. A picture whose
 * length is not width * height * 2 is no transfer: result -2. */
int ScrSim_SetTransferTime(int milliseconds);

/* The last picture that was transferred whole: copies at most size bytes, returns its length (0: none yet)
 * and sets width and height where those pointers are not null. */
int ScrSim_LastPicture(unsigned char* out, int size, int* width, int* height);

/* Transfers begun, and of those given up because of the abort flag. */
int ScrSim_TransferCount(void);
int ScrSim_AbortedTransferCount(void);

/* Back to the state after load (results, delays, texts, counters); leaves a started pad running. */
void ScrSim_Reset(void);

/* All of them, X(name) for ScrSim_name, for whoever finds them by name. */
#define SCRSIM_FUNCTIONS(X)                                                                                  \
    X(SendSamples)                                                                                           \
    X(SendSample)                                                                                            \
    X(PressKey)                                                                                              \
    X(WaitIdle)                                                                                              \
    X(Play)                                                                                                  \
    X(StopPlaying)                                                                                           \
    X(Progress)                                                                                              \
    X(LastError)                                                                                             \
    X(SetResult)                                                                                             \
    X(SetDelay)                                                                                              \
    X(SetText)                                                                                               \
    X(CallCount)                                                                                             \
    X(LastArgument)                                                                                          \
    X(CallLog)                                                                                               \
    X(SendFingerprint)                                                                                       \
    X(SendSyntheticFingerprint)                                                                              \
    X(SendFingerprintFile)                                                                                   \
    X(SetTransferTime)                                                                                       \
    X(LastPicture)                                                                                           \
    X(TransferCount)                                                                                         \
    X(AbortedTransferCount)                                                                                  \
    X(Reset)

#ifdef __cplusplus
}
#endif
