#include "pads.h"

#include "model/padmodel.h"

#include <vector>

namespace simulator {
namespace {

// Every model string of the library's table, in the order in which a host tests them.
const std::vector<Pad>& pads()
{
    static const std::vector<Pad> all = [] {
        std::vector<Pad> list;
        for (const CPadModel* model : AllPads()) {
            const Area area{model->m_nPadOriginX, model->m_nPadOriginY, model->m_nAreaWidth,
                            model->m_nAreaHeight};
            for (const CAcceptedModel& accepted : model->m_Accepted)
                list.push_back({model->m_nDeviceType, accepted.m_pszModel, area, accepted.m_nMaxPressure});
        }
        return list;
    }();
    return all;
}

} // namespace

std::string_view canonicalModel(int deviceType)
{
    const CPadModel* found = AllPads().front();
    for (const CPadModel* model : AllPads())
        if (model->m_nDeviceType == deviceType)
            found = model;
    // "SCK210_" is the family of the pad that reports "SCK210".
    std::string_view family = found->m_pszFamily;
    family.remove_suffix(1);
    return family;
}

const Pad* padForDevice(int deviceType, std::string_view modelText)
{
    const Pad* canonical = nullptr;
    for (const Pad& pad : pads()) {
        if (pad.deviceType != deviceType)
            continue;
        if (modelText.starts_with(pad.model))
            return &pad;
        if (pad.model == canonicalModel(deviceType))
            canonical = &pad;
    }
    return canonical;
}

const Pad* padForModel(std::string_view name)
{
    for (const Pad& pad : pads()) {
        if (name == pad.model || name == pad.model.substr(2))
            return &pad;
    }
    return nullptr;
}

std::string modelNames()
{
    std::string names;
    for (const Pad& pad : pads()) {
        if (!names.empty())
            names += ' ';
        names += pad.model;
    }
    return names;
}

} // namespace simulator
