#include "fingerprint_reference.h"

#include "stroke_hint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include <QBuffer>
#include <QPainter>
#include <QPen>

namespace scribera::test {

// ---------------------------------------------------------------------------------------------- prints

Bytes ridges(unsigned seed)
{
    std::mt19937 random(seed);
    const double turn = static_cast<double>(random() % 628) / 100.0;
    const double pitch = 7.0 + random() % 5;
    const double middleX = 80.0 + random() % 48;
    const double middleY = 110.0 + random() % 68;
    Bytes print;
    for (int y = 0; y < printHeight; ++y) {
        for (int x = 0; x < printWidth; ++x) {
            const double dx = x - middleX;
            const double dy = y - middleY;
            const double wave =
                std::sin((std::hypot(dx, dy * 0.7) + 9.0 * std::sin(dx / 40.0 + turn)) * 6.28 / pitch);
            const int noise = static_cast<int>(random() % 61) - 30;
            print.push_back(
                static_cast<unsigned char>(std::clamp(static_cast<int>(128 + 90 * wave) + noise, 0, 255)));
        }
    }
    return print;
}

Bytes evenPrint(unsigned char value)
{
    return Bytes(static_cast<std::size_t>(printWidth * printHeight), value);
}

int meanOf(const Bytes& print)
{
    long long sum = 0;
    for (int i = 0; i < printWidth * printHeight; ++i)
        sum += print.at(static_cast<std::size_t>(i));
    return static_cast<int>(sum / (printWidth * printHeight));
}

QImage twoColours(const Bytes& print)
{
    const int mean = meanOf(print);
    QImage image(printWidth, printHeight, QImage::Format_ARGB32);
    for (int y = 0; y < printHeight; ++y) {
        for (int x = 0; x < printWidth; ++x) {
            const bool dark = print.at(static_cast<std::size_t>(y * printWidth + x)) < mean;
            image.setPixel(x, y, dark ? 0xffff0000u : 0xffffffffu);
        }
    }
    return image;
}

Bytes devicePicture(const Bytes& print)
{
    const int mean = meanOf(print);
    Bytes picture;
    for (int row = 0; row < 144; ++row) {
        for (int column = 0; column < 104; ++column) {
            const bool dark = print.at(static_cast<std::size_t>(2 * row * printWidth + 2 * column)) < mean;
            picture.push_back(dark ? 0xf8 : 0xff);
            picture.push_back(dark ? 0x00 : 0xff);
        }
    }
    return picture;
}

// ---------------------------------------------------------------------------------------------- pictures

namespace {

// Corners as they are stored; QRect::width() is right - left + 1.
QRectF floating(const QRect& place)
{
    return QRectF(place.left(), place.top(), place.width(), place.height());
}

QRectF centred(const QSize& canvas)
{
    const double height = canvas.height() * 0.5;
    const double width = height * 208.0 / 288.0;
    return QRectF((canvas.width() - width) * 0.5, (canvas.height() - height) * 0.5, width, height);
}

const QRectF wholePrint(0, 0, printWidth, printHeight);

std::string rectangleText(const char* name, const QRectF& rectangle)
{
    return printed("-%s.left=%f, top=%f, width=%f, height=%f", name, rectangle.x(), rectangle.y(),
                   rectangle.width(), rectangle.height());
}

} // namespace

PadPictures::PadPictures(int width, int height)
    : m_canvas(blank(width, height)), m_strokes(blank(width, height)), m_print(blank(printWidth, printHeight))
{
}

void PadPictures::sample(const ScrSimSample& sample)
{
    const int dx = std::clamp(sample.x - 2050, 0, 21169);
    const int dy = std::clamp(sample.y - 1750, 0, 11489);
    const double x = dx * (m_strokes.width() / 21170.0);
    const double y = dy * (m_strokes.height() / 11490.0);
    if (sample.penStatus == PenDown) {
        m_penDown = true;
        m_lastX = x;
        m_lastY = y;
    } else if (sample.penStatus == PenMove && m_penDown && sample.pressure <= 2048) {
        segment(x, y, sample.pressure * (m_penWidth / 306.0));
        m_mergeIsDue = true;
    } else if (sample.penStatus == PenUp) {
        m_penDown = false;
    }
}

void PadPictures::samples(const std::vector<ScrSimSample>& samples)
{
    for (const ScrSimSample& one : samples)
        sample(one);
}

void PadPictures::segment(double x, double y, double width)
{
    QPainter painter(&m_strokes);
    painter.setRenderHint(strokeHint, true);
    QPen pen(QBrush(Qt::black, Qt::SolidPattern), m_withPressure ? width : m_penWidth, Qt::SolidLine,
             Qt::RoundCap, Qt::RoundJoin);
    pen.setColor(m_penColor);
    painter.setPen(pen);
    const QLineF line(m_lastX, m_lastY, x, y);
    painter.drawLines(&line, 1);
    painter.end();
    m_lastX = x;
    m_lastY = y;
}

void PadPictures::settle()
{
    if (m_mergeIsDue)
        merge();
}

const QImage& PadPictures::canvas()
{
    settle();
    return m_canvas;
}

const QImage& PadPictures::holder()
{
    settle();
    return m_holder;
}

void PadPictures::takePrint(const Bytes& print)
{
    settle();
    m_print = twoColours(print);
}

void PadPictures::storePlace(const QRect& place)
{
    settle();
    m_place = place;
}

void PadPictures::merge()
{
    m_mergeIsDue = false;
    QImage print = blank(printWidth, printHeight);
    QRectF target(0, 0, 0, 0);
    switch (m_placement) {
    case Placement::None:
        print = m_print;
        target = centred(m_canvas.size());
        break;
    case Placement::SameWidget:
        print = m_print;
        target = floating(m_place);
        break;
    case Placement::OtherWidget:
    case Placement::OffScreen:
        if (!m_holder.isNull()) {
            QPainter painter(&m_holder);
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.drawImage(floating(m_holderPlace), m_print, wholePrint);
        }
        break;
    }
    m_canvas = m_strokes.copy();
    QPainter painter(&m_canvas);
    painter.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
    painter.drawImage(target, print, wholePrint);
}

void PadPictures::clear()
{
    settle();
    m_canvas.fill(Qt::white);
    m_strokes.fill(Qt::white);
    m_print.fill(Qt::white);
    if (!m_holder.isNull())
        m_holder.fill(Qt::white);
}

void PadPictures::resize(int width, int height)
{
    settle();
    QImage grown = blank(width, height);
    QPainter painter(&grown);
    painter.drawImage(0, 0, m_canvas);
    painter.end();
    m_canvas = grown;
    m_strokes = blank(width, height);
    m_print.fill(Qt::white);
}

void PadPictures::placeSame(const QRect& place)
{
    settle();
    m_placement = Placement::SameWidget;
    m_place = place;
}

void PadPictures::placeElsewhere(Placement placement, const QSize& canvas, const QRect& place)
{
    settle();
    m_placement = placement;
    replaceHolder(canvas, place);
}

void PadPictures::replaceHolder(const QSize& canvas, const QRect& place)
{
    settle();
    m_holder = blank(canvas.width(), canvas.height());
    m_holderPlace = place;
}

QByteArray encodedOpaque(const QImage& image, int imageType)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, imageType == ImageBmp ? "BMP" : imageType == ImageJpeg ? "JPG" : "PNG");
    return bytes.toBase64();
}

