#include "padsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int patience = 60'000; // ms; a test that runs into it fails
constexpr int columns = 100;

// Waits for a condition that nobody tells of.
template <typename Condition>
bool becomes(Condition condition)
{
    for (int waited = 0; !condition(); waited += 5) {
        if (waited > patience)
            return false;
        usleep(5000);
    }
    return true;
}

// Bytes as umockdev has them in its files.
QByteArray hex(const QByteArray& bytes, int size)
{
    return bytes.leftJustified(size, '\0', true).toHex().toUpper();
}

QByteArray bits(const std::vector<int>& codes, int size)
{
    QByteArray bytes(size, '\0');
    for (const int code : codes)
        bytes[code / 8] = static_cast<char>(bytes[code / 8] | 1 << code % 8);
    return bytes;
}

QByteArray numbers(const std::vector<int>& values)
{
    return {reinterpret_cast<const char*>(values.data()), static_cast<int>(values.size() * sizeof(int))};
}

// What the device answers to each question that libevdev asks, of the size in which it asks.
QByteArray answersOf(const MockedDevice& device)
{
    constexpr int textSize = 255;
    constexpr int buttonSize = 96;
    constexpr int size = 8;
    QByteArray text = "@DEV /dev/input/event5\nEVIOCGVERSION 0 01000100\nEVIOCGID 0 0300091201000100\n";
    const auto line = [&text](const QByteArray& question, int count, const QByteArray& answer) {
        text += question + ' ' + QByteArray::number(count) + ' ' + answer + '\n';
    };
    line("EVIOCGNAME", device.name.size() + 1, hex(device.name, textSize));
    line("EVIOCGPHYS", 1, hex({}, textSize));
    line("EVIOCGUNIQ", 1, hex({}, textSize));
    line("EVIOCGPROP", size, hex({}, size));
    const QList<int> axes = device.axes.keys();
    const std::vector<int> axisCodes(axes.begin(), axes.end());
    for (const int type : {0, 1, 2, 3, 4, 5, 0x11, 0x12, 0x14, 0x15, 0x17}) {
        const int count = type == EV_KEY ? buttonSize : type == EV_FF ? 16 : size;
        const QByteArray answer = type == 0        ? bits({EV_SYN, EV_KEY, EV_ABS}, count)
                                  : type == EV_KEY ? bits(device.buttons, count)
                                  : type == EV_ABS ? bits(axisCodes, count)
                                                   : QByteArray();
        line("EVIOCGBIT(" + QByteArray::number(type) + ')', count, hex(answer, count));
    }
    line("EVIOCGKEY", buttonSize, hex({}, buttonSize));
    for (const char* question : {"EVIOCGLED", "EVIOCGSW", "EVIOCGSND"})
        line(question, size, hex({}, size));
    for (auto axis = device.axes.begin(); axis != device.axes.end(); ++axis)
        line("EVIOCGABS(" + QByteArray::number(axis.key()) + ')', 0,
             hex(numbers({0, axis->minimum, axis->maximum, 0, 0, axis->resolution}), 24));
    return text;
}

} // namespace

MockedDevice penTablet()
{
    return {"Mocked tablet",
            {BTN_TOOL_PEN, BTN_TOUCH, BTN_STYLUS, BTN_STYLUS2},
            {{ABS_X, {0, 20000, 100}}, {ABS_Y, {0, 10000, 100}}, {ABS_PRESSURE, {0, 1023, 0}}}};
}

std::vector<RecordedPoint> samplesIn(const QByteArray& recording)
{
    std::vector<RecordedPoint> samples;
    for (const QByteArray& line : recording.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 5 && !line.startsWith("area"))
            samples.push_back({words[0].toLongLong(), words[1].toInt(), words[2].toInt(), words[3].toInt(),
                               words[4].toInt()});
    }
    return samples;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QString padRecording(const char* name)
{
    return QStringLiteral(SCRIBERA_RECORDINGS "/") + name;
}

