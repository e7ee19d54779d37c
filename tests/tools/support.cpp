#include "support.h"

#include <QFile>
#include <QProcess>

namespace {

constexpr int Patience = 120'000; // ms; a test that runs into it fails

void append(QByteArray& bytes, std::uint64_t value, int size)
{
    for (int index = 0; index < size; ++index)
        bytes += static_cast<char>(value >> (8 * index) & 0xFF);
}

} // namespace

QByteArray streamOf(const std::vector<Point>& points)
{
    QByteArray bytes;
    for (const Point& point : points) {
        append(bytes, static_cast<std::uint64_t>(point.x), 2);
        append(bytes, static_cast<std::uint64_t>(point.y), 2);
        append(bytes, static_cast<std::uint64_t>(point.pressure), 2);
        append(bytes, static_cast<std::uint64_t>(point.status), 1);
        append(bytes, 0, 1);
        append(bytes, static_cast<std::uint64_t>(point.tick), 8);
        append(bytes, static_cast<std::uint64_t>(point.seconds), 8);
    }
    append(bytes, 0, 1);
    return bytes;
}

QByteArray textOf(const std::vector<Point>& points)
{
    return streamOf(points).toBase64();
}

const std::vector<Point>& threeStrokes()
{
    static const std::vector<Point> points = {
        {1000, 900, 200, 0, 5000, 1700000000},    {65535, -20, 1024, 0, 5005, 1700000000},
        {1200, 32767, 2048, 0, 5010, 1700000000}, {1200, 32767, 2048, 1, 5016, 1700000000},
        {300, 400, 7, 0, 6500, 1700000001},       {300, 400, 7, 1, 6502, 1700000001},
        {800, 500, 90, 0, 7250, 1700000002},
    };
    return points;
}

Outcome runInk(const QStringList& arguments, const QByteArray& input)
{
    QProcess tool;
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    for (const char* name :
         {"TMPDIR", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"})
        if (qEnvironmentVariableIsSet(name))
            environment.insert(QString::fromLatin1(name), qEnvironmentVariable(name));
    tool.setProcessEnvironment(environment);
    tool.start(QStringLiteral(SCRIBERA_INK_TOOL), arguments);
    tool.write(input);
    tool.closeWriteChannel();
    Outcome outcome;
    if (!tool.waitForFinished(Patience) || tool.exitStatus() != QProcess::NormalExit)
        return outcome;
    outcome.exitCode = tool.exitCode();
    outcome.output = tool.readAllStandardOutput();
    outcome.error = tool.readAllStandardError();
    return outcome;
}

QByteArray outputOf(const QStringList& arguments, const QByteArray& input)
{
    const Outcome outcome = runInk(arguments, input);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error.toStdString(), "");
    return outcome.output;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QString InkToolTest::write(const char* name, const QByteArray& content) const
{
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush());
    return file.fileName();
}