QByteArray encoded(const QImage& image, int imageType)
{
    return encodedOpaque(imageType == ImagePng ? onNothing(image) : image, imageType);
}

QImage decoded(const QByteArray& base64)
{
    return QImage::fromData(QByteArray::fromBase64(base64)).convertToFormat(QImage::Format_ARGB32);
}

std::vector<ScrSimSample> longSignature(const PadModel& model, int segments, unsigned seed)
{
    std::mt19937 random(seed);
    const auto within = [&](int least, int most) {
        return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
    };
    int x = model.originX + model.areaWidth / 2;
    int y = model.originY + model.areaHeight / 2;
    std::vector<ScrSimSample> samples = {{x, y, 100, PenDown}};
    for (int i = 0; i < segments; ++i) {
        switch (within(0, 19)) {
        case 0: // a jump across the canvas
            x = model.originX + within(-3000, model.areaWidth + 3000);
            y = model.originY + within(-3000, model.areaHeight + 3000);
            break;
        case 1: // the pen rests
            break;
        default:
            x = std::clamp(x + within(-500, 500), model.originX, model.originX + model.areaWidth);
            y = std::clamp(y + within(-350, 350), model.originY, model.originY + model.areaHeight);
        }
        int pressure = within(1, 400);
        const int kind = within(0, 19);
        if (kind == 0)
            pressure = 0;
        else if (kind == 1)
            pressure = within(400, 2048);
        else if (kind < 6)
            pressure = within(1, 100);
        samples.push_back({x, y, pressure, PenMove});
    }
    return samples;
}

