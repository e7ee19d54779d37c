// Random histories of a pad, compared byte for byte with the documented steps (reference_pad.h).
//
// Each history is a seed: it decides how the pad is started and everything that happens to it. At random
// moments and at the end everything that a host can get out of the library is compared. A failure names the
// seed and the step and prints the program to run again, with
//     SCRIBERA_HISTORY_SEED=SEED   this history only, telling its steps as it goes
// With SCRIBERA_FULL_LENGTH set 2,000 histories run instead of 50.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <random>
#include <regex>
#include <sstream>

#include <QScreen>

#include "reference_pad.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

std::mutex realTimeMutex;
std::vector<RealTimeCall> realTimeSeen; // guarded by it; written on the driver's thread

void receiveRealTime(unsigned long place, long pressureAndState)
{
    const std::lock_guard lock(realTimeMutex);
    realTimeSeen.emplace_back(place, pressureAndState);
}

// What a comparison found wrong; ends the history.
struct Difference
{
    std::string text;
};

template <class Seen, class Expected>
void mustEqual(const Seen& seen, const Expected& expected, const std::string& what)
{
    if (seen == expected)
        return;
    throw Difference{what + " is " + testing::PrintToString(seen) + ", expected " +
                     testing::PrintToString(expected)};
}

// Files and texts are too long to print.
void mustEqualBytes(const Text& seen, const Text& expected, const std::string& what)
{
    if (seen == expected)
        return;
    if (!seen || !expected)
        throw Difference{what + (seen ? " is there where none is due" : " is missing")};
    int first = 0;
    while (first < std::min(seen->size(), expected->size()) && seen->at(first) == expected->at(first))
        ++first;
    throw Difference{what + " has " + std::to_string(seen->size()) + " bytes, expected " +
                     std::to_string(expected->size()) + ", and differs from byte " + std::to_string(first) +
                     " on"};
}

std::string described(const QRect& place)
{
    std::ostringstream text;
    text << "(" << place.left() << ", " << place.top() << ", " << place.width() << ", " << place.height()
         << ")";
    return text.str();
}

// One pad, the reference beside it, and a host that does random things to both.
class History
{
public:
    History(const PadCase& padCase, unsigned seed, bool tell)
        : m_case(padCase), m_random(seed), m_tell(tell), m_pad(padCase)
    {
    }
    void run();
    const std::vector<std::string>& steps() const { return m_steps; }

private:
    // ---- chance
    int within(int least, int most)
    {
        return least + static_cast<int>(m_random() % (static_cast<unsigned>(most - least) + 1));
    }
    bool chance(int percent) { return within(0, 99) < percent; }
    template <class Value>
    Value oneOf(std::initializer_list<Value> values)
    {
        return values.begin()[within(0, static_cast<int>(values.size()) - 1)];
    }

    // ---- steps
    void start();
    void step();
    void say(const std::string& text);
    void pen();
    void strayPen();
    void key();
    void fingerprint();
    void place();
    void placeWidget(const QRect& rectangle);
    void clear();
    void lcd();
    void resize();
    void showParent();
    void clip();
    void penSetup();
    void keyStatus();
    void refusedCalls();
    void secondStart();

    void send(const std::vector<ScrSimSample>& samples);
    ScrSimSample randomSample(int status);
    int randomPressure();
    int randomMargin(int canvasSize);
    QRect randomPlace(int width, int height);
    int driverResult(const char* entryPoint);
    int mergesInThreadLog() const;

    // ---- comparisons
    void compareSome();
    void compareEverything();
    void comparePoints();
    void compareCallbacks();
    void compareStream();
    void compareCanvas();
    void compareScreen();
    void compareTexts();
    void compareFiles();
    void comparePrintTexts();
    void compareDecoded();
    void compareInfo();
    Text take(char* text, void (*giveBack)(int, char*));

    const Operations& api() { return m_pad.api(); }
    int type() const { return m_case.model->deviceType; }
    bool isWidget() const { return m_case.isWidget(); }
    bool hasPrints() const { return m_case.model->hasFingerprint; }

    const PadCase m_case;
    std::mt19937 m_random;
    const bool m_tell;
    Pad m_pad;
    std::unique_ptr<ReferencePad> m_reference;
    std::unique_ptr<StatusRecorder> m_statuses;
    std::size_t m_statusesBefore = 0;
    std::vector<std::unique_ptr<QWidget>> m_otherWindows;
    std::vector<std::string> m_steps;
    std::time_t m_began = 0;
    bool m_parentIsShown = true;
    bool m_printWidgetIsShown = false;
    int m_pictures = 0;
    double m_penX = 0.5; // where on the writing area the hand is
    double m_penY = 0.5;
};

