// Every operation of a host and every callback of a driver with one allocation refused, each time another
// one.
//
// A child process for each: it opens a pad, signs, makes the call with the allocation refused, and then must
// still have every point and, unless the call draws, every pixel; it must be able to go on signing, save, and
// close the pad. A call may fail in its documented way; what it reports as done must be whole.
//
// By default two pads and a part of the allocations are tried, with SCRIBERA_FULL_LENGTH set all four pads,
// the first 300 allocations of a call and then every 50th. SCRIBERA_REFUSE=N tries the N-th only.

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <regex>
#include <sstream>
#include <thread>

#include <cxxabi.h>
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QResizeEvent>

#include "allocations.h"
#include "fingerprint_reference.h"
#include "pen.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

// Places in libraries that we do not make where a refused allocation ends the process or leaves a lock taken
// for ever. Nothing is refused there; SCRIBERA_REFUSE_EVERYWHERE shows what would happen.
struct KnownPlace
{
    const char* asker;  // part of the line of the function that asks for the memory
    const char* inside; // part of the line of that function or one further out
    const char* reason;
};

constexpr KnownPlace knownPlaces[] = {
    // QtGui is built without exceptions: one that passes through it runs no destructor there.
    {"", "14QFactoryLoader", "readers and writers of images hold the lock of the image plugins meanwhile"},
    {"", "21supportedImageFormats", "the same lock"},
    {"15QImageIOHandlerC", "12QImageWriter", "the writer makes its handler under that lock"},
    {"15QImageIOHandlerC", "12QImageReader", "the reader makes its handler under that lock"},
    {"libQt5Gui.so.5(+", "12QImageWriter", "the same, in functions without a name"},
    {"libQt5Gui.so.5(+", "12QImageReader", "the same, in functions without a name"},
    {"libqjpeg.so(", "12QImageWriter", "the plugin's part of the same"},
    {"libqjpeg.so(", "12QImageReader", "the plugin's part of the same"},
    {"jinit_memory_mgr", "12QImageReader", "the plugin jumps to where it has not been yet"},
    // Its containers and buffers write through the null pointer instead.
    {"libQt5Gui.so.5(+", "18QRasterPaintEngine", "the rasteriser's buffers grow unchecked"},
    {"7QBezier", "18QRasterPaintEngine", "the same"},
    {"libQt5Gui.so.5(+", "10QPdfEngine", "the writer's lists grow unchecked"},
    {"libQt5Gui.so.5(+", "12QPainterPath", "a path's list grows unchecked"},
    {"libQt5Gui.so.5(+", "7QRegion", "a region's list grows unchecked"},
    // QtCore and GLib.
    {"", "_ZN7QThreadC", "a thread object that gets no data destroys what it has not made"},
    {"", "20QEventDispatcherGlibC", "a starting thread makes it where nothing catches"},
    {"libglib-2.0.so.0(", "", "GLib ends the process"},
    // QtWidgets, and what it tells of a widget that is shown.
    {"", "14QWidgetPrivate4init", "a widget that gets no data destroys what it has not made"},
    {"", "14QWidgetPrivate11show_helper", "a connection that gets no memory is written all the same"},
    {"libQt5Widgets.so.5(+", "7QWidget6update", "the list of what is to be painted grows unchecked"},
};

// Whether this line is the allocation's own: malloc() and operator new, and the growth of Qt's containers.
bool onlyAllocates(const std::string& line)
{
    for (const char* name :
         {"refusal_tests(", "(_Zn", "_ZN10QArrayData", "_ZN9QListData", "17fromLatin1_helper"}) {
        if (line.find(name) != std::string::npos)
            return true;
    }
    return false;
}

bool isKnownPlace(const char* place)
{
    if (std::getenv("SCRIBERA_REFUSE_EVERYWHERE"))
        return false;
    std::istringstream lines(place);
    std::string asker;
    while (std::getline(lines, asker) && onlyAllocates(asker))
        ;
    // A thread that starts, in functions of QtCore without a name and before it comes to ours.
    if (asker.find("libQt5Core.so.5(+") != std::string::npos && !std::strstr(place, "libscriberasdk"))
        return true;
    return std::any_of(std::begin(knownPlaces), std::end(knownPlaces), [&](const KnownPlace& known) {
        return asker.find(known.asker) != std::string::npos && std::strstr(place, known.inside);
    });
}

std::atomic<int> statusCalls{0};   // counted on the library's key-action thread
std::atomic<int> realTimeCalls{0}; // counted on the driver's thread

// A thread that makes one prepared call after another. Running a call allocates nothing.
class DriverThread
{
public:
    DriverThread() : m_thread([this] { makeCalls(); }) {}
    ~DriverThread()
    {
        m_call = nullptr;
        start();
        m_thread.join();
    }
    DriverThread(const DriverThread&) = delete;
    DriverThread& operator=(const DriverThread&) = delete;

    void prepare(std::function<void()> call) { m_call = std::move(call); }
    void run() // the prepared one, and waits for it
    {
        start();
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_isDue; });
    }

