// The exported families: what every function of every family does before it reaches a sign object.

#include <climits>
#include <map>

#include <QApplication>
#include <QTimer>

#include "exported_operations.h"

namespace scribera::test {
namespace {

class ExportedFamilies : public PadTest
{
protected:
    static void expectTwoLines(const std::vector<LogLine>& lines, const std::string& label,
                               const std::string& entry, const std::string& leave)
    {
        ASSERT_EQ(lines.size(), 2u) << testing::PrintToString(lines);
        for (const LogLine& line : lines) {
            EXPECT_EQ(line.label, label);
            EXPECT_TRUE(line.hasTick) << line.message;
        }
        EXPECT_EQ(lines[0].text, entry);
        EXPECT_EQ(lines[1].text, leave);
    }

    void expectNotFreed(int deviceType)
    {
        char buffer[8] = "1234567"; // not the library's to release: freeing it would be noticed
        api().FreeInkPointTime(deviceType, buffer);
        api().PacketsBase64EncodeFree(deviceType, buffer);
        api().PacketsBase64EncodeExFree(deviceType, buffer);
        api().FreeSVGImageBase64Data(deviceType, buffer);
        if (api().FreeFPImageBase64Data)
            api().FreeFPImageBase64Data(deviceType, buffer);
        EXPECT_STREQ(buffer, "1234567");
    }

    std::vector<int> wrongTypes() const
    {
        std::vector<int> types = {INT_MIN, -1, 0, 1, 6, 8, INT_MAX};
        for (const PadModel& other : padModels()) {
            if (other.deviceType != type())
                types.push_back(other.deviceType);
        }
        return types;
    }
};

TEST_P(ExportedFamilies, EveryOperationRefusesEveryOtherDeviceTypeInTwoLines)
{
    for (const ExportedOperation& operation : exportedOperations(model())) {
        if (!operation.hasDeviceType())
            continue;
        for (const int wrong : wrongTypes()) {
            SCOPED_TRACE(operation.name + " with device type " + std::to_string(wrong));
            Outcome outcome = Outcome::nothing();
            const std::vector<LogLine> lines = logged([&] { outcome = operation.call(api(), wrong); });
            EXPECT_EQ(outcome.text, operation.wrongTypeResult());
            expectTwoLines(lines, exported(operation.name), operation.entryText(wrong),
                           operation.wrongTypeText(model()));
        }
    }
}

TEST_P(ExportedFamilies, AnotherDeviceTypeDoesNotTouchTheLiveObject)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 20));
    const int points = pad().points();
    ASSERT_EQ(points, 22);
    const QImage before = pad().canvas();
    ASSERT_FALSE(before.isNull());
    const std::size_t driverCalls = sim().callLog().size();
    void* const object = Library::instance().signWidget;

    for (const ExportedOperation& operation : exportedOperations(model())) {
        if (!operation.hasDeviceType())
            continue;
        for (const int wrong : wrongTypes()) {
            SCOPED_TRACE(operation.name + " with device type " + std::to_string(wrong));
            EXPECT_EQ(operation.call(api(), wrong).text, operation.wrongTypeResult());
        }
    }
    EXPECT_EQ(Library::instance().signWidget, object);
    EXPECT_EQ(pad().points(), points);
    EXPECT_EQ(pad().canvas(), before);
    EXPECT_EQ(sim().callLog().size(), driverCalls);
}

TEST_P(ExportedFamilies, WithoutObjectEveryOperationGivesItsResultInTwoLines)
{
    ASSERT_EQ(Library::instance().signWidget, nullptr);
    for (const ExportedOperation& operation : objectOperations(model())) {
        SCOPED_TRACE(operation.name);
        Outcome outcome = Outcome::nothing();
        const std::vector<LogLine> lines = logged([&] { outcome = operation.call(api(), type()); });
        EXPECT_EQ(outcome.text, operation.missingObjectResult());
        expectTwoLines(lines, exported(operation.name), operation.entryText(type()),
                       operation.leaveText(operation.missingObjectResult()));
    }
}

TEST_P(ExportedFamilies, WithoutObjectTheResultIsTheSameWithTheFlagSet)
{
    Library::instance().useSignObj = 1;
    for (const ExportedOperation& operation : objectOperations(model())) {
        SCOPED_TRACE(operation.name);
        EXPECT_EQ(operation.call(api(), type()).text, operation.missingObjectResult());
    }
    EXPECT_EQ(Library::instance().signWidget, nullptr);
    Library::instance().useSignObj = 0;
}

TEST_P(ExportedFamilies, FreeOperationsWithoutObjectLeaveTheBufferAlone)
{
    expectNotFreed(type());
}

TEST_P(ExportedFamilies, FreeOperationsWithAnotherDeviceTypeLeaveTheBufferAlone)
{
    ASSERT_TRUE(pad().start());
    expectNotFreed(otherModel(model()).deviceType);
}

TEST_P(ExportedFamilies, WithAnObjectEveryOperationEntersFirstAndLeavesLast)
{
    ASSERT_TRUE(pad().start());
    for (const ExportedOperation& operation : objectOperations(model())) {
        SCOPED_TRACE(operation.name);
        Outcome outcome = Outcome::nothing();
        const std::vector<LogLine> lines = logged([&] { outcome = operation.call(api(), type()); });
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines.front().label, exported(operation.name));
        EXPECT_EQ(lines.front().text, operation.entryText(type()));
        EXPECT_EQ(lines.back().label, exported(operation.name));
        EXPECT_EQ(lines.back().text, operation.leaveText(outcome.text));
        EXPECT_EQ(withLabel(lines, exported(operation.name)).size(), 2u) << testing::PrintToString(lines);
        for (const LogLine& line : lines)
            EXPECT_TRUE(line.hasTick) << line.message;
    }
}