void History::say(const std::string& text)
{
    m_steps.push_back(text);
    if (m_tell)
        std::cout << "  " << m_steps.size() << ": " << text << std::endl;
}

// ---------------------------------------------------------------------------------------------- start

void History::start()
{
    int maxPressure = m_case.model->maxPressure;
    m_pad.sim().open();
    if (m_case.model->name == std::string("K210")) {
        // Some pads of this family know half as many pressures.
        const auto [text, pressure] = oneOf<std::pair<const char*, int>>(
            {{"SCK210", 2048}, {"SCK210R1", 1024}, {"SCT470", 1024}, {"SCT12", 2048}});
        m_pad.sim().setText("SCRDAPI_GetDevicePartsVersion", text);
        maxPressure = pressure;
    }
    m_parentIsShown = !isWidget() || chance(75);
    StartOptions options;
    options.width = chance(8) ? within(1, 12) : within(60, 420);
    options.height = chance(8) ? within(1, 12) : within(40, 300);
    options.x = within(0, 60);
    options.y = within(0, 60);
    options.parentShown = m_parentIsShown;
    options.byWindowId = chance(30);
    say("start with " + std::to_string(options.width) + " x " + std::to_string(options.height) +
        ", pressure up to " + std::to_string(maxPressure) + (m_parentIsShown ? "" : ", window hidden"));
    mustEqual(m_pad.start(options), true, "InitialDevice");
    m_pad.sim().SetTransferTime(0);
    processEvents();
    m_reference = std::make_unique<ReferencePad>(m_case, maxPressure, options.width, options.height);
    m_statuses = std::make_unique<StatusRecorder>(m_pad);
    m_statusesBefore = m_statuses->statuses().size();
    const std::lock_guard lock(realTimeMutex);
    realTimeSeen.clear();
}

void History::run()
{
    m_began = std::time(nullptr);
    start();
    const int steps = within(25, 60);
    for (int i = 0; i < steps; ++i) {
        step();
        if (chance(25))
            compareSome();
    }
    say("compare everything at the end");
    compareEverything();
    mustEqual(m_pad.stop(), success, "UnInitialDevice");
}

void History::step()
{
    const int kind = within(0, 99);
    if (kind < 40)
        pen();
    else if (kind < 46)
        strayPen();
    else if (kind < 53)
        key();
    else if (kind < 61)
        hasPrints() ? fingerprint() : pen();
    else if (kind < 68)
        hasPrints() ? place() : penSetup();
    else if (kind < 70)
        clear();
    else if (kind < 72)
        m_case.model->hasScreen ? lcd() : keyStatus();
    else if (kind < 77)
        isWidget() ? resize() : clip();
    else if (kind < 84)
        clip();
    else if (kind < 93)
        penSetup();
    else if (kind < 95)
        keyStatus();
    else if (kind < 98)
        refusedCalls();
    else
        secondStart();
}

// ---------------------------------------------------------------------------------------------- the pen

int History::randomPressure()
{
    const int most = m_reference->maxPressure();
    switch (within(0, 9)) {
    case 0:
        return oneOf({0, 1, 2, most - 1, most, most + 1, most + 100, -1, -300, 40000, 65536 + 200});
    case 1:
        return within(0, most);
    case 2:
    case 3:
    case 4:
        return within(1, most / 20); // light: lines of a pixel or less
    default:
        return within(most / 20, most / 4);
    }
}

ScrSimSample History::randomSample(int status)
{
    const PadModel& model = *m_case.model;
    if (chance(4)) {
        return {oneOf({0, -1, 40000, 65535, 65536 + 3000, -2'000'000'000, 2'000'000'000}),
                oneOf({0, -1, 32768, 65535, 65536 + 3000, -2'000'000'000, 2'000'000'000}), randomPressure(),
                status};
    }
    const double reach = chance(10) ? 0.6 : 0.06;
    m_penX = std::clamp(m_penX + reach * (within(-1000, 1000) / 1000.0), -0.1, 1.1);
    m_penY = std::clamp(m_penY + reach * (within(-1000, 1000) / 1000.0), -0.1, 1.1);
    return {model.originX + static_cast<int>(m_penX * model.areaWidth),
            model.originY + static_cast<int>(m_penY * model.areaHeight), randomPressure(), status};
}

