#include "model/padmodel.h"

namespace {

constexpr CAcceptedModel kAcceptedByK210[] = {
    // The first match wins: the eight-character rows stand before the six-character one they extend.
    {"SCT470", 6, 1024}, {"SCK210R1", 8, 1024}, {"SCT480R1", 8, 1024}, {"SCK190", 6, 1024},
    {"SCN210", 6, 1024}, {"SCK210", 6, 2048},   {"SCT12", 5, 2048},
};
constexpr CAcceptedModel kAcceptedByK420[] = {{"SCK420", 6, 2048}};
constexpr CAcceptedModel kAcceptedByK421B[] = {{"SCK421B", 7, 2048}};
constexpr CAcceptedModel kAcceptedByKM730[] = {{"SCKM730", 7, 8192}};
constexpr CAcceptedModel kAcceptedByT580[] = {{"SCT580", 6, 8192}};

} // namespace

// All names of a model follow from its own one.
#define TYPE_NAMES(szClass)                                                                                  \
    {                                                                                                        \
        szClass, szClass "()"                                                                                \
    }
#define CLASS_NAMES(szModel, szKind, szThreadKind)                                                           \
    {                                                                                                        \
        TYPE_NAMES("C" szModel szKind),                                                                      \
            TYPE_NAMES("C" szModel szThreadKind "_DoConfirmOrCancelKeyActionThread"),                        \
            TYPE_NAMES("C" szModel szThreadKind "_ShowFPImageOnDeviceThread")                                \
    }
#define MODEL_NAMES(szModel)                                                                                 \
    .m_pszName = szModel, .m_pszDeviceName = "SC" szModel "_DEVICE", .m_pszFamily = "SC" szModel "_",        \
    .m_WidgetNames = CLASS_NAMES(szModel, "SignWidget", "Widget"),                                           \
    .m_ObjNames = CLASS_NAMES(szModel, "SignObj", "Obj"),                                                    \
    .m_pszRawDataFunction = "Rx" szModel "SignPadRawData()",                                                 \
    .m_pszFPRawDataFunction = "Rx" szModel "SignPadFPRawData()"

constexpr const CPadModel g_PadK210 = {
    .m_nDeviceType = SCK210_DEVICE,
    MODEL_NAMES("K210"),
    // The key lines of this model and of the K420 have always carried the K421B's handler name.
    .m_pszKeyLineFunction = "RxK421BSignPadRawData()",
    .m_pszCancelClearLine = "<%ld>-m_bPenDownOnCancelButton = false",
    .m_bLogsClearCall = false,
    .m_bLogsMapping = false,
    .m_nPadOriginX = 160,
    .m_nPadOriginY = 220,
    .m_nAreaWidth = SCRIBERA_AREA_WIDTH_K210,
    .m_nAreaHeight = SCRIBERA_AREA_HEIGHT_K210,
    .m_nInitialMaxPressure = 2048,
    .m_nFixedPressureLimit = 0,
    .m_eWidthRule = EWidthRule::PressurePer306,
    .m_eKeyRule = EKeyRule::AtRelease,
    .m_bHasScreen = true,
    .m_bHasFingerprint = false,
    .m_pszReportedName = "K210",
    .m_Accepted = kAcceptedByK210,
};

constexpr const CPadModel g_PadK420 = {
    .m_nDeviceType = SCK420_DEVICE,
    MODEL_NAMES("K420"),
    .m_pszKeyLineFunction = "RxK421BSignPadRawData()",
    .m_pszCancelClearLine = "<%ld>-m_bPenDownOnCancelButton = false",
    .m_bLogsClearCall = false,
    .m_bLogsMapping = false,
    .m_nPadOriginX = 200,
    .m_nPadOriginY = 200,
    .m_nAreaWidth = SCRIBERA_AREA_WIDTH_K420,
    .m_nAreaHeight = SCRIBERA_AREA_HEIGHT_K420,
    .m_nInitialMaxPressure = 2048,
    .m_nFixedPressureLimit = 0,
    .m_eWidthRule = EWidthRule::PressurePer306,
    .m_eKeyRule = EKeyRule::AtRelease,
    .m_bHasScreen = true,
    .m_bHasFingerprint = false,
    .m_pszReportedName = "K420",
    .m_Accepted = kAcceptedByK420,
};

