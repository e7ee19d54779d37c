// The ink packet stream: stored points as one Base64 text.
//
// Before Base64 the stream is the 24-byte records of _POINTDATA, little-endian, one after another, followed
// by one zero byte. It has no header, count, version or checksum.
#pragma once

#include "ink/inkpoints.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Length in bytes, before Base64, of a stream of nCount points.
constexpr std::size_t InkStreamSize(std::size_t nCount)
{
    return nCount * sizeof(_POINTDATA) + 1;
}

// The stream before Base64; empty when there are more points than a byte array holds.
QByteArray PackInkStream(const CInkSnapshot& Points);

// Replaces the points of the list by those of a Base64 text: every whole record counts, whatever it says, and
// what follows the last one is left out. The bytes are never all in memory beside the points.
void DecodeInkText(const char* pText, std::size_t nSize, CInkPointList& Points);

// What is wrong with a text that is no ink packet stream as the library writes it.
struct CInkStreamFault
{
    int m_nOffset; // byte of the text; its size when the text ends too early
    QString m_strReason;
};

// Reads a whole Base64 text and appends its points, unlike DecodeInkText() with nothing left out: Base64
// without gaps, whole records and the zero byte, known statuses, ticks that do not decrease. Line breaks may
// stand anywhere, since mail and other tools wrap such texts; blanks may follow the text. With a fault, the
// first one is returned and nothing is appended.
std::optional<CInkStreamFault> ReadInkStreamText(const QByteArray& Text, CInkPointList& Points);
