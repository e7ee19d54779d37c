// What the tool makes of a stream. All throw Failure when it cannot be done.
#pragma once

#include "ink/inkpoints.h"
#include "inkdrawing.h"
#include "model/padmodel.h"

#include <QByteArray>
#include <QString>

#include <optional>

// What is known beside a stream.
struct Circumstances
{
    const CPadModel* pad = nullptr;
    std::optional<double> unitsPerMillimetre;
};

// A few lines for people, with a judgement whether something was signed.
struct Info
{
    QByteArray text;
    bool isSigned;
};
Info toInfo(const CInkSnapshot& ink, const Circumstances& circumstances);

// The same file that the library saves for a canvas like this.
QByteArray toSvg(const CInkSnapshot& ink, const Drawing& drawing);

// A recording for the simulated pad.
QByteArray toRecording(const CInkSnapshot& ink, const CPadModel& pad);

// What the pen of a recording wrote, from the input of that name.
CInkSnapshot fromRecording(const QByteArray& text, const QString& name);

// The stream itself, as the library hands it over.
QByteArray toStreamText(const CInkSnapshot& ink);
