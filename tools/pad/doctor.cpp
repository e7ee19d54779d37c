// scribera-pad doctor: everything that a signature needs, from the library to the pad.
#include "apart.h"
#include "commands.h"
#include "display.h"
#include "failures.h"
#include "optionvalues.h"
#include "output.h"
#include "pens.h"
#include "program.h"
#include "text.h"
#include "waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Finding
{
    const char* what;
    bool isFine;
    QString text; // what is there, or what to do
};

Finding library()
{
    const QString version = libraryVersion();
    const QString text = Text::tr("%1, version %2").arg(libraryFile(), version);
    if (version != QLatin1String(SCRIBERA_VERSION))
        return {QT_TRANSLATE_NOOP("Tools", "library"), false,
                Text::tr("%1; this program is of version %2: install both from one release, and look for "
                         "another copy in LD_LIBRARY_PATH")
                    .arg(text, QLatin1String(SCRIBERA_VERSION))};
    return {QT_TRANSLATE_NOOP("Tools", "library"), true, text};
}

Finding currentFolder()
{
    QByteArray path(4096, '\0');
    if (!getcwd(path.data(), static_cast<std::size_t>(path.size())))
        return {QT_TRANSLATE_NOOP("Tools", "current folder"), false,
                Text::tr("cannot be told (%1): change to one that is there")
                    .arg(QString::fromLocal8Bit(std::strerror(errno)))};
    const QString folder = QFile::decodeName(path.constData());
    if (access(".", X_OK) != 0)
        return {QT_TRANSLATE_NOOP("Tools", "current folder"), false,
                Text::tr("%1 cannot be entered: hosts find no driver in it").arg(folder)};
    return {QT_TRANSLATE_NOOP("Tools", "current folder"), true, folder};
}

Finding driverFile(const Driver& driver, const CPadModel& model)
{
    const QString fault = faultOf(driver, &model);
    if (fault.isEmpty())
        return {QT_TRANSLATE_NOOP("Tools", "driver"), true,
                driver.path + QStringLiteral(", ") + nameOf(driver.kind)};
    const QString remedy = QFile::exists(driver.path)
                               ? Text::tr("%1; take the file that came with the pad")
                               : Text::tr("%1; link the pad's driver there, or name one with --driver");
    return {QT_TRANSLATE_NOOP("Tools", "driver"), false, remedy.arg(driver.path + QLatin1Char(' ') + fault)};
}

Finding device(const Driver& driver)
{
    if (driver.kind != Driver::Kind::Pen)
        return {QT_TRANSLATE_NOOP("Tools", "device"), true,
                Text::tr("the driver's own business; no input device is asked")};
    try {
        return {QT_TRANSLATE_NOOP("Tools", "device"), true, chosenDevice()};
    } catch (const Failure& failure) {
        return {QT_TRANSLATE_NOOP("Tools", "device"), false, failure.reason};
    }
}

// As the library looks at it before it writes; a file that is not there is made.
Finding logFile(const char* what, const char* path)
{
    const QString name = QString::fromLatin1(path);
    const auto fault = [&](const QString& reason) {
        return Finding{what, false, Text::tr("%1 %2: nothing is logged; remove it").arg(name, reason)};
    };
    struct stat file = {};
    if (lstat(path, &file) != 0) {
        if (access("/tmp", W_OK | X_OK) != 0)
            return {what, false,
                    Text::tr("%1 cannot be made: nothing is logged; make /tmp writable").arg(name)};
        return {what, true, Text::tr("%1 is made when a host switches logging on").arg(name)};
    }
    if (!S_ISREG(file.st_mode))
        return fault(Text::tr("is no plain file"));
    if (file.st_nlink != 1)
        return fault(Text::tr("has a second name"));
    if (file.st_uid != geteuid())
        return fault(Text::tr("belongs to another user"));
    if (access(path, R_OK | W_OK) != 0)
        return fault(Text::tr("cannot be written"));
    return {what, true, Text::tr("%1, %2 bytes").arg(name, numberText(file.st_size))};
}

Finding windows()
{
    const WindowPlatform& tried = display();
    if (tried.fault.isEmpty())
        return {QT_TRANSLATE_NOOP("Tools", "windows"), true,
                Text::tr("Qt %1 on %2").arg(QLatin1String(qVersion()), tried.platform)};
    if (!tried.isNamed)
        return {QT_TRANSLATE_NOOP("Tools", "windows"), true,
                Text::tr("%1: signatures are taken without a window only").arg(tried.fault)};
    return {QT_TRANSLATE_NOOP("Tools", "windows"), false,
            Text::tr("%1: correct or unset it").arg(tried.fault)};
}

// The last link: opens the pad and closes it, where a crash does no harm.
Finding pad(const Driver& driver, const CPadModel& model)
{
    const DriverFolder folder(driver); // here, so that it goes when the driver crashes
    const Apart opened = workApart([&]() -> QByteArray {
        try {
            const Session session(model, driverHere(), nullptr, QSize(1, 1));
            return "+" + session.version().toUtf8() + ", " + session.padId().toUtf8();
        } catch (const Failure& failure) {
            return failure.reason.toUtf8();
        }
    });
    if (!opened.fault.isEmpty())
        return {QT_TRANSLATE_NOOP("Tools", "pad"), false,
                Text::tr("the driver %1: ask its maker").arg(opened.fault)};
    if (opened.answer.startsWith('+'))
        return {QT_TRANSLATE_NOOP("Tools", "pad"), true, QString::fromUtf8(opened.answer.mid(1))};
    return {QT_TRANSLATE_NOOP("Tools", "pad"), false,
            Text::tr("%1; is it plugged in, and is --model right?").arg(QString::fromUtf8(opened.answer))};
}

} // namespace

int examine(const QCommandLineParser& parser, const QString&)
{
    const CPadModel& model = modelOption(parser);
    const Driver driver = driverOption(parser);
    bool isFine = true;
    const auto tell = [&](const Finding& finding) {
        isFine = isFine && finding.isFine;
        const QString text = (finding.isFine ? Text::tr("OK") : Text::tr("FIX")).leftJustified(5) +
                             Text::tr(finding.what).leftJustified(16) + finding.text + QLatin1Char('\n');
        writeOutput(text.toLocal8Bit(), QStringLiteral("-"));
    };
    tell(library());
    tell(currentFolder());
    const Finding file = driverFile(driver, model);
    tell(file);
    tell(device(driver));
    tell(logFile(QT_TRANSLATE_NOOP("Tools", "log"), "/tmp/scriberasdk.log"));
    tell(logFile(QT_TRANSLATE_NOOP("Tools", "log of threads"), "/tmp/scriberasdk_inthread.log"));
    tell(windows());
    if (file.isFine)
        tell(pad(driver, model));
    else
        tell({QT_TRANSLATE_NOOP("Tools", "pad"), false, Text::tr("not tried, for want of a driver")});
    return isFine ? Done : Failed;
}