TEST_P(ExportedFamilies, BadArgumentsAreRefusedWithAndWithoutObject)
{
    for (const bool live : {false, true}) {
        if (live) {
            ASSERT_TRUE(pad().start());
            pad().draw(wave(model(), 5));
        }
        for (const BadArguments& bad : badArguments(model())) {
            SCOPED_TRACE(bad.what + (live ? ", live" : ", no object"));
            Outcome outcome = Outcome::nothing();
            const std::vector<LogLine> lines = logged([&] { outcome = bad.call(api(), type()); });
            EXPECT_EQ(outcome.text, bad.result);
            ASSERT_EQ(lines.size(), 2u) << testing::PrintToString(lines);
            EXPECT_EQ(lines[1].label, exported(bad.name));
            EXPECT_EQ(lines[1].text, bad.leaveText);
        }
    }
    EXPECT_EQ(pad().points(), 7);
}

TEST_P(ExportedFamilies, TheDeviceTypeIsCheckedBeforeTheArguments)
{
    const int wrong = otherModel(model()).deviceType;
    std::map<std::string, ExportedOperation> byName;
    for (const ExportedOperation& operation : exportedOperations(model()))
        byName.emplace(operation.name, operation);

    for (const BadArguments& bad : badArguments(model())) {
        SCOPED_TRACE(bad.what);
        const ExportedOperation& operation = byName.at(bad.name);
        Outcome outcome = Outcome::nothing();
        const std::vector<LogLine> lines = logged([&] { outcome = bad.call(api(), wrong); });
        EXPECT_EQ(outcome.text, operation.wrongTypeResult());
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[1].text, operation.wrongTypeText(model()));
    }
}

TEST_P(ExportedFamilies, RefusedMarginsLeaveTheClipSettingAsItWas)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 20));
    ASSERT_EQ(api().SetSaveCenterImageClip(type(), true, 7, 7), 0);
    const QImage clipped = pad().canvas();
    ASSERT_LT(clipped.height(), 200);
    EXPECT_EQ(api().SetSaveCenterImageClip(type(), false, -1, 0), -2);
    EXPECT_EQ(api().SetSaveCenterImageClip(type(), true, 50, -1), -2);
    EXPECT_EQ(pad().canvas(), clipped);
    EXPECT_EQ(api().SetSaveCenterImageClip(type(), true, 0, 0), 0);
    EXPECT_EQ(pad().canvas().size(), QSize(400, 200));
}

TEST_P(ExportedFamilies, GetPacketsWithoutARecordIsRefusedOnlyWithAnObject)
{
    std::vector<LogLine> lines = logged([&] { EXPECT_EQ(api().getPackets(type(), nullptr), -1); });
    expectTwoLines(lines, exported("getPackets"), "enter, nDeviceType=" + std::to_string(type()),
                   "leave with nResult=-1 !");

    ASSERT_TRUE(pad().start());
    lines = logged([&] { EXPECT_EQ(api().getPackets(type(), nullptr), -2); });
    const std::vector<LogLine> own = withLabel(lines, exported("getPackets"));
    ASSERT_EQ(own.size(), 2u) << testing::PrintToString(lines);
    EXPECT_EQ(own[1].text, "leave with ARI_INVALID_PARAMETERS due to (pPACKETS == nullptr) !");
}

TEST_P(ExportedFamilies, ResolutionLevelZeroIs150DotsPerInchAndAnyOther300)
{
    ASSERT_TRUE(pad().start());
    pad().draw(wave(model(), 20));
    for (const int level : {0, 1, 5, 7, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(level);
        ASSERT_EQ(pad().save(ImageBmp, "level.bmp", level), 0);
        const QImage image("level.bmp");
        EXPECT_EQ(image.dotsPerMeterX(), level == 0 ? 5905 : 11811);
        EXPECT_EQ(image.dotsPerMeterY(), level == 0 ? 5905 : 11811);

        ASSERT_EQ(pad().save(ImageSvg, "level.svg", level), 0);
        const std::string svg = fileContent("level.svg");
        // 400 pixels at 150 or 300 dots per inch
        EXPECT_NE(svg.find(level == 0 ? "width=\"67.7333mm\"" : "width=\"33.8667mm\""), std::string::npos)
            << svg;
    }
}

TEST_P(ExportedFamilies, AboutOperationsLogEntryAndLeave)
{
    for (const ExportedOperation& operation : exportedOperations(model())) {
        if (operation.kind != ResultKind::About)
            continue;
        SCOPED_TRACE(operation.name);
        if (QApplication::instance()) { // the box is modal: somebody has to press its button
            QTimer::singleShot(200, qApp, [] {
                if (QWidget* box = QApplication::activeModalWidget())
                    box->close();
            });
        }
        const std::vector<LogLine> lines = logged([&] { operation.call(api(), type()); });
        expectTwoLines(lines, exported(operation.name), "Enter...", "leave !");
    }
}

TEST_P(ExportedFamilies, AboutInfoWithoutBufferDoesNothing)
{
    const std::vector<LogLine> lines = logged([&] { api().GetAboutInfo(type(), nullptr); });
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Enter...");
    EXPECT_EQ(lines[1].text, "leave !");
}

TEST_P(ExportedFamilies, AboutInfoWithAnotherDeviceTypeWritesNothing)
{
    char buffer[128] = "untouched";
    api().GetAboutInfo(otherModel(model()).deviceType, buffer);
    EXPECT_STREQ(buffer, "untouched");
}

SCRIBERA_INSTANTIATE_ALL(ExportedFamilies);

} // namespace
} // namespace scribera::test