constexpr const CPadModel g_PadK421B = {
    .m_nDeviceType = SCK421B_DEVICE,
    MODEL_NAMES("K421B"),
    .m_pszKeyLineFunction = "RxK421BSignPadRawData()",
    .m_pszCancelClearLine = "<%ld>-m_bPenDownOnCancelButton = false",
    .m_bLogsClearCall = false,
    .m_bLogsMapping = true,
    .m_nPadOriginX = 2050,
    .m_nPadOriginY = 1750,
    .m_nAreaWidth = SCRIBERA_AREA_WIDTH_K421B,
    .m_nAreaHeight = SCRIBERA_AREA_HEIGHT_K421B,
    .m_nInitialMaxPressure = 2048,
    .m_nFixedPressureLimit = 2048,
    .m_eWidthRule = EWidthRule::PressurePer306,
    .m_eKeyRule = EKeyRule::AtRelease,
    .m_bHasScreen = true,
    .m_bHasFingerprint = true,
    .m_pszReportedName = "K421H", // not the family's own name, and known so to hosts
    .m_Accepted = kAcceptedByK421B,
};

constexpr const CPadModel g_PadKM730 = {
    .m_nDeviceType = SCKM730_DEVICE,
    MODEL_NAMES("KM730"),
    .m_pszKeyLineFunction = "RxKM730SignPadRawData()",
    .m_pszCancelClearLine = "<%ld>- m_bPenDownOnCancelButton = false, only clear UI canvas !",
    .m_bLogsClearCall = true,
    .m_bLogsMapping = false,
    .m_nPadOriginX = 550,
    .m_nPadOriginY = 180,
    .m_nAreaWidth = SCRIBERA_AREA_WIDTH_KM730,
    .m_nAreaHeight = SCRIBERA_AREA_HEIGHT_KM730,
    .m_nInitialMaxPressure = 8192,
    .m_nFixedPressureLimit = 0,
    .m_eWidthRule = EWidthRule::ThreeTimesAtLimit,
    .m_eKeyRule = EKeyRule::AtTouch,
    .m_bHasScreen = false,
    .m_bHasFingerprint = false,
    .m_pszReportedName = "KM730",
    .m_Accepted = kAcceptedByKM730,
};

constexpr const CPadModel g_PadT580 = {
    .m_nDeviceType = SCT580_DEVICE,
    MODEL_NAMES("T580"),
    .m_pszKeyLineFunction = "RxT580SignPadRawData()",
    .m_pszCancelClearLine = "<%ld>-m_bPenDownOnCancelButton = false, only clear UI canvas !",
    .m_bLogsClearCall = true,
    .m_bLogsMapping = false,
    .m_nPadOriginX = 550,
    .m_nPadOriginY = 180,
    .m_nAreaWidth = SCRIBERA_AREA_WIDTH_T580,
    .m_nAreaHeight = SCRIBERA_AREA_HEIGHT_T580,
    .m_nInitialMaxPressure = 8192,
    .m_nFixedPressureLimit = 0,
    .m_eWidthRule = EWidthRule::ThreeTimesAtLimit,
    .m_eKeyRule = EKeyRule::AtTouch,
    .m_bHasScreen = false,
    .m_bHasFingerprint = false,
    .m_pszReportedName = "T580",
    .m_Accepted = kAcceptedByT580,
};

#define ROW_OF(Model) &g_Pad##Model,

std::span<const CPadModel* const> AllPads()
{
    static constexpr const CPadModel* kPads[] = {SCRIBERA_FAMILIES(ROW_OF)};
    return kPads;
}
