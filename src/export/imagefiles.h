// Pictures of a signature: raster files, PDF and encoded images. Free functions over copies, so that no
// lock is held while they work. All run without any application object.
#pragma once

#include "log/logfileutil.h"

#include <QByteArray>
#include <QImage>
#include <QString>

// Whether the type id is one of the raster images: BMP, JPEG, PNG.
bool IsRasterType(int nImageTypeID);

// A host's wide, zero-terminated path. False for null and for units that are no characters, which no name
// keeps apart.
bool PathFromHost(const wchar_t* pwszPath, QString& strPath);

// An image with its white made transparent; null when there is no memory for it. For the PNG writer the
// colours of an opaque image are not premultiplied, which are the same numbers: the writer would convert a
// copy, and does not look whether it got the memory.
QImage WithTransparentWhite(const QImage& Image, bool bForPng);

// Has the image tell its resolution in dots per inch.
void SetResolution(QImage& Image, int nDPI);

// Writes an image file in the format of the path's suffix. False unless encoding, writing and closing all
// succeeded; the file is not touched before encoding has.
bool SaveRasterFile(QImage Image, const QString& strPath, int nDPI, bool bTransparentWhite);

// Writes a one-page A4 PDF with the image at the top left of its printable area. False when the file cannot
// be opened.
bool SavePdfFile(const QImage& Image, const QString& strPath, int nDPI);

// An image encoded by type id: 1 BMP, 2 JPEG, 3 PNG. Empty for another id or an image that cannot be encoded.
QByteArray EncodeImage(const QImage& Image, int nImageTypeID, bool bTransparentWhite);

// Turns encoded bytes of the type into an image file of the same type. False for bytes that are no such
// image, for images that would unpack beyond 256 MiB, and for files that cannot be written whole.
bool SaveEncodedImage(const QByteArray& Encoded, int nImageTypeID, const QString& strPath);

// A zero-terminated copy for the host, made with new[]; the host gives it back through a Free function.
char* TextForHost(const QByteArray& Text);

// Takes such a text back; null is ignored. Writes its lines under Label, with the text's name in them.
void FreeTextOfHost(const CLogLabel& Label, const char* pszArgument, const char* pText);
