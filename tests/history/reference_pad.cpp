#include "reference_pad.h"

#include "stroke_hint.h"

#include <algorithm>
#include <cstdint>

#include <QBuffer>
#include <QPainter>
#include <QPdfWriter>
#include <QPixmap>
#include <QSvgGenerator>

namespace scribera::test {

namespace {

const QRectF wholePrint(0, 0, printWidth, printHeight);

QPen penOf(const QColor& color, double width)
{
    QPen pen(QBrush(Qt::black, Qt::SolidPattern), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    pen.setColor(color);
    return pen;
}

QRectF asFloating(const QRect& place)
{
    return QRectF(place.left(), place.top(), place.right() - place.left() + 1,
                  place.bottom() - place.top() + 1);
}

bool liesIn(const QRect& place, int width, int height)
{
    const auto inside = [&](const QPoint& corner) {
        return corner.x() >= 0 && corner.x() <= width - 1 && corner.y() >= 0 && corner.y() <= height - 1;
    };
    return inside(place.topLeft()) && inside(place.bottomRight());
}

int dotsPerMetre(int dpi)
{
    return static_cast<int>(dpi / 0.0254);
}

const char* formatOf(int imageType)
{
    return imageType == ImageJpeg ? "JPG" : imageType == ImagePng ? "PNG" : "BMP";
}

} // namespace

ReferencePad::ReferencePad(const PadCase& padCase, int maxPressure, int width, int height)
    : m_model(*padCase.model), m_isWidget(padCase.isWidget()), m_maxPressure(maxPressure),
      m_canvas(blank(width, height)), m_strokes(blank(width, height)), m_print(blank(printWidth, printHeight))
{
}

// ---------------------------------------------------------------------------------------------- the pen

Mapped ReferencePad::map(int x, int y, int pressure) const
{
    const int dx = std::clamp(x - m_model.originX, 0, m_model.areaWidth - 1);
    const int dy = std::clamp(y - m_model.originY, 0, m_model.areaHeight - 1);
    const double xScale = m_canvas.width() / static_cast<double>(m_model.areaWidth);
    const double yScale = m_canvas.height() / static_cast<double>(m_model.areaHeight);
    const bool widthFollowsLimit = m_model.deviceType == 3 || m_model.deviceType == 4;
    const double pressureScale = widthFollowsLimit ? m_penWidth * 3.0 / m_maxPressure : m_penWidth / 306.0;
    return {dx * xScale, dy * yScale, pressure * pressureScale};
}

void ReferencePad::sample(const ScrSimSample& sample)
{
    const Ink point{static_cast<std::uint16_t>(sample.x), static_cast<std::int16_t>(sample.y),
                    static_cast<std::int16_t>(sample.pressure), 0};
    switch (sample.penStatus) {
    case PenDown: {
        m_penDown = true;
        const Mapped place = map(sample.x, sample.y, sample.pressure);
        m_lastX = place.x;
        m_lastY = place.y;
        store(point, sample.x, sample.y, sample.pressure, 1);
        break;
    }
    case PenMove:
        if (!m_penDown || sample.pressure > m_maxPressure)
            break;
        segmentTo(map(sample.x, sample.y, sample.pressure));
        store(point, sample.x, sample.y, sample.pressure, 1);
        break;
    case PenUp:
        if (m_penDown) {
            m_penDown = false;
            if (!m_points.empty()) {
                Ink end = m_points.back();
                end.status = 1;
                store(end, end.x, end.y, end.pressure, 0);
            }
        } else if (m_model.keyAtRelease && m_penDownKey >= 0) {
            runKeyAction(m_penDownKey);
            m_penDownKey = -1;
        }
        break;
    case CancelKeyDown:
    case ConfirmKeyDown: {
        const int key = sample.penStatus == ConfirmKeyDown ? 1 : 0;
        m_penDown = false;
        m_keyStatus = key;
        if (key == 0)
            m_penDownOnCancelButton = true;
        if (m_model.keyAtRelease)
            m_penDownKey = key;
        else
            runKeyAction(key);
        break;
    }
    default:
        break;
    }
}

void ReferencePad::segmentTo(const Mapped& place)
{
    QImage& image = m_model.hasFingerprint ? m_strokes : m_canvas;
    QPainter painter(&image);
    painter.setRenderHint(strokeHint, true);
    painter.setPen(penOf(m_penColor, m_withPressure ? place.pressure : m_penWidth));
    const QLineF line(m_lastX, m_lastY, place.x, place.y);
    painter.drawLines(&line, 1);
    painter.end();
    m_lastX = place.x;
    m_lastY = place.y;
    if (m_model.hasFingerprint)
        merge();
}

void ReferencePad::store(const Ink& point, int x, int y, int pressure, int realTimeState)
{
    m_points.push_back(point);
    if (!m_realTimeIsSet)
        return;
    const auto normalised = [](int raw, int origin, int range) {
        return static_cast<unsigned long>(std::clamp(raw - origin, 0, range - 1) * 65535 / range);
    };
    const unsigned long place = normalised(x, m_model.originX, m_model.areaWidth) |
                                normalised(y, m_model.originY, m_model.areaHeight) << 16;
    m_realTimeCalls.emplace_back(place, static_cast<std::uint16_t>(pressure) | long{realTimeState} << 16);
}

int ReferencePad::setPenWidth(int width)
{
    if (width < 1 || width > 10)
        return invalidParameters;
    m_penWidth = width;
    return success;
}

int ReferencePad::setPenColor(int red, int green, int blue)
{
    m_penColor.setRgb(red, green, blue, 255);
    return success;
}

int ReferencePad::setPenStyle(bool withPressure, int driverResult)
{
    m_withPressure = withPressure;
    return driverResult;
}

// ---------------------------------------------------------------------------------------------- keys

void ReferencePad::runKeyAction(int key)
{
    m_statusCalls.push_back(key);
}

int ReferencePad::takeKeyStatus()
{
    return std::exchange(m_keyStatus, -1);
}

void ReferencePad::clearSignCanvas()
{
    m_canvas.fill(Qt::white);
    m_strokes.fill(Qt::white);
    m_print.fill(Qt::white);
    m_score = 0;
    // No print outlives a clear, wherever it was put.
    m_elsewhere.fill(Qt::white);
}

int ReferencePad::clear(int driverResult)
{
    clearSignCanvas();
    const int result = m_penDownOnCancelButton ? success : driverResult;
    m_penDownOnCancelButton = false;
    m_clip = false;
    m_points.clear();
    return result;
}

int ReferencePad::openLcd(bool on, int driverResult)
{
    if (!on)
        clearSignCanvas();
    return driverResult;
}

void ReferencePad::resize(int width, int height)
{
    QImage canvas = blank(width, height);
    QPainter painter(&canvas);
    painter.drawPixmap(0, 0, QPixmap::fromImage(m_canvas));
    painter.end();
    m_canvas = canvas;
    m_strokes = blank(width, height);
    m_print = blank(printWidth, printHeight);
}

// ---------------------------------------------------------------------------------------------- the print

bool ReferencePad::takePrint(const Bytes& grey, int score)
{
    if (score <= m_score)
        return false;
    m_score = score;
    const int threshold = meanOf(grey);
    for (int x = 0; x < printWidth; ++x) {
        for (int y = 0; y < printHeight; ++y) {
            const bool isRidge = grey[static_cast<std::size_t>(y * printWidth + x)] < threshold;
            m_print.setPixelColor(x, y, isRidge ? QColor(255, 0, 0, 255) : QColor(255, 255, 255, 255));
        }
    }
    return true;
}

void ReferencePad::merge()
{
    QImage print = blank(printWidth, printHeight);
    QRectF target(0, 0, 0, 0);
    switch (m_placement) {
    case Placement::None: {
        print = m_print;
        const double height = m_canvas.height() * 0.5;
        const double width = height * 208.0 / 288.0;
        target = QRectF((m_canvas.width() - width) * 0.5, (m_canvas.height() - height) * 0.5, width, height);
        break;
    }
    case Placement::SameWidget:
        print = m_print;
        target = asFloating(m_printPlace);
        break;
    case Placement::OtherWidget:
    case Placement::OffScreen: {
        QPainter painter(&m_elsewhere);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(asFloating(m_elsewherePlace), m_print, wholePrint);
        break;
    }
    }
    m_canvas = m_strokes.copy();
    QPainter painter(&m_canvas);
    painter.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
    painter.drawImage(target, print, wholePrint);
}

int ReferencePad::placeOnWidget(PrintParent parent, const QRect& place)
{
    if (parent == PrintParent::Own) {
        m_printPlace = place; // also when it is refused
        if (!liesIn(place, m_canvas.width(), m_canvas.height()))
            return invalidParameters;
        m_placement = Placement::SameWidget;
        return success;
    }
    if (parent == PrintParent::Null)
        return invalidParameters;
    // The place is held against the size that a new child widget has, whatever its parent's is.
    constexpr int newWidth = 100;
    constexpr int newHeight = 30;
    m_elsewhere = blank(newWidth, newHeight);
    m_elsewherePlace = place;
    if (!liesIn(place, newWidth, newHeight))
        return invalidParameters;
    m_placement = Placement::OtherWidget;
    return success;
}

int ReferencePad::placeOffScreen(int canvasWidth, int canvasHeight, const QRect& place)
{
    // A new widget without a parent has this size, and keeps it when the place is refused.
    m_elsewhere = blank(640, 480);
    m_elsewherePlace = place;
    if (!liesIn(place, canvasWidth, canvasHeight))
        return invalidParameters;
    m_elsewhere = blank(canvasWidth, canvasHeight);
    m_placement = Placement::OffScreen;
    return success;
}

// ---------------------------------------------------------------------------------------------- clipping

int ReferencePad::setClip(bool clip, int marginX, int marginY)
{
    if (marginX < 0 || marginY < 0)
        return invalidParameters;
    m_clip = clip;
    m_marginX = marginX;
    m_marginY = marginY;
    if (marginX == 0 && marginY == 0)
        m_clip = false;
    return success;
}

QRect ReferencePad::boundingBox(const QImage& image) const
{
    const std::int64_t imageWidth = image.width();
    const std::int64_t imageHeight = image.height();
    std::int64_t left = 99999;
    std::int64_t top = 99999;
    std::int64_t right = -1;
    std::int64_t bottom = -1;
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qRed(row[x]) == 255 && qGreen(row[x]) == 255 && qBlue(row[x]) == 255)
                continue;
            left = std::min<std::int64_t>(left, x);
            right = std::max<std::int64_t>(right, x);
            top = std::min<std::int64_t>(top, y);
            bottom = std::max<std::int64_t>(bottom, y);
        }
    }
    // Without ink the same four lines give an odd box, and QImage::copy() decides what that means.
    left = left - m_marginX < 0 ? 0 : left - m_marginX;
    top = top - m_marginY < 0 ? 0 : top - m_marginY;
    right = right + m_marginX < imageWidth ? right + m_marginX : imageWidth - 1;
    bottom = bottom + m_marginY < imageHeight ? bottom + m_marginY : imageHeight - 1;
    return QRect(QPoint(static_cast<int>(left), static_cast<int>(top)),
                 QPoint(static_cast<int>(right), static_cast<int>(bottom)));
}

