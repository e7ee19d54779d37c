#include "pad.h"

#include <cstring>
#include <filesystem>

#include <QCoreApplication>

#include "processes.h"

namespace scribera::test {

namespace fs = std::filesystem;

Pad::Pad(const PadCase& padCase) : m_case(padCase), m_api(Library::instance().family(*padCase.model))
{
    if (padCase.isWidget())
        ensureApplication();
}

Pad::~Pad()
{
    if (m_started && Library::instance().signWidget)
        stop();
}

QWidget& Pad::makeParent(bool shown)
{
    if (!m_parent) {
        m_parent = std::make_unique<QWidget>();
        m_parent->resize(800, 600);
        if (shown)
            m_parent->show();
    }
    return *m_parent;
}

bool Pad::start(const StartOptions& options)
{
    if (m_started && Library::instance().signWidget) {
        EXPECT_EQ(stop(), 0);
    }
    QWidget* parent = m_case.isWidget() ? &makeParent(options.parentShown) : nullptr;
    if (options.byWindowId) {
        const WindowId id = parent ? parent->winId() : 0;
        m_started = m_api.InitialDeviceByWId(type(), id, options.x, options.y, options.width, options.height);
    } else {
        m_started = m_api.InitialDevice(type(), parent, options.x, options.y, options.width, options.height);
    }
    if (m_started)
        m_sim.open();
    return m_started;
}

int Pad::stopKeepingParent()
{
    const int result = m_api.UnInitialDevice(type());
    m_started = false;
    processEvents();
    return result;
}

int Pad::stop()
{
    const int result = stopKeepingParent();
    closeParent();
    m_sim.close();
    return result;
}

void Pad::closeParent()
{
    m_parent.reset();
    processEvents();
}

QWidget* Pad::signWidget()
{
    if (!m_parent)
        return nullptr;
    for (QWidget* child : m_parent->findChildren<QWidget*>()) {
        if (std::strcmp(child->metaObject()->className(), m_case.model->widgetClass.c_str()) == 0)
            return child;
    }
    return nullptr;
}

int Pad::save(int imageType, const std::string& path, int dpiLevel)
{
    std::wstring widePath = wide(path);
    return m_api.SaveDrawingImage(type(), imageType, widePath.data(), dpiLevel);
}

QImage Pad::canvas()
{
    const std::string path = "harness-canvas.bmp";
    fs::remove(path);
    if (save(ImageBmp, path) != 0)
        return {};
    return QImage(QString::fromStdString(path)).convertToFormat(QImage::Format_ARGB32);
}

std::wstring wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

void PadTest::SetUp()
{
    setLogging(false);
    installDriver();
    m_pad = std::make_unique<Pad>(GetParam());
}

void PadTest::closePad()
{
    setLogging(false);
    if (m_pad) {
        EXPECT_EQ(m_pad->stop(), 0);
        expectNoObject();
    }
    m_pad.reset();
}

void PadTest::TearDown()
{
    closePad();
    if (!padCase().isWidget()) {
        EXPECT_EQ(QCoreApplication::instance(), nullptr) << "a windowless test ran beside an application";
    }
}

void expectNoObject()
{
    EXPECT_EQ(Library::instance().signWidget, nullptr);
    EXPECT_EQ(Library::instance().useSignObj, 0);
}

void OpenPadTest::SetUp()
{
    PadTest::SetUp();
    ASSERT_TRUE(pad().start());
}

} // namespace scribera::test
