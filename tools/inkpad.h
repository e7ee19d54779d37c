// The pad that a stream was written on, which the stream itself does not name.
#pragma once

#include "model/padmodel.h"

#include <QString>
#include <QStringList>

QStringList padNames();

// With or without the "SC" that pads and functions put before it: "K210" and "SCK210". Null when there is no
// such pad.
const CPadModel* padNamed(const QString& name);