private:
    void start()
    {
        const std::lock_guard lock(m_mutex);
        m_isDue = true;
        m_changed.notify_all();
    }
    void makeCalls()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [&] { return m_isDue; });
            if (!m_call)
                return;
            lock.unlock();
            m_call();
            lock.lock();
            m_isDue = false;
            m_changed.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isDue = false;         // guarded by m_mutex
    std::function<void()> m_call; // written only while none is due
    std::thread m_thread;
};

// A child's verdict; ends it.
struct Failure
{
    std::string text;
};

void demand(bool condition, const std::string& what)
{
    if (!condition)
        throw Failure{what};
}

// The pad of one child process.
class Subject
{
public:
    explicit Subject(const PadCase& padCase)
        : padCase(padCase), api(Library::instance().family(*padCase.model)), type(padCase.model->deviceType)
    {
    }

    bool start()
    {
        if (padCase.isWidget() && !parent) {
            parent = std::make_unique<QWidget>();
            parent->resize(500, 400);
            parent->show();
            otherWindow = std::make_unique<QWidget>();
            otherWindow->resize(200, 100);
            otherWindow->show();
            processEvents();
            parent->winId();
        }
        return startOnly();
    }
    bool startOnly() { return api.InitialDevice(type, parent.get(), 10, 10, 200, 100); }
    void findDriver()
    {
        driver = dlopen(driverFile, RTLD_NOW | RTLD_NOLOAD);
        demand(driver != nullptr, "the driver is not loaded");
        pen = entry<decltype(pen)()>("BareDriver_Pen")();
        fingerprint = entry<decltype(fingerprint)()>("BareDriver_Fingerprint")();
        transfers = entry<int()>("BareDriver_Transfers");
        dlclose(driver); // the library keeps it
    }
    void findWidget()
    {
        signWidget = parent->findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        demand(signWidget != nullptr, "there is no widget");
    }
    bool hasPrints() const { return padCase.model->hasFingerprint; }

    // For the next start of the driver's thread.
    void prepare(const std::vector<ScrSimSample>& coming)
    {
        samples = coming;
        driverThread.prepare([this] {
            for (const ScrSimSample& one : samples)
                pen(one.x, one.y, one.pressure, one.penStatus);
        });
    }
    void preparePrint(int score)
    {
        driverThread.prepare([=, this] { fingerprint(print.data(), static_cast<int>(print.size()), score); });
    }
    void sign(const std::vector<ScrSimSample>& coming)
    {
        prepare(coming);
        driverThread.run();
        expect(coming);
    }
    // What must be stored after these; strokes only.
    void expect(const std::vector<ScrSimSample>& samples)
    {
        for (const ScrSimSample& one : samples) {
            if (one.penStatus > PenUp)
                continue;
            if (one.penStatus == PenUp)
                points.push_back(points.back());
            else
                points.push_back({static_cast<std::uint16_t>(one.x), static_cast<std::int16_t>(one.y),
                                  static_cast<std::int16_t>(one.pressure), 0});
            points.back().status = one.penStatus == PenUp;
        }
    }
    void sendPrint(int score)
    {
        const int before = transfers();
        preparePrint(score);
        driverThread.run();
        demand(waitUntil([&] { return transfers() > before; }), "a print is not shown on the pad");
    }

    void samePoints()
    {
        demand(api.GetTotalPacketsNumber(type) == (points.empty() ? -8 : static_cast<int>(points.size())),
               "points: " + std::to_string(api.GetTotalPacketsNumber(type)) + ", due " +
                   std::to_string(points.size()));
        for (std::size_t i = 0; i < points.size(); ++i) {
            Packet packet{static_cast<int>(i), 0, 0, 0, 0};
            demand(api.getPackets(type, &packet) == 0, "a point cannot be read");
            demand(Ink{packet.x, packet.y, packet.pressure, packet.status} == points[i],
                   "point " + std::to_string(i) + " is another one");
        }
    }
    std::string canvas()
    {
        char* const text = api.PacketsBase64Encode(type, ImageBmp);
        const std::string result = text ? text : "";
        api.PacketsBase64EncodeFree(type, text);
        return result;
    }
    int save(int imageType, std::wstring& path)
    {
        return api.SaveDrawingImage(type, imageType, path.data(), 1);
    }
    void resultIsOneOf(const std::vector<int>& documented) const
    {
        demand(std::find(documented.begin(), documented.end(), result) != documented.end(),
               "result " + std::to_string(result));
    }

    const PadCase padCase;
    const Operations& api;
    const int type;
    DriverThread driverThread;
    std::unique_ptr<DriverThread> otherThread; // one that Qt does not know yet
    std::unique_ptr<QWidget> parent;
    std::unique_ptr<QWidget> otherWindow;
    void* driver = nullptr;
    void (*pen)(int, int, int, int) = nullptr;
    void (*fingerprint)(unsigned char*, int, int) = nullptr;
    int (*transfers)() = nullptr;
    std::vector<Ink> points; // that must be stored
    Bytes print = ridges(3);

