// Images that exports share with the canvas they were taken from.
#pragma once

#include "sync/attempt.h"
#include "sync/tsan.h"

#include <QImage>
#include <QRect>

#include <utility>

// Gives the image pixels of its own, as drawing into it would. False for a null image, and when there is no
// memory for them: unlike drawing, this leaves the image as it was then.
inline bool MakeWritable(QImage& Image)
{
    if (Image.isNull() || Image.isDetached())
        return !Image.isNull();
    QImage Own;
    if (!Attempt([&] { Own = Image.copy(); }) || Own.isNull())
        return false;
    Image = std::move(Own);
    return true;
}

// Stands for an image in the eyes of ThreadSanitizer, which cannot see Qt's own painting: note every access
// to the image here, and a missing lock shows. Costs nothing in other builds.
class CImageWitness
{
public:
    void NoteRead() const
    {
#if defined(SCRIBERA_TSAN)
        static_cast<void>(*static_cast<const volatile int*>(&m_nAccess));
#endif
    }

    void NoteWrite()
    {
#if defined(SCRIBERA_TSAN)
        *static_cast<volatile int*>(&m_nAccess) = 1;
#endif
    }

    // Before the pixels of the image itself are written: takes them away from those that share them.
    void NoteWriteInPlace(QImage& Image)
    {
        MakeWritable(Image);
        TsanAcquire(this);
        NoteWrite();
    }

    void NoteSharingEnds() const
    {
        TsanRelease(const_cast<CImageWitness*>(this));
    }

private:
#if defined(SCRIBERA_TSAN)
    int m_nAccess = 0;
#endif
};

// An image that shares its pixels with the one it was taken from, until that one is written. Copies of it
// must not outlive it: whether a writer may use the pixels is told by Qt's reference count, and as
// ThreadSanitizer does not see that, the last of the sharers announces its end before it gives up its part.
class CSharedImage
{
public:
    CSharedImage(QImage Image, const QRect& rcInkArea, const CImageWitness& Witness)
        : m_Image(std::move(Image)), m_rcInkArea(rcInkArea), m_Witness(Witness)
    {
    }
    ~CSharedImage() { m_Witness.NoteSharingEnds(); }
    CSharedImage(const CSharedImage&) = delete;
    CSharedImage& operator=(const CSharedImage&) = delete;

    const QImage& Image() const { return m_Image; }

    // Outside of this part all pixels are opaque white.
    const QRect& InkArea() const { return m_rcInkArea; }

private:
    const QImage m_Image;
    const QRect m_rcInkArea;
    const CImageWitness& m_Witness;
};
