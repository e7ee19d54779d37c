#include "models.h"

#include <cstddef>
#include <stdexcept>

#include "model/padmodel.h"

namespace scribera::test {

const std::vector<PadModel>& padModels()
{
    static const std::vector<PadModel> models = [] {
        std::vector<PadModel> list;
        for (const CPadModel* row : AllPads()) {
            const std::string name = row->m_pszName;
            list.push_back({
                .name = name,
                .prefix = "SC" + name + "_",
                .deviceName = "SC" + name + "_DEVICE",
                .deviceType = row->m_nDeviceType,
                .widgetClass = "C" + name + "SignWidget",
                .windowlessClass = "C" + name + "SignObj",
                .modelText = "SC" + name,
                .handler = "Rx" + name + "SignPadRawData",
                .originX = row->m_nPadOriginX,
                .originY = row->m_nPadOriginY,
                .areaWidth = row->m_nAreaWidth,
                .areaHeight = row->m_nAreaHeight,
                .maxPressure = row->m_nInitialMaxPressure,
                .pressureByMember = row->m_nFixedPressureLimit == 0,
                .keyAtRelease = row->m_eKeyRule == EKeyRule::AtRelease,
                .hasScreen = row->m_bHasScreen,
                .hasFingerprint = row->m_bHasFingerprint,
            });
        }
        return list;
    }();
    return models;
}

const PadModel& padModel(std::string_view name)
{
    for (const PadModel& model : padModels()) {
        if (name == model.name)
            return model;
    }
    throw std::invalid_argument("no pad model " + std::string(name));
}

const PadModel& otherModel(const PadModel& model)
{
    const std::vector<PadModel>& models = padModels();
    const auto index = static_cast<std::size_t>(&model - models.data());
    return models[(index + 1) % models.size()];
}

std::string PadCase::method(const std::string& name) const
{
    return className() + "::" + name + "()";
}

std::string PadCase::exported(const std::string& name) const
{
    return model->prefix + name + "()";
}

std::string PadCase::name() const
{
    return model->name + (isWidget() ? "Widget" : "Windowless");
}

std::vector<std::string> PadCase::words() const
{
    return {model->name, isWidget() ? "widget" : "windowless"};
}

PadCase PadCase::of(const std::vector<std::string>& words)
{
    return {&padModel(words.at(0)), words.at(1) == "widget" ? Kind::Widget : Kind::Windowless};
}

void PrintTo(const PadCase& padCase, std::ostream* out)
{
    *out << padCase.name();
}

std::vector<PadCase> casesOf(Kind kind)
{
    std::vector<PadCase> cases;
    for (const PadModel& model : padModels())
        cases.push_back({&model, kind});
    return cases;
}

std::vector<PadCase> allCases()
{
    std::vector<PadCase> cases = casesOf(Kind::Windowless);
    const std::vector<PadCase> widgets = casesOf(Kind::Widget);
    cases.insert(cases.end(), widgets.begin(), widgets.end());
    return cases;
}

std::string caseName(const testing::TestParamInfo<PadCase>& info)
{
    return info.param.name();
}

} // namespace scribera::test
