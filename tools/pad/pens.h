// The input devices of this machine, as the driver for pens sees them.
#pragma once

#include "model/padmodel.h"

#include <QList>
#include <QString>

struct InputDeviceLine
{
    QString node;
    QString name;
    QString kind;
    QString verdict; // usable or why not
};

// All throw Failure when the devices cannot be asked, also for a setting that cannot be used.
QList<InputDeviceLine> inputDevices();

// The device that is signed on, its axes, what of it is used, and its keys; several lines.
QString deviceOf(const CPadModel& model);

// The device that would be signed on, for one line.
QString chosenDevice();