    // What an operation keeps between its parts.
    int result = 0;
    int before = 0;
    char* text = nullptr;
    QWidget* signWidget = nullptr;
    std::unique_ptr<QResizeEvent> resizeEvent;
    std::string first;
    std::wstring path;
    std::vector<ScrSimSample> samples;

private:
    template <class Function>
    Function* entry(const char* name)
    {
        void* const found = dlsym(driver, name);
        demand(found != nullptr, std::string("the driver lacks ") + name);
        return reinterpret_cast<Function*>(found);
    }
};

// ---------------------------------------------------------------------------------------------- operations

enum Traits
{
    Plain = 0,
    Draws = 1,        // may leave the canvas incomplete
    StartsItself = 2, // finds no pad open
    EndsItself = 4,   // leaves none open
    FirstUse = 8,     // in a process that has not done anything like it yet
    NeedsPrint = 16,  // only pads with a fingerprint reader
    NeedsWidget = 32,
    NeedsScreen = 64,
    MakesCanvas = 128, // a canvas that cannot be had is an empty one
    CopiesFirst = 256  // its first allocations, the canvas's copy among them, are refused one by one
};

struct Operation
{
    const char* name;
    int traits;
    std::function<void(Subject&)> prepare; // with memory
    std::function<void(Subject&)> act;     // without; allocates nothing itself
    std::function<void(Subject&)> check;   // with memory again
};

void nothing(Subject&) {}

char buffer[256]; // what the questions fill, in a child of its own for each

// ---- the pen

using SamplesOf = std::function<std::vector<ScrSimSample>(const PadModel&)>;

SamplesOf one(const StrokePoint& point, int status)
{
    return [=](const PadModel& model) { return std::vector{sampleAt(model, point, status)}; };
}

Operation penOperation(const char* name, bool strokeIsOpen, const SamplesOf& samplesOf)
{
    return {name, Draws,
            [=](Subject& s) {
                if (strokeIsOpen)
                    s.sign({sampleAt(*s.padCase.model, {0.2, 0.2}, PenDown)});
                s.prepare(samplesOf(*s.padCase.model));
                s.before = realTimeCalls;
            },
            [](Subject& s) { s.driverThread.run(); },
            [](Subject& s) {
                s.expect(s.samples);
                demand(realTimeCalls == s.before + static_cast<int>(s.samples.size()),
                       "the real-time callback was told of " + std::to_string(realTimeCalls - s.before) +
                           " samples");
            }};
}

Operation keyOperation(const char* name, int status)
{
    return {name, Plain,
            [=](Subject& s) {
                s.before = statusCalls;
                s.prepare({{0, 0, 0, status}, {0, 0, 0, PenUp}});
            },
            [](Subject& s) {
                s.driverThread.run();
                while (statusCalls == s.before)
                    std::this_thread::yield();
            },
            [=](Subject& s) {
                demand(s.api.GetDeviceConfirmOrCancelKeyStatus(s.type) == (status == ConfirmKeyDown ? 1 : 0),
                       "the key's status is lost");
            }};
}

// ---- the print

// The merge follows a transfer on the library's own thread and tells nobody; a moment for it. When it comes
// later the refusal misses it, and the next allocation of the list is refused elsewhere.
void giveTheMergeAMoment()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
}

void sendPreparedPrint(Subject& s)
{
    s.driverThread.run();
    giveTheMergeAMoment();
}

// ---- files and texts

std::string withoutDate(const std::string& pdf)
{
    return std::regex_replace(pdf, std::regex("/CreationDate[^\n]*\n"), "");
}

// With an older file in place, which must not become half a new one.
Operation saveOperation(const char* name, int imageType, const char* file, bool clip, int traits)
{
    return {name, traits,
            [=](Subject& s) {
                std::ofstream(file) << "older";
                s.path = wide(file);
                if (clip)
                    s.api.SetSaveCenterImageClip(s.type, true, 5, 7);
            },
            [=](Subject& s) { s.result = s.save(imageType, s.path); },
            [=](Subject& s) {
                const std::string seen = withoutDate(fileContent(file));
                fs::remove(file);
                demand(s.save(imageType, s.path) == 0, "it cannot be saved afterwards");
                const std::string due = withoutDate(fileContent(file));
                s.resultIsOneOf({0, -8});
                // The result of these two only says whether the file could be opened, or nothing at all.
                const bool resultTells = imageType != ImagePdf && imageType != ImageSvg;
                if (resultTells)
                    demand(seen == (s.result == 0 ? due : "older"), "the file is not what the result says");
                else if (imageType == ImageSvg)
                    demand(seen == due || seen == "older" || seen.empty(), "half a drawing");
            }};
}

using Free = void (*Operations::*)(int, char*);

template <class Get>
Operation textOperation(const char* name, int traits, Get get, Free free)
{
    return {name, traits, nothing, [=](Subject& s) { s.text = get(s); },
            [=](Subject& s) {
                const bool none = !s.text || !*s.text;
                const std::string seen = none ? "" : s.text;
                (s.api.*free)(s.type, s.text);
                char* const again = get(s);
                demand(again && *again, "there is no text afterwards");
                const std::string due = again;
                (s.api.*free)(s.type, again);
                demand(none || seen == due, "a text that is not whole");
            }};
}

