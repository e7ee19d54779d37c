// The signature as an SVG document, drawn again from its points.
#pragma once

#include "export/wholefile.h"
#include "ink/inkpoints.h"
#include "model/objectidentity.h"
#include "pen/pensetup.h"

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QSize>

#include <optional>

// What an SVG shows.
struct CSvgContent
{
    QSize m_Size;          // in pixels
    QPoint m_Origin;       // canvas position of the picture's top-left corner
    CInkSnapshot m_Points; // raw points
    CPenState m_Pen;       // maps and draws them
    const CObjectIdentity& m_Identity;
    QImage m_Fingerprint; // drawn in the middle, below the strokes; null without one
};

// Hands over what one QSvgGenerator would write, which holds all of its document in memory, up to a gigabyte,
// and ends there; this holds a thousand lines at a time. False when the taker refused. Where there is no
// memory it throws, and loses those lines' memory: a painter that could not end tries again when it is
// destroyed, where an exception ends the process.
// With bLogs, the mapping of each point writes its lines on the models that have them.
bool HandOverSvg(const CSvgContent& Content, int nDPI, const FnTakeBytes& Take, bool bLogs);

// The same in memory; nothing when it is longer than a byte array or its Base64 text can be.
std::optional<QByteArray> SvgBytes(const FnHandOver& HandOver);