void History::send(const std::vector<ScrSimSample>& samples)
{
    for (const ScrSimSample& sample : samples) {
        m_pad.draw({sample});
        m_reference->sample(sample);
        // A key's action runs on a thread of the library; the next sample comes when the host was told.
        if (!m_statuses->waitFor(m_statusesBefore + m_reference->statusCalls().size()))
            throw Difference{"the status callback was not called"};
    }
}

void History::pen()
{
    std::vector<ScrSimSample> samples;
    if (!chance(8)) // else what went before goes on
        samples.push_back(randomSample(PenDown));
    const int moves = chance(15) ? 0 : within(1, 25);
    for (int i = 0; i < moves; ++i)
        samples.push_back(randomSample(PenMove));
    if (!chance(20))
        samples.push_back(randomSample(PenUp));
    say("pen: " + std::to_string(samples.size()) + " samples, " + std::to_string(moves) + " of them moves");
    send(samples);
}

void History::strayPen()
{
    std::vector<ScrSimSample> samples;
    for (int i = within(1, 4); i > 0; --i)
        samples.push_back(randomSample(oneOf<int>({PenMove, PenUp, PenDown, 5, 77, -1, INT_MAX, INT_MIN})));
    std::string text = "stray samples:";
    for (const ScrSimSample& sample : samples)
        text += " " + std::to_string(sample.penStatus);
    say(text);
    send(samples);
}

void History::key()
{
    const int status = chance(50) ? ConfirmKeyDown : CancelKeyDown;
    std::vector<ScrSimSample> samples = {randomSample(status)};
    if (chance(15))
        samples.push_back(randomSample(oneOf<int>({PenDown, PenMove, ConfirmKeyDown, CancelKeyDown})));
    if (!chance(15))
        samples.push_back(randomSample(PenUp));
    std::string text = "key:";
    for (const ScrSimSample& sample : samples)
        text += " " + std::to_string(sample.penStatus);
    say(text);
    send(samples);
}

void History::penSetup()
{
    switch (within(0, 2)) {
    case 0: {
        const int width = chance(20) ? oneOf({0, -1, 11, INT_MAX, INT_MIN}) : within(1, 10);
        say("pen width " + std::to_string(width));
        mustEqual(api().SetPenWidth(type(), width), m_reference->setPenWidth(width), "SetPenWidth");
        break;
    }
    case 1: {
        int red = within(0, 255);
        int green = within(0, 255);
        int blue = within(0, 255);
        if (chance(15))
            red = green = blue = 255; // points without ink
        else if (chance(25))
            red = green = blue = 0;
        else if (chance(4))
            green = oneOf({-1, 256, INT_MAX});
        say("pen colour " + std::to_string(red) + ", " + std::to_string(green) + ", " + std::to_string(blue));
        mustEqual(api().SetPenColor(type(), red, green, blue), m_reference->setPenColor(red, green, blue),
                  "SetPenColor");
        break;
    }
    default: {
        const bool withPressure = chance(60);
        const int result = driverResult("SCRDAPI_SetDevicePenStyle");
        say("pen style " + std::to_string(withPressure) + ", driver says " + std::to_string(result));
        mustEqual(api().SetPenStyle(type(), withPressure), m_reference->setPenStyle(withPressure, result),
                  "SetPenStyle");
    }
    }
}

int History::driverResult(const char* entryPoint)
{
    const int result = chance(80) ? 0 : oneOf({-8, -1, 3, 17});
    m_pad.sim().SetResult(entryPoint, result);
    return result;
}

// ---------------------------------------------------------------------------------------------- the host

void History::clear()
{
    const int result = driverResult("SCRDAPI_ClearDeviceContent");
    say("clear, driver says " + std::to_string(result));
    const int calls = m_pad.sim().CallCount("SCRDAPI_ClearDeviceContent");
    const int expectedCalls = calls + (m_reference->clearReachesDriver() ? 1 : 0);
    mustEqual(api().Clear(type()), m_reference->clear(result), "Clear");
    mustEqual(m_pad.sim().CallCount("SCRDAPI_ClearDeviceContent"), expectedCalls,
              "number of driver's clears");
}

void History::lcd()
{
    const bool on = chance(40);
    const int result = driverResult("SCRDAPI_OpenDeviceLCD");
    say("screen " + std::to_string(on) + ", driver says " + std::to_string(result));
    mustEqual(api().OpenLCD(type(), on), m_reference->openLcd(on, result), "OpenLCD");
}

