// A live sign object, and the base of the tests that run for every pad and kind.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QEvent>
#include <QImage>
#include <QPaintEvent>
#include <QRegion>
#include <QWidget>

#include "driver.h"
#include "library.h"
#include "models.h"

namespace scribera::test {

struct StartOptions
{
    int width = 400;
    int height = 200;
    int x = 0;
    int y = 0;
    bool parentShown = true;
    bool byWindowId = false;
};

// One live sign object, started and stopped as a host does it. A widget gets a parent window of its own.
class Pad
{
public:
    explicit Pad(const PadCase& padCase);
    ~Pad();
    Pad(const Pad&) = delete;
    Pad& operator=(const Pad&) = delete;

    bool start(const StartOptions& options = {}); // anew where it is open
    int stop();                                   // result of UnInitialDevice; a widget is gone afterwards
    int stopKeepingParent();

    const PadCase& padCase() const { return m_case; }
    const PadModel& model() const { return *m_case.model; }
    const Operations& api() const { return m_api; }
    int type() const { return m_case.model->deviceType; }
    Simulator& sim() { return m_sim; }

    QWidget* parent() { return m_parent.get(); }
    QWidget& makeParent(bool shown); // the one that start() uses; for calls made by hand
    void closeParent();              // destroys the parent window
    QWidget* signWidget();           // the library's widget inside the parent, null when there is none

    int points() const { return m_api.GetTotalPacketsNumber(type()); }
    void draw(const std::vector<ScrSimSample>& samples) { m_sim.send(samples); }
    int save(int imageType, const std::string& path, int dpiLevel = 1);
    QImage canvas(); // what the library holds, through a saved BMP; null when saving fails

private:
    PadCase m_case;
    const Operations& m_api;
    Simulator m_sim;
    std::unique_ptr<QWidget> m_parent;
    bool m_started = false;
};

// Base of the tests that run for every pad and kind. Logging is off and the simulated pad installed at the
// beginning; a process for the windowless kind never has an application object. At the end the
// pad must let itself be closed, whether it is open or not.
class PadTest : public testing::TestWithParam<PadCase>
{
protected:
    void SetUp() override;
    void TearDown() override;
    void closePad();

    const PadCase& padCase() const { return GetParam(); }
    const PadModel& model() const { return *GetParam().model; }
    const Operations& api() const { return Library::instance().family(model()); }
    int type() const { return model().deviceType; }
    std::string exported(const std::string& name) const { return padCase().exported(name); }
    std::string method(const std::string& name) const { return padCase().method(name); }
    Pad& pad() { return *m_pad; }
    Simulator& sim() { return m_pad->sim(); }

    std::unique_ptr<Pad> m_pad;
};

// Neither the library's object nor the flag that it sets for one without a window.
void expectNoObject();

// Base of the tests that begin with an open pad of 400 x 200.
class OpenPadTest : public PadTest
{
protected:
    void SetUp() override;
};

// Sees what a widget paints, as long as both live.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            ++paints;
            region += static_cast<QPaintEvent*>(event)->region();
        }
        return false;
    }
    int paints = 0;
    QRegion region;
};

// The wide form of a path, writable because the library's functions ask for it.
std::wstring wide(const std::string& text);

enum ImageType
{
    ImageBmp = 1,
    ImageJpeg = 2,
    ImagePng = 3,
    ImageInk = 6,
    ImagePdf = 7,
    ImageSvg = 8
};

struct FileType
{
    int id;
    const char* suffix;
};

inline constexpr FileType fileTypes[] = {
    {ImageBmp, "bmp"}, {ImageJpeg, "jpg"}, {ImagePng, "png"}, {ImagePdf, "pdf"}, {ImageSvg, "svg"}};

} // namespace scribera::test
