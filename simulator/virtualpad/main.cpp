// scribera-virtual-pad: the pad for those who have none.
#include "mainwindow.h"
#include "options.h"
#include "padsocket.h"

#include <QApplication>
#include <QCoreApplication>
#include <QPixmap>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr int Failed = 1;
constexpr int WrongArguments = 2;

int complain(const std::string& reason)
{
    std::fprintf(stderr, "scribera-virtual-pad: %s\n", reason.c_str());
    return Failed;
}

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

int run(int argc, char** argv, const virtualpad::Options& options)
{
    // Qt would abort over this.
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM"))
        return complain("there is no display; DISPLAY and WAYLAND_DISPLAY are not set");
    simulator::Recording recording;
    std::string error;
    std::string path;
    std::vector<unsigned char> pixels;
    if (!options.replay.empty() && !simulator::readRecording(options.replay, recording, error))
        return complain(error);
    if (!options.fingerprint.empty() &&
        !virtualpad::VirtualPad::readFinger(options.fingerprint, pixels, error))
        return complain(error);
    if (!simulator::padSocketPath(options.socket, path, error))
        return complain(error);

    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::RoundPreferFloor);
    // Every position of the hand counts.
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    QCoreApplication::setAttribute(Qt::AA_CompressTabletEvents, false);
    const QApplication application(argc, argv);

    virtualpad::VirtualPad pad(*options.pad);
    pad.setPinned(options.isPinned);
    if (!pad.listen(path, error))
        return complain(error);
    pad.setGreeting(recording, options.loop, options.fingerprint);

    virtualpad::MainWindow window(pad);
    if (!options.fingerprint.empty())
        window.setFinger(options.fingerprint);
    if (options.size)
        window.resize(*options.size);
    if (options.position)
        window.move(*options.position);
    window.show();

    const auto saveAndQuit = [&] {
        const bool saved = window.grab().save(options.screenshot);
        QCoreApplication::exit(saved ? 0
                                     : complain(options.screenshot.toStdString() + ": cannot be written"));
    };
    if (!options.screenshot.isEmpty()) {
        QObject::connect(&pad, &virtualpad::VirtualPad::replayEnded, &window, saveAndQuit);
        QTimer::singleShot(0, &window, [&] {
            pad.playGreeting();
            if (recording.samples.empty())
                saveAndQuit();
        });
    }
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("scribera-virtual-pad"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIBERA_VERSION));
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments << QString::fromLocal8Bit(argv[index]);
    virtualpad::Options options;
    QString reason;
    if (!virtualpad::parseOptions(arguments, options, reason)) {
        complain(reason.toStdString() + "; try --help");
        return WrongArguments;
    }
    if (options.showHelp) {
        const QCoreApplication application(argc, argv); // the parser asks it for the program's name
        std::fputs(virtualpad::helpText().toUtf8().constData(), stdout);
        return 0;
    }
    if (options.showVersion) {
        std::puts("scribera-virtual-pad " SCRIBERA_VERSION);
        return 0;
    }
    return run(argc, argv, options);
}
