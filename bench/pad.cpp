#include "pad.h"

#include "benchmarks.h"
#include "host/stroke_hint.h"

#include <QByteArray>
#include <QPainter>
#include <QPen>

#include <chrono>
#include <cstdio>
#include <thread>

#include <dlfcn.h>

namespace bench {
namespace {

constexpr int FingerprintSize = 208 * 288;

} // namespace

#define MODEL(name) {#name, SC##name##_DEVICE},
const std::vector<Model> models = {SCRIBERA_FAMILIES(MODEL)};
#undef MODEL

const std::vector<QSize> canvasSizes = {{400, 200}, {800, 400}, {1920, 960}};

const Model& modelNamed(const std::string& name)
{
    const auto found =
        std::find_if(models.begin(), models.end(), [&](const Model& model) { return model.name == name; });
    require(found != models.end(), "there is no model " + name);
    return *found;
}

std::string nameOf(const QSize& size)
{
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

Library::Library(const char* path) : m_handle(dlopen(path, RTLD_NOW | RTLD_LOCAL))
{
    require(m_handle != nullptr, std::string("cannot load ") + path);
}

Library& Library::shipped()
{
    static Library library(SCRIBERA_LIBRARY);
    return library;
}

Library& Library::withoutLog()
{
    static Library library(SCRIBERA_LIBRARY_WITHOUT_LOG);
    return library;
}

void* Library::symbol(const std::string& name) const
{
    void* const address = dlsym(m_handle, name.c_str());
    require(address != nullptr, "the library has no " + name);
    return address;
}

void Library::enableLog(bool enables) const
{
    *static_cast<unsigned char*>(symbol("g_bEnableLog")) = enables;
}

void Library::setWorkers(int mode) const
{
    require(reinterpret_cast<int (*)(int)>(symbol("SCRX_SetWorkers"))(mode) == ARI_SUCCESS, "no such mode");
}

Signature::Signature(const Model& model, const QSize& canvas)
{
    const simulator::Pad* const pad =
        simulator::padForDevice(model.deviceType, simulator::canonicalModel(model.deviceType));
    simulator::Recording recording;
    std::string error;
    require(simulator::readRecording(SCRIBERA_RECORDING, recording, error), error);
    simulator::scaleRecording(recording, pad->area, pad->maxPressure);
    // Pixels of stroke width for one unit of pressure, with a pen of the default width, 3.
    const double widthScale = pad->maxPressure == 8192 ? 9.0 / 8192 : 3.0 / 306;
    for (const simulator::RecordedSample& sample : recording.samples) {
        if (sample.status > simulator::PenMove)
            continue;
        const PenSample place{sample.x, sample.y, sample.pressure, sample.status};
        if (sample.status == simulator::PenDown) {
            strokes.push_back({place});
            segments.emplace_back();
            continue;
        }
        const auto onCanvas = [&](const PenSample& at) {
            return QPointF(
                (at.x - pad->area.originX) * (static_cast<double>(canvas.width()) / pad->area.width),
                (at.y - pad->area.originY) * (static_cast<double>(canvas.height()) / pad->area.height));
        };
        segments.back().push_back(
            {QLineF(onCanvas(strokes.back().back()), onCanvas(place)), sample.pressure * widthScale});
        strokes.back().push_back(place);
        ++moves;
    }
}

Pad::Pad(Library& library, const Model& model, const QSize& canvas, QWidget* parent)
    : m_library(library), m_model(model)
{
    require(function<bool(int, QWidget*, int, int, int, int)>("InitialDevice")(
                deviceType(), parent, 0, 0, canvas.width(), canvas.height()),
            std::string("the pad does not open: ") + model.name);
    void* const driver = dlopen("./libscriberadrv.so", RTLD_NOW | RTLD_NOLOAD);
    require(driver != nullptr, "the driver is not loaded");
    m_pen = reinterpret_cast<decltype(m_pen) (*)()>(dlsym(driver, "BenchDriver_Pen"))();
    m_fingerprint =
        reinterpret_cast<decltype(m_fingerprint) (*)()>(dlsym(driver, "BenchDriver_Fingerprint"))();
    dlclose(driver);
}

Pad::~Pad()
{
    function<int(int)>("UnInitialDevice")(deviceType());
}

void Pad::write(const Signature& signature) const
{
    for (const std::vector<PenSample>& stroke : signature.strokes) {
        for (const PenSample& at : stroke)
            sample(at);
        sample({0, 0, 0, PENSTATUS_UP});
    }
}

void Pad::takeFingerprint() const
{
    std::vector<unsigned char> print(FingerprintSize);
    for (int at = 0; at < FingerprintSize; ++at)
        print[static_cast<std::size_t>(at)] = at % 208 / 6 % 2 ? 40 : 220;
    m_fingerprint(print.data(), FingerprintSize, 90);
    // Merged on the display thread when the pad has it; red shows that it is.
    const auto isMerged = [this] {
        const QImage image = canvas();
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, image.height() / 2) == qRgb(255, 0, 0))
                return true;
        }
        return false;
    };
    for (int attempt = 0; !isMerged(); ++attempt) {
        require(attempt < 1000, "the fingerprint does not show");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

QImage Pad::canvas() const
{
    char* const text = function<char*(int, int)>("PacketsBase64Encode")(deviceType(), EBITI_BITMAP);
    require(text != nullptr, "there is no picture");
    QImage image = QImage::fromData(QByteArray::fromBase64(text));
    function<void(int, char*)>("PacketsBase64EncodeFree")(deviceType(), text);
    return image;
}

bool savePng(const Pad& pad, std::wstring path)
{
    constexpr int lowDpi = 0;
    return pad.function<int(int, int, wchar_t*, int)>("SaveDrawingImage")(pad.deviceType(), EBITI_PNG,
                                                                          path.data(), lowDpi) == ARI_SUCCESS;
}

// Touches and lifts draw nothing and are not counted.
Side movesOf(const std::shared_ptr<Pad>& pad, const std::shared_ptr<Signature>& signature)
{
    return [=](std::vector<double>& times) {
        double seconds = 0;
        for (const std::vector<PenSample>& stroke : signature->strokes) {
            pad->sample(stroke.front());
            const double start = threadTime();
            for (auto at = stroke.begin() + 1; at != stroke.end(); ++at)
                pad->sample(*at);
            seconds += threadTime() - start;
            pad->sample({0, 0, 0, PENSTATUS_UP});
        }
        times.push_back(seconds / signature->moves);
    };
}

Side segmentsOf(const std::shared_ptr<QImage>& image, const std::shared_ptr<Signature>& signature)
{
    return [=](std::vector<double>& times) {
        const double start = threadTime();
        drawBare(*image, *signature);
        times.push_back((threadTime() - start) / signature->moves);
    };
}

QImage blankImage(const QSize& size)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::white);
    return image;
}

