#include "driver.h"

#include "apart.h"
#include "failures.h"
#include "text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <dlfcn.h>
#include <unistd.h>

namespace {

// What the library looks for in the current folder.
constexpr char driverName[] = "libscriberadrv.so";

struct EntryPoint
{
    const char* name;
    bool (*isNeeded)(const CPadModel& model);
};

bool byAll(const CPadModel&)
{
    return true;
}

bool byScreens(const CPadModel& model)
{
    return model.m_bHasScreen;
}

bool byReaders(const CPadModel& model)
{
    return model.m_bHasFingerprint;
}

// SCRDAPI_OpenDeviceLCD is asked for too, but pads work without it.
constexpr EntryPoint entryPoints[] = {
    {"SCRDAPI_Initial", byAll},
    {"SCRDAPI_UnInitial", byAll},
    {"SCRDAPI_ClearDeviceContent", byAll},
    {"SCRDAPI_GetDevicePenID", byScreens},
    {"SCRDAPI_GetDevicePadID", byAll},
    {"SCRDAPI_GetDeviceSecureID", byScreens},
    {"SCRDAPI_GetDevicePartsVersion", byAll},
    {"SCRDAPI_ShowVersionInfoOnDevice", byScreens},
    {"SCRDAPI_SetDevicePenStyle", byAll},
    {"SCRDAPI_ShowFPImageOnDevice", byReaders},
};

bool isNeeded(const EntryPoint& entryPoint, const CPadModel* model)
{
    return model ? entryPoint.isNeeded(*model) : true;
}

// An installation has the drivers in its library folder, a build tree beside the tools.
QString besideProgram(const char* installed, const char* built)
{
    const QDir folder(QCoreApplication::applicationDirPath());
    const QString path = QDir::cleanPath(folder.absoluteFilePath(QLatin1String(installed)));
    return QFile::exists(path) ? path : QDir::cleanPath(folder.absoluteFilePath(QLatin1String(built)));
}

// Links and copies count.
bool isSameFile(const QString& one, const QString& other)
{
    if (QFileInfo(one) == QFileInfo(other))
        return true;
    QFile oneFile(one);
    QFile otherFile(other);
    return oneFile.size() == otherFile.size() && oneFile.open(QIODevice::ReadOnly) &&
           otherFile.open(QIODevice::ReadOnly) && oneFile.readAll() == otherFile.readAll();
}

Driver driverAt(const QString& path)
{
    Driver driver{QDir::current().absoluteFilePath(path), Driver::Kind::Other};
    if (QFileInfo(path).isFile()) {
        for (const Driver& own : {penDriver(), simulatedDriver()})
            if (QFileInfo(own.path).isFile() && isSameFile(path, own.path))
                driver.kind = own.kind;
    }
    return driver;
}

// Runs where a crash does no harm.
QByteArray loadingFault(const QByteArray& path, const CPadModel* model)
{
    void* const library = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return Text::tr("cannot be loaded: %1").arg(QString::fromLocal8Bit(dlerror())).toLocal8Bit();
    QByteArray missing;
    for (const EntryPoint& entryPoint : entryPoints)
        if (isNeeded(entryPoint, model) && !dlsym(library, entryPoint.name))
            missing += (missing.isEmpty() ? "" : ", ") + QByteArray(entryPoint.name);
    if (missing.isEmpty())
        return {};
    return Text::tr("is no driver of such a pad: it lacks %1")
        .arg(QString::fromLatin1(missing))
        .toLocal8Bit();
}

// The simulated pad finds its files from the current folder.
void nameFilesInFull()
{
    for (const char* name : {"SCRIBERA_SIM_RECORDING", "SCRIBERA_SIM_FINGERPRINT", "SCRIBERA_SIM_PAD"}) {
        const QString value = qEnvironmentVariable(name);
        const bool isPath = value.contains(QLatin1Char('.')) || value.contains(QLatin1Char('/'));
        if (isPath)
            qputenv(name, QFile::encodeName(QDir::current().absoluteFilePath(value)));
    }
}

} // namespace

void addDriverOption(QCommandLineParser& parser)
{
    parser.addOption({QStringLiteral("driver"),
                      Text::tr("The pad's driver: 'pen' for pens and touch screens of this machine, "
                               "'simulated', or a file. Default ./%1, as hosts have it.")
                          .arg(QLatin1String(driverName)),
                      Text::tr("driver")});
}

Driver driverOption(const QCommandLineParser& parser)
{
    const QString name = parser.value(QStringLiteral("driver"));
    if (!parser.isSet(QStringLiteral("driver")))
        return driverHere();
    if (name.isEmpty())
        throw UsageError{Text::tr("--driver is empty")};
    return driverNamed(name);
}

Driver driverNamed(const QString& name)
{
    if (name == QLatin1String("pen"))
        return penDriver();
    if (name == QLatin1String("simulated"))
        return simulatedDriver();
    return driverAt(name);
}

Driver driverHere()
{
    return driverAt(QLatin1String(driverName));
}

Driver penDriver()
{
    return {besideProgram(SCRIBERA_INSTALLED_DRIVERS "/pen/libscriberadrv.so",
                          SCRIBERA_BUILT_DRIVERS "/pen/libscriberadrv.so"),
            Driver::Kind::Pen};
}

Driver simulatedDriver()
{
    return {besideProgram(SCRIBERA_INSTALLED_DRIVERS "/libscriberadrv.so",
                          SCRIBERA_BUILT_DRIVERS "/simulator/libscriberadrv.so"),
            Driver::Kind::Simulated};
}

QString nameOf(Driver::Kind kind)
{
    switch (kind) {
    case Driver::Kind::Pen:
        return Text::tr("driver for pens and touch screens");
    case Driver::Kind::Simulated:
        return Text::tr("simulated pad");
    case Driver::Kind::Other:
        break;
    }
    return Text::tr("a pad's own driver");
}

QString faultOf(const Driver& driver, const CPadModel* model)
{
    const QFileInfo file(driver.path);
    if (!file.exists())
        return file.isSymLink() ? Text::tr("leads to %1, which is not there").arg(file.symLinkTarget())
                                : Text::tr("is not there");
    if (!file.isFile())
        return Text::tr("is no file");
    if (!file.isReadable())
        return Text::tr("cannot be read: no permission");
    const Apart loaded = workApart([&] { return loadingFault(QFile::encodeName(driver.path), model); });
    return loaded.fault.isEmpty() ? QString::fromLocal8Bit(loaded.answer) : loaded.fault;
}

DriverFolder::DriverFolder(const Driver& driver)
{
    if (driver.path == QDir::current().absoluteFilePath(QLatin1String(driverName)))
        return;
    std::error_code error;
    m_before = std::filesystem::current_path(error).string();
    if (error)
        throw Failure{Text::tr("the current folder is gone")};
    m_folder = std::make_unique<PrivateFolder>();
    nameFilesInFull();
    const QByteArray target = QFile::encodeName(driver.path);
    if (symlink(target.constData(), m_folder->file(driverName).c_str()) != 0 ||
        chdir(m_folder->path().c_str()) != 0)
        throw Failure{Text::tr("the driver cannot be put into a folder of its own: %1")
                          .arg(QString::fromLocal8Bit(std::strerror(errno)))};
}

DriverFolder::~DriverFolder()
{
    if (m_folder && chdir(m_before.c_str()) != 0)
        qWarning("the folder before is gone");
}
