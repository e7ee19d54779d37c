// What it costs to take a signature away: boxes, pictures, vectors, streams.
#include "benchmarks.h"
#include "canvas/signcanvas.h"
#include "export/boundingbox.h"
#include "host/stroke_hint.h"
#include "pad.h"

#include <QBuffer>
#include <QFile>
#include <QPainter>
#include <QSvgGenerator>

#include <cstring>

namespace bench {
namespace {

constexpr Effort ImageEffort{.rounds = 9};
constexpr int Dpi = 150;
constexpr int DpiLevel = 0; // 150

// The library's canvas by itself.
class Canvas
{
public:
    explicit Canvas(const QSize& size) { m_canvas.clearCanvas(size.width(), size.height()); }

    void write(const Signature& signature)
    {
        for (const std::vector<Segment>& stroke : signature.segments) {
            m_canvas.StartAt(stroke.front().line.x1(), stroke.front().line.y1());
            for (const Segment& segment : stroke)
                m_canvas.StartSignOnCanvas(segment.line.x2(), segment.line.y2(), segment.width,
                                           CStrokeStyle{segment.width, Qt::black});
        }
    }

    QRect box() const
    {
        const CSharedImage image = m_canvas.Snapshot();
        return CheckSignImageBoundingBox(image.Image(), image.InkArea(), {}, {"", "", ""});
    }

private:
    const CObjectIdentity m_identity{g_PadK210, EObjectKind::Windowless};
    CSignCanvas m_canvas{m_identity};
};

// One look at every pixel, row by row, as the box is defined.
QRect naiveBox(const QImage& image)
{
    int left = 99999;
    int top = 99999;
    int right = -1;
    int bottom = -1;
    const int width = image.width();
    const int height = image.height();
    for (int y = 0; y < height; ++y) {
        const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            if ((row[x] & 0xFFFFFF) == 0xFFFFFF)
                continue;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x);
            bottom = std::max(bottom, y);
        }
    }
    return {QPoint(left, top), QPoint(right, bottom)};
}

void registerBox(const QSize& size, bool isBlank)
{
    compare(std::string("bounding box, ") + (isBlank ? "blank" : "signature") + "/" + nameOf(size),
            {.ratio = isBlank ? 0.25 : 0.1}, {.rounds = 31}, [size, isBlank] {
                const auto canvas = std::make_shared<Canvas>(size);
                const auto image = std::make_shared<QImage>(blankImage(size));
                if (!isBlank) {
                    canvas->write(Signature(modelNamed("K210"), size));
                    drawBare(*image, Signature(modelNamed("K210"), size));
                }
                const auto box = [canvas] { return canvas->box(); };
                require(box() == (isBlank ? QRect(QPoint(99999, 99999), QPoint(-1, -1)) : naiveBox(*image)),
                        "the box is wrong");
                return Sides{repeated(20, [box] { benchmark::DoNotOptimize(box()); }),
                             repeated(20, [image] { benchmark::DoNotOptimize(naiveBox(*image)); })};
            });
}

// The picture as it is to be written: white made transparent by Qt's own means.
QImage transparent(QImage image)
{
    image.setAlphaChannel(image.createMaskFromColor(QColor(Qt::white).rgb(), Qt::MaskOutColor));
    return image;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "a file is missing");
    return file.readAll();
}

void registerPng(const QSize& size)
{
    compare("transparent PNG file/" + nameOf(size), {.ratio = 1.08}, ImageEffort, [size] {
        const auto work = std::make_shared<SignedPad>("K210", size);
        auto image = blankImage(size);
        drawBare(image, work->signature);
        image.setDotsPerMeterX(static_cast<int>(Dpi / 0.0254));
        image.setDotsPerMeterY(static_cast<int>(Dpi / 0.0254));
        const QImage ready = transparent(image);
        const auto library = [work] {
            require(savePng(work->pad, L"library.png"), "the signature is not saved");
        };
        const auto bare = [ready] { require(ready.save(QStringLiteral("bare.png"), "PNG"), "not saved"); };
        library();
        bare();
        require(contentOf(QStringLiteral("library.png")) == contentOf(QStringLiteral("bare.png")),
                "the two files differ");
        return Sides{repeated(2, library), repeated(2, bare)};
    });
}

// The text with its terminator, as a host owns it.
std::unique_ptr<char[]> copyForHost(const QByteArray& text)
{
    const auto size = static_cast<std::size_t>(text.size()) + 1;
    std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), text.constData(), size);
    return copy;
}

void registerBase64(int type, const char* format, double ratio, const QSize& size)
{
    compare(std::string("Base64 of ") + format + "/" + nameOf(size), {.ratio = ratio}, ImageEffort,
            [type, format, size] {
                const auto work = std::make_shared<SignedPad>("K210", size);
                auto image = blankImage(size);
                drawBare(image, work->signature);
                if (type == EBITI_PNG)
                    image = transparent(image);
                const auto encode = work->pad.function<char*(int, int)>("PacketsBase64Encode");
                const auto release = work->pad.function<void(int, char*)>("PacketsBase64EncodeFree");
                const auto library = [=] {
                    char* const text = encode(work->pad.deviceType(), type);
                    benchmark::DoNotOptimize(text);
                    release(work->pad.deviceType(), text);
                };
                const auto encodeBare = [=] {
                    QByteArray encoded;
                    QBuffer buffer(&encoded);
                    require(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format), "not encoded");
                    return copyForHost(encoded.toBase64());
                };
                char* const text = encode(work->pad.deviceType(), type);
                require(text && std::strcmp(text, encodeBare().get()) == 0, "the two texts differ");
                release(work->pad.deviceType(), text);
                return Sides{repeated(2, library),
                             repeated(2, [encodeBare] { benchmark::DoNotOptimize(encodeBare().get()); })};
            });
}