QImage ReferencePad::source(QRect* box) const
{
    *box = QRect(QPoint(-1, -1), QPoint(-2, -2));
    if (!m_clip)
        return m_canvas;
    *box = boundingBox(m_canvas);
    return m_canvas.copy(*box);
}

// ---------------------------------------------------------------------------------------------- exports

int ReferencePad::pointCount() const
{
    return m_points.empty() ? nothingThere : static_cast<int>(m_points.size());
}

bool ReferencePad::hasSomethingToSave() const
{
    return !m_points.empty() || m_score >= 1;
}

SavedFile ReferencePad::save(int imageType, const std::string& path, int dpiLevel) const
{
    if (!hasSomethingToSave())
        return {nothingThere, std::nullopt};
    const int dpi = dpiLevel == 0 ? 150 : 300;
    QRect box;
    QImage image = source(&box);
    if (imageType == ImagePdf)
        return {success, pdf(image, dpi)};
    if (imageType == ImageSvg)
        return {success, svg(image, dpi, box)};

    image.setDotsPerMeterX(dotsPerMetre(dpi));
    image.setDotsPerMeterY(dotsPerMetre(dpi));
    // A format that knows no transparency would turn what is transparent black, so it stays white there.
    const QString name = QString::fromStdString(path);
    if (imageType == ImagePng && name.endsWith(".png"))
        image = onNothing(image);
    if (!image.save(name))
        return {nothingThere, std::nullopt};
    return {success, QByteArray::fromStdString(fileContent(path))};
}

