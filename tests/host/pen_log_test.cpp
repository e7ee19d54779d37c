// The lines that samples, keys and pen settings leave in the two log files.

#include <algorithm>
#include <climits>
#include <fstream>

#include <sched.h>

#include "pen.h"

namespace scribera::test {
namespace {

using Line = std::pair<std::string, std::string>; // label and text

class PenLog : public OpenPadTest
{
protected:
    std::string handler() const { return method(model().handler); }
    // Key lines of the pads with a key release carry one handler's name, whatever the model.
    std::string keyLabel() const
    {
        return model().keyAtRelease ? method("RxK421BSignPadRawData") : handler();
    }

    std::vector<Line> penLines() const
    {
        const std::vector<std::string> labels = {
            handler(), keyLabel(), method("ConvertSignRawDataToSignWndData"), method("StartSignOnCanvas"),
            method("CheckIfNeedToSendRealTimeSignData")};
        std::vector<Line> lines;
        for (const LogLine& line : mainLog()) {
            if (std::find(labels.begin(), labels.end(), line.label) != labels.end()) {
                EXPECT_TRUE(line.hasTick) << testing::PrintToString(line);
                lines.emplace_back(line.label, line.text);
            }
        }
        return lines;
    }

    std::vector<Line> penLinesOf(const std::vector<ScrSimSample>& samples)
    {
        removeLogs();
        setLogging(true);
        pad().draw(samples);
        setLogging(false);
        return penLines();
    }

    Line enter(const ScrSimSample& s) const
    {
        return {handler(),
                printed("Enter, nX=%d, nY=%d, nP=%d, nPenStatus=%d", s.x, s.y, s.pressure, s.penStatus)};
    }
    Line leave() const { return {handler(), "leave !"}; }