Operation encodeOperation(const char* name, int imageType, int traits = Plain)
{
    return textOperation(
        name, traits, [=](Subject& s) { return s.api.PacketsBase64Encode(s.type, imageType); },
        &Operations::PacketsBase64EncodeFree);
}

// With lines of the log, which tell what was refused.
Operation logged(const char* name, Operation operation)
{
    const auto prepare = operation.prepare;
    const auto check = operation.check;
    operation.name = name;
    operation.prepare = [prepare](Subject& s) {
        prepare(s);
        Library::instance().enableLog = 1;
        s.api.GetTotalPacketsNumber(s.type); // whose lines make the files
    };
    operation.check = [check](Subject& s) {
        Library::instance().enableLog = 0;
        check(s);
    };
    return operation;
}

Operation clipped(Operation operation)
{
    operation.prepare = [](Subject& s) { s.api.SetSaveCenterImageClip(s.type, true, 5, 7); };
    return operation;
}

Operation decodeOperation(const char* name, int imageType)
{
    return {
        name, Plain,
        [=](Subject& s) {
            char* const text = s.api.PacketsBase64Encode(s.type, imageType);
            s.first = text;
            s.api.PacketsBase64EncodeFree(s.type, text);
            s.path = L"decoded";
            std::ofstream("decoded") << "older";
        },
        [=](Subject& s) { s.result = s.api.Base64Decode(s.type, imageType, s.first.c_str(), s.path.data()); },
        [=](Subject& s) {
            s.resultIsOneOf({0, -8});
            const std::string seen = fileContent("decoded");
            const int count = s.api.GetTotalDecodePacketsNumber(s.type);
            demand(s.api.Base64Decode(s.type, imageType, s.first.c_str(), s.path.data()) == 0,
                   "it cannot be decoded afterwards");
            if (imageType == ImageInk)
                demand(count == (s.result == 0 ? static_cast<int>(s.points.size()) : -8),
                       std::to_string(count) + " points were decoded");
            else
                demand(seen == (s.result == 0 ? fileContent("decoded") : "older"),
                       "the file is not what the result says");
        }};
}

// A call whose result is one of these, and which changes nothing that is looked at.
template <class Call>
Operation callOperation(const char* name, int traits, std::vector<int> results, Call call)
{
    return {name, traits, nothing, [=](Subject& s) { s.result = call(s); },
            [=](Subject& s) { s.resultIsOneOf(results); }};
}

// The call of one function with these arguments behind the device type.
template <class Result, class... Wanted, class... Given>
auto calling(Result (*Operations::*function)(int, Wanted...), Given... arguments)
{
    return [=](Subject& s) { return int{(s.api.*function)(s.type, arguments...)}; };
}

int place(Subject& s, QWidget* parent, int left, int top, int width, int height)
{
    return s.api.SetDisplayedFPImageAt(s.type, parent, 120, 90, left, top, width, height);
}

// A start that was refused memory somewhere. The loader tells it as a file or an entry point that it cannot
// have, the system as a thread.
void checkStart(Subject& s)
{
    const int failure = Library::instance().extensions().LastStartFailure(nullptr, 0);
    if (s.result) {
        demand(failure == StartOk, "a start that succeeded tells of a failure");
        return;
    }
    demand(failure == StartNoMemory || failure == StartDriverNotLoaded || failure == StartDriverIncomplete ||
               failure == StartNoThread,
           "the failed start's reason is " + std::to_string(failure));
    demand(!Library::instance().signWidget, "a pad that failed to open is still there");
    demand(s.startOnly(), "the pad cannot be opened afterwards");
}

Operation startOperation(const char* name, int traits)
{
    return {name, traits | StartsItself | MakesCanvas, nothing, [](Subject& s) { s.result = s.startOnly(); },
            checkStart};
}

