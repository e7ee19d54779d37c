#pragma once

// The harness of the host tests: it uses the library as a host does, by path and symbol name, and knows the
// pads from its own table. Nothing here includes a header of the library, so that a mistake there cannot
// repeat itself here.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QImage>
#include <QPointer>
#include <QWidget>

#include "simclient.h"

namespace scribera::test {

// ---------------------------------------------------------------------------------------------- pad models

enum class Kind
{
    Windowless,
    Widget
};

struct PadModel
{
    std::string name;   // K210; also how the tests call it
    std::string prefix; // SCK210_
    std::string deviceName;
    int deviceType;
    std::string widgetClass;
    std::string windowlessClass;
    std::string modelText; // what the pad itself reports
    std::string handler;   // method that takes raw samples
    int originX;           // writing area, in pad units
    int originY;
    int areaWidth;
    int areaHeight;
    int maxPressure;
    bool pressureByMember; // false: the limit is a constant, whatever the pad reported
    bool keyAtRelease;     // key action armed when the pen leaves the key, else when it touches it
    bool hasScreen;        // screen, pen id and secure id calls exist
    bool hasFingerprint;
};

const std::vector<PadModel>& padModels();
const PadModel& padModel(const std::string& name);
const PadModel& otherModel(const PadModel& model); // some other model, the same one every time

struct PadCase
{
    const PadModel* model = nullptr;
    Kind kind = Kind::Windowless;

    bool isWidget() const { return kind == Kind::Widget; }
    const std::string& className() const { return isWidget() ? model->widgetClass : model->windowlessClass; }
    std::string method(const std::string& name) const;   // log label of a method: "CK210SignObj::Shutdown()"
    std::string exported(const std::string& name) const; // log label of a function: "SCK210_Clear()"
    std::string name() const;                            // "K210Windowless"
};

void PrintTo(const PadCase& padCase, std::ostream* out);
std::vector<PadCase> allCases();
std::vector<PadCase> casesOf(Kind kind);
std::string caseName(const testing::TestParamInfo<PadCase>& info);

#define SCRIBERA_INSTANTIATE_ALL(Suite)                                                                      \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::ValuesIn(scribera::test::allCases()), scribera::test::caseName)
#define SCRIBERA_INSTANTIATE(Suite, kind)                                                                    \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::ValuesIn(scribera::test::casesOf(kind)),                      \
                             scribera::test::caseName)

// ---------------------------------------------------------------------------------------------- the library

struct Packet // the record of getPackets
{
    std::int32_t index;
    std::uint16_t x;
    std::int16_t y;
    std::int16_t pressure;
    std::uint8_t status;
};
static_assert(sizeof(Packet) == 12 && offsetof(Packet, x) == 4 && offsetof(Packet, status) == 10);

using WindowId = unsigned long long;
using StatusCallback = void (*)(int);
using RealTimeCallback = void (*)(unsigned long, long);

// X(name, families, result, arguments)
#define SCRIBERA_OPERATIONS(X)                                                                               \
    X(InitialDevice, All, bool, (int, QWidget*, int, int, int, int))                                         \
    X(InitialDeviceByWId, All, bool, (int, scribera::test::WindowId, int, int, int, int))                    \
    X(UnInitialDevice, All, int, (int))                                                                      \
    X(OpenLCD, WithScreen, int, (int, bool))                                                                 \
    X(Clear, All, int, (int))                                                                                \
    X(GetHWPenID, WithScreen, int, (int, char*, int))                                                        \
    X(GetHWPadID, All, int, (int, char*, int))                                                               \
    X(GetHWVersionID, All, int, (int, char*, int))                                                           \
    X(DisplayHWVersion, WithScreen, int, (int, bool))                                                        \
    X(SetPenStyle, All, int, (int, bool))                                                                    \
    X(SetPenWidth, All, int, (int, int))                                                                     \
    X(SetPenColor, All, int, (int, int, int, int))                                                           \
    X(SignatureStatusCallback, All, int, (int, scribera::test::StatusCallback))                              \
    X(RealTimeSignatureDataCallback, All, bool, (int, scribera::test::RealTimeCallback))                     \
    X(GetTotalPacketsNumber, All, int, (int))                                                                \
    X(getPackets, All, int, (int, scribera::test::Packet*))                                                  \
    X(GetInkPointTime, All, char*, (int, int))                                                               \
    X(FreeInkPointTime, All, void, (int, char*))                                                             \
    X(GetDeviceConfirmOrCancelKeyStatus, All, int, (int))                                                    \
    X(SaveDrawingImage, All, int, (int, int, wchar_t*, int))                                                 \
    X(SetSaveCenterImageClip, All, int, (int, bool, int, int))                                               \
    X(getDeviceInfo, All, int, (int, int, void*))                                                            \
    X(PacketsBase64Encode, All, char*, (int, int))                                                           \
    X(PacketsBase64EncodeFree, All, void, (int, char*))                                                      \
    X(PacketsBase64EncodeEx, All, char*, (int, int, bool))                                                   \
    X(PacketsBase64EncodeExFree, All, void, (int, char*))                                                    \
    X(Base64Decode, All, int, (int, int, const char*, wchar_t*))                                             \
    X(GetTotalDecodePacketsNumber, All, int, (int))                                                          \
    X(GetDecodePacketsData, All, int, (int, int, int))                                                       \
    X(GetSVGImageBase64Data, All, char*, (int))                                                              \
    X(FreeSVGImageBase64Data, All, void, (int, char*))                                                       \
    X(SetDisplayedFPImageAt, WithFingerprint, int, (int, QWidget*, int, int, int, int, int, int))            \
    X(SetDisplayedFPImageAtByWId, WithFingerprint, int,                                                      \
      (int, scribera::test::WindowId, int, int, int, int, int, int))                                         \
    X(GetFPImageBase64Data, WithFingerprint, char*, (int, int, bool))                                        \
    X(FreeFPImageBase64Data, WithFingerprint, void, (int, char*))                                            \
    X(AboutBox, All, void, (QWidget*))                                                                       \
    X(AboutBoxByWId, All, void, (scribera::test::WindowId))                                                  \
    X(GetAboutInfo, All, void, (int, char*))