void History::resize()
{
    if (!m_parentIsShown)
        return showParent();
    const QSize before = m_reference->canvas().size();
    const bool tiny = chance(8);
    const QSize size = tiny ? QSize(within(1, 9), within(1, 9)) : QSize(within(60, 450), within(40, 320));
    if (size == before)
        return;
    say("resize to " + std::to_string(size.width()) + " x " + std::to_string(size.height()));
    m_pad.signWidget()->resize(size);
    processEvents();
    m_reference->resize(size.width(), size.height());
}

void History::showParent()
{
    say("show the window");
    m_pad.parent()->show();
    processEvents();
    m_parentIsShown = true;
    // Qt delivers the resize that it kept back, of the size that the canvas has already.
    m_reference->resize(m_reference->canvas().width(), m_reference->canvas().height());
}

int History::randomMargin(int canvasSize)
{
    switch (within(0, 7)) {
    case 0:
    case 1:
        return 0;
    case 2:
        return oneOf({99998, 99999, 100000, 100001, INT_MAX - 1, INT_MAX});
    case 3:
        return std::max(0, 99999 - canvasSize); // without ink: the null rectangle
    case 4:
        return within(100, 99999);
    default:
        return within(1, 20);
    }
}

void History::clip()
{
    const bool on = chance(75);
    int marginX = randomMargin(m_reference->canvas().width());
    int marginY = randomMargin(m_reference->canvas().height());
    if (chance(10)) {
        marginX = 99999 - m_reference->canvas().width();
        marginY = 99999 - m_reference->canvas().height();
    } else if (chance(5)) {
        marginX = oneOf({-1, INT_MIN});
    }
    say("clip " + std::to_string(on) + ", " + std::to_string(marginX) + ", " + std::to_string(marginY));
    mustEqual(api().SetSaveCenterImageClip(type(), on, marginX, marginY),
              m_reference->setClip(on, marginX, marginY), "SetSaveCenterImageClip");
}

void History::keyStatus()
{
    if (chance(50)) {
        say("real-time callback");
        mustEqual(api().RealTimeSignatureDataCallback(type(), receiveRealTime), true,
                  "RealTimeSignatureDataCallback");
        m_reference->setRealTimeCallback();
        mustEqual(api().RealTimeSignatureDataCallback(type(), nullptr), false,
                  "RealTimeSignatureDataCallback(null)");
    }
    say("key status");
    mustEqual(api().GetDeviceConfirmOrCancelKeyStatus(type()), m_reference->takeKeyStatus(), "key status");
}

// Calls that must change nothing.
void History::refusedCalls()
{
    say("refused calls");
    const int otherType = otherModel(*m_case.model).deviceType;
    std::wstring path = L"refused.bmp";
    mustEqual(api().Clear(otherType), invalidParameters, "Clear of another type");
    mustEqual(api().UnInitialDevice(otherType), invalidParameters, "UnInitialDevice of another type");
    mustEqual(api().SetSaveCenterImageClip(otherType, true, 7, 7), invalidParameters, "clip of another type");
    for (const int imageType : {-1, 0, 4, 5, 6, 9})
        mustEqual(api().SaveDrawingImage(type(), imageType, path.data(), 1), invalidParameters,
                  "saving an unknown type");
    mustEqual(fs::exists("refused.bmp"), false, "a file of a refused call");
    for (const int imageType : {-1, 0, 4, 5, 7, 8})
        mustEqual(api().PacketsBase64Encode(type(), imageType) == nullptr, true, "encoding an unknown type");
    Packet packet{-1, 7, 7, 7, 7};
    mustEqual(api().getPackets(type(), &packet), -1, "getPackets(-1)");
    packet.index = std::max(0, m_reference->pointCount());
    mustEqual(api().getPackets(type(), &packet), -1, "getPackets(count)");
    mustEqual(packet.x == 7 && packet.y == 7 && packet.pressure == 7 && packet.status == 7, true,
              "an untouched packet");
    mustEqual(api().GetInkPointTime(type(), packet.index) == nullptr, true,
              "time of a point that is not there");
}

void History::secondStart()
{
    say("start once more");
    mustEqual(api().InitialDevice(type(), m_pad.parent(), 1, 2, 30, 40), true, "second InitialDevice");
    mustEqual(Library::instance().useSignObj != 0, !isWidget(), "g_bUseSignObj");
    processEvents();
}