std::vector<Operation> allOperations()
{
    const auto doneOrFailed = [](Subject& s) { s.resultIsOneOf({0, -8}); };
    const auto none = [](Subject& s) { s.points.clear(); };
    const auto svgText = [](Subject& s) { return s.api.GetSVGImageBase64Data(s.type); };
    std::vector<Operation> all = {
        // ---- life
        startOperation("InitialDevice", Plain),
        startOperation("FirstInitialDevice", FirstUse),
        {"UnInitialDevice", EndsItself, nothing, [](Subject& s) { s.result = s.api.UnInitialDevice(s.type); },
         [](Subject& s) { s.resultIsOneOf({0}); }},
        callOperation("SecondInitialDevice", Plain, {1}, [](Subject& s) { return int{s.startOnly()}; }),

        // ---- pen and keys
        penOperation("PenDown", false, one({0.3, 0.7}, PenDown)),
        penOperation("PenMove", true, one({0.7, 0.3}, PenMove)),
        {"FirstMoveOfAThread", Draws,
         [](Subject& s) {
             s.sign({sampleAt(*s.padCase.model, {0.3, 0.7}, PenDown)});
             s.samples = {sampleAt(*s.padCase.model, {0.7, 0.3}, PenMove)};
             s.otherThread = std::make_unique<DriverThread>();
             s.otherThread->prepare([&s] {
                 const ScrSimSample& move = s.samples.front();
                 s.pen(move.x, move.y, move.pressure, move.penStatus);
             });
         },
         [](Subject& s) { s.otherThread->run(); }, [](Subject& s) { s.expect(s.samples); }},
        penOperation("PenUp", true, one({0.7, 0.3}, PenUp)),
        penOperation("Stroke", false, [](const PadModel& m) { return wave(m, 20); }),
        keyOperation("ConfirmKey", ConfirmKeyDown),
        keyOperation("CancelKey", CancelKeyDown),
        callOperation("SetPenWidth", Plain, {0}, calling(&Operations::SetPenWidth, 7)),
        callOperation("SetPenColor", Plain, {0}, calling(&Operations::SetPenColor, 1, 2, 3)),
        callOperation("SetPenStyle", Plain, {0}, calling(&Operations::SetPenStyle, false)),
        callOperation("SignatureStatusCallback", Plain, {0},
                      calling(&Operations::SignatureStatusCallback, nullptr)),
        callOperation("RealTimeSignatureDataCallback", Plain, {0},
                      calling(&Operations::RealTimeSignatureDataCallback, nullptr)),
        callOperation("GetDeviceConfirmOrCancelKeyStatus", Plain, {-1},
                      calling(&Operations::GetDeviceConfirmOrCancelKeyStatus)),

        // ---- clearing
        {"Clear", Draws, nothing, [](Subject& s) { s.result = s.api.Clear(s.type); },
         [=](Subject& s) {
             s.resultIsOneOf({0, -8});
             if (s.api.GetTotalPacketsNumber(s.type) == -8)
                 none(s);
             demand(s.result != 0 || s.points.empty(), "points are left");
         }},
        {"FirstLogLine", Draws, [](Subject&) { Library::instance().enableLog = 1; },
         [](Subject& s) { s.result = s.api.Clear(s.type); },
         [=](Subject& s) {
             Library::instance().enableLog = 0;
             s.resultIsOneOf({0, -8});
             if (s.api.GetTotalPacketsNumber(s.type) == -8)
                 none(s);
         }},
        {"OpenLCD", Draws | NeedsScreen, nothing, [](Subject& s) { s.result = s.api.OpenLCD(s.type, false); },
         doneOrFailed},

        // ---- identity
        callOperation("GetHWPadID", Plain, {0}, calling(&Operations::GetHWPadID, buffer, 100)),
        callOperation("GetHWVersionID", Plain, {0}, calling(&Operations::GetHWVersionID, buffer, 100)),
        callOperation("GetHWPenID", NeedsScreen, {0}, calling(&Operations::GetHWPenID, buffer, 100)),
        callOperation("DisplayHWVersion", NeedsScreen, {0}, calling(&Operations::DisplayHWVersion, true)),
        callOperation("getDeviceInfo", Plain, {0}, calling(&Operations::getDeviceInfo, 6, buffer)),
        callOperation("GetAboutInfo", Plain, {0},
                      [](Subject& s) {
                          s.api.GetAboutInfo(s.type, buffer);
                          return 0;
                      }),

        // ---- points
        callOperation("GetTotalPacketsNumber", Plain, {12}, calling(&Operations::GetTotalPacketsNumber)),
        callOperation("getPackets", Plain, {0},
                      [](Subject& s) {
                          Packet packet{3, 0, 0, 0, 0};
                          return s.api.getPackets(s.type, &packet);
                      }),
        textOperation(
            "GetInkPointTime", Plain, [](Subject& s) { return s.api.GetInkPointTime(s.type, 2); },
            &Operations::FreeInkPointTime),

        // ---- files
        callOperation("SetSaveCenterImageClip", Plain, {0},
                      calling(&Operations::SetSaveCenterImageClip, true, 3, 3)),
        saveOperation("SaveBmp", ImageBmp, "saved.bmp", false, Plain),
        saveOperation("SaveJpeg", ImageJpeg, "saved.jpg", false, Plain),
        saveOperation("SavePng", ImagePng, "saved.png", false, Plain),
        saveOperation("SavePdf", ImagePdf, "saved.pdf", false, Plain),
        saveOperation("SaveSvg", ImageSvg, "saved.svg", false, Plain),
        saveOperation("SaveClippedPng", ImagePng, "saved.png", true, Plain),
        saveOperation("SaveClippedSvg", ImageSvg, "saved.svg", true, CopiesFirst),
        saveOperation("SavePngNamedJpg", ImagePng, "saved.jpg", false, Plain),
        saveOperation("FirstSaveBmp", ImageBmp, "saved.bmp", false, FirstUse),
        saveOperation("FirstSaveJpeg", ImageJpeg, "saved.jpg", false, FirstUse),
        saveOperation("FirstSavePng", ImagePng, "saved.png", false, FirstUse),
        saveOperation("FirstSavePdf", ImagePdf, "saved.pdf", false, FirstUse),
        saveOperation("FirstSaveSvg", ImageSvg, "saved.svg", false, FirstUse),

        // ---- texts
        encodeOperation("EncodeBmp", ImageBmp),
        encodeOperation("EncodeJpeg", ImageJpeg),
        encodeOperation("EncodePng", ImagePng),
        encodeOperation("EncodeInk", ImageInk),
        clipped(encodeOperation("EncodeClippedPng", ImagePng, CopiesFirst)),
        encodeOperation("FirstEncodeJpeg", ImageJpeg, FirstUse),
        textOperation(
            "EncodeExOpaquePng", Plain,
            [](Subject& s) { return s.api.PacketsBase64EncodeEx(s.type, ImagePng, false); },
            &Operations::PacketsBase64EncodeExFree),
        clipped(textOperation(
            "EncodeExClippedPng", CopiesFirst,
            [](Subject& s) { return s.api.PacketsBase64EncodeEx(s.type, ImagePng, false); },
            &Operations::PacketsBase64EncodeExFree)),
        textOperation("GetSVGImageBase64Data", Plain, svgText, &Operations::FreeSVGImageBase64Data),
        clipped(textOperation("GetClippedSVGImageBase64Data", CopiesFirst, svgText,
                              &Operations::FreeSVGImageBase64Data)),
        decodeOperation("DecodeBmp", ImageBmp),
        decodeOperation("DecodeJpeg", ImageJpeg),
        decodeOperation("DecodePng", ImagePng),
        decodeOperation("DecodeInk", ImageInk),
        {"FreeText", Plain, [](Subject& s) { s.text = s.api.PacketsBase64Encode(s.type, ImageBmp); },
         [](Subject& s) { s.api.PacketsBase64EncodeFree(s.type, s.text); }, nothing},

        // ---- the window
        // The host's own resize() is Qt's affair; what arrives at the pad's widget is the event.
        {"ResizeEvent", Draws | NeedsWidget | MakesCanvas,
         [](Subject& s) {
             s.findWidget();
             s.resizeEvent = std::make_unique<QResizeEvent>(s.signWidget->size(), QSize(160, 120));
         },
         [](Subject& s) { QCoreApplication::sendEvent(s.signWidget, s.resizeEvent.get()); }, nothing},

        // ---- the print
        {"Fingerprint", Draws | NeedsPrint, [](Subject& s) { s.preparePrint(10); }, sendPreparedPrint,
         nothing},
        {"FingerprintElsewhere", Draws | NeedsPrint,
         [](Subject& s) {
             demand(place(s, s.otherWindow.get(), 5, 5, 20, 20) == 0, "no place for the print");
             s.preparePrint(10);
         },
         sendPreparedPrint, nothing},
        callOperation("PlaceOnCanvas", NeedsPrint | NeedsWidget, {0, -1, -2},
                      [](Subject& s) { return place(s, s.parent.get(), 5, 5, 20, 20); }),
        callOperation("PlaceElsewhere", NeedsPrint, {0, -1, -2, -8},
                      [](Subject& s) { return place(s, s.otherWindow.get(), 5, 5, 20, 20); }),
        {"UnInitialDeviceWithPlacedPrint", EndsItself | NeedsPrint,
         [](Subject& s) {
             demand(place(s, s.otherWindow.get(), 5, 5, 20, 20) == 0, "no place for the print");
         },
         [](Subject& s) { s.result = s.api.UnInitialDevice(s.type); },
         [](Subject& s) { s.resultIsOneOf({0}); }},
        // Hidden before, since that is Qt's affair; then it goes as it does with a window that is deleted.
        {"WidgetGoesWithPlacedPrint", EndsItself | NeedsPrint | NeedsWidget,
         [](Subject& s) {
             demand(place(s, s.otherWindow.get(), 5, 5, 20, 20) == 0, "no place for the print");
             s.findWidget();
             s.signWidget->hide();
         },
         [](Subject& s) { delete s.signWidget; }, nothing},
        {"ClearWithPrint", Draws | NeedsPrint, [](Subject& s) { s.sendPrint(10); },
         [](Subject& s) { s.result = s.api.Clear(s.type); },
         [=](Subject& s) {
             if (s.api.GetTotalPacketsNumber(s.type) == -8)
                 none(s);
         }},
        {"MoveOverPrint", Draws | NeedsPrint,
         [](Subject& s) {
             s.sendPrint(10);
             s.sign({sampleAt(*s.padCase.model, {0.2, 0.2}, PenDown)});
             s.prepare({sampleAt(*s.padCase.model, {0.7, 0.7}, PenMove)});
         },
         [](Subject& s) { s.driverThread.run(); }, [](Subject& s) { s.expect(s.samples); }},
        {"SaveSvgWithPrint", NeedsPrint | Draws,
         [](Subject& s) {
             s.sendPrint(10);
             s.path = L"print.svg";
         },
         [](Subject& s) { s.result = s.save(ImageSvg, s.path); }, doneOrFailed},
    };
    Operation printText = textOperation(
        "GetFPImageBase64Data", NeedsPrint | Draws,
        [](Subject& s) { return s.api.GetFPImageBase64Data(s.type, ImagePng, false); },
        &Operations::FreeFPImageBase64Data);
    printText.prepare = [](Subject& s) {
        demand(place(s, s.otherWindow.get(), 5, 5, 20, 20) == 0, "no place for the print");
        s.sendPrint(10);
        giveTheMergeAMoment();
    };
    all.push_back(printText);

    // ---- the same with a log
    all.push_back(logged("LoggedConfirmKey", keyOperation("", ConfirmKeyDown)));
    all.push_back(logged("LoggedPenMove", penOperation("", true, one({0.7, 0.3}, PenMove))));
    all.push_back(
        logged("LoggedSaveClippedPng", saveOperation("", ImagePng, "saved.png", true, CopiesFirst)));
    all.push_back(logged("LoggedEncodeClippedPng", clipped(encodeOperation("", ImagePng, CopiesFirst))));
    all.push_back(
        logged("LoggedGetClippedSVGImageBase64Data",
               clipped(textOperation("", CopiesFirst, svgText, &Operations::FreeSVGImageBase64Data))));
    all.push_back(
        logged("LoggedFingerprint", {"", Draws | NeedsPrint | CopiesFirst,
                                     [](Subject& s) { s.preparePrint(10); }, sendPreparedPrint, nothing}));
    return all;
}

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> all = allOperations();
    return all;
}

