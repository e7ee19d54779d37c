// scribera-pad doctor: everything that a signature needs, from the library to the pad.
#include "apart.h"
#include "commands.h"
#include "display.h"
#include "failures.h"
#include "optionvalues.h"
#include "output.h"
#include "pens.h"
#include "program.h"
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
    const QString text = libraryFile() + QStringLiteral(", version ") + version;
    if (version != QLatin1String(SCRIBERA_VERSION))
        return {"library", false,
                text + QStringLiteral(
                           "; this program is of version " SCRIBERA_VERSION
                           ": install both from one release, and look for another copy in LD_LIBRARY_PATH")};
    return {"library", true, text};
}

Finding currentFolder()
{
    QByteArray path(4096, '\0');
    if (!getcwd(path.data(), static_cast<std::size_t>(path.size())))
        return {"current folder", false,
                QStringLiteral("cannot be told (%1): change to one that is there")
                    .arg(QString::fromLocal8Bit(std::strerror(errno)))};
    const QString folder = QFile::decodeName(path.constData());
    if (access(".", X_OK) != 0)
        return {"current folder", false,
                folder + QStringLiteral(" cannot be entered: hosts find no driver in it")};
    return {"current folder", true, folder};
}

Finding driverFile(const Driver& driver, const CPadModel& model)
{
    const QString fault = faultOf(driver, &model);
    if (fault.isEmpty())
        return {"driver", true, driver.path + QStringLiteral(", ") + nameOf(driver.kind)};
    const QString remedy = QFile::exists(driver.path)
                               ? QStringLiteral("; take the file that came with the pad")
                               : QStringLiteral("; link the pad's driver there, or name one with --driver");
    return {"driver", false, driver.path + QLatin1Char(' ') + fault + remedy};
}

Finding device(const Driver& driver)
{
    if (driver.kind != Driver::Kind::Pen)
        return {"device", true, QStringLiteral("the driver's own business; no input device is asked")};
    try {
        return {"device", true, chosenDevice()};
    } catch (const Failure& failure) {
        return {"device", false, failure.reason};
    }
}

// As the library looks at it before it writes; a file that is not there is made.
Finding logFile(const char* what, const char* path)
{
    const QString name = QString::fromLatin1(path);
    const auto fault = [&](const QString& reason) {
        return Finding{what, false, QStringLiteral("%1 %2: nothing is logged; remove it").arg(name, reason)};
    };
    struct stat file = {};
    if (lstat(path, &file) != 0) {
        if (access("/tmp", W_OK | X_OK) != 0)
            return {what, false,
                    QStringLiteral("%1 cannot be made: nothing is logged; make /tmp writable").arg(name)};
        return {what, true, name + QStringLiteral(" is made when a host switches logging on")};
    }
    if (!S_ISREG(file.st_mode))
        return fault(QStringLiteral("is no plain file"));
    if (file.st_nlink != 1)
        return fault(QStringLiteral("has a second name"));
    if (file.st_uid != geteuid())
        return fault(QStringLiteral("belongs to another user"));
    if (access(path, R_OK | W_OK) != 0)
        return fault(QStringLiteral("cannot be written"));
    return {what, true, QStringLiteral("%1, %2 bytes").arg(name).arg(file.st_size)};
}

Finding windows()
{
    const WindowPlatform& tried = display();
    if (tried.fault.isEmpty())
        return {"windows", true,
                QStringLiteral("Qt %1 on %2").arg(QLatin1String(qVersion()), tried.platform)};
    if (!tried.isNamed)
        return {"windows", true,
                tried.fault + QStringLiteral(": signatures are taken without a window only")};
    return {"windows", false, tried.fault + QStringLiteral(": correct or unset it")};
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
        return {"pad", false, QStringLiteral("the driver %1: ask its maker").arg(opened.fault)};
    if (opened.answer.startsWith('+'))
        return {"pad", true, QString::fromUtf8(opened.answer.mid(1))};
    return {"pad", false,
            QString::fromUtf8(opened.answer) + QStringLiteral("; is it plugged in, and is --model right?")};
}

} // namespace

int examine(const QCommandLineParser& parser, const QString&)
{
    const CPadModel& model = modelOption(parser);
    const Driver driver = driverOption(parser);
    bool isFine = true;
    const auto tell = [&](const Finding& finding) {
        isFine = isFine && finding.isFine;
        const QString text = QString::fromLatin1(finding.isFine ? "OK   " : "FIX  ") +
                             QString::fromLatin1(finding.what).leftJustified(16) + finding.text +
                             QLatin1Char('\n');
        writeOutput(text.toLocal8Bit(), QStringLiteral("-"));
    };
    tell(library());
    tell(currentFolder());
    const Finding file = driverFile(driver, model);
    tell(file);
    tell(device(driver));
    tell(logFile("log", "/tmp/scriberasdk.log"));
    tell(logFile("log of threads", "/tmp/scriberasdk_inthread.log"));
    tell(windows());
    if (file.isFine)
        tell(pad(driver, model));
    else
        tell({"pad", false, QStringLiteral("not tried, for want of a driver")});
    return isFine ? Done : Failed;
}
