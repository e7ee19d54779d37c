// The pad's driver library: which one is meant, and whether it is one.
#pragma once

#include "leftovers.h"
#include "model/padmodel.h"

#include <QCommandLineParser>
#include <QString>

#include <memory>

struct Driver
{
    enum class Kind
    {
        Pen,       // our own, for input devices of this machine
        Simulated, // our own, which plays recordings
        Other
    };

    QString path; // absolute
    Kind kind = Kind::Other;
};

void addDriverOption(QCommandLineParser& parser);

// What --driver names; without it, the file in the current folder that the library takes.
Driver driverOption(const QCommandLineParser& parser);

// "pen", "simulated" or a file.
Driver driverNamed(const QString& name);

// The file that the library takes in the current folder.
Driver driverHere();

// Those that came with this program, whether they are there or not.
Driver penDriver();
Driver simulatedDriver();

// "driver for pens" and so on.
QString nameOf(Driver::Kind kind);

// Why the file cannot be the driver of such a pad, of any pad without a model; empty when it can.
QString faultOf(const Driver& driver, const CPadModel* model);

// While it lives, the library finds this driver: the current folder is a private one with a link, unless the
// driver is the current folder's own. What the environment names in the folder before is named in full.
class DriverFolder
{
public:
    // Throws Failure.
    explicit DriverFolder(const Driver& driver);
    ~DriverFolder();
    DriverFolder(const DriverFolder&) = delete;
    DriverFolder& operator=(const DriverFolder&) = delete;

private:
    std::unique_ptr<PrivateFolder> m_folder;
    std::string m_before;
};
