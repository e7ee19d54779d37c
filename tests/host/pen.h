#pragma once

// What the tests of the pen and of the exports share: a signature drawn a second time by the tests' own
// arithmetic, pictures compared pixel by pixel, and the texts that the library hands over.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRect>

#include "harness.h"

namespace scribera::test {

struct Ink // a stored point, as getPackets gives it
{
    std::uint16_t x;
    std::int16_t y;
    std::int16_t pressure;
    std::uint8_t status;

    bool operator==(const Ink&) const = default;
};

void PrintTo(const Ink& ink, std::ostream* out);

struct Mapped
{
    double x;
    double y;
    double pressure;
};

struct Segment
{
    QPointF from;
    QPointF to;
    double width;
    QColor color;
};

// The signature as it should be: canvas, stored points and segments, fed with the samples that the pad sends.
// Knows nothing of keys but that a touch ends the stroke.
class Redraw
{
public:
    Redraw(const PadModel& model, int width, int height);

    void feed(const ScrSimSample& sample);
    void feed(const std::vector<ScrSimSample>& samples);
    void clear();                       // as Clear does
    void wipe();                        // the picture only
    void resize(int width, int height); // as the widget does
    Mapped map(int x, int y, int pressure) const;

    void setPenWidth(int width) { m_penWidth = width; }
    void setPressure(bool on) { m_pressure = on; }
    void setColor(const QColor& color) { m_color = color; }
    void setMaxPressure(int pressure) { m_maxPressure = pressure; }

    const QImage& image() const { return m_image; }
    const std::vector<Ink>& points() const { return m_points; }
    const std::vector<Segment>& segments() const { return m_segments; }

private:
    const PadModel& m_model;
    QImage m_image;
    int m_penWidth = 3;
    bool m_pressure = true;
    QColor m_color = Qt::black;
    int m_maxPressure;
    bool m_down = false;
    bool m_strokesGone = false;
    double m_lastX = 0;
    double m_lastY = 0;
    std::vector<Ink> m_points;
    std::vector<Segment> m_segments;
};

// Base of the tests that hold the pad's ink against the same ink drawn by the tests.
class InkTest : public PadTest
{
protected:
    bool start(const StartOptions& options = {}); // the pad, and an empty redraw beside it
    void startWithInk(int width = 400, int height = 200);
    Redraw& redraw() { return *m_redraw; }
    const QImage& canvas() const { return m_redraw->image(); }

    // On the pad and in the redraw.
    void draw(const std::vector<ScrSimSample>& samples);
    void setPenWidth(int width);
    void setPenColor(const QColor& color);
    void setPressure(bool on);
    void expectSameInk(const std::string& when = ""); // the stored points and the canvas

private:
    std::unique_ptr<Redraw> m_redraw;
};

// Bases of the tests that begin with an open pad of 400 x 200, without and with ink on it.
class OpenInkTest : public InkTest
{
protected:
    void SetUp() override;
};

class SignedTest : public InkTest
{
protected:
    void SetUp() override;
};

// ---------------------------------------------------------------------------------------------- pictures

QImage blank(int width, int height); // white

// Equal in size, format of 32 bits and every bit of every pixel.
testing::AssertionResult same(const QImage& seen, const QImage& expected);
// Same size and same red, green and blue everywhere.
testing::AssertionResult sameColors(const QImage& seen, const QImage& expected);
// Same size and same value everywhere, alpha included.
testing::AssertionResult samePixels(const QImage& seen, const QImage& expected);
// Transparent exactly where the canvas is white, opaque and equal to it elsewhere.
testing::AssertionResult isCanvasOnNothing(const QImage& seen, const QImage& canvas);
// Each picture has ink where the other has much of it.
testing::AssertionResult inkAgrees(const QImage& seen, const QImage& canvas);
bool isWhite(const QImage& image);

// The smallest rectangle with all ink, and that widened by the margins and cut at the picture's edges; both
// null without ink.
QRect inkOf(const QImage& image);
QRect inkBox(const QImage& image, long long marginX, long long marginY);

QImage loaded(const std::string& path); // by content, whatever the suffix says
QImage decoded(const QByteArray& bytes, const char* format);
QByteArray encoded(const QImage& image, const char* format);
QImage onNothing(const QImage& canvas); // with the white made transparent

// Renders an SVG file on white in a process of its own, which has an application object.
QImage renderedSvg(const std::string& path, const QSize& size);

// ---------------------------------------------------------------------------------------------- the library

struct Taken // a text of the library, already given back
{
    bool null = true;
    std::string text;
    QByteArray bytes() const { return QByteArray::fromBase64(QByteArray::fromStdString(text)); }
};

Taken takeImage(Pad& pad, int imageType);
Taken takeImageEx(Pad& pad, int imageType, bool transparent);
Taken takeSvg(Pad& pad);
std::string takeTime(Pad& pad, int index); // "" for null

std::vector<Ink> storedPoints(Pad& pad);
int decode(Pad& pad, int imageType, const std::string& text, const std::string& path);
int saveWide(Pad& pad, int imageType, std::wstring path, int dpiLevel = 1);

// What getPackets gives for every index equals the points of the redraw.
testing::AssertionResult holdsPoints(Pad& pad, const Redraw& redraw);
// The canvas in a BMP and, with white made transparent, in a PNG equals the redraw.
testing::AssertionResult holdsCanvas(Pad& pad, const Redraw& redraw);

std::string printed(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Calls of the status callback, in order. One recorder for a process.
class StatusRecorder
{
public:
    explicit StatusRecorder(Pad& pad);
    ~StatusRecorder() { unblock(); }
    StatusRecorder(const StatusRecorder&) = delete;
    StatusRecorder& operator=(const StatusRecorder&) = delete;

    std::vector<int> statuses() const;
    bool waitFor(std::size_t count) const;
    void block() { s_isBlocked = true; }    // the next callbacks do not return
    void unblock() { s_isBlocked = false; } // until this
    bool isInside() const { return s_isInside; }

private:
    static void receive(int status);

    static inline std::mutex s_mutex;
    static inline std::vector<int> s_statuses; // guarded by s_mutex; written on the library's thread
    static inline std::atomic<bool> s_isBlocked = false;
    static inline std::atomic<bool> s_isInside = false;
};

// ---------------------------------------------------------------------------------------------- ink stream

struct StreamRecord
{
    std::uint16_t x = 0;
    std::int16_t y = 0;
    std::int16_t pressure = 0;
    std::uint8_t status = 0;
    std::uint8_t padding = 0;
    std::int64_t tick = 0;
    std::int64_t seconds = 0;
};
static_assert(sizeof(StreamRecord) == 24);

std::vector<StreamRecord> recordsOf(const QByteArray& stream);
QByteArray streamOf(const std::vector<StreamRecord>& records);

} // namespace scribera::test