// One family's functions; those that the family does not have are null.
struct Operations
{
#define X(name, families, result, arguments) result(*name) arguments = nullptr;
    SCRIBERA_OPERATIONS(X)
#undef X
};

enum class Families
{
    All,
    WithScreen,
    WithFingerprint
};

bool belongsTo(Families families, const PadModel& model);
std::vector<std::string> operationNames(const PadModel& model); // without the prefix
const std::vector<std::string>& globalNames();

class Library
{
public:
    static Library& instance(); // opened at the first call

    const Operations& family(const PadModel& model) const;
    void* symbol(const std::string& name) const; // null when there is none
    void* handle() const { return m_handle; }

    unsigned char& enableLog;
    unsigned char& useSignObj;
    void*& signWidget;

private:
    explicit Library(void* handle);

    void* m_handle;
    std::vector<Operations> m_families;
};

// Safe on any thread, as the library's own look at the switch is.
void setLogging(bool on, unsigned char value = 1);
bool loggingIsOn();

// ---------------------------------------------------------------------------------------------- the driver

// What lies in the working directory as ./libscriberadrv.so.
void removeDriver();
void installDriver();                                  // the simulated pad, whole
void installDriverWithout(const std::string& missing); // entry point without its prefix
void installNonLibrary();                              // a file that is no library
void installDirectoryAsDriver();

extern const char* const driverFile; // "./libscriberadrv.so"

// The simulated pad's control interface, in the same instance that the library loads. While one of these is
// open the driver stays mapped.
class Simulator : public simulator::Client
{
public:
    Simulator() = default;
    ~Simulator() { close(); }
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    void open();
    void close();
    bool isOpen() const { return m_handle != nullptr; }

    void send(const std::vector<ScrSimSample>& samples); // and waits until all were delivered
    void queue(const std::vector<ScrSimSample>& samples);
    void pressKey(int key); // and waits
    void waitIdle();
    std::vector<std::string> callLog();
    void setText(const std::string& entryPoint, const std::string& text, bool terminate = true);

private:
    void* m_handle = nullptr;
};

// ---------------------------------------------------------------------------------------------- samples

enum PenStatus
{
    PenDown = 0,
    PenMove = 1,
    PenUp = 2,
    CancelKeyDown = 3,
    ConfirmKeyDown = 4
};

struct StrokePoint // a place on the writing area in fractions of its size, and a pressure in fractions of the
                   // most
{
    double x;
    double y;
    double pressure = 0.25;
};

ScrSimSample sampleAt(const PadModel& model, const StrokePoint& point, int penStatus);
// down, moves, up
std::vector<ScrSimSample> stroke(const PadModel& model, const std::vector<StrokePoint>& points);
// A wavy line of that many moves across the middle of the area.
std::vector<ScrSimSample> wave(const PadModel& model, int moves);
// Writes a recording of strokes without end pause, for ScrSim_Play.
void writeRecording(const PadModel& model, const std::string& path, int samples);

// ---------------------------------------------------------------------------------------------- log files

extern const char* const mainLogFile;
extern const char* const inThreadLogFile;
extern const char* const svgScratchFile;

struct LogLine
{
    std::string label;
    std::string message; // the whole message, with its tick
    bool hasTick = false;
    long long tick = 0;
    std::string text; // the message behind "<tick>-"; the whole message where there is no such beginning
};

void PrintTo(const LogLine& line, std::ostream* out);

// Reads a log and checks every line's form: "[label]:message, \n". Reports a test failure for a line that
// differs. A missing file has no lines.
std::vector<LogLine> readLog(const std::string& path);
std::vector<LogLine> mainLog();
std::vector<LogLine> inThreadLog();
void removeLogs();

// Leaves no room for another byte in the test's own /tmp while it lives, where there is one.
class FullTmp
{
public:
    FullTmp();
    ~FullTmp();
    FullTmp(const FullTmp&) = delete;
    FullTmp& operator=(const FullTmp&) = delete;