std::shared_ptr<Pad> padWithPoints(int count)
{
    const Model& model = modelNamed("K210");
    auto pad = std::make_shared<Pad>(Library::shipped(), model, QSize(400, 200));
    const Signature signature(model, QSize(400, 200));
    int left = count;
    while (left > 0) {
        for (const std::vector<PenSample>& stroke : signature.strokes) {
            for (const PenSample& at : stroke) {
                if (left-- > 0)
                    pad->sample(at);
            }
        }
    }
    require(pad->function<int(int)>("GetTotalPacketsNumber")(pad->deviceType()) == count,
            "not every sample became a point");
    return pad;
}

void registerStream()
{
    constexpr int count = 250'000;
    compare("ink stream of 250000 points, encode", {.ratio = 1.3}, {.rounds = 21}, [] {
        const auto pad = padWithPoints(count);
        const auto encode = pad->function<char*(int, int)>("PacketsBase64Encode");
        const auto release = pad->function<void(int, char*)>("PacketsBase64EncodeFree");
        char* const text = encode(pad->deviceType(), EBITI_INK);
        const QByteArray stream = QByteArray::fromBase64(text);
        require(stream.toBase64() == text, "the text is not what Qt makes of the stream");
        release(pad->deviceType(), text);
        require(stream.size() == count * static_cast<int>(sizeof(_POINTDATA)) + 1,
                "the stream's size is wrong");
        const auto library = [=] {
            char* const encoded = encode(pad->deviceType(), EBITI_INK);
            benchmark::DoNotOptimize(encoded);
            release(pad->deviceType(), encoded);
        };
        const auto bare = [=] {
            QByteArray copy(stream.size(), Qt::Uninitialized);
            std::memcpy(copy.data(), stream.constData(), static_cast<std::size_t>(stream.size()));
            benchmark::DoNotOptimize(copyForHost(copy.toBase64()).get());
        };
        return Sides{repeated(1, library), repeated(1, bare)};
    });
    compare("ink stream of 250000 points, decode", {.ratio = 1.3}, {.rounds = 21}, [] {
        const auto pad = padWithPoints(count);
        char* const encoded =
            pad->function<char*(int, int)>("PacketsBase64Encode")(pad->deviceType(), EBITI_INK);
        const QByteArray text(encoded);
        pad->function<void(int, char*)>("PacketsBase64EncodeFree")(pad->deviceType(), encoded);
        const auto library = [=,
                              decode = pad->function<int(int, int, const char*, wchar_t*)>("Base64Decode")] {
            require(decode(pad->deviceType(), EBITI_INK, text.constData(), nullptr) == ARI_SUCCESS,
                    "the library refuses its own text");
        };
        const auto points = std::make_shared<std::unique_ptr<_POINTDATA[]>>();
        const auto bare = [=] {
            points->reset();
            const QByteArray stream = QByteArray::fromBase64(text);
            points->reset(new _POINTDATA[count]);
            std::memcpy(points->get(), stream.constData(), count * sizeof(_POINTDATA));
        };
        return Sides{repeated(1, library), repeated(1, bare)};
    });
}

void registerSvg()
{
    compare("SVG of 10000 points", {.ratio = 1.1}, {.rounds = 9}, [] {
        constexpr int count = 10'000;
        const auto pad = padWithPoints(count);
        const Signature signature(modelNamed("K210"), QSize(400, 200));
        const auto lines = std::make_shared<std::vector<Segment>>();
        int left = count;
        while (left > 0) {
            for (const std::vector<Segment>& stroke : signature.segments) {
                // A touch right after another one goes on with the stroke in the vectors.
                if (left-- > 0 && !lines->empty())
                    lines->push_back({QLineF(lines->back().line.p2(), stroke.front().line.p1()), 1});
                for (const Segment& segment : stroke) {
                    if (left-- > 0)
                        lines->push_back(segment);
                }
            }
        }
        const auto library = [=, save = pad->function<int(int, int, wchar_t*, int)>("SaveDrawingImage")] {
            wchar_t path[] = L"library.svg";
            require(save(pad->deviceType(), EBITI_SVG, path, DpiLevel) == ARI_SUCCESS,
                    "the signature is not saved");
        };
        const auto bare = [lines] {
            QSvgGenerator generator;
            generator.setFileName(QStringLiteral("bare.svg"));
            generator.setSize(QSize(400, 200));
            generator.setViewBox(QRect(0, 0, 400, 200));
            generator.setResolution(Dpi);
            QPainter painter(&generator);
            painter.setRenderHint(strokeHint);
            for (const Segment& segment : *lines) {
                painter.setPen(QPen(Qt::black, segment.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
                painter.drawLine(segment.line);
            }
        };
        library();
        bare();
        const auto linesIn = [](const char* path) {
            return contentOf(QString::fromLatin1(path)).count("<polyline");
        };
        require(linesIn("library.svg") == count - 1 && linesIn("bare.svg") == count - 1,
                "the two files hold different numbers of lines");
        return Sides{repeated(1, library), repeated(1, bare)};
    });
}

} // namespace

void registerExports()
{
    for (const bool isBlank : {false, true}) {
        for (const QSize& size : canvasSizes)
            registerBox(size, isBlank);
    }
    for (const QSize& size : canvasSizes)
        registerPng(size);
    for (const QSize& size : canvasSizes) {
        registerBase64(EBITI_JPG, "JPG", 1.05, size);
        registerBase64(EBITI_PNG, "PNG", 1.05, size);
        registerBase64(EBITI_BITMAP, "BMP", 1.15, size);
    }
    registerStream();
    registerSvg();
}

} // namespace bench