// ---------------------------------------------------------------------------------------------- the print

// The display thread tells of a merge nowhere but in its log.
int History::mergesInThreadLog() const
{
    const std::string label = "[" + m_case.method("MergeSignCanvasAndFPCanvas") + "]:<";
    std::istringstream lines(fileContent(inThreadLogFile));
    int merges = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, label.size(), label) == 0 && line.find(">-leave !") != std::string::npos)
            ++merges;
    }
    return merges;
}

void History::fingerprint()
{
    Bytes grey;
    switch (within(0, 5)) {
    case 0:
        grey = evenPrint(static_cast<unsigned char>(within(0, 255)));
        break;
    case 1:
        for (int i = 0; i < printWidth * printHeight; ++i)
            grey.push_back(static_cast<unsigned char>(within(0, 255)));
        break;
    default:
        grey = ridges(static_cast<unsigned>(within(1, 1000)));
    }
    // The simulated reader fills up what is missing; the announced length means nothing to the library.
    int length = static_cast<int>(grey.size());
    if (chance(20)) {
        length = within(0, length);
        std::fill(grey.begin() + length, grey.end(), static_cast<unsigned char>(255));
    }
    const int score = oneOf({-1, 0, 1, 2, 10, 50, 100, INT_MAX});
    if (chance(5)) {
        say("fingerprint without a picture");
        m_pad.sim().SendFingerprint(nullptr, length, 1000);
        m_pad.sim().waitIdle();
        return;
    }
    const bool accepted = m_reference->takePrint(grey, score);
    say("fingerprint of score " + std::to_string(score) + (accepted ? ", accepted" : ", refused"));
    removeLogs();
    setLogging(true);
    m_pad.sim().SendFingerprint(grey.data(), length, score);
    m_pad.sim().waitIdle();
    const bool merged = !accepted || waitUntil([&] { return mergesInThreadLog() > 0; });
    setLogging(false);
    if (!merged)
        throw Difference{"no merge after the fingerprint"};
    if (accepted)
        m_reference->mergeAfterTransfer();
}

QRect History::randomPlace(int width, int height)
{
    switch (within(0, 7)) {
    case 0: // corners inside, sizes that are none
        return QRect(within(0, width), within(0, height), within(-width / 2, 1), within(-height / 2, 1));
    case 1: // anywhere
        return QRect(within(-20, width + 20), within(-20, height + 20), within(-20, width + 40),
                     within(-20, height + 40));
    case 2: // everything, or one more
        return QRect(within(0, 1), within(0, 1), width, height);
    default: {
        const int left = within(0, width - 1);
        const int top = within(0, height - 1);
        return QRect(left, top, within(1, width - left), within(1, height - top));
    }
    }
}

void History::place()
{
    if (isWidget())
        return placeWidget(chance(60)
                               ? randomPlace(m_reference->canvas().width(), m_reference->canvas().height())
                               : randomPlace(100, 30));
    const int width = chance(10) ? oneOf({0, 1, 2000}) : within(30, 400);
    const int height = chance(10) ? oneOf({0, 1, 2000}) : within(30, 300);
    const QRect rectangle = randomPlace(std::max(width, 1), std::max(height, 1));
    say("print off screen at " + described(rectangle) + " of " + std::to_string(width) + " x " +
        std::to_string(height));
    const int result =
        chance(50) ? api().SetDisplayedFPImageAt(type(), nullptr, width, height, rectangle.x(), rectangle.y(),
                                                 rectangle.width(), rectangle.height())
                   : api().SetDisplayedFPImageAtByWId(type(), 77, width, height, rectangle.x(), rectangle.y(),
                                                      rectangle.width(), rectangle.height());
    mustEqual(result, m_reference->placeOffScreen(width, height, rectangle), "SetDisplayedFPImageAt");
}

