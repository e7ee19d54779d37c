#include "pen.h"

#include "stroke_hint.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <thread>

#include <QBuffer>
#include <QPainter>
#include <QSvgRenderer>

namespace scribera::test {

namespace fs = std::filesystem;

void PrintTo(const Ink& ink, std::ostream* out)
{
    *out << "(" << ink.x << ", " << ink.y << ", " << ink.pressure << ", " << int(ink.status) << ")";
}

// ---------------------------------------------------------------------------------------------- redraw

namespace {

double clamped(long long value, int origin, int range)
{
    return static_cast<double>(std::clamp<long long>(value - origin, 0, range - 1));
}

} // namespace

Redraw::Redraw(const PadModel& model, int width, int height)
    : m_model(model), m_image(blank(width, height)), m_maxPressure(model.maxPressure)
{
}

Mapped Redraw::map(int x, int y, int pressure) const
{
    const double xScale = m_image.width() / static_cast<double>(m_model.areaWidth);
    const double yScale = m_image.height() / static_cast<double>(m_model.areaHeight);
    const double pressureScale = m_model.maxPressure == 8192 ? m_penWidth * 3.0 / 8192 : m_penWidth / 306.0;
    return {clamped(x, m_model.originX, m_model.areaWidth) * xScale,
            clamped(y, m_model.originY, m_model.areaHeight) * yScale, pressure * pressureScale};
}

void Redraw::feed(const ScrSimSample& sample)
{
    const Mapped place = map(sample.x, sample.y, sample.pressure);
    const Ink point = {static_cast<std::uint16_t>(sample.x), static_cast<std::int16_t>(sample.y),
                       static_cast<std::int16_t>(sample.pressure), 0};
    switch (sample.penStatus) {
    case PenDown:
        m_down = true;
        m_lastX = place.x;
        m_lastY = place.y;
        m_points.push_back(point);
        break;
    case PenMove: {
        if (!m_down || sample.pressure > m_maxPressure)
            break;
        const double width = m_pressure ? place.pressure : m_penWidth;
        if (m_strokesGone)
            wipe();
        m_strokesGone = false;
        QPainter painter(&m_image);
        painter.setRenderHint(strokeHint);
        QPen pen(QBrush(Qt::black, Qt::SolidPattern), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        pen.setColor(m_color);
        painter.setPen(pen);
        const QLineF line(m_lastX, m_lastY, place.x, place.y);
        painter.drawLines(&line, 1);
        painter.end();
        m_segments.push_back({line.p1(), line.p2(), width, m_color});
        m_lastX = place.x;
        m_lastY = place.y;
        m_points.push_back(point);
        break;
    }
    case PenUp:
        if (m_down && !m_points.empty()) {
            m_points.push_back(m_points.back());
            m_points.back().status = 1;
        }
        m_down = false;
        break;
    case CancelKeyDown:
    case ConfirmKeyDown:
        m_down = false;
        break;
    default:
        break;
    }
}

void Redraw::feed(const std::vector<ScrSimSample>& samples)
{
    for (const ScrSimSample& sample : samples)
        feed(sample);
}

void Redraw::wipe()
{
    m_image.fill(Qt::white);
}

void Redraw::clear()
{
    wipe();
    m_points.clear();
    m_segments.clear();
}

void Redraw::resize(int width, int height)
{
    QImage image = blank(width, height);
    for (int y = 0; y < std::min(height, m_image.height()); ++y) {
        for (int x = 0; x < std::min(width, m_image.width()); ++x)
            image.setPixel(x, y, m_image.pixel(x, y));
    }
    m_image = image;
    // The fingerprint pad builds its picture anew from its strokes, and a resize takes those away.
    m_strokesGone = m_model.hasFingerprint;
}

bool InkTest::start(const StartOptions& options)
{
    m_redraw = std::make_unique<Redraw>(model(), options.width, options.height);
    return pad().start(options);
}

void InkTest::startWithInk(int width, int height)
{
    ASSERT_TRUE(start({.width = width, .height = height}));
    draw(wave(model(), 30));
}

void InkTest::draw(const std::vector<ScrSimSample>& samples)
{
    pad().draw(samples);
    redraw().feed(samples);
}

void InkTest::setPenWidth(int width)
{
    ASSERT_EQ(api().SetPenWidth(type(), width), 0);
    redraw().setPenWidth(width);
}

void InkTest::setPenColor(const QColor& color)
{
    ASSERT_EQ(api().SetPenColor(type(), color.red(), color.green(), color.blue()), 0);
    redraw().setColor(color);
}

void InkTest::setPressure(bool on)
{
    ASSERT_EQ(api().SetPenStyle(type(), on), 0);
    redraw().setPressure(on);
}

void InkTest::expectSameInk(const std::string& when)
{
    EXPECT_TRUE(holdsPoints(pad(), redraw())) << when;
    EXPECT_TRUE(holdsCanvas(pad(), redraw())) << when;
}

void OpenInkTest::SetUp()
{
    InkTest::SetUp();
    ASSERT_TRUE(start());
}

void SignedTest::SetUp()
{
    InkTest::SetUp();
    startWithInk();
}

// ---------------------------------------------------------------------------------------------- pictures

namespace {

// Of pictures with 32 bits a pixel.
template <class Same>
testing::AssertionResult compareBits(const QImage& a, const QImage& b, Same same)
{
    if (a.size() != b.size())
        return testing::AssertionFailure() << "size " << a.width() << " x " << a.height() << ", expected "
                                           << b.width() << " x " << b.height();
    int differences = 0;
    std::string first;
    for (int y = 0; y < a.height(); ++y) {
        const auto* left = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* right = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            if (same(left[x], right[x]))
                continue;
            if (differences++ == 0)
                first = printed("(%d, %d) is %08x, expected %08x", x, y, left[x], right[x]);
        }
    }
    if (differences == 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << differences << " pixels differ, the first: " << first;
}

template <class Same>
testing::AssertionResult compare(const QImage& seen, const QImage& expected, Same same)
{
    return compareBits(seen.convertToFormat(QImage::Format_ARGB32),
                       expected.convertToFormat(QImage::Format_ARGB32), same);
}

bool hasInk(QRgb pixel)
{
    return (pixel & 0xffffff) != 0xffffff;
}

} // namespace

QImage blank(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::white);
    return image;
}

testing::AssertionResult same(const QImage& seen, const QImage& expected)
{
    if (seen.isNull() || seen.depth() != 32 || expected.depth() != 32)
        return testing::AssertionFailure()
               << "pictures of " << seen.depth() << " and " << expected.depth() << " bits";
    return compareBits(seen, expected, std::equal_to<QRgb>());
}

testing::AssertionResult sameColors(const QImage& seen, const QImage& expected)
{
    return compare(seen, expected, [](QRgb a, QRgb b) { return (a & 0xffffff) == (b & 0xffffff); });
}

testing::AssertionResult samePixels(const QImage& seen, const QImage& expected)
{
    return compare(seen, expected, std::equal_to<QRgb>());
}

testing::AssertionResult isCanvasOnNothing(const QImage& seen, const QImage& canvas)
{
    return compare(seen, canvas, [](QRgb a, QRgb b) { return hasInk(b) ? a == b : qAlpha(a) == 0; });
}

testing::AssertionResult inkAgrees(const QImage& seen, const QImage& canvas)
{
    // An edge may fall a little differently, the middle of a line may not.
    const auto strong = [](QRgb pixel) { return qGray(pixel) < 64; };
    return compare(seen, canvas,
                   [&](QRgb a, QRgb b) { return !(strong(a) && !hasInk(b)) && !(strong(b) && !hasInk(a)); });
}

bool isWhite(const QImage& image)
{
    return !image.isNull() && inkOf(image).isNull();
}

QRect inkOf(const QImage& image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (hasInk(image.pixel(x, y)))
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

QRect inkBox(const QImage& image, long long marginX, long long marginY)
{
    const QRect ink = inkOf(image);
    if (ink.isNull())
        return {};
    const auto left = static_cast<int>(std::max(0LL, ink.left() - marginX));
    const auto top = static_cast<int>(std::max(0LL, ink.top() - marginY));
    const auto right = static_cast<int>(std::min(image.width() - 1LL, ink.right() + marginX));
    const auto bottom = static_cast<int>(std::min(image.height() - 1LL, ink.bottom() + marginY));
    return {QPoint(left, top), QPoint(right, bottom)};
}

QImage loaded(const std::string& path)
{
    const std::string content = fileContent(path);
    return QImage::fromData(reinterpret_cast<const uchar*>(content.data()), static_cast<int>(content.size()));
}

QImage decoded(const QByteArray& bytes, const char* format)
{
    return QImage::fromData(bytes, format);
}

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return bytes;
}

QImage onNothing(const QImage& canvas)
{
    QImage image = canvas;
    image.setAlphaChannel(image.createMaskFromColor(QColor(Qt::white).rgb(), Qt::MaskOutColor));
    return image;
}

namespace {

int renderSvg(const std::vector<std::string>& arguments)
{
    ensureApplication();
    QSvgRenderer renderer(QString::fromStdString(arguments.at(0)));
    if (!renderer.isValid())
        return 1;
    QImage image(std::stoi(arguments.at(2)), std::stoi(arguments.at(3)), QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(image.rect()));
    painter.end();
    return image.save(QString::fromStdString(arguments.at(1)), "PNG") ? 0 : 2;
}

const ChildProgram svgRenderer("render-svg", renderSvg);

} // namespace

QImage renderedSvg(const std::string& path, const QSize& size)
{
    const std::string picture = "rendered-svg.png";
    EXPECT_TRUE(endedWell(runChild(
        "render-svg", {path, picture, std::to_string(size.width()), std::to_string(size.height())})));
    return loaded(picture);
}

// ---------------------------------------------------------------------------------------------- the library

namespace {

template <class Free>
Taken take(char* text, Free free)
{
    Taken taken;
    taken.null = text == nullptr;
    if (text)
        taken.text = text;
    free(text);
    return taken;
}

} // namespace

Taken takeImage(Pad& pad, int imageType)
{
    return take(pad.api().PacketsBase64Encode(pad.type(), imageType),
                [&](char* text) { pad.api().PacketsBase64EncodeFree(pad.type(), text); });
}

Taken takeImageEx(Pad& pad, int imageType, bool transparent)
{
    return take(pad.api().PacketsBase64EncodeEx(pad.type(), imageType, transparent),
                [&](char* text) { pad.api().PacketsBase64EncodeExFree(pad.type(), text); });
}

Taken takeSvg(Pad& pad)
{
    return take(pad.api().GetSVGImageBase64Data(pad.type()),
                [&](char* text) { pad.api().FreeSVGImageBase64Data(pad.type(), text); });
}

std::string takeTime(Pad& pad, int index)
{
    return take(pad.api().GetInkPointTime(pad.type(), index),
                [&](char* text) { pad.api().FreeInkPointTime(pad.type(), text); })
        .text;
}

std::vector<Ink> storedPoints(Pad& pad)
{
    std::vector<Ink> points;
    for (Packet packet{}; pad.api().getPackets(pad.type(), &packet) == 0; ++packet.index)
        points.push_back({packet.x, packet.y, packet.pressure, packet.status});
    return points;
}

int decode(Pad& pad, int imageType, const std::string& text, const std::string& path)
{
    std::wstring widePath = wide(path);
    return pad.api().Base64Decode(pad.type(), imageType, text.c_str(), widePath.data());
}

int saveWide(Pad& pad, int imageType, std::wstring path, int dpiLevel)
{
    return pad.api().SaveDrawingImage(pad.type(), imageType, path.data(), dpiLevel);
}

testing::AssertionResult holdsPoints(Pad& pad, const Redraw& redraw)
{
    const std::vector<Ink> seen = storedPoints(pad);
    const std::vector<Ink>& expected = redraw.points();
    const int count = expected.empty() ? -8 : static_cast<int>(expected.size());
    if (pad.points() != count || seen.size() != expected.size())
        return testing::AssertionFailure() << "count " << pad.points() << ", readable " << seen.size()
                                           << ", expected " << expected.size();
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (!(seen[i] == expected[i]))
            return testing::AssertionFailure() << "point " << i << " is " << testing::PrintToString(seen[i])
                                               << ", expected " << testing::PrintToString(expected[i]);
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult holdsCanvas(Pad& pad, const Redraw& redraw)
{
    const std::string bmp = "canvas.bmp";
    const std::string png = "canvas.png";
    fs::remove(bmp);
    fs::remove(png);
    const int bmpResult = pad.save(ImageBmp, bmp);
    const int pngResult = pad.save(ImagePng, png);
    if (bmpResult != 0 || pngResult != 0)
        return testing::AssertionFailure() << "saving gave " << bmpResult << " and " << pngResult;
    if (testing::AssertionResult same = sameColors(loaded(bmp), redraw.image()); !same)
        return same << " (BMP)";
    if (testing::AssertionResult same = isCanvasOnNothing(loaded(png), redraw.image()); !same)
        return same << " (PNG)";
    return testing::AssertionSuccess();
}

std::string printed(const char* format, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

StatusRecorder::StatusRecorder(Pad& pad)
{
    EXPECT_EQ(pad.api().SignatureStatusCallback(pad.type(), receive), 0);
}

void StatusRecorder::receive(int status)
{
    {
        const std::lock_guard lock(s_mutex);
        s_statuses.push_back(status);
    }
    s_isInside = true;
    while (s_isBlocked)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    s_isInside = false;
}

std::vector<int> StatusRecorder::statuses() const
{
    const std::lock_guard lock(s_mutex);
    return s_statuses;
}

bool StatusRecorder::waitFor(std::size_t count) const
{
    return waitUntil([&] { return statuses().size() >= count; });
}

// ---------------------------------------------------------------------------------------------- ink stream

std::vector<StreamRecord> recordsOf(const QByteArray& stream)
{
    std::vector<StreamRecord> records(static_cast<std::size_t>(stream.size()) / sizeof(StreamRecord));
    if (!records.empty())
        std::memcpy(records.data(), stream.constData(), records.size() * sizeof(StreamRecord));
    return records;
}

QByteArray streamOf(const std::vector<StreamRecord>& records)
{
    QByteArray stream(reinterpret_cast<const char*>(records.data()),
                      static_cast<int>(records.size() * sizeof(StreamRecord)));
    stream.append('\0');
    return stream;
}

} // namespace scribera::test