QByteArray ReferencePad::pdf(const QImage& image, int dpi) const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setResolution(dpi);
    writer.setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Point);
    QPainter painter(&writer);
    QImage picture = image;
    picture.setDotsPerMeterX(dotsPerMetre(dpi));
    picture.setDotsPerMeterY(dotsPerMetre(dpi));
    // A process without an application object may not make a pixmap; an opaque image writes the same bytes.
    if (m_isWidget)
        painter.drawPixmap(0, 0, QPixmap::fromImage(picture));
    else
        painter.drawImage(0, 0, picture.convertToFormat(QImage::Format_RGB32));
    painter.end();
    return bytes;
}

QByteArray ReferencePad::svg(const QImage& image, int dpi, const QRect& box) const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(QSize(image.width(), image.height()));
    generator.setViewBox(QRect(0, 0, image.width(), image.height()));
    generator.setResolution(dpi);
    QPainter painter(&generator);

    const bool printBelongsHere = m_placement == Placement::None || m_placement == Placement::SameWidget;
    if (m_score > 0 && printBelongsHere) {
        QImage print = m_print;
        print.setDotsPerMeterX(dotsPerMetre(dpi));
        print.setDotsPerMeterY(dotsPerMetre(dpi));
        const int x = (image.width() - printWidth) / 2;
        const int y = (image.height() - printHeight) / 2;
        if (m_isWidget)
            painter.drawPixmap(x, y, QPixmap::fromImage(print));
        else
            painter.drawImage(x, y, print.convertToFormat(QImage::Format_RGB32));
    }

    bool strokeIsOpen = false;
    QPointF previous;
    for (const Ink& point : m_points) {
        if (point.status == 1) {
            strokeIsOpen = false;
            continue;
        }
        const Mapped place = map(point.x, point.y, point.pressure);
        QPointF here(place.x, place.y);
        if (m_clip)
            here -= QPointF(box.left(), box.top());
        if (strokeIsOpen) {
            painter.setRenderHint(strokeHint, true);
            painter.setPen(penOf(m_penColor, m_withPressure ? place.pressure : m_penWidth));
            const QLineF line(previous, here);
            painter.drawLines(&line, 1);
        }
        previous = here;
        strokeIsOpen = true;
    }
    painter.end();
    return bytes;
}

