// The library as a host loads it, with the benchmark in the driver's place.
#pragma once

#include "comparison.h"
#include "recording.h"
#include "scriberasdk.h"

#include <QImage>
#include <QLineF>
#include <QSize>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace bench {

struct Model
{
    const char* name;
    int deviceType;
};
extern const std::vector<Model> models;
const Model& modelNamed(const std::string& name);

// The canvas sizes that every figure is measured at.
extern const std::vector<QSize> canvasSizes;
std::string nameOf(const QSize& size);

// One build of the library.
class Library
{
public:
    // As it is shipped; without its log calls.
    static Library& shipped();
    static Library& withoutLog();

    void* symbol(const std::string& name) const;
    void enableLog(bool enables) const;
    // What the worker threads of the pads do that are opened from now on: SCRX_WORKERS_POLL or _WAIT.
    void setWorkers(int mode) const;

private:
    explicit Library(const char* path);
    void* m_handle;
};

struct PenSample
{
    int x;
    int y;
    int pressure;
    int status;
};

// A segment as it is drawn: ends and width in pixels.
struct Segment
{
    QLineF line;
    double width;
};

// A recorded signature, brought to a pad and a canvas.
struct Signature
{
    Signature(const Model& model, const QSize& canvas);

    std::vector<std::vector<PenSample>> strokes; // each begins with the pen's touch
    std::vector<std::vector<Segment>> segments;  // of each stroke, one for each of its moves
    int moves = 0;
};

// An open pad with an object without a window, or in `parent`.
class Pad
{
public:
    Pad(Library& library, const Model& model, const QSize& canvas, QWidget* parent = nullptr);
    ~Pad();
    Pad(const Pad&) = delete;
    Pad& operator=(const Pad&) = delete;

    void sample(const PenSample& sample) const { m_pen(sample.x, sample.y, sample.pressure, sample.status); }
    void write(const Signature& signature) const;
    // A fingerprint on the canvas, merged with the strokes.
    void takeFingerprint() const;
    // One of the family's functions, without its prefix.
    template <typename Function>
    Function* function(const char* name) const
    {
        return reinterpret_cast<Function*>(m_library.symbol("SC" + std::string(m_model.name) + "_" + name));
    }
    int deviceType() const { return m_model.deviceType; }
    QImage canvas() const;

private:
    Library& m_library;
    const Model& m_model;
    void (*m_pen)(int, int, int, int);
    void (*m_fingerprint)(unsigned char*, int, int);
};

// A canvas with the whole signature, closed again with the last owner.
struct SignedPad
{
    SignedPad(const char* name, const QSize& size)
        : model(modelNamed(name)), signature(model, size), pad(Library::shipped(), model, size)
    {
        pad.write(signature);
    }

    const Model& model;
    Signature signature;
    Pad pad;
};

// Sides of a comparison: one move of the signature, all of them through the pad, or drawn on the image.
Side movesOf(const std::shared_ptr<Pad>& pad, const std::shared_ptr<Signature>& signature);
Side segmentsOf(const std::shared_ptr<QImage>& image, const std::shared_ptr<Signature>& signature);

// The signature as a file of the library; false when it is not saved.
bool savePng(const Pad& pad, std::wstring path);

// A white image like the canvas, and a segment drawn on it as anybody would.
QImage blankImage(const QSize& size);
void drawBare(QImage& image, const Segment& segment);
void drawBare(QImage& image, const Signature& signature);

} // namespace bench