    bool isFull() const { return m_full; }

private:
    bool m_full = false;
};

std::vector<LogLine> withLabel(const std::vector<LogLine>& lines, const std::string& label);
std::vector<std::string> textsOf(const std::vector<LogLine>& lines, const std::string& label);
std::vector<std::string> labelsOf(const std::vector<LogLine>& lines);
std::string hex(const void* pointer); // as %lx writes it

template <class Function>
std::string hexOf(Function* function)
{
    return hex(reinterpret_cast<const void*>(function));
}

// ---------------------------------------------------------------------------------------------- processes

// Waits until the condition holds; delivers Qt events meanwhile where there is an application. False when it
// did not come true in time.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(20));

void ensureApplication(); // a QApplication on the offscreen platform, made once
void destroyApplication();
void processEvents(); // events and deferred deletions

struct ProcessState
{
    std::set<std::string> threads;     // ids
    std::vector<std::string> files;    // what the open descriptors name, sorted
    std::set<std::string> mappedFiles; // libraries and the like
    static ProcessState now();
    bool maps(const std::string& fileName) const; // by the last part of the path
};

// The threads of a process with no pad open, those included that a sanitizer adds with the first thread.
std::set<std::string> idleThreads();

// Whether these are the process's threads. A thread that was waited for may take the system a moment more to
// end, so this waits.
bool threadsAre(const std::set<std::string>& threads);

// Code that must run in a process of its own: ends it, unloads the library and so on. Registered by name,
// started with runChild() in the working directory and /tmp of the test.
struct ChildProgram
{
    using Main = int (*)(const std::vector<std::string>& arguments);
    ChildProgram(const char* name, Main main);
};

struct ChildResult
{
    bool timedOut = false;
    bool exited = false;
    int exitCode = -1;
    int signal = 0;
    std::string output; // both streams
    std::chrono::milliseconds duration{};
};

void PrintTo(const ChildResult& result, std::ostream* out);
ChildResult runChild(const std::string& name, const std::vector<std::string>& arguments,
                     std::chrono::milliseconds limit = std::chrono::seconds(60));
testing::AssertionResult endedWell(const ChildResult& result); // exited with 0, in time

std::string sourceDirectory();
std::string libraryFile();
std::string fileContent(const std::string& path);

// ---------------------------------------------------------------------------------------------- a pad in use

struct StartOptions
{
    int width = 400;
    int height = 200;
    int x = 0;
    int y = 0;
    bool parentShown = true;
    bool byWindowId = false;
};

// One live sign object, started and stopped as a host does it. A widget gets a parent window of its own.
class Pad
{
public:
    explicit Pad(const PadCase& padCase);
    ~Pad();
    Pad(const Pad&) = delete;
    Pad& operator=(const Pad&) = delete;

    bool start(const StartOptions& options = {});
    int stop(); // result of UnInitialDevice; a widget is gone afterwards
    int stopKeepingParent();

    const PadCase& padCase() const { return m_case; }
    const PadModel& model() const { return *m_case.model; }
    const Operations& api() const { return m_api; }
    int type() const { return m_case.model->deviceType; }
    Simulator& sim() { return m_sim; }

    QWidget* parent() { return m_parent.get(); }
    QWidget& makeParent(bool shown); // the one that start() uses; for calls made by hand
    void closeParent();              // destroys the parent window
    QWidget* signWidget();           // the library's widget inside the parent, null when there is none

    int points() const { return m_api.GetTotalPacketsNumber(type()); }
    void draw(const std::vector<ScrSimSample>& samples) { m_sim.send(samples); }
    int save(int imageType, const std::string& path, int dpiLevel = 1);
    QImage canvas(); // what the library holds, through a saved BMP; null when saving fails

private:
    PadCase m_case;
    const Operations& m_api;
    Simulator m_sim;
    std::unique_ptr<QWidget> m_parent;
    bool m_started = false;
};

// Base of the tests that run for every pad and kind. Logging is off and the simulated pad installed at the
// beginning; a process for the windowless kind never has an application object.
class PadTest : public testing::TestWithParam<PadCase>
{
protected:
    void SetUp() override;
    void TearDown() override;

    const PadCase& padCase() const { return GetParam(); }
    const PadModel& model() const { return *GetParam().model; }
    const Operations& api() const { return Library::instance().family(model()); }
    int type() const { return model().deviceType; }
    std::string exported(const std::string& name) const { return padCase().exported(name); }
    std::string method(const std::string& name) const { return padCase().method(name); }
    Pad& pad() { return *m_pad; }
    Simulator& sim() { return m_pad->sim(); }

    std::unique_ptr<Pad> m_pad;
};

// The wide form of a path, writable because the library's functions ask for it.
std::wstring wide(const std::string& text);

enum ImageType
{
    ImageBmp = 1,
    ImageJpeg = 2,
    ImagePng = 3,
    ImageInk = 6,
    ImagePdf = 7,
    ImageSvg = 8
};

} // namespace scribera::test
