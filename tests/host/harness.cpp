#include "harness.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QEvent>

#include "model/padmodel.h"
#include "surroundings.h"

extern char** environ;

namespace scribera::test {

namespace fs = std::filesystem;

// ---------------------------------------------------------------------------------------------- pad models

const std::vector<PadModel>& padModels()
{
    static const std::vector<PadModel> models = [] {
        std::vector<PadModel> list;
        for (const CPadModel* row : AllPads()) {
            const std::string name = row->m_pszName;
            list.push_back({
                .name = name,
                .prefix = "SC" + name + "_",
                .deviceName = "SC" + name + "_DEVICE",
                .deviceType = row->m_nDeviceType,
                .widgetClass = "C" + name + "SignWidget",
                .windowlessClass = "C" + name + "SignObj",
                .modelText = "SC" + name,
                .handler = "Rx" + name + "SignPadRawData",
                .originX = row->m_nPadOriginX,
                .originY = row->m_nPadOriginY,
                .areaWidth = row->m_nAreaWidth,
                .areaHeight = row->m_nAreaHeight,
                .maxPressure = row->m_nInitialMaxPressure,
                .pressureByMember = row->m_nFixedPressureLimit == 0,
                .keyAtRelease = row->m_eKeyRule == EKeyRule::AtRelease,
                .hasScreen = row->m_bHasScreen,
                .hasFingerprint = row->m_bHasFingerprint,
            });
        }
        return list;
    }();
    return models;
}

const PadModel& padModel(const std::string& name)
{
    for (const PadModel& model : padModels()) {
        if (name == model.name)
            return model;
    }
    throw std::invalid_argument("no pad model " + name);
}

const PadModel& otherModel(const PadModel& model)
{
    const std::vector<PadModel>& models = padModels();
    const auto index = static_cast<std::size_t>(&model - models.data());
    return models[(index + 1) % models.size()];
}

std::string PadCase::method(const std::string& name) const
{
    return std::string(className()) + "::" + name + "()";
}

std::string PadCase::exported(const std::string& name) const
{
    return std::string(model->prefix) + name + "()";
}

std::string PadCase::name() const
{
    return std::string(model->name) + (isWidget() ? "Widget" : "Windowless");
}

void PrintTo(const PadCase& padCase, std::ostream* out)
{
    *out << padCase.name();
}

std::vector<PadCase> casesOf(Kind kind)
{
    std::vector<PadCase> cases;
    for (const PadModel& model : padModels())
        cases.push_back({&model, kind});
    return cases;
}

std::vector<PadCase> allCases()
{
    std::vector<PadCase> cases = casesOf(Kind::Windowless);
    const std::vector<PadCase> widgets = casesOf(Kind::Widget);
    cases.insert(cases.end(), widgets.begin(), widgets.end());
    return cases;
}

std::string caseName(const testing::TestParamInfo<PadCase>& info)
{
    return info.param.name();
}

// ---------------------------------------------------------------------------------------------- the library

bool belongsTo(Families families, const PadModel& model)
{
    switch (families) {
    case Families::WithScreen:
        return model.hasScreen;
    case Families::WithFingerprint:
        return model.hasFingerprint;
    case Families::All:
        break;
    }
    return true;
}

std::vector<std::string> operationNames(const PadModel& model)
{
    std::vector<std::string> names;
#define X(name, families, result, arguments)                                                                 \
    if (belongsTo(Families::families, model))                                                                \
        names.push_back(#name);
    SCRIBERA_OPERATIONS(X)
#undef X
    return names;
}

const std::vector<std::string>& globalNames()
{
    static const std::vector<std::string> names = {"g_bEnableLog",         "g_bUseSignObj", "g_cKeyBuf",
                                                   "g_cKeyBuf_InThread",   "g_cValueBuf",   "g_pSignWidget",
                                                   "g_cValueBuf_InThread", "g_wszKeyBuf",   "g_wszValueBuf"};
    return names;
}

namespace {

void* openLibrary(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        throw std::runtime_error(dlerror());
    return handle;
}

template <class T>
T& global(void* handle, const char* name)
{
    void* address = dlsym(handle, name);
    if (!address)
        throw std::runtime_error(std::string("no global ") + name);
    return *static_cast<T*>(address);
}

} // namespace

Library::Library(void* handle)
    : enableLog(global<unsigned char>(handle, "g_bEnableLog")),
      useSignObj(global<unsigned char>(handle, "g_bUseSignObj")),
      signWidget(global<void*>(handle, "g_pSignWidget")), m_handle(handle)
{
    for (const PadModel& model : padModels()) {
        Operations operations;
#define X(name, families, result, arguments)                                                                 \
    if (belongsTo(Families::families, model)) {                                                              \
        operations.name = reinterpret_cast<result(*) arguments>(symbol(std::string(model.prefix) + #name));  \
        if (!operations.name)                                                                                \
            throw std::runtime_error(std::string("no function ") + model.prefix + #name);                    \
    }
        SCRIBERA_OPERATIONS(X)
#undef X
        m_families.push_back(operations);
    }
}

Library& Library::instance()
{
    static Library library(openLibrary(SCRIBERA_SDK_LIBRARY));
    return library;
}

const Operations& Library::family(const PadModel& model) const
{
    return m_families.at(static_cast<std::size_t>(&model - padModels().data()));
}

void* Library::symbol(const std::string& name) const
{
    return dlsym(m_handle, name.c_str());
}

void setLogging(bool on, unsigned char value)
{
    std::atomic_ref(Library::instance().enableLog).store(on ? value : 0);
}

bool loggingIsOn()
{
    return std::atomic_ref(Library::instance().enableLog).load() != 0;
}

// ---------------------------------------------------------------------------------------------- the driver

const char* const driverFile = "./libscriberadrv.so";

void removeDriver()
{
    fs::remove_all(driverFile);
}

void installDriver()
{
    removeDriver();
    fs::create_symlink(SCRIBERA_DRIVER_LIBRARY, driverFile);
}

void installDriverWithout(const std::string& missing)
{
    const fs::path variant = fs::path(SCRIBERA_DRIVER_VARIANTS) / missing / "libscriberadrv.so";
    if (!fs::exists(variant))
        throw std::runtime_error("no driver variant " + variant.string());
    removeDriver();
    fs::create_symlink(variant, driverFile);
}

void installNonLibrary()
{
    removeDriver();
    std::ofstream(driverFile) << "This is not a library.\n";
}

void installDirectoryAsDriver()
{
    removeDriver();
    fs::create_directory(driverFile);
}

void Simulator::open()
{
    if (m_handle)
        return;
    m_handle = dlopen(driverFile, RTLD_NOW | RTLD_LOCAL);
    if (!m_handle)
        throw std::runtime_error(dlerror());
    if (const char* const missing = resolve(m_handle))
        throw std::runtime_error(std::string("no ") + missing);
}

void Simulator::close()
{
    if (m_handle)
        dlclose(m_handle);
    m_handle = nullptr;
}

void Simulator::queue(const std::vector<ScrSimSample>& samples)
{
    open();
    ASSERT_EQ(SendSamples(samples.data(), static_cast<int>(samples.size())), 0) << LastError();
}

void Simulator::send(const std::vector<ScrSimSample>& samples)
{
    queue(samples);
    waitIdle();
}

void Simulator::pressKey(int key)
{
    open();
    ASSERT_EQ(PressKey(key), 0) << LastError();
    waitIdle();
}

void Simulator::waitIdle()
{
    open();
    ASSERT_EQ(WaitIdle(60000), 0) << "the pad's samples were not taken in time";
}

std::vector<std::string> Simulator::callLog()
{
    open();
    std::string text(static_cast<std::size_t>(CallLog(nullptr, 0)) + 1, '\0');
    CallLog(text.data(), static_cast<int>(text.size()));
    std::istringstream words(text.c_str());
    return {std::istream_iterator<std::string>(words), {}};
}

void Simulator::setText(const std::string& entryPoint, const std::string& text, bool terminate)
{
    open();
    ASSERT_EQ(SetText(entryPoint.c_str(), text.data(), static_cast<int>(text.size()), terminate ? 1 : 0), 0)
        << LastError();
}

// ---------------------------------------------------------------------------------------------- samples

ScrSimSample sampleAt(const PadModel& model, const StrokePoint& point, int penStatus)
{
    return {model.originX + static_cast<int>(std::lround(point.x * (model.areaWidth - 1))),
            model.originY + static_cast<int>(std::lround(point.y * (model.areaHeight - 1))),
            static_cast<int>(std::lround(point.pressure * model.maxPressure)), penStatus};
}

std::vector<ScrSimSample> stroke(const PadModel& model, const std::vector<StrokePoint>& points)
{
    std::vector<ScrSimSample> samples;
    for (const StrokePoint& point : points)
        samples.push_back(sampleAt(model, point, samples.empty() ? PenDown : PenMove));
    if (!points.empty())
        samples.push_back(sampleAt(model, points.back(), PenUp));
    return samples;
}

std::vector<ScrSimSample> wave(const PadModel& model, int moves)
{
    std::vector<StrokePoint> points;
    for (int i = 0; i <= moves; ++i) {
        const double part = static_cast<double>(i) / std::max(moves, 1);
        points.push_back(
            {0.1 + 0.8 * part, 0.5 + 0.3 * std::sin(part * 12.0), 0.1 + 0.1 * std::cos(part * 9.0)});
    }
    return stroke(model, points);
}

void writeRecording(const PadModel& model, const std::string& path, int samples)
{
    std::ofstream out(path);
    out << "# scribera recording 1\n"
        << "model: " << model.modelText << "\n"
        << "area: " << model.originX << " " << model.originY << " " << model.areaWidth << " "
        << model.areaHeight << "\n"
        << "max-pressure: " << model.maxPressure << "\n";
    int written = 0;
    while (written < samples) {
        for (const ScrSimSample& sample : wave(model, 60)) {
            out << written * 5 << " " << sample.x << " " << sample.y << " " << sample.pressure << " "
                << sample.penStatus << "\n";
            ++written;
        }
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

// ---------------------------------------------------------------------------------------------- log files

const char* const mainLogFile = "/tmp/scriberasdk.log";
const char* const inThreadLogFile = "/tmp/scriberasdk_inthread.log";
const char* const svgScratchFile = "/tmp/Scrsign.svg";

void PrintTo(const LogLine& line, std::ostream* out)
{
    *out << "[" << line.label << "]:" << line.message;
}

namespace {

std::optional<LogLine> parseLine(const std::string& line)
{
    const std::string tail = ", ";
    const std::size_t labelEnd = line.find("]:");
    if (line.empty() || line.front() != '[' || labelEnd == std::string::npos || line.size() < labelEnd + 4 ||
        line.compare(line.size() - tail.size(), tail.size(), tail) != 0)
        return std::nullopt;

    LogLine parsed;
    parsed.label = line.substr(1, labelEnd - 1);
    parsed.message = line.substr(labelEnd + 2, line.size() - tail.size() - labelEnd - 2);
    parsed.text = parsed.message;
    const std::size_t tickEnd = parsed.message.find('>');
    if (parsed.message.size() > 1 && parsed.message.front() == '<' && tickEnd != std::string::npos &&
        tickEnd > 1 &&
        std::all_of(parsed.message.begin() + 1, parsed.message.begin() + static_cast<std::ptrdiff_t>(tickEnd),
                    [](char c) { return c >= '0' && c <= '9'; })) {
        parsed.hasTick = true;
        parsed.tick = std::stoll(parsed.message.substr(1, tickEnd - 1));
        if (parsed.message.compare(tickEnd + 1, 1, "-") == 0)
            parsed.text = parsed.message.substr(tickEnd + 2);
    }
    return parsed;
}

} // namespace

std::vector<LogLine> readLog(const std::string& path)
{
    std::vector<LogLine> lines;
    const std::string content = fileContent(path);
    std::size_t begin = 0;
    while (begin < content.size()) {
        const std::size_t end = content.find('\n', begin);
        if (end == std::string::npos) {
            ADD_FAILURE() << path << ": last line has no end: " << content.substr(begin);
            break;
        }
        const std::string line = content.substr(begin, end - begin);
        if (const std::optional<LogLine> parsed = parseLine(line))
            lines.push_back(*parsed);
        else
            ADD_FAILURE() << path << ": malformed line: " << line;
        begin = end + 1;
    }
    return lines;
}

std::vector<LogLine> mainLog()
{
    return readLog(mainLogFile);
}

std::vector<LogLine> inThreadLog()
{
    return readLog(inThreadLogFile);
}

void removeLogs()
{
    fs::remove(mainLogFile);
    fs::remove(inThreadLogFile);
}

std::vector<LogLine> withLabel(const std::vector<LogLine>& lines, const std::string& label)
{
    std::vector<LogLine> found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [&](const LogLine& line) { return line.label == label; });
    return found;
}

std::vector<std::string> textsOf(const std::vector<LogLine>& lines, const std::string& label)
{
    std::vector<std::string> texts;
    for (const LogLine& line : withLabel(lines, label))
        texts.push_back(line.text);
    return texts;
}

std::vector<std::string> labelsOf(const std::vector<LogLine>& lines)
{
    std::vector<std::string> labels;
    for (const LogLine& line : lines)
        labels.push_back(line.label);
    return labels;
}

std::string hex(const void* pointer)
{
    char text[32];
    std::snprintf(text, sizeof text, "%lx", reinterpret_cast<unsigned long>(pointer));
    return text;
}

// ---------------------------------------------------------------------------------------------- processes

namespace {

// Never destroyed by the end of the process: the window system's plugin is gone by then.
QApplication* application = nullptr;

std::vector<std::pair<std::string, ChildProgram::Main>>& childPrograms()
{
    static std::vector<std::pair<std::string, ChildProgram::Main>> programs;
    return programs;
}

} // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return condition();
        processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    static int argc = 1;
    static char name[] = "host_tests";
    static char* argv[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    application = new QApplication(argc, argv);
    application->setQuitOnLastWindowClosed(false);
}

void destroyApplication()
{
    delete application;
    application = nullptr;
}

void processEvents()
{
    if (!application)
        return;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

ProcessState ProcessState::now()
{
    ProcessState state;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/task"))
        state.threads.insert(entry.path().filename());
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the descriptor of this very listing
        const fs::path target = fs::read_symlink(entry.path(), gone);
        if (!gone && target.string().find("/proc/") != 0)
            state.files.push_back(target.string());
    }
    std::sort(state.files.begin(), state.files.end());
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos)
            state.mappedFiles.insert(line.substr(path));
    }
    return state;
}

std::set<std::string> idleThreads()
{
    pid_t first = 0;
    std::thread([&first] { first = gettid(); }).join();
    std::set<std::string> threads = ProcessState::now().threads;
    threads.erase(std::to_string(first)); // joined, but perhaps not yet out of the list
    return threads;
}

bool threadsAre(const std::set<std::string>& threads)
{
    return waitUntil([&] { return ProcessState::now().threads == threads; });
}

bool ProcessState::maps(const std::string& fileName) const
{
    return std::any_of(mappedFiles.begin(), mappedFiles.end(),
                       [&](const std::string& path) { return fs::path(path).filename() == fileName; });
}

ChildProgram::ChildProgram(const char* name, Main main)
{
    childPrograms().emplace_back(name, main);
}

int runChildProgram(const std::vector<std::string>& arguments)
{
    for (const auto& [name, main] : childPrograms()) {
        if (!arguments.empty() && name == arguments.front())
            return main({arguments.begin() + 1, arguments.end()});
    }
    std::fprintf(stderr, "no such child program\n");
    return 125;
}

ChildResult runChild(const std::string& name, const std::vector<std::string>& arguments,
                     std::chrono::milliseconds limit)
{
    std::vector<std::string> words = {"/proc/self/exe", "--child", name};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    // A process that ends with its pad open leaves memory behind by intent, and the leak checker's stop of
    // all threads does not get along with threads that are still busy.
    std::vector<std::string> variables;
    std::string asanOptions = "ASAN_OPTIONS=detect_leaks=0";
    for (char** variable = environ; *variable; ++variable) {
        if (std::strncmp(*variable, "ASAN_OPTIONS=", 13) == 0)
            asanOptions = std::string(*variable) + ":detect_leaks=0";
        else
            variables.emplace_back(*variable);
    }
    variables.push_back(asanOptions);
    std::vector<char*> envp;
    for (std::string& variable : variables)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    const std::string outputFile = "child-output.txt";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = -1;
    const int failure = posix_spawn(&child, "/proc/self/exe", &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error(std::string("cannot start a child: ") + std::strerror(failure));

    ChildResult result;
    const auto start = std::chrono::steady_clock::now();
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() - start > limit) {
            result.timedOut = true;
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    result.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    result.exited = WIFEXITED(status);
    if (result.exited)
        result.exitCode = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    result.output = fileContent(outputFile);
    return result;
}

void PrintTo(const ChildResult& result, std::ostream* out)
{
    if (result.timedOut)
        *out << "killed after " << result.duration.count() << " ms";
    else if (result.exited)
        *out << "exit code " << result.exitCode;
    else
        *out << "signal " << result.signal;
    *out << "; output:\n" << result.output;
}

testing::AssertionResult endedWell(const ChildResult& result)
{
    if (!result.timedOut && result.exited && result.exitCode == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(result);
}

std::string sourceDirectory()
{
    return SCRIBERA_SOURCE_DIR;
}

std::string libraryFile()
{
    return SCRIBERA_SDK_LIBRARY;
}

std::string fileContent(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::wstring wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

// ---------------------------------------------------------------------------------------------- a pad in use

Pad::Pad(const PadCase& padCase) : m_case(padCase), m_api(Library::instance().family(*padCase.model))
{
    if (padCase.isWidget())
        ensureApplication();
}

Pad::~Pad()
{
    if (m_started && Library::instance().signWidget)
        stop();
}

QWidget& Pad::makeParent(bool shown)
{
    if (!m_parent) {
        m_parent = std::make_unique<QWidget>();
        m_parent->resize(800, 600);
        if (shown)
            m_parent->show();
    }
    return *m_parent;
}

bool Pad::start(const StartOptions& options)
{
    QWidget* parent = m_case.isWidget() ? &makeParent(options.parentShown) : nullptr;
    if (options.byWindowId) {
        const WindowId id = parent ? parent->winId() : 0;
        m_started = m_api.InitialDeviceByWId(type(), id, options.x, options.y, options.width, options.height);
    } else {
        m_started = m_api.InitialDevice(type(), parent, options.x, options.y, options.width, options.height);
    }
    if (m_started)
        m_sim.open();
    return m_started;
}

int Pad::stopKeepingParent()
{
    const int result = m_api.UnInitialDevice(type());
    m_started = false;
    processEvents();
    return result;
}

int Pad::stop()
{
    const int result = stopKeepingParent();
    closeParent();
    m_sim.close();
    return result;
}

void Pad::closeParent()
{
    m_parent.reset();
    processEvents();
}

QWidget* Pad::signWidget()
{
    if (!m_parent)
        return nullptr;
    for (QWidget* child : m_parent->findChildren<QWidget*>()) {
        if (std::strcmp(child->metaObject()->className(), m_case.model->widgetClass.c_str()) == 0)
            return child;
    }
    return nullptr;
}

int Pad::save(int imageType, const std::string& path, int dpiLevel)
{
    std::wstring widePath = wide(path);
    return m_api.SaveDrawingImage(type(), imageType, widePath.data(), dpiLevel);
}

QImage Pad::canvas()
{
    const std::string path = "harness-canvas.bmp";
    fs::remove(path);
    if (save(ImageBmp, path) != 0)
        return {};
    return QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_ARGB32);
}

void PadTest::SetUp()
{
    setLogging(false);
    installDriver();
    m_pad = std::make_unique<Pad>(GetParam());
}

void PadTest::TearDown()
{
    setLogging(false);
    m_pad.reset();
    if (!padCase().isWidget()) {
        EXPECT_EQ(QCoreApplication::instance(), nullptr) << "a windowless test ran beside an application";
    }
}

} // namespace scribera::test
