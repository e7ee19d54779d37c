// What the tests of scribera-pad share: the tool as a process that is waited for, or watched and interrupted,
// and the files that it is given.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

#include <sys/types.h>

inline constexpr const char* libraryName =
    QT_VERSION_MAJOR == 5 ? "libscriberasdk.so.1" : "libscriberasdk-qt6.so.1";

using Variables = QMap<QString, QString>;

struct PadOutcome
{
    int exitCode = -1; // -1 when it did not end by itself
    int signal = 0;    // that ended it
    QByteArray output;
    QByteArray error;
};

struct RecordedPoint
{
    long long milliseconds;
    int x;
    int y;
    int pressure;
    int status;
};
std::vector<RecordedPoint> samplesIn(const QByteArray& recording);

QByteArray readFile(const QString& path);
QString padRecording(const char* name);

// An input device of our own making.
struct MockedDevice
{
    struct MockedAxis
    {
        int minimum;
        int maximum;
        int resolution;
    };

    QByteArray name;
    std::vector<int> buttons;
    QMap<int, MockedAxis> axes; // by code
};
MockedDevice penTablet(); // 200 x 100 mm

// Each test has a folder to work in and one for temporary files, in which nothing may be left.
class PadToolTest : public testing::Test
{
protected:
    PadToolTest();
    ~PadToolTest() override;

    QString path(const QString& name) const { return m_directory.filePath(name); }
    void write(const QString& name, const QByteArray& content) const;
    // The words before the tool's name by which it finds this device at /dev/input/event5, and no other.
    QStringList beside(const MockedDevice& device) const;
    // What the tool sees of the environment.
    QStringList environment(const Variables& variables) const;
    // Runs the tool in the folder to work in, behind these words when there are some.
    PadOutcome run(const QStringList& arguments, const Variables& variables = {},
                   const QStringList& behind = {}) const;

    // The simulated pad, which plays as fast as it can.
    static Variables playing(const char* recording, const char* key);

private:
    QTemporaryDir m_directory;
    QTemporaryDir m_temporary;

    friend class RunningPad;
};

// The tool while it runs, with everything that it prints in one stream.
class RunningPad
{
public:
    enum class On
    {
        Pipe,
        Terminal // of 100 columns
    };

    RunningPad(const PadToolTest& test, On on, const QStringList& arguments, const Variables& variables = {});
    ~RunningPad();
    RunningPad(const RunningPad&) = delete;
    RunningPad& operator=(const RunningPad&) = delete;

    // Waits until it has printed this, since it was started.
    testing::AssertionResult prints(const QByteArray& text);
    void type(const QByteArray& keys) const;
    void send(int signal) const;
    // Waits until it is stopped.
    testing::AssertionResult stops() const;
    // Whether the terminal hands over single keys.
    bool takesSingleKeys() const;
    // Waits until the terminal does, or does not.
    testing::AssertionResult comesToTakeSingleKeys(bool wanted) const;
    void narrow(int columns) const;
    // Waits for the end.
    PadOutcome end();

private:
    bool readMore(int patience);

    pid_t m_process = -1;
    int m_stream = -1; // the tool's output, and where there is a terminal its input
    int m_terminal = -1;
    QByteArray m_printed;
};