PadToolTest::PadToolTest()
    : m_directory(QStringLiteral(SCRIBERA_TEST_WORK_DIR "/pad.XXXXXX")),
      m_temporary(QStringLiteral(SCRIBERA_TEST_WORK_DIR "/tmp.XXXXXX"))
{
    EXPECT_TRUE(m_directory.isValid() && m_temporary.isValid());
}

PadToolTest::~PadToolTest()
{
    const QStringList left =
        QDir(m_temporary.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    EXPECT_TRUE(left.isEmpty()) << "left behind: " << left.join(' ').toStdString();
}

void PadToolTest::write(const QString& name, const QByteArray& content) const
{
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QStringList PadToolTest::beside(const MockedDevice& device) const
{
    write("device.umockdev",
          "P: /devices/input/input5/event5\nN: input/event5\nE: DEVNAME=/dev/input/event5\n"
          "E: MAJOR=13\nE: MINOR=69\nE: SUBSYSTEM=input\n\nP: /devices/input/input5\n"
          "E: SUBSYSTEM=input\nA: name=" +
              device.name + '\n');
    write("device.ioctl", answersOf(device));
    return {"umockdev-run",
            "--device",
            path("device.umockdev"),
            "--ioctl",
            "/dev/input/event5=" + path("device.ioctl"),
            "--"};
}

QStringList PadToolTest::environment(const Variables& variables) const
{
    Variables all = {{"LC_ALL", "C.UTF-8"},
                     {"PATH", qEnvironmentVariable("PATH")},
                     {"TMPDIR", m_temporary.path()},
                     {"XDG_RUNTIME_DIR", path(".")}};
    for (const char* name :
         {"LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"})
        if (qEnvironmentVariableIsSet(name))
            all.insert(name, qEnvironmentVariable(name));
    // For the leak checker: fontconfig keeps what it parsed and the offscreen platform its screen, and both
    // lose their own pointers to it. The stacks have to reach far enough to be told apart. Mocked devices are
    // loaded before its runtime.
    write("suppressions", "leak:libfontconfig.so\nleak:QGuiApplicationPrivate::createPlatformIntegration\n");
    all["LSAN_OPTIONS"] += ":print_suppressions=0:suppressions=" + path("suppressions");
    all["ASAN_OPTIONS"] += ":fast_unwind_on_malloc=0:verify_asan_link_order=0";
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        all.insert(variable.key(), variable.value());
    QStringList lines;
    for (auto variable = all.begin(); variable != all.end(); ++variable)
        lines += variable.key() + '=' + variable.value();
    return lines;
}

PadOutcome PadToolTest::run(const QStringList& arguments, const Variables& variables,
                            const QStringList& behind) const
{
    QProcessEnvironment environment;
    for (const QString& line : this->environment(variables))
        environment.insert(line.section('=', 0, 0), line.section('=', 1));
    QStringList words = behind + QStringList{QStringLiteral(SCRIBERA_PAD_TOOL)} + arguments;
    const QString program = words.takeFirst();
    QProcess tool;
    tool.setWorkingDirectory(path("."));
    tool.setProcessEnvironment(environment);
    tool.setStandardInputFile(QProcess::nullDevice());
    tool.start(program, words);
    PadOutcome outcome;
    if (tool.waitForFinished(patience) && tool.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = tool.exitCode();
    outcome.output = tool.readAllStandardOutput();
    outcome.error = tool.readAllStandardError();
    return outcome;
}

Variables PadToolTest::playing(const char* recording, const char* key)
{
    Variables variables = {{"SCRIBERA_SIM_RATE", "max"}, {"SCRIBERA_SIM_KEY", key}};
    if (*recording)
        variables["SCRIBERA_SIM_RECORDING"] = padRecording(recording);
    return variables;
}

RunningPad::RunningPad(const PadToolTest& test, On on, const QStringList& arguments,
                       const Variables& variables)
{
    std::vector<QByteArray> words = {QByteArray(SCRIBERA_PAD_TOOL)};
    for (const QString& argument : arguments)
        words.push_back(argument.toLocal8Bit());
    std::vector<QByteArray> lines;
    for (const QString& line : test.environment(variables))
        lines.push_back(line.toLocal8Bit());
    const auto pointersTo = [](std::vector<QByteArray>& texts) {
        std::vector<char*> pointers;
        for (QByteArray& text : texts)
            pointers.push_back(text.data());
        pointers.push_back(nullptr);
        return pointers;
    };
    std::vector<char*> argv = pointersTo(words);
    std::vector<char*> envp = pointersTo(lines);
    const QByteArray folder = test.path(".").toLocal8Bit();

    std::array<int, 2> pipe{-1, -1};
    if (on == On::Terminal) {
        const winsize size = {25, columns, 0, 0};
        EXPECT_EQ(openpty(&m_stream, &m_terminal, nullptr, nullptr, &size), 0);
        fcntl(m_stream, F_SETFD, FD_CLOEXEC);
        fcntl(m_terminal, F_SETFD, FD_CLOEXEC);
    } else {
        EXPECT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
        m_stream = pipe[0];
    }
    m_process = fork();
    if (m_process == 0) {
        const int output = on == On::Terminal ? m_terminal : pipe[1];
        setsid();
        if (on == On::Terminal)
            ioctl(m_terminal, TIOCSCTTY, 0);
        dup2(on == On::Terminal ? m_terminal : open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        if (chdir(folder.constData()) == 0)
            execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    if (pipe[1] >= 0)
        close(pipe[1]);
}

RunningPad::~RunningPad()
{
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    for (const int descriptor : {m_stream, m_terminal})
        if (descriptor >= 0)
            close(descriptor);
}

bool RunningPad::readMore(int wait)
{
    pollfd polled = {m_stream, POLLIN, 0};
    if (poll(&polled, 1, wait) <= 0)
        return false;
    std::array<char, 4096> block;
    const ssize_t count = read(m_stream, block.data(), block.size());
    if (count > 0)
        m_printed.append(block.data(), static_cast<int>(count));
    return count > 0;
}

testing::AssertionResult RunningPad::prints(const QByteArray& text)
{
    QElapsedTimer clock;
    clock.start();
    while (!m_printed.contains(text))
        if (clock.hasExpired(patience) || !readMore(patience))
            return testing::AssertionFailure() << "printed only: " << m_printed.right(2000).toStdString();
    return testing::AssertionSuccess();
}

void RunningPad::type(const QByteArray& keys) const
{
    EXPECT_EQ(::write(m_stream, keys.constData(), static_cast<std::size_t>(keys.size())), keys.size());
}

void RunningPad::send(int signal) const
{
    kill(m_process, signal);
}

testing::AssertionResult RunningPad::stops() const
{
    int status = 0;
    const pid_t stopped = waitpid(m_process, &status, WUNTRACED);
    return stopped == m_process && WIFSTOPPED(status) ? testing::AssertionSuccess()
                                                      : testing::AssertionFailure() << status;
}

bool RunningPad::takesSingleKeys() const
{
    termios state;
    return tcgetattr(m_terminal, &state) == 0 && (state.c_lflag & ICANON) == 0 && (state.c_lflag & ECHO) == 0;
}

testing::AssertionResult RunningPad::comesToTakeSingleKeys(bool wanted) const
{
    return becomes([&] { return takesSingleKeys() == wanted; }) ? testing::AssertionSuccess()
                                                                : testing::AssertionFailure();
}

void RunningPad::narrow(int width) const
{
    const winsize size = {25, static_cast<unsigned short>(width), 0, 0};
    EXPECT_EQ(ioctl(m_stream, TIOCSWINSZ, &size), 0);
}

PadOutcome RunningPad::end()
{
    int status = 0;
    PadOutcome outcome;
    // What is printed has to be read, or the tool might wait for room.
    const bool ended = becomes([&] {
        while (readMore(0)) {
        }
        return waitpid(m_process, &status, WNOHANG) == m_process;
    });
    if (!ended)
        return outcome;
    m_process = -1;
    while (readMore(0)) {
    }
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    outcome.output = m_printed;
    return outcome;
}
