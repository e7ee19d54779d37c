#include "support.h"

#include <QFile>
#include <QPainter>
#include <QProcess>
#include <QSvgRenderer>

#include <algorithm>

namespace {
constexpr int patience = 120'000; // ms; a test that runs into it fails
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QString recording(const char* name)
{
    return QStringLiteral(SCRIBERA_RECORDINGS "/") + QString::fromLatin1(name);
}

Recorded signatureIn(const QString& recordingPath)
{
    Recorded signature;
    for (const QByteArray& line : contentOf(recordingPath).split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() != 5 || line.startsWith("area"))
            continue;
        ++signature.points;
        signature.strokes += fields[4] == "2" ? 1 : 0;
    }
    EXPECT_GT(signature.strokes, 0) << recordingPath.toStdString();
    return signature;
}

int pointsIn(const QByteArray& inkText)
{
    const QByteArray stream = QByteArray::fromBase64(inkText);
    EXPECT_EQ(stream.size() % 24, 1);
    return stream.size() / 24;
}

int countOf(const QImage& image, const QRect& part, QRgb color)
{
    int count = 0;
    const QRect inside = part & image.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x)
            count += image.pixel(x, y) == color ? 1 : 0;
    return count;
}

testing::AssertionResult holdsDrawing(const QByteArray& content, const QString& suffix)
{
    const QMap<QString, QByteArray> beginnings = {{"bmp", "BM"},
                                                  {"jpg", QByteArray::fromHex("ffd8ff")},
                                                  {"png", QByteArray::fromHex("89504e470d0a1a0a")},
                                                  {"pdf", "%PDF-"}};
    const auto failure = [&] { return testing::AssertionFailure() << suffix.toStdString() << ": "; };
    if (!content.startsWith(beginnings.value(suffix)))
        return failure() << "begins " << content.left(8).toHex().toStdString();
    if (suffix == "ink")
        return pointsIn(content) > 0 ? testing::AssertionSuccess() : failure() << "no points";
    if (suffix == "pdf") // drawn pages are compressed; the picture is an object of its own
        return content.contains("/Subtype /Image") ? testing::AssertionSuccess() : failure() << "no picture";
    QImage image;
    if (suffix == "svg") {
        QSvgRenderer drawing(content);
        if (!drawing.isValid() || drawing.viewBox().isEmpty())
            return failure() << "no drawing";
        image = QImage(drawing.viewBox().size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        drawing.render(&painter);
    } else {
        image = QImage::fromData(content, suffix.toLatin1().constData());
        if (suffix == "png" && image.pixelColor(0, 0).alpha() != 0)
            return failure() << "the paper is not transparent";
    }
    int dark = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            dark += color.alpha() > 200 && color.lightness() < 60 ? 1 : 0;
        }
    if (dark < 200 || dark > image.width() * image.height() / 2)
        return failure() << dark << " dark pixels of " << image.width() << " x " << image.height();
    return testing::AssertionSuccess();
}

HostTest::HostTest()
{
    EXPECT_TRUE(m_directory.isValid());
    plugIn();
}

void HostTest::plugIn() const
{
    EXPECT_TRUE(QFile::link(QStringLiteral(SCRIBERA_DRIVER_LIBRARY), path("libscriberadrv.so")));
}

void HostTest::unplug() const
{
    EXPECT_TRUE(QFile::remove(path("libscriberadrv.so")));
}

void HostTest::write(const QString& name, const QByteArray& content) const
{
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

Outcome HostTest::run(const char* program, const QStringList& arguments, const Variables& variables) const
{
    QProcessEnvironment environment;
    for (const char* name :
         {"LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"})
        if (qEnvironmentVariableIsSet(name))
            environment.insert(QString::fromLatin1(name), qEnvironmentVariable(name));
    // For the leak checker: fontconfig keeps what it parsed and the offscreen platform its screen, and both
    // lose their own pointers to it. The stacks have to reach far enough to be told apart.
    write("suppressions", "leak:libfontconfig.so\nleak:QGuiApplicationPrivate::createPlatformIntegration\n");
    environment.insert("LSAN_OPTIONS", environment.value("LSAN_OPTIONS") +
                                           ":print_suppressions=0:suppressions=" + path("suppressions"));
    environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":fast_unwind_on_malloc=0");
    environment.insert("LC_ALL", "C.UTF-8");
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XDG_RUNTIME_DIR", path("."));
    environment.insert("SCRIBERA_SIM_RATE", "max");
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        environment.insert(variable.key(), variable.value());
    QProcess host;
    host.setWorkingDirectory(path("."));
    host.setProcessEnvironment(environment);
    host.start(QString::fromLocal8Bit(program), arguments);
    Outcome outcome;
    if (host.waitForFinished(patience) && host.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = host.exitCode();
    outcome.output = host.readAllStandardOutput().toStdString();
    outcome.error = host.readAllStandardError().toStdString();
    return outcome;
}
