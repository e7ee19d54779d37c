// scribera-virtual-pad: the pad for those who have none.
#include "catalogues.h"
#include "mainwindow.h"
#include "options.h"
#include "padsocket.h"
#include "texts.h"

#include <QApplication>
#include <QCoreApplication>
#include <QIcon>
#include <QPixmap>
#include <QTimer>

#include <algorithm>
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

// Without one Qt would end the process.
bool hasDisplay(const QStringList& arguments)
{
    const auto chooses = [](const QString& argument) {
        const QString name = argument.startsWith(QLatin1String("--")) ? argument.mid(1) : argument;
        return name == QLatin1String("-platform") || name == QLatin1String("-display");
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM") ||
           std::any_of(arguments.begin(), arguments.end(), chooses);
}

int run(const virtualpad::Options& options)
{
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
                                     : complain(filled(trText("Simulator", "%1: cannot be written"),
                                                       {options.screenshot.toStdString()})));
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
    virtualpad::followScreenScale();
    // Every position of the hand counts.
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    QCoreApplication::setAttribute(Qt::AA_CompressTabletEvents, false);
    QCoreApplication::setApplicationName(QStringLiteral("scribera-virtual-pad"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIBERA_VERSION));
    QStringList given;
    for (int index = 0; index < argc; ++index)
        given << QString::fromLocal8Bit(argv[index]);
    if (given.contains(QLatin1String("--help")) || given.contains(QLatin1String("-h"))) {
        const QCoreApplication application(argc, argv); // the parser asks it for the program's name
        loadCatalogues();
        std::fputs(virtualpad::helpText().toUtf8().constData(), stdout);
        return 0;
    }
    if (given.contains(QLatin1String("--version")) || given.contains(QLatin1String("-v"))) {
        std::puts("scribera-virtual-pad " SCRIBERA_VERSION);
        return 0;
    }

    const bool canShow = hasDisplay(given);
    if (!canShow)
        setenv("QT_QPA_PLATFORM", "offscreen", 1); // enough to understand the arguments
    const QApplication application(argc, argv);    // takes Qt's own options out of them
    loadCatalogues();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/scribera-virtual-pad.svg")));
    QGuiApplication::setDesktopFileName(QStringLiteral("scribera-virtual-pad"));
    virtualpad::Options options;
    QString reason;
    if (!virtualpad::parseOptions(QCoreApplication::arguments(), options, reason)) {
        complain(filled(trText("Simulator", "%1; try --help"), {reason.toStdString()}));
        return WrongArguments;
    }
    if (!canShow)
        return complain(trText("Simulator", "there is no display; DISPLAY and WAYLAND_DISPLAY are not set"));
    return run(options);
}
