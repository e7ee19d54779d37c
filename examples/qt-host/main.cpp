// scribera-demo-host: a bank's counter with a signature pad.
#include "mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>
#include <QLibraryInfo>
#include <QTimer>
#include <QTranslator>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

// For texts that belong to no window.
class Program
{
    Q_DECLARE_TR_FUNCTIONS(Program)
};

enum ExitCode
{
    Done = 0,
    Failed = 1,
    WrongUsage = 2
};

int complain(const QString& reason, ExitCode code)
{
    std::fprintf(stderr, "scribera-demo-host: %s\n", qPrintable(reason));
    return code;
}

// What the command line wants done by itself; ends the program when all of it is.
class Script : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(Script)

public:
    Script(MainWindow& window, const QString& folder, const QString& picture, double pictureAfter)
        : m_window(window), m_folder(folder), m_picture(picture)
    {
        const bool pictureAtConfirm = !picture.isEmpty() && pictureAfter < 0;
        if (!picture.isEmpty() && !pictureAtConfirm)
            QTimer::singleShot(qRound(pictureAfter * 1000), this, [this] { takePicture(); });
        if (folder.isEmpty() && !pictureAtConfirm)
            return;
        connect(&window, &MainWindow::confirmed, this, &Script::saveAll);
        if (pictureAtConfirm) // once the window has taken the news in
            connect(&window, &MainWindow::confirmed, this, &Script::takePicture, Qt::QueuedConnection);
        connect(&window, &MainWindow::cancelled, this, [this] { fail(tr("cancelled at the pad")); });
        connect(&window, &MainWindow::noPad, this, &Script::fail);
    }

private:
    void fail(const QString& reason)
    {
        m_failed = true;
        QCoreApplication::exit(complain(reason, Failed));
    }

    void saveAll()
    {
        if (m_folder.isEmpty())
            return;
        const QStringList failed = m_window.signature().saveEverything(std::exchange(m_folder, {}));
        failed.isEmpty() ? endIfDone() : fail(tr("cannot save %1").arg(failed.join(QLatin1String(", "))));
    }

    void takePicture()
    {
        const QString path = std::exchange(m_picture, {});
        if (path.isEmpty())
            return;
        m_window.grab().save(path) ? endIfDone() : fail(tr("cannot save %1").arg(path));
    }

    void endIfDone() const
    {
        if (!m_failed && m_folder.isEmpty() && m_picture.isEmpty())
            QCoreApplication::exit(Done);
    }

    MainWindow& m_window;
    QString m_folder;
    QString m_picture;
    bool m_failed = false;
};

// What needs no window is answered without a display.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv)
{
    const QStringList texts = {QStringLiteral("-h"), QStringLiteral("--help"), QStringLiteral("--help-all"),
                               QStringLiteral("-v"), QStringLiteral("--version")};
    if (std::any_of(argv, argv + argc, [&](const char* word) { return texts.contains(QLatin1String(word)); }))
        return std::make_unique<QCoreApplication>(argc, argv);
#if QT_VERSION_MAJOR < 6 // later ones do so unasked
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(
        QPalette(Qt::white, QColor(0xe9, 0xee, 0xf3))); // the form's, also on dark desktops
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/scribera-demo-host.svg")));
    QGuiApplication::setDesktopFileName(QStringLiteral("scribera-demo-host"));
    return application;
}

// The first of the person's languages that there is a catalogue for. The texts themselves are English, so a
// language that comes after English is not wanted.
void loadCatalogues()
{
    static QTranslator ofQt;
    static QTranslator own;
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#else
    const QString folder = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#endif
    const QString before = QStringLiteral("_");
    for (const QString& name : QLocale::system().uiLanguages()) {
        const QLocale language(name);
        if (language.language() == QLocale::English)
            return;
        if (!own.load(language, QStringLiteral("scribera-demo-host"), before,
                      QStringLiteral(":/translations")))
            continue;
        if (ofQt.load(language, QStringLiteral("qtbase"), before, folder))
            QCoreApplication::installTranslator(&ofQt); // for the dialogs that are Qt's
        QCoreApplication::installTranslator(&own);
        return;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("scribera-demo-host"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SCRIBERA_VERSION));
    loadCatalogues();

    QCommandLineParser parser;
    parser.setApplicationDescription(Program::tr("A bank's counter with a signature pad."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QString models = PadSession::models().join(QLatin1String(", "));
    const QCommandLineOption model(QStringLiteral("model"), Program::tr("The pad: %1.").arg(models),
                                   Program::tr("model"), QStringLiteral("K210"));
    const QCommandLineOption autoSave(QStringLiteral("auto-save"),
                                      Program::tr("On confirm, save the signature in every form and end."),
                                      Program::tr("folder"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        Program::tr("Save a picture of the window and end."),
                                        Program::tr("file"));
    const QCommandLineOption after(QStringLiteral("after"),
                                   Program::tr("When to take it: 'confirm', or seconds (default 1)."),
                                   Program::tr("moment"), QStringLiteral("1"));
    parser.addOptions({model, autoSave, screenshot, after});

    if (!parser.parse(QCoreApplication::arguments()))
        return complain(parser.errorText(), WrongUsage);
    if (parser.isSet(help) || parser.isSet(version)) {
        std::puts(parser.isSet(help) ? qPrintable(parser.helpText())
                                     : "scribera-demo-host " SCRIBERA_VERSION);
        return Done;
    }
    if (!parser.positionalArguments().isEmpty())
        return complain(Program::tr("unexpected: %1").arg(parser.positionalArguments().constFirst()),
                        WrongUsage);
    if (!PadSession::models().contains(parser.value(model)))
        return complain(Program::tr("--model %1 is none of %2").arg(parser.value(model), models), WrongUsage);
    bool isNumber = true;
    const bool atConfirm = parser.value(after) == QLatin1String("confirm");
    const double seconds = atConfirm ? -1 : parser.value(after).toDouble(&isNumber);
    if (!isNumber || (!atConfirm && !(seconds >= 0 && seconds <= 3600)))
        return complain(
            Program::tr("--after %1 is neither 'confirm' nor 0 to 3600 seconds").arg(parser.value(after)),
            WrongUsage);
    if (parser.isSet(autoSave) && !QDir().mkpath(parser.value(autoSave)))
        return complain(Program::tr("cannot make the folder %1").arg(parser.value(autoSave)), Failed);

    MainWindow window(parser.value(model));
    const Script script(window, parser.value(autoSave), parser.value(screenshot), seconds);
    window.show();
    QTimer::singleShot(0, &window, &MainWindow::openPad); // the window is seen first, even without a pad
    return QApplication::exec();
}