void History::placeWidget(const QRect& rectangle)
{
    const auto call = [&](QWidget* parent) {
        if (parent && chance(40))
            return api().SetDisplayedFPImageAtByWId(type(), parent->winId(), 5, 5, rectangle.x(),
                                                    rectangle.y(), rectangle.width(), rectangle.height());
        return api().SetDisplayedFPImageAt(type(), parent, 5, 5, rectangle.x(), rectangle.y(),
                                           rectangle.width(), rectangle.height());
    };
    const int kind = within(0, 9);
    if (kind == 0) {
        say("print in no window");
        mustEqual(call(nullptr), m_reference->placeOnWidget(PrintParent::Null, rectangle),
                  "SetDisplayedFPImageAt");
        mustEqual(api().SetDisplayedFPImageAtByWId(type(), 0xdeadbeef, 5, 5, 1, 1, 10, 10), noObject,
                  "SetDisplayedFPImageAtByWId of an unknown window");
    } else if (kind < 6) {
        say("print on the canvas at " + described(rectangle));
        mustEqual(call(m_pad.parent()), m_reference->placeOnWidget(PrintParent::Own, rectangle),
                  "SetDisplayedFPImageAt");
    } else {
        say("print in another window at " + described(rectangle));
        m_otherWindows.push_back(std::make_unique<QWidget>());
        QWidget* const parent = m_otherWindows.back().get();
        parent->resize(180, 90);
        parent->show();
        processEvents();
        const int result = call(parent);
        mustEqual(result, m_reference->placeOnWidget(PrintParent::Other, rectangle), "SetDisplayedFPImageAt");
        m_printWidgetIsShown = result == success;
        processEvents();
    }
}

// ---------------------------------------------------------------------------------------------- comparisons

void History::compareSome()
{
    say("compare");
    comparePoints();
    compareCallbacks();
    compareCanvas();
    switch (within(0, 5)) {
    case 0:
        return compareTexts();
    case 1:
        return compareFiles();
    case 2:
        return comparePrintTexts();
    case 3:
        return compareDecoded();
    case 4:
        return compareScreen();
    default:
        return compareInfo();
    }
}

void History::compareEverything()
{
    comparePoints();
    compareCallbacks();
    compareStream();
    compareTexts();
    compareFiles();
    comparePrintTexts();
    compareDecoded();
    compareInfo();
    compareCanvas();
    compareScreen();
}

void History::comparePoints()
{
    mustEqual(api().GetTotalPacketsNumber(type()), m_reference->pointCount(), "GetTotalPacketsNumber");
    const std::vector<Ink> seen = storedPoints(m_pad);
    const std::vector<Ink>& expected = m_reference->points();
    for (std::size_t i = 0; i < expected.size(); ++i)
        mustEqual(seen.at(i), expected[i], "point " + std::to_string(i));
}

void History::compareCallbacks()
{
    const std::vector<int> all = m_statuses->statuses();
    mustEqual(std::vector<int>(all.begin() + static_cast<std::ptrdiff_t>(m_statusesBefore), all.end()),
              m_reference->statusCalls(), "calls of the status callback");
    const std::lock_guard lock(realTimeMutex);
    mustEqual(realTimeSeen.size(), m_reference->realTimeCalls().size(), "number of real-time calls");
    for (std::size_t i = 0; i < realTimeSeen.size(); ++i)
        mustEqual(realTimeSeen[i], m_reference->realTimeCalls()[i], "real-time call " + std::to_string(i));
}

Text History::take(char* text, void (*giveBack)(int, char*))
{
    Text taken;
    if (text)
        taken = QByteArray(text);
    giveBack(type(), text);
    return taken;
}

// The times are the library's own; everything else is built from the reference.
void History::compareStream()
{
    const bool extended = chance(50);
    const Text seen =
        extended
            ? take(api().PacketsBase64EncodeEx(type(), ImageInk, chance(50)), api().PacketsBase64EncodeExFree)
            : take(api().PacketsBase64Encode(type(), ImageInk), api().PacketsBase64EncodeFree);
    const std::vector<Ink>& points = m_reference->points();
    mustEqual(seen.has_value(), !points.empty(), "existence of the ink stream");
    if (!seen)
        return;
    const std::vector<StreamRecord> times = recordsOf(QByteArray::fromBase64(*seen));
    mustEqual(times.size(), points.size(), "records of the ink stream");
    std::vector<StreamRecord> expected;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Ink& point = points[i];
        expected.push_back(
            {point.x, point.y, point.pressure, point.status, 0, times[i].tick, times[i].seconds});
        if (times[i].seconds < m_began || times[i].seconds > std::time(nullptr) ||
            (i > 0 && times[i].tick < times[i - 1].tick))
            throw Difference{"the time of point " + std::to_string(i) + " is none of this history"};
    }
    mustEqualBytes(seen, Text(streamOf(expected).toBase64()), "ink stream");

    const int index = within(0, static_cast<int>(points.size()) - 1);
    const StreamRecord& record = times[static_cast<std::size_t>(index)];
    const std::time_t seconds = record.seconds;
    const std::tm local = *std::localtime(&seconds);
    mustEqual(takeTime(m_pad, index),
              printed("%04d-%02d-%02d %02d:%02d:%02d.%03d", local.tm_year + 1900, local.tm_mon + 1,
                      local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                      static_cast<int>(record.tick % 1000)),
              "time of a point");
}