std::vector<PadCase> fingerprintCases(std::optional<Kind> kind)
{
    std::vector<PadCase> cases = kind ? casesOf(*kind) : allCases();
    std::erase_if(cases, [](const PadCase& padCase) { return !padCase.model->hasFingerprint; });
    return cases;
}

// ---------------------------------------------------------------------------------------------- fixture

void FingerprintTest::TearDown()
{
    PadTest::TearDown();
    m_otherWindows.clear();
}

void OpenFingerprintTest::SetUp()
{
    FingerprintTest::SetUp();
    ASSERT_TRUE(start());
}

bool FingerprintTest::start(int width, int height)
{
    if (!pad().start({.width = width, .height = height}))
        return false;
    sim().SetTransferTime(0);
    m_copy = std::make_unique<PadPictures>(width, height);
    return true;
}

void FingerprintTest::draw(const std::vector<ScrSimSample>& samples)
{
    pad().draw(samples);
    m_copy->samples(samples);
}

void FingerprintTest::send(const Bytes& print, int score)
{
    ASSERT_EQ(sim().SendFingerprint(print.data(), static_cast<int>(print.size()), score), 0);
    sim().waitIdle();
}

int FingerprintTest::mergesOnThread() const
{
    const std::string begin = "[" + method("MergeSignCanvasAndFPCanvas") + "]:<";
    const std::string end = ">-leave !, \n";
    const std::string content = fileContent(inThreadLogFile);
    int count = 0;
    for (std::size_t at = content.find(begin); at != std::string::npos; at = content.find(begin, at + 1)) {
        const std::size_t tickEnd = content.find('>', at);
        if (tickEnd != std::string::npos && content.compare(tickEnd, end.size(), end) == 0)
            ++count;
    }
    return count;
}

void FingerprintTest::take(const Bytes& print, int score)
{
    const bool logged = loggingIsOn();
    const int before = mergesOnThread();
    setLogging(true);
    send(print, score);
    EXPECT_TRUE(waitUntil([&] { return mergesOnThread() > before; })) << "no merge after the fingerprint";
    setLogging(logged);
    takeInCopy(print);
}

void FingerprintTest::takeInCopy(const Bytes& print)
{
    m_copy->takePrint(print);
    m_copy->merge();
}

void FingerprintTest::clear()
{
    EXPECT_EQ(api().Clear(type()), 0);
    m_copy->clear();
}

void FingerprintTest::resize(int width, int height)
{
    pad().signWidget()->resize(width, height);
    processEvents();
    m_copy->resize(width, height);
}

void FingerprintTest::setPenWidth(int width)
{
    EXPECT_EQ(api().SetPenWidth(type(), width), 0);
    m_copy->setPenWidth(width);
}

void FingerprintTest::setPenColor(const QColor& color)
{
    EXPECT_EQ(api().SetPenColor(type(), color.red(), color.green(), color.blue()), 0);
    m_copy->setPenColor(color);
}

QByteArray FingerprintTest::taken(char* text, void (*giveBack)(int, char*))
{
    const QByteArray result(text);
    giveBack(type(), text);
    return result;
}

QByteArray FingerprintTest::encode(int imageType)
{
    return taken(api().PacketsBase64Encode(type(), imageType), api().PacketsBase64EncodeFree);
}

QByteArray FingerprintTest::encodeEx(int imageType, bool transparent)
{
    return taken(api().PacketsBase64EncodeEx(type(), imageType, transparent),
                 api().PacketsBase64EncodeExFree);
}

QByteArray FingerprintTest::svgText()
{
    return taken(api().GetSVGImageBase64Data(type()), api().FreeSVGImageBase64Data);
}

QImage FingerprintTest::canvas()
{
    const QByteArray text = encodeEx(ImageBmp, false);
    return text.isEmpty() ? pad().canvas() : decoded(text);
}