// ---------------------------------------------------------------------------------------------- the child

// What parent and child share.
struct Shared
{
    Refusal refusal;
    char verdict[500] = "";
};

// Goes on signing, saves and closes the pad.
void useOn(Subject& s, bool canvasMayBeEmpty)
{
    s.sign(wave(*s.padCase.model, 4));
    s.samePoints();
    if (s.hasPrints()) {
        s.sendPrint(1000);
        giveTheMergeAMoment();
    }
    if (s.padCase.isWidget())
        processEvents();
    std::wstring path = L"afterwards.bmp";
    fs::remove("afterwards.bmp");
    s.api.SetSaveCenterImageClip(s.type, false, 0, 0);
    const int saved = s.save(ImageBmp, path);
    demand(saved == 0 || (canvasMayBeEmpty && saved == -8), "the signature cannot be saved afterwards");
    demand(saved != 0 || !loaded("afterwards.bmp").isNull(), "the picture saved afterwards is none");
    demand(s.api.UnInitialDevice(s.type) == 0, "UnInitialDevice afterwards");
}

void runOperation(Subject& s, const Operation& operation, Refusal* refusal, long which)
{
    s.start();
    if (operation.traits & StartsItself) {
        demand(s.api.UnInitialDevice(s.type) == 0, "UnInitialDevice");
        processEvents();
    }
    const auto setUp = [&] {
        s.findDriver();
        s.api.SignatureStatusCallback(s.type, [](int) { ++statusCalls; });
        s.api.RealTimeSignatureDataCallback(s.type, [](unsigned long, long) { ++realTimeCalls; });
        s.sign(wave(*s.padCase.model, 10));
        if (s.padCase.isWidget())
            processEvents();
    };
    if (!(operation.traits & StartsItself))
        setUp();
    operation.prepare(s);
    const bool drawsNot = !(operation.traits & (Draws | StartsItself | EndsItself | FirstUse));
    const std::string before = drawsNot ? s.canvas() : "";

    watchAllocations(refusal, which, isKnownPlace);
    operation.act(s);
    unwatchAllocations();

    operation.check(s);
    if (operation.traits & EndsItself) {
        demand(!Library::instance().signWidget, "the pad is still there");
        processEvents();
        demand(s.startOnly(), "the pad cannot be opened again");
        s.points.clear();
        setUp();
    } else if (operation.traits & StartsItself) {
        setUp();
    }
    s.samePoints();
    if (drawsNot)
        demand(s.canvas() == before || operation.name == std::string("SetSaveCenterImageClip"),
               "the canvas has changed");
    useOn(s, operation.traits & MakesCanvas);
}