// The whole canvas, whatever is clipped.
void History::compareCanvas()
{
    const bool clips = m_reference->clips();
    const int marginX = m_reference->marginX();
    const int marginY = m_reference->marginY();
    mustEqual(api().SetSaveCenterImageClip(type(), false, marginX, marginY),
              m_reference->setClip(false, marginX, marginY), "SetSaveCenterImageClip");
    mustEqualBytes(take(api().PacketsBase64Encode(type(), ImageBmp), api().PacketsBase64EncodeFree),
                   m_reference->encode(ImageBmp), "canvas");
    mustEqual(api().SetSaveCenterImageClip(type(), clips, marginX, marginY),
              m_reference->setClip(clips, marginX, marginY), "SetSaveCenterImageClip");
}

// What a person sees.
void History::compareScreen()
{
    if (!isWidget() || !m_parentIsShown)
        return;
    const auto shows = [](QWidget* window, const QPoint& position, const QImage& expected) {
        const QImage screen =
            window->screen()
                ->grabWindow(window->winId(), position.x(), position.y(), expected.width(), expected.height())
                .toImage()
                .convertToFormat(QImage::Format_RGB32);
        return screen == expected.convertToFormat(QImage::Format_RGB32);
    };
    // A repaint that another thread asked for comes with the events.
    const QPoint position = m_pad.signWidget()->pos();
    if (!waitUntil([&] { return shows(m_pad.parent(), position, m_reference->canvas()); }))
        throw Difference{"the window does not show the canvas"};
    if (m_printWidgetIsShown && !waitUntil([&] {
            return shows(m_otherWindows.back().get(), QPoint(0, 0), m_reference->elsewhere());
        }))
        throw Difference{"the other window does not show the print"};
}

void History::compareTexts()
{
    compareStream();
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng}) {
        const std::string what = " " + std::to_string(imageType);
        mustEqualBytes(take(api().PacketsBase64Encode(type(), imageType), api().PacketsBase64EncodeFree),
                       m_reference->encode(imageType), "PacketsBase64Encode" + what);
        for (const bool transparent : {false, true}) {
            mustEqualBytes(take(api().PacketsBase64EncodeEx(type(), imageType, transparent),
                                api().PacketsBase64EncodeExFree),
                           m_reference->encodeEx(imageType, transparent),
                           "PacketsBase64EncodeEx" + what + (transparent ? " transparent" : " opaque"));
        }
    }
    mustEqualBytes(take(api().GetSVGImageBase64Data(type()), api().FreeSVGImageBase64Data),
                   m_reference->svgText(), "GetSVGImageBase64Data");
}

void History::compareFiles()
{
    fs::create_directory("reference");
    const auto compare = [&](int imageType, const std::string& suffix, int dpiLevel) {
        const std::string name = "picture" + std::to_string(m_pictures++) + "." + suffix;
        const SavedFile expected = m_reference->save(imageType, "reference/" + name, dpiLevel);
        const std::string what = "file of type " + std::to_string(imageType) + " named " + name;
        mustEqual(m_pad.save(imageType, name, dpiLevel), expected.result, what);
        mustEqual(fs::exists(name), expected.content.has_value(), "existence of the " + what);
        if (!expected.content)
            return;
        std::string seen = fileContent(name);
        std::string due = expected.content->toStdString();
        if (imageType == ImagePdf) {
            const std::regex date("/CreationDate[^\n]*\n");
            seen = std::regex_replace(seen, date, "");
            due = std::regex_replace(due, date, "");
        }
        mustEqualBytes(Text(QByteArray::fromStdString(seen)), Text(QByteArray::fromStdString(due)), what);
        fs::remove(name);
        fs::remove("reference/" + name);
    };
    const auto dpiLevel = [&] { return oneOf({0, 1, 7, -1}); };
    for (const FileType& file : fileTypes)
        compare(file.id, file.suffix, dpiLevel());
    const int imageType = oneOf<int>({ImageBmp, ImageJpeg, ImagePng});
    compare(imageType, oneOf({"bmp", "jpg", "png"}), dpiLevel());
}