QByteArray FingerprintTest::printText(int imageType, bool only)
{
    return taken(api().GetFPImageBase64Data(type(), imageType, only), api().FreeFPImageBase64Data);
}

QImage FingerprintTest::printPicture(bool only)
{
    const QByteArray text = printText(ImageBmp, only);
    return text.isNull() ? QImage() : decoded(text);
}

void FingerprintTest::expectSame(const std::string& what)
{
    EXPECT_TRUE(same(canvas(), m_copy->canvas())) << "canvas " << what;
    if (m_copy->placement() == Placement::OtherWidget || m_copy->placement() == Placement::OffScreen) {
        EXPECT_TRUE(same(printPicture(), m_copy->holder())) << "fingerprint picture " << what;
    }
}

int FingerprintTest::place(QWidget* parent, const QRect& canvas, const QRect& place)
{
    return api().SetDisplayedFPImageAt(type(), parent, canvas.width(), canvas.height(), place.left(),
                                       place.top(), place.width(), place.height());
}

int FingerprintTest::placeSame(const QRect& rectangle)
{
    const int result = place(pad().parent(), QRect(), rectangle);
    if (result == 0)
        m_copy->placeSame(rectangle);
    return result;
}

int FingerprintTest::placeElsewhere(const QRect& rectangle)
{
    QWidget* parent = nullptr;
    if (padCase().isWidget()) {
        m_otherWindows.push_back(std::make_unique<QWidget>());
        parent = m_otherWindows.back().get();
        parent->resize(320, 240);
        parent->show();
        processEvents();
    }
    const int result = place(parent, QRect(QPoint(0, 0), holderSize()), rectangle);
    if (result == 0) {
        m_copy->placeElsewhere(padCase().isWidget() ? Placement::OtherWidget : Placement::OffScreen,
                               holderSize(), rectangle);
    }
    return result;
}

std::vector<QWidget*> FingerprintTest::printWidgets(QWidget* parent)
{
    std::vector<QWidget*> found;
    for (QWidget* child : parent->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (std::strcmp(child->metaObject()->className(), "CK421BFPWidget") == 0)
            found.push_back(child);
    }
    return found;
}

QWidget* FingerprintTest::printWidget()
{
    if (m_otherWindows.empty())
        return nullptr;
    const std::vector<QWidget*> found = printWidgets(m_otherWindows.back().get());
    return found.empty() ? nullptr : found.back();
}

Texts afterTicks(const std::vector<LogLine>& lines, const std::string& label)
{
    Texts texts;
    for (const LogLine& line : withLabel(lines, label))
        texts.push_back(line.hasTick ? line.message.substr(line.message.find('>') + 1) : line.message);
    return texts;
}

Texts FingerprintTest::mergeTexts(const QSize& canvas) const
{
    Texts texts = {"-Enter..."};
    QRectF target(0, 0, 0, 0);
    switch (m_copy->placement()) {
    case Placement::None:
        target = centred(canvas);
        texts.push_back("-m_nNewFPProcessActionID == NFPPA_NONE");
        texts.push_back(
            printed("-dblTargetFPHeight=%f, dblTargetFPWidth=%f", target.height(), target.width()));
        texts.push_back(printed("-dblTargetFPX=%f, dblTargetFPY=%f", target.x(), target.y()));
        break;
    case Placement::SameWidget:
        target = floating(m_copy->place());
        texts.push_back("-m_nNewFPProcessActionID == NFPPA_SIGN_FP_SAME_WIDGET");
        break;
    case Placement::OtherWidget:
        texts.push_back("-m_nNewFPProcessActionID == NFPPA_SIGN_FP_DIFFERENT_WIDGET");
        break;
    case Placement::OffScreen:
        texts.push_back("-m_nNewFPProcessActionID == NFPPA_FP_ON_CANVAS_FROM_JS");
        texts.push_back("-b4 call m_pNewFPWidget->UpdateFPImage(m_FPOnlyCanvas)...");
        break;
    }
    texts.push_back(rectangleText("rcTargetFP", target));
    texts.push_back(rectangleText("rcSourceFP", wholePrint));
    texts.push_back("-leave !");
    return texts;
}

} // namespace scribera::test