[[noreturn]] void runInChild(const PadCase& padCase, const Operation& operation, Shared* shared, long which)
{
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    alarm(10); // the watchdog: a child that hangs is ended by its signal
    try {
        Subject s(padCase);
        runOperation(s, operation, &shared->refusal, which);
    } catch (const Failure& failure) {
        unwatchAllocations();
        std::strncpy(shared->verdict, failure.text.c_str(), sizeof shared->verdict - 1);
        _exit(1);
    } catch (const std::exception& exception) {
        unwatchAllocations();
        std::snprintf(shared->verdict, sizeof shared->verdict, "an exception came out: %s", exception.what());
        _exit(1);
    }
    _exit(0);
}

// ---------------------------------------------------------------------------------------------- the watcher

std::string readable(const std::string& place)
{
    static const std::regex symbol(R"(\((_Z\w+)\+)");
    std::string text;
    std::istringstream lines(place);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_search(line, match, symbol)) {
            int status = 0;
            char* const name = abi::__cxa_demangle(match[1].str().c_str(), nullptr, nullptr, &status);
            if (name)
                line.replace(static_cast<std::size_t>(match.position(1)),
                             static_cast<std::size_t>(match.length(1)), name);
            std::free(name);
        }
        text += "    " + line + "\n";
    }
    return text;
}

