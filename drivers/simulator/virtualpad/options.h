// The command line of scribera-virtual-pad.
#pragma once

#include "pads.h"

#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>

namespace virtualpad {

struct Options
{
    const simulator::Pad* pad = nullptr;
    bool isPinned = false;
    std::string socket; // as SCRIBERA_SIM_PAD has it
    std::string replay;
    bool loop = false;
    std::string fingerprint;
    std::optional<QPoint> position;
    std::optional<QSize> size;
    QString screenshot;
};

// False with the reason when the arguments, the program's name first, make no sense. Requests for help and
// version are not looked at.
bool parseOptions(const QStringList& arguments, Options& options, QString& reason);

QString helpText();

} // namespace virtualpad