void History::comparePrintTexts()
{
    if (!hasPrints())
        return;
    for (const int imageType : {-1, 1, 2, 3, 4, 6}) {
        for (const bool printOnly : {false, true}) {
            mustEqualBytes(
                take(api().GetFPImageBase64Data(type(), imageType, printOnly), api().FreeFPImageBase64Data),
                m_reference->printText(imageType, printOnly),
                "GetFPImageBase64Data " + std::to_string(imageType) + (printOnly ? " print only" : ""));
        }
    }
}

void History::compareDecoded()
{
    const std::vector<Ink>& points = m_reference->points();
    const Text stream = take(api().PacketsBase64Encode(type(), ImageInk), api().PacketsBase64EncodeFree);
    if (stream) {
        mustEqual(api().Base64Decode(type(), ImageInk, stream->constData(), nullptr), success,
                  "Base64Decode");
        mustEqual(api().GetTotalDecodePacketsNumber(type()), static_cast<int>(points.size()),
                  "decoded points");
        for (std::size_t i = 0; i < points.size(); ++i) {
            const int index = static_cast<int>(i);
            mustEqual(api().GetDecodePacketsData(type(), index, 1),
                      int{static_cast<std::int16_t>(points[i].x)}, "decoded x");
            mustEqual(api().GetDecodePacketsData(type(), index, 2), int{points[i].y}, "decoded y");
            mustEqual(api().GetDecodePacketsData(type(), index, 3), int{points[i].status}, "decoded status");
        }
    }
    for (const int imageType : {ImageBmp, ImageJpeg, ImagePng}) {
        const Text text = m_reference->encode(imageType);
        if (!text || text->isEmpty())
            continue;
        fs::remove("decoded");
        const char* const format = imageType == ImageJpeg ? "JPG" : imageType == ImagePng ? "PNG" : "BMP";
        const QImage image = QImage::fromData(QByteArray::fromBase64(*text), format);
        mustEqual(decode(m_pad, imageType, text->toStdString(), "decoded"), success,
                  "Base64Decode of a picture");
        image.save("decoded.reference", format);
        mustEqual(fileContent("decoded") == fileContent("decoded.reference"), true,
                  "equality of a decoded picture");
        mustEqual(api().GetTotalDecodePacketsNumber(type()), nothingThere, "points of a decoded picture");
    }
}

void History::compareInfo()
{
    for (const int index : {1, 2, 3, 4, 7}) {
        std::array<std::int32_t, 2> seen{};
        mustEqual(api().getDeviceInfo(type(), index, seen.data()), success, "getDeviceInfo");
        mustEqual(seen, m_reference->deviceInfo(index), "device information " + std::to_string(index));
    }
}

// ---------------------------------------------------------------------------------------------- the tests

std::string replay(const PadCase& padCase, unsigned seed)
{
    return "SCRIBERA_HISTORY_SEED=" + std::to_string(seed) + " '" + thisProgram() +
           "' --gtest_filter=RandomHistory.EqualsTheDocumentedSteps/" + padCase.name();
}

class RandomHistory : public testing::TestWithParam<PadCase>
{
};

TEST_P(RandomHistory, EqualsTheDocumentedSteps)
{
    const PadCase& padCase = GetParam();
    const std::vector<PadCase> cases = allCases();
    const auto ours = std::find_if(cases.begin(), cases.end(),
                                   [&](const PadCase& one) { return one.name() == padCase.name(); });
    const char* const asked = std::getenv("SCRIBERA_HISTORY_SEED");
    const int single = asked ? std::atoi(asked) : 0;
    const int first = single ? single : 1 + static_cast<int>(ours - cases.begin());
    const int last = single ? single : std::getenv("SCRIBERA_FULL_LENGTH") ? 2000 : 50;
    for (int number = first; number <= last; number += static_cast<int>(cases.size())) {
        const auto seed = static_cast<unsigned>(number);
        setLogging(false);
        installDriver();
        History history(padCase, seed, single != 0);
        try {
            history.run();
        } catch (const Difference& difference) {
            std::string steps;
            for (std::size_t step = 0; step < history.steps().size(); ++step)
                steps += "\n  " + std::to_string(step + 1) + ": " + history.steps()[step];
            FAIL() << "seed " << seed << ", step " << history.steps().size() << ": " << difference.text
                   << "\nreplay: " << replay(padCase, seed) << "\nsteps:" << steps;
        }
    }
}

SCRIBERA_INSTANTIATE_ALL(RandomHistory);

} // namespace
} // namespace scribera::test
