// The pads as the tests know them, and the cases that follow from them.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace scribera::test {

enum class Kind
{
    Windowless,
    Widget
};

struct PadModel
{
    std::string name;   // K210; also how the tests call it
    std::string prefix; // SCK210_
    std::string deviceName;
    int deviceType;
    std::string widgetClass;
    std::string windowlessClass;
    std::string modelText; // what the pad itself reports
    std::string handler;   // method that takes raw samples
    int originX;           // writing area, in pad units
    int originY;
    int areaWidth;
    int areaHeight;
    int maxPressure;
    bool pressureByMember; // false: the limit is a constant, whatever the pad reported
    bool keyAtRelease;     // key action armed when the pen leaves the key, else when it touches it
    bool hasScreen;        // screen, pen id and secure id calls exist
    bool hasFingerprint;
};

const std::vector<PadModel>& padModels();
const PadModel& padModel(std::string_view name);
const PadModel& otherModel(const PadModel& model); // some other model, the same one every time

struct PadCase
{
    const PadModel* model = nullptr;
    Kind kind = Kind::Windowless;

    bool isWidget() const { return kind == Kind::Widget; }
    const std::string& className() const { return isWidget() ? model->widgetClass : model->windowlessClass; }
    std::string method(const std::string& name) const;   // log label of a method: "CK210SignObj::Shutdown()"
    std::string exported(const std::string& name) const; // log label of a function: "SCK210_Clear()"
    std::string name() const;                            // "K210Windowless"
    std::vector<std::string> words() const;              // how a child process is told of it
    static PadCase of(const std::vector<std::string>& words);
};

void PrintTo(const PadCase& padCase, std::ostream* out);
std::vector<PadCase> allCases();
std::vector<PadCase> casesOf(Kind kind);
std::string caseName(const testing::TestParamInfo<PadCase>& info);

#define SCRIBERA_INSTANTIATE_ALL(Suite)                                                                      \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::ValuesIn(scribera::test::allCases()), scribera::test::caseName)
#define SCRIBERA_INSTANTIATE(Suite, kind)                                                                    \
    INSTANTIATE_TEST_SUITE_P(, Suite, testing::ValuesIn(scribera::test::casesOf(kind)),                      \
                             scribera::test::caseName)

} // namespace scribera::test