void drawBare(QImage& image, const Segment& segment)
{
    QPainter painter(&image);
    painter.setRenderHint(strokeHint);
    painter.setPen(QPen(Qt::black, segment.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawLine(segment.line);
    painter.end();
}

void drawBare(QImage& image, const Signature& signature)
{
    for (const std::vector<Segment>& stroke : signature.segments) {
        for (const Segment& segment : stroke)
            drawBare(image, segment);
    }
}

void writeStrokes(const char* path)
{
    std::FILE* const file = std::fopen(path, "w");
    require(file != nullptr, std::string("cannot write ") + path);
    std::fprintf(file, "{");
    for (const QSize& size : canvasSizes) {
        std::fprintf(file, "%s\"%s\": [", size == canvasSizes.front() ? "" : "],\n", nameOf(size).c_str());
        const char* separator = "";
        for (const std::vector<Segment>& stroke : Signature(models.front(), size).segments) {
            for (const Segment& segment : stroke) {
                std::fprintf(file, "%s[%.4f, %.4f, %.4f, %.4f, %.4f]", separator, segment.line.x1(),
                             segment.line.y1(), segment.line.x2(), segment.line.y2(), segment.width);
                separator = ", ";
            }
        }
    }
    std::fprintf(file, "]}\n");
    std::fclose(file);
}

} // namespace bench