QByteArray ReferencePad::encoded(QImage image, int imageType, bool transparent)
{
    if (imageType == ImagePng && transparent)
        image = onNothing(image);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, formatOf(imageType));
    return bytes.toBase64();
}

Text ReferencePad::encodeEx(int imageType, bool transparent) const
{
    // A print alone can be encoded from a window only.
    const bool hasPicture = !m_points.empty() || (m_isWidget && m_score > 0);
    if (!hasPicture || imageType < ImageBmp || imageType > ImagePng)
        return std::nullopt;
    QRect box;
    return encoded(source(&box), imageType, transparent);
}

Text ReferencePad::svgText() const
{
    if (m_points.empty())
        return std::nullopt;
    QRect box;
    const QImage image = source(&box);
    return svg(image, 150, box).toBase64();
}

Text ReferencePad::printText(int imageType, bool printOnly)
{
    if (imageType < ImageBmp || imageType > ImagePng)
        return std::nullopt;
    switch (m_placement) {
    case Placement::None:
        if (!m_isWidget)
            return std::nullopt;
        break;
    case Placement::SameWidget:
        if (!m_clip && printOnly)
            return encoded(m_canvas.copy(m_printPlace), imageType, true);
        break;
    case Placement::OtherWidget:
    case Placement::OffScreen:
        if (m_clip)
            return encoded(m_elsewhere.copy(boundingBox(m_elsewhere)), imageType, true);
        return encoded(printOnly ? m_elsewhere.copy(m_elsewherePlace) : m_elsewhere, imageType, true);
    }
    QRect box;
    return encoded(source(&box), imageType, true); // also when there is nothing on it
}

std::array<std::int32_t, 2> ReferencePad::deviceInfo(int index) const
{
    switch (index) {
    case 1:
        return {1, 0};
    case 2:
        return {0, m_model.areaWidth};
    case 3:
        return {0, m_model.areaHeight};
    case 4:
        return {m_maxPressure, 0};
    default:
        return {3, 0};
    }
}

} // namespace scribera::test
