#pragma once

// What the fingerprint pad's pictures must look like, worked out here from raw values with a painter of our
// own, and a fixture that keeps such a copy beside the library's object.

#include <optional>

#include "pen.h"

namespace scribera::test {

inline constexpr int printWidth = 208;
inline constexpr int printHeight = 288;
inline constexpr int devicePictureSize = 104 * 144 * 2;

using Bytes = std::vector<unsigned char>;

Bytes ridges(unsigned seed);           // grey values of a print with lines and some noise
Bytes evenPrint(unsigned char value);  // every pixel alike
int meanOf(const Bytes& print);        // rounded down
QImage twoColours(const Bytes& print); // as the host sees it
Bytes devicePicture(const Bytes& print);

enum class Placement
{
    None,
    SameWidget,
    OtherWidget,
    OffScreen
};

// The three canvases and the placement of one sign object.
class PadPictures
{
public:
    PadPictures(int width, int height);

    void sample(const ScrSimSample& sample); // draws; a merge is due after every segment
    void samples(const std::vector<ScrSimSample>& samples);
    void takePrint(const Bytes& print);
    void merge();
    void clear();
    void resize(int width, int height);
    void placeSame(const QRect& place); // an empty or turned rectangle stays what it is
    void storePlace(const QRect& place);
    void placeElsewhere(Placement placement, const QSize& canvas, const QRect& place);
    void replaceHolder(const QSize& canvas, const QRect& place);

    void setPenWidth(int width) { m_penWidth = width; }
    void setPenColor(const QColor& color) { m_penColor = color; }
    void setWithPressure(bool on) { m_withPressure = on; }

    const QImage& canvas();                             // the merged picture
    const QImage& strokes() const { return m_strokes; } // pen only
    const QImage& print() const { return m_print; }
    const QImage& holder(); // the picture elsewhere
    QRect place() const { return m_place; }
    Placement placement() const { return m_placement; }

private:
    // Merges of segments in a row give what the last one gives, so only that one is done, before anything
    // else happens.
    void settle();
    void segment(double x, double y, double width);

    QImage m_canvas;
    QImage m_strokes;
    QImage m_print;
    QImage m_holder;
    QRect m_place = QRect(QPoint(0, 0), QPoint(-1, -1));
    QRect m_holderPlace = QRect(QPoint(0, 0), QPoint(-1, -1));
    Placement m_placement = Placement::None;
    double m_lastX = 0;
    double m_lastY = 0;
    bool m_mergeIsDue = false;
    bool m_penDown = false;
    int m_penWidth = 3;
    bool m_withPressure = true;
    QColor m_penColor = Qt::black;
};

QByteArray encoded(const QImage& image, int imageType); // Base64; white of a PNG becomes transparent
QByteArray encodedOpaque(const QImage& image, int imageType);
QImage decoded(const QByteArray& base64);

// Samples of a signature without pen-up: thin, thick, short, long, outside the area, at the least pressure.
std::vector<ScrSimSample> longSignature(const PadModel& model, int segments, unsigned seed);

std::vector<PadCase> fingerprintCases(std::optional<Kind> kind = std::nullopt); // both kinds without one

// Of one kind where that is given too.
#define SCRIBERA_INSTANTIATE_FINGERPRINT(Suite, ...)                                                         \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::ValuesIn(scribera::test::fingerprintCases(__VA_ARGS__)),      \
                             scribera::test::caseName)

class FingerprintTest : public PadTest
{
protected:
    void TearDown() override;

    // Starts the pad and a fresh copy of its pictures beside it.
    bool start(int width = 400, int height = 200);

    void draw(const std::vector<ScrSimSample>& samples); // on the pad and in the copy
    void send(const Bytes& print, int score);            // to the pad, and waits for the callback only
    // A print that must be accepted: waits until it was merged, and does the same in the copy.
    void take(const Bytes& print, int score);
    void takeInCopy(const Bytes& print); // taken and merged
    int mergesOnThread() const;          // counted in the log

    void clear();
    void resize(int width, int height); // widget
    void setPenWidth(int width);
    void setPenColor(const QColor& color);

    QImage canvas();                        // what the library holds
    QImage printPicture(bool only = false); // the export of the print, null when there is none
    QByteArray printText(int imageType, bool only);
    QByteArray svgText();
    QByteArray encode(int imageType);
    QByteArray encodeEx(int imageType, bool transparent);
    void expectSame(const std::string& what);

    int place(QWidget* parent, const QRect& canvas, const QRect& place);
    int placeSame(const QRect& rectangle); // copy included where it succeeds
    // Widget: a window of its own for each call, wanted at the size of a new child; windowless: a canvas.
    int placeElsewhere(const QRect& rectangle);
    QWidget& otherWindow() { return *m_otherWindows.back(); }
    QWidget* printWidget(); // the newest
    static std::vector<QWidget*> printWidgets(QWidget* parent);
    QSize holderSize() const { return padCase().isWidget() ? QSize(100, 30) : QSize(300, 260); }

    Texts mergeTexts(const QSize& canvas) const; // lines of one merge in the copy's state

    std::unique_ptr<PadPictures> m_copy;
    std::vector<std::unique_ptr<QWidget>> m_otherWindows;

private:
    QByteArray taken(char* text, void (*giveBack)(int, char*)); // null from null
};

// Base of the tests that begin with an open pad of 400 x 200 and its copy.
class OpenFingerprintTest : public FingerprintTest
{
protected:
    void SetUp() override;
};

Texts afterTicks(const std::vector<LogLine>& lines, const std::string& label);

} // namespace scribera::test