struct RefusalCase
{
    PadCase padCase;
    const Operation* operation;
    std::string name() const { return padCase.name() + operation->name; }
};

void PrintTo(const RefusalCase& one, std::ostream* out)
{
    *out << one.name();
}

bool isFullLength()
{
    return std::getenv("SCRIBERA_FULL_LENGTH") != nullptr;
}

std::vector<RefusalCase> refusalCases()
{
    std::vector<RefusalCase> cases;
    for (const char* model : {"K210", "K421B"}) {
        for (const Kind kind : {Kind::Windowless, Kind::Widget}) {
            const PadCase padCase{&padModel(model), kind};
            // One with a window and one without; the other two only differ in what these have both.
            const bool isWidget = kind == Kind::Widget;
            if (!isFullLength() && isWidget != padCase.model->hasFingerprint)
                continue;
            for (const Operation& operation : operations()) {
                if ((operation.traits & NeedsPrint) && !padCase.model->hasFingerprint)
                    continue;
                if ((operation.traits & NeedsWidget) && kind != Kind::Widget)
                    continue;
                cases.push_back({padCase, &operation});
            }
        }
    }
    return cases;
}

class RefusedAllocation : public testing::TestWithParam<RefusalCase>
{
protected:
    void SetUp() override
    {
        setLogging(false);
        installDriver(SCRIBERA_BARE_DRIVER);
        if (GetParam().padCase.isWidget())
            ensureApplication();
        void* const memory =
            mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        m_shared = static_cast<Shared*>(memory);
        if (GetParam().operation->traits & FirstUse)
            Library::instance();
        else
            warmUp();
    }

    // Loads what Qt loads once in a process, so that the children do not meet it.
    void warmUp()
    {
        Subject s(GetParam().padCase);
        ASSERT_TRUE(s.start());
        s.findDriver();
        s.sign(wave(*s.padCase.model, 4));
        for (const FileType& file : fileTypes) {
            std::wstring path = wide(std::string("warm.") + file.suffix);
            ASSERT_EQ(s.save(file.id, path), 0);
        }
        ASSERT_EQ(s.api.UnInitialDevice(s.type), 0);
        processEvents();
    }

    // Runs one child. The number of allocations that it made while they were counted.
    long refuse(long which)
    {
        *m_shared = Shared();
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0)
            runInChild(GetParam().padCase, *GetParam().operation, m_shared, which);
        int status = 0;
        waitpid(child, &status, 0);
        ++m_children;
        m_leftOut += m_shared->refusal.leftOut;
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
            return m_shared->refusal.count;
        const std::string place = readable(m_shared->refusal.place);
        std::string what = m_shared->verdict;
        if (WIFSIGNALED(status))
            what = WTERMSIG(status) == SIGALRM ? "it hangs"
                                               : std::string("it crashes: ") + strsignal(WTERMSIG(status));
        else if (what.empty())
            what = "it ended with " + std::to_string(WEXITSTATUS(status));
        ADD_FAILURE() << "allocation " << which << " refused: " << what << "\n" << place;
        return m_shared->refusal.count;
    }

    Shared* m_shared = nullptr;
    int m_children = 0;
    int m_leftOut = 0;
};

TEST_P(RefusedAllocation, LeavesAWorkingPad)
{
    if (const char* const only = std::getenv("SCRIBERA_REFUSE")) {
        refuse(std::atol(only));
        return;
    }
    const long all = refuse(0);
    ASSERT_FALSE(HasFailure()) << "it fails with all the memory that it wants";
    // Without it about a dozen, spread over the call.
    const long step = isFullLength() ? 1 : std::max(1L, std::min(all, 300L) / 12);
    const long oneByOne = GetParam().operation->traits & CopiesFirst ? 8 : 0;
    for (long which = 1; which <= std::min(all, 300L); which += which < oneByOne ? 1 : step)
        refuse(which);
    for (long which = 350; isFullLength() && which <= all; which += 50)
        refuse(which);
    // The last ones are the library's own: the text or the lines that the host gets.
    for (long which = std::max(1L, all - 2); which <= all; ++which)
        refuse(which);
    std::printf("%ld allocations, %d children, %d left out\n", all, m_children, m_leftOut);
}

INSTANTIATE_TEST_SUITE_P(, RefusedAllocation, testing::ValuesIn(refusalCases()),
                         [](const testing::TestParamInfo<RefusalCase>& info) { return info.param.name(); });

} // namespace
} // namespace scribera::test
