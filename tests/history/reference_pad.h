#pragma once

// A sign object written down a second time: every documented step as a plain Qt call, in the documented
// order, with nothing done early, late, partly or only once to save time. Histories hold the library against
// it.
//
// It has no threads. What the library does on its own threads, the test asks for at the moment when the
// library has done it: ReferencePad::mergeAfterTransfer().

#include <array>
#include <optional>
#include <utility>
#include <vector>

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QRect>

#include "fingerprint_reference.h"

namespace scribera::test {

inline constexpr int success = 0;
inline constexpr int noObject = -1;
inline constexpr int invalidParameters = -2;
inline constexpr int nothingThere = -8;

// Where the host wants the fingerprint when it asks a pad in a window.
enum class PrintParent
{
    Own,   // the window that the pad itself lies in
    Other, // some other window
    Null
};

// A file that the library is asked for: what the call returns, and what lies there afterwards.
struct SavedFile
{
    int result = nothingThere;
    std::optional<QByteArray> content;
};

using Text = std::optional<QByteArray>; // nothing stands for a null pointer
using RealTimeCall = std::pair<unsigned long, long>;

class ReferencePad
{
public:
    // A widget begins with its window's geometry already delivered.
    ReferencePad(const PadCase& padCase, int maxPressure, int width, int height);

    // ---- the pen
    void sample(const ScrSimSample& sample);
    int setPenWidth(int width);
    int setPenColor(int red, int green, int blue);
    int setPenStyle(bool withPressure, int driverResult);

    // ---- the fingerprint
    bool takePrint(const Bytes& grey, int score); // whether it was good enough
    void mergeAfterTransfer() { merge(); }
    int placeOnWidget(PrintParent parent, const QRect& place);
    int placeOffScreen(int canvasWidth, int canvasHeight, const QRect& place);

    // ---- the host
    int clear(int driverResult);
    int openLcd(bool on, int driverResult);
    void resize(int width, int height);
    int setClip(bool clip, int marginX, int marginY);
    int takeKeyStatus();
    void setRealTimeCallback() { m_realTimeIsSet = true; }

    // ---- what the host can ask for
    int pointCount() const;
    const std::vector<Ink>& points() const { return m_points; }
    SavedFile save(int imageType, const std::string& path, int dpiLevel) const;
    Text encode(int imageType) const { return encodeEx(imageType, true); }
    Text encodeEx(int imageType, bool transparent) const;
    Text svgText() const;
    Text printText(int imageType, bool printOnly);
    std::array<std::int32_t, 2> deviceInfo(int index) const;

    const QImage& canvas() const { return m_canvas; }
    const QImage& elsewhere() const { return m_elsewhere; } // null as long as no place was asked for
    int maxPressure() const { return m_maxPressure; }
    bool clips() const { return m_clip; }
    int marginX() const { return m_marginX; }
    int marginY() const { return m_marginY; }
    bool clearReachesDriver() const { return !m_penDownOnCancelButton; }

    // ---- what reached the host's callbacks so far
    const std::vector<int>& statusCalls() const { return m_statusCalls; }
    const std::vector<RealTimeCall>& realTimeCalls() const { return m_realTimeCalls; }

private:
    Mapped map(int x, int y, int pressure) const;
    void segmentTo(const Mapped& place);
    void store(const Ink& point, int x, int y, int pressure, int realTimeState);
    void runKeyAction(int key);
    void clearSignCanvas();
    void merge();
    bool hasSomethingToSave() const;
    QImage source(QRect* box) const;
    QRect boundingBox(const QImage& image) const;
    QByteArray svg(const QImage& image, int dpi, const QRect& box) const;
    QByteArray pdf(const QImage& image, int dpi) const;
    static QByteArray encoded(QImage image, int imageType, bool transparent);

    const PadModel& m_model;
    const bool m_isWidget;

    // pen
    int m_maxPressure;
    int m_penWidth = 3;
    bool m_withPressure = true;
    QColor m_penColor = Qt::black;
    bool m_penDown = false;
    double m_lastX = 0;
    double m_lastY = 0;
    std::vector<Ink> m_points;

    // keys
    int m_keyStatus = -1;
    int m_penDownKey = -1;
    bool m_penDownOnCancelButton = false;
    std::vector<int> m_statusCalls;
    bool m_realTimeIsSet = false;
    std::vector<RealTimeCall> m_realTimeCalls;

    // pictures: on the pad with fingerprints the canvas is the merge of the other two
    QImage m_canvas;
    QImage m_strokes;
    QImage m_print;
    int m_score = 0;

    // where the print goes
    Placement m_placement = Placement::None;
    QRect m_printPlace = QRect(QPoint(0, 0), QPoint(-1, -1));
    QImage m_elsewhere;
    QRect m_elsewherePlace;

    // clipping
    bool m_clip = false;
    int m_marginX = 0;
    int m_marginY = 0;
};

} // namespace scribera::test