    void addMapping(std::vector<Line>& lines) const
    {
        if (!model().hasFingerprint)
            return;
        lines.emplace_back(method("ConvertSignRawDataToSignWndData"), "Enter...");
        lines.emplace_back(method("ConvertSignRawDataToSignWndData"), "leave !");
    }
    void addNotice(std::vector<Line>& lines) const
    {
        lines.emplace_back(method("CheckIfNeedToSendRealTimeSignData"), "Enter...");
        lines.emplace_back(method("CheckIfNeedToSendRealTimeSignData"), "leave !");
    }
    static std::string place(const char* what, const Mapped& m)
    {
        return printed("%s, dblSignWndX=%f, dblSignWndY=%f, dblSignWndPressure=%f", what, m.x, m.y,
                       m.pressure);
    }
};

TEST_P(PenLog, StrokeWritesItsLinesInTheirOrder)
{
    const Redraw redraw(model(), 400, 200);
    const std::vector<ScrSimSample> samples = {{model().originX + 7, model().originY + 11, 345, PenDown},
                                               {model().originX + 1180, model().originY + 715, 512, PenMove},
                                               {0, 0, 700, PenMove},
                                               {INT_MAX, INT_MAX, 701, PenMove},
                                               {5, 6, 77, PenUp}};
    std::vector<Line> expected;
    for (const ScrSimSample& sample : samples) {
        const Mapped m = redraw.map(sample.x, sample.y, sample.pressure);
        expected.push_back(enter(sample));
        addMapping(expected);
        if (sample.penStatus == PenMove) {
            expected.emplace_back(method("StartSignOnCanvas"),
                                  printed("enter, dblX=%f, dblY=%f, dblPressure=%f", m.x, m.y, m.pressure));
            if (!padCase().isWidget())
                expected.emplace_back(method("StartSignOnCanvas"), "leave !");
        }
        const char* what = sample.penStatus == PenDown   ? "Pen_Down"
                           : sample.penStatus == PenMove ? "Pen_Move"
                                                         : "Pen_Up";
        expected.emplace_back(handler(), place(what, m));
        addNotice(expected);
        expected.push_back(leave());
    }
    EXPECT_EQ(penLinesOf(samples), expected);
}

// An SVG is drawn from the raw points, which are mapped once more for it.
TEST_P(PenLog, AnSvgMapsEachPointOfAStrokeOnce)
{
    pad().draw({{model().originX + 100, model().originY + 100, 300, PenDown},
                {model().originX + 200, model().originY + 150, 300, PenMove},
                {0, 0, 0, PenUp},
                {model().originX + 300, model().originY + 200, 300, PenDown},
                {0, 0, 0, PenUp}});
    ASSERT_EQ(pad().points(), 5);
    std::vector<Line> expected;
    for (int point = 0; point < 3; ++point)
        addMapping(expected);

    logged([&] { EXPECT_EQ(pad().save(ImageSvg, "mapped.svg"), 0); });
    EXPECT_EQ(penLines(), expected);

    logged([&] { EXPECT_FALSE(takeSvg(pad()).null); });
    EXPECT_EQ(penLines(), expected);

    logged([&] { EXPECT_EQ(pad().save(ImageSvg, "no/such/folder.svg"), 0); });
    EXPECT_EQ(penLines(), expected) << "whether or not there is a file";
}

TEST_P(PenLog, CornersOfTheAreaAreMappedToTheCanvas)
{
    const int right = model().originX + model().areaWidth - 1;
    const int bottom = model().originY + model().areaHeight - 1;
    const double farX = (model().areaWidth - 1) * (400 / static_cast<double>(model().areaWidth));
    const double farY = (model().areaHeight - 1) * (200 / static_cast<double>(model().areaHeight));
    for (const auto& [sample, x, y] : std::initializer_list<std::tuple<ScrSimSample, double, double>>{
             {{model().originX, model().originY, 1, PenDown}, 0, 0},
             {{0, 0, 1, PenDown}, 0, 0},
             {{right, bottom, 1, PenDown}, farX, farY},
             {{right + 1, bottom + 1, 1, PenDown}, farX, farY},
             {{INT_MAX, INT_MIN, 1, PenDown}, farX, 0}}) {
        std::vector<std::string> texts;
        for (const Line& line : penLinesOf({sample})) {
            if (line.first == handler() && line.second.starts_with("Pen_Down"))
                texts.push_back(line.second.substr(0, line.second.rfind(", dblSignWndPressure")));
        }
        EXPECT_EQ(texts, Texts{printed("Pen_Down, dblSignWndX=%f, dblSignWndY=%f", x, y)});
    }
}

TEST_P(PenLog, IgnoredSamplesWriteEntryAndLeaveOnly)
{
    for (const int status : {5, -1, INT_MIN, INT_MAX, 256, int(PenMove), int(PenUp)}) {
        const ScrSimSample sample = {300, 400, 9, status};
        EXPECT_EQ(penLinesOf({sample}), (std::vector<Line>{enter(sample), leave()})) << status;
    }
}

TEST_P(PenLog, InvalidPressureWritesItsLineAndLeaves)
{
    pad().draw({sampleAt(model(), {0.1, 0.1}, PenDown)});
    const ScrSimSample sample = {500, 500, model().maxPressure + 1, PenMove};
    EXPECT_EQ(penLinesOf({sample}),
              (std::vector<Line>{enter(sample), {handler(), "Rx invalid pressure value, skip !"}, leave()}));
}

TEST_P(PenLog, PenUpWithoutPointsWritesNoNotice)
{
    pad().draw({sampleAt(model(), {0.1, 0.1}, PenDown)});
    ASSERT_EQ(api().Clear(type()), 0);
    const ScrSimSample up = {model().originX, model().originY, 0, PenUp};
    std::vector<Line> expected = {enter(up)};
    addMapping(expected);
    expected.emplace_back(handler(), place("Pen_Up", {0, 0, 0}));
    expected.push_back(leave());
    EXPECT_EQ(penLinesOf({up}), expected);
}

TEST_P(PenLog, KeysWriteTheirLines)
{
    StatusRecorder recorder(pad());
    std::size_t presses = 0;
    for (const int key : {1, 0}) {
        const bool confirm = key == 1;
        const ScrSimSample touch = {11, 22, 33, confirm ? ConfirmKeyDown : CancelKeyDown};
        const ScrSimSample release = {44, 55, 66, PenUp};
        std::vector<Line> expected = {
            enter(touch),
            {keyLabel(), confirm ? "Pen_Down_On_Confirm_Key !" : "Pen_Down_On_Cancel_Key !!!"},
            leave(),
            enter(release)};
        if (model().keyAtRelease)
            expected.emplace_back(keyLabel(),
                                  confirm ? "Pen_Up_On_Enter_Button !" : "Pen_Up_On_Cancel_Button !!!");
        expected.push_back(leave());
        EXPECT_EQ(penLinesOf({touch, release}), expected);
        ASSERT_TRUE(recorder.waitFor(++presses));
    }
}

TEST_P(PenLog, KeyActionsWriteToTheInThreadFileOnly)
{
    for (const int key : {1, 0}) {
        const std::string label = method(key == 1 ? "DoClickConfirmKeyAction" : "DoClickCancelKeyAction");
        removeLogs();
        setLogging(true);
        sim().pressKey(key);
        // Also without a callback the action is run.
        EXPECT_TRUE(waitUntil([&] { return textsOf(inThreadLog(), label).size() == 3; }));
        setLogging(false);
        EXPECT_EQ(textsOf(inThreadLog(), label),
                  (Texts{"Enter...", key == 1 ? "Pen_Down_On_Confirm_Key !" : "Pen_Down_On_Cancel_Key !",
                         "leave !"}));
        EXPECT_TRUE(textsOf(mainLog(), label).empty());
        for (const std::vector<LogLine>& lines : {mainLog(), inThreadLog()}) {
            EXPECT_TRUE(withLabel(lines, method("CheckIfWeCanDoConfirmOrCancelKeyAction")).empty());
            EXPECT_TRUE(withLabel(lines, method("AreWeGoingToShutDown")).empty());
        }
    }
}

TEST_P(PenLog, ThreadCarriesTheNameOfItsClass)
{
    ASSERT_EQ(pad().stop(), 0);
    setLogging(true);
    ASSERT_TRUE(pad().start());
    const std::string name = std::string("C") + model().name + (padCase().isWidget() ? "Widget" : "Obj") +
                             "_DoConfirmOrCancelKeyActionThread";
    EXPECT_TRUE(waitUntil([&] { return !textsOf(inThreadLog(), name + "::run()").empty(); }));
    EXPECT_EQ(textsOf(inThreadLog(), name + "::" + name + "()"),
              Texts{std::string("enter, ") + (padCase().isWidget() ? "m_pSignWidget=" : "m_pSignObj=") +
                    hex(Library::instance().signWidget)});
    EXPECT_EQ(pad().stop(), 0);
    setLogging(false);
    EXPECT_EQ(textsOf(inThreadLog(), name + "::run()"), (Texts{"enter", "Leave !"}));
    EXPECT_TRUE(textsOf(mainLog(), name + "::run()").empty());
}

// Lets the key action thread run only when nothing else wants to, so that the pad's thread gets several
// samples in between arming a key action and the pass that performs it.
class LazyActionThread
{
public:
    explicit LazyActionThread(const PadCase& padCase)
    {
        sched_getaffinity(0, sizeof m_before, &m_before);
        const std::string name =
            (std::string("C") + padCase.model->name + (padCase.isWidget() ? "Widget" : "Obj") + "_DoConfirm")
                .substr(0, 15);
        cpu_set_t one;
        CPU_ZERO(&one);
        for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
            if (CPU_ISSET(cpu, &m_before)) {
                CPU_SET(cpu, &one);
                break;
            }
        }
        for (const std::string& id : ProcessState::now().threads) {
            const int thread = std::stoi(id);
            sched_setaffinity(thread, sizeof one, &one);
            std::string comm;
            std::getline(std::ifstream("/proc/self/task/" + id + "/comm") >> std::ws, comm);
            if (comm == name) {
                const sched_param none{};
                m_found = sched_setscheduler(thread, SCHED_IDLE, &none) == 0;
            }
        }
    }
    ~LazyActionThread() { sched_setaffinity(0, sizeof m_before, &m_before); }
    LazyActionThread(const LazyActionThread&) = delete;
    LazyActionThread& operator=(const LazyActionThread&) = delete;
    bool found() const { return m_found; }

private:
    cpu_set_t m_before;
    bool m_found = false;
};

TEST_P(PenLog, TouchesBetweenArmingAndTheActionAreSkipped)
{
    StatusRecorder recorder(pad());
    // The thread takes its name when it begins to run.
    ASSERT_TRUE(waitUntil([&] { return LazyActionThread(padCase()).found(); }));
    const LazyActionThread lazy(padCase());
    const std::string reason = ", skip due to (m_nDoClickConfirmOrCancelKeyActionFlag >= 0) !";
    const ScrSimSample confirm = {1, 2, 3, ConfirmKeyDown};
    const ScrSimSample cancel = {1, 2, 3, CancelKeyDown};
    const ScrSimSample up = {1, 2, 3, PenUp};
    const ScrSimSample down = sampleAt(model(), {0.5, 0.5}, PenDown);
    const ScrSimSample move = sampleAt(model(), {0.6, 0.5}, PenMove);

    bool skipped = false;
    for (int round = 0; round < 300 && !skipped; ++round) {
        const std::size_t before = recorder.statuses().size();
        api().GetDeviceConfirmOrCancelKeyStatus(type());
        const std::vector<Line> lines = penLinesOf({confirm, up, down, move, up, cancel, up, confirm, up});
        ASSERT_TRUE(recorder.waitFor(before + 1));
        const auto has = [&](const std::string& text) {
            return std::find(lines.begin(), lines.end(), Line{keyLabel(), text}) != lines.end();
        };
        if (has("Pen_Down" + reason) && has("Pen_Down_On_Cancel_Key" + reason) &&
            has("Pen_Down_On_Confirm_Key" + reason)) {
            skipped = true;
            std::vector<Line> expected = {
                enter(confirm), {keyLabel(), "Pen_Down_On_Confirm_Key !"}, leave(), enter(up)};
            if (model().keyAtRelease)
                expected.emplace_back(keyLabel(), "Pen_Up_On_Enter_Button !");
            for (const Line& line :
                 {leave(), enter(down), Line(keyLabel(), "Pen_Down" + reason), leave(), enter(move), leave(),
                  enter(up), leave(), enter(cancel), Line(keyLabel(), "Pen_Down_On_Cancel_Key" + reason),
                  leave(), enter(up), leave(), enter(confirm),
                  Line(keyLabel(), "Pen_Down_On_Confirm_Key" + reason), leave(), enter(up), leave()})
                expected.push_back(line);
            EXPECT_EQ(lines, expected);
            EXPECT_EQ(pad().points(), -8);
            EXPECT_EQ(api().GetDeviceConfirmOrCancelKeyStatus(type()), 1);
            EXPECT_EQ(recorder.statuses().size(), before + 1);
            EXPECT_EQ(recorder.statuses().back(), 1);
            sim().CallCount("SCRDAPI_ClearDeviceContent");
        } else {
            // The action came early; take away what the later touches have done.
            waitUntil([&] { return !recorder.isInside(); });
            ASSERT_TRUE(waitUntil([&, calls = recorder.statuses().size(), same = 0]() mutable {
                const std::size_t now = recorder.statuses().size();
                same = now == calls ? same + 1 : 0;
                calls = now;
                return same > 20;
            }));
            api().Clear(type());
            api().Clear(type());
        }
    }
    EXPECT_TRUE(skipped) << "the action came in between every time";
}

TEST_P(PenLog, ClearWritesItsLines)
{
    const std::string label = method("ClearDeviceContent");
    const Texts around = {"b4 call m_pfn_SCRDAPI_ClearDeviceContent()...",
                          "after call m_pfn_SCRDAPI_ClearDeviceContent()..."};
    sim().SetResult("SCRDAPI_ClearDeviceContent", 3);
    logged([&] { EXPECT_EQ(api().Clear(type()), 3); });
    Texts expected = {"enter..."};
    if (!model().keyAtRelease)
        expected.insert(expected.end(), around.begin(), around.end());
    expected.push_back("leave with nResult=3");
    EXPECT_EQ(textsOf(mainLog(), label), expected);
    EXPECT_EQ(textsOf(mainLog(), method("ClearSignCanvas")), (Texts{"enter...", "leave !"}));

    StatusRecorder recorder(pad());
    sim().pressKey(0);
    ASSERT_TRUE(recorder.waitFor(1));
    logged([&] { EXPECT_EQ(api().Clear(type()), 0); });
    const std::string name = model().name;
    const std::string line = name == "KM730"  ? " m_bPenDownOnCancelButton = false, only clear UI canvas !"
                             : name == "T580" ? "m_bPenDownOnCancelButton = false, only clear UI canvas !"
                                              : "m_bPenDownOnCancelButton = false";
    EXPECT_EQ(textsOf(mainLog(), label), (Texts{"enter...", line, "leave with nResult=0"}));
    EXPECT_EQ(textsOf(mainLog(), method("ClearSignCanvas")), (Texts{"enter...", "leave !"}));
}

TEST_P(PenLog, PenSettingsWriteTheirLines)
{
    const std::vector<LogLine> lines = logged([&] {
        EXPECT_EQ(api().SetPenWidth(type(), 7), 0);
        EXPECT_EQ(api().SetPenWidth(type(), 11), -2);
        EXPECT_EQ(api().SetPenColor(type(), 1, -2, 300), 0);
        EXPECT_EQ(api().SetPenStyle(type(), false), 0);
    });
    EXPECT_EQ(textsOf(lines, method("SetDevicePenWidth")),
              (Texts{"enter, nPenWidth=7", "leave with nResult=0", "enter, nPenWidth=11",
                     "leave with ARI_INVALID_PARAMETERS since nPenWidth is out of range !"}));
    EXPECT_EQ(textsOf(lines, std::string(padCase().className()) + "::SetDevicePenColor"),
              (Texts{"enter, nR=1, nG=-2, nB=300", "leave with nResult=0"}));
    EXPECT_TRUE(textsOf(lines, method("SetDevicePenColor")).empty());
    EXPECT_EQ(textsOf(lines, method("SetDevicePenStyle")),
              (Texts{"enter, bWithPressureValue=0", "leave with nResult=0"}));
    EXPECT_EQ(textsOf(lines, exported("SetPenWidth")),
              (Texts{printed("Enter, nDeviceType=%d, nPenWidth=7", type()), "leave with nResult=0 !",
                     printed("Enter, nDeviceType=%d, nPenWidth=11", type()), "leave with nResult=-2 !"}));
    EXPECT_EQ(
        textsOf(lines, exported("SetPenColor")),
        (Texts{printed("Enter, nDeviceType=%d, nR=1, nG=-2, nB=300", type()), "leave with nResult=0 !"}));
}

TEST_P(PenLog, PointQueriesWriteTheirLines)
{
    pad().draw(stroke(model(), {{0.5, 0.5}}));
    setLogging(true);
    EXPECT_EQ(pad().points(), 2);
    Packet packet{};
    EXPECT_EQ(api().getPackets(type(), &packet), 0);
    packet.index = 2;
    EXPECT_EQ(api().getPackets(type(), &packet), -1);
    char* time = api().GetInkPointTime(type(), 1);
    api().FreeInkPointTime(type(), time);
    setLogging(false);
    const std::vector<LogLine> lines = mainLog();
    EXPECT_EQ(textsOf(lines, exported("GetTotalPacketsNumber")),
              (Texts{printed("enter, nDeviceType=%d", type()), "leave with nInkCount=2 !"}));
    EXPECT_EQ(textsOf(lines, method("GetTotalInkPointsNumber")), Texts{"enter..."});
    EXPECT_EQ(textsOf(lines, method("SetSignatureStatusCallback")), Texts{"leave with nInkCount=2"});
    EXPECT_EQ(textsOf(lines, exported("getPackets")),
              (Texts{printed("enter, nDeviceType=%d", type()), "leave with nResult=0 !",
                     printed("enter, nDeviceType=%d", type()), "leave with nResult=-1 !"}));
    EXPECT_EQ(textsOf(lines, method("GetPACKETS")),
              (Texts{"enter...", "leave with nResult=0", "enter...", "leave with nResult=-1"}));
    EXPECT_EQ(textsOf(lines, exported("GetInkPointTime")),
              (Texts{printed("enter, nDeviceType=%d, nIndex=1", type()),
                     "leave with pInkPointTime=" + hex(time) + " !"}));
    ASSERT_EQ(textsOf(lines, method("GetInkPointTime")).size(), 2u);
    EXPECT_EQ(textsOf(lines, method("GetInkPointTime")).front(), "enter, nIndex=1");
    EXPECT_EQ(textsOf(lines, exported("FreeInkPointTime")).front(),
              printed("enter, nDeviceType=%d, pInkPointTime=%s", type(), hex(time).c_str()));
    EXPECT_EQ(textsOf(lines, method("FreeInkPointTime")),
              (Texts{"enter, pInkPointTime=" + hex(time), "after call delete[] pInkPointTime !", "leave !"}));
}

void ignoreStatus(int) {}

TEST_P(PenLog, KeyQueriesWriteTheirLines)
{
    setLogging(true);
    EXPECT_EQ(api().SignatureStatusCallback(type(), ignoreStatus), 0);
    EXPECT_EQ(api().SignatureStatusCallback(type(), nullptr), 0);
    EXPECT_EQ(api().GetDeviceConfirmOrCancelKeyStatus(type()), -1);
    setLogging(false);
    EXPECT_EQ(textsOf(mainLog(), method("SetSignatureStatusCallback")),
              (Texts{"enter, pStatus=" + hexOf(ignoreStatus), "leave with nResult=0", "enter, pStatus=0",
                     "leave with nResult=0"}));
    EXPECT_EQ(textsOf(mainLog(), method("GetDeviceConfirmOrCancelKeyStatus")),
              (Texts{"enter...", "leave with nKeyStatus=-1"}));
    EXPECT_EQ(textsOf(mainLog(), exported("GetDeviceConfirmOrCancelKeyStatus")).back(),
              "leave with nKeyStatus=-1 !");
}

TEST_P(PenLog, ShutdownWritesItsLines)
{
    logged([&] { EXPECT_EQ(pad().stop(), 0); });
    EXPECT_EQ(textsOf(mainLog(), method("Shutdown")).front(), "Enter...");
    const Texts lines = textsOf(mainLog(), method("Shutdown"));
    const auto at = [&](const std::string& text) {
        return std::find(lines.begin(), lines.end(), text) - lines.begin();
    };
    const auto quit = at("b4 call m_pDoConfirmOrCancelKeyActionThread->quit()...");
    const auto wait = at("b4 call m_pDoConfirmOrCancelKeyActionThread->wait()...");
    const auto after = at("after call m_pDoConfirmOrCancelKeyActionThread = nullptr...");
    EXPECT_LT(quit, wait);
    EXPECT_LT(wait, after);
    EXPECT_LT(after, static_cast<std::ptrdiff_t>(lines.size()) - 1);
    EXPECT_EQ(lines.back(), "leave !");
}

SCRIBERA_INSTANTIATE_ALL(PenLog);

} // namespace
} // namespace scribera::test
