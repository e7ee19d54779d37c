// What distinguishes one pad model from another, as data. A further pad is a further row of padmodel.cpp.
#pragma once

#include "scriberasdk.h"

#include <span>

// The two kinds of sign object that every model has.
enum class EObjectKind
{
    Widget,    // a canvas in the host's window
    Windowless // a canvas off screen
};

// How the stroke width follows from pen width and pressure.
enum class EWidthRule
{
    PressurePer306,    // pressure x pen width / 306
    ThreeTimesAtLimit, // three pen widths at the largest pressure
};

// When a touched key arms its action.
enum class EKeyRule
{
    AtRelease,
    AtTouch
};

// A model string that a pad may report: the first nCompared characters decide.
struct CAcceptedModel
{
    const char* m_pszModel;
    int m_nCompared;
    int m_nMaxPressure;
};

// The names of one class in the log.
struct CTypeNames
{
    const char* m_pszClass;
    const char* m_pszConstructor; // with its brackets
};

// The names of one sign-object class and its worker threads.
struct CClassNames
{
    CTypeNames m_SignObject;
    CTypeNames m_KeyActionThread;
    CTypeNames m_ShowFPImageThread; // used by the fingerprint model only
};

struct CPadModel
{
    int m_nDeviceType;
    const char* m_pszName;       // the model's own name, of which the others are made: "K210"
    const char* m_pszDeviceName; // as failure lines name the device type
    const char* m_pszFamily;     // prefix of the exported functions
    CClassNames m_WidgetNames;
    CClassNames m_ObjNames;

    // Log texts of the pen pipeline.
    const char* m_pszRawDataFunction;
    const char* m_pszFPRawDataFunction;
    const char* m_pszKeyLineFunction; // under which key lines and the pen-down skip line are written
    const char* m_pszCancelClearLine; // when a clear follows a touch of the cancel key
    bool m_bLogsClearCall;            // lines around the driver's clear call
    bool m_bLogsMapping;              // enter and leave lines of the coordinate mapping

    // Writing area in pad units, and what a full pressure is.
    int m_nPadOriginX;
    int m_nPadOriginY;
    int m_nAreaWidth;
    int m_nAreaHeight;
    int m_nInitialMaxPressure;
    int m_nFixedPressureLimit; // limit of pen moves whatever the pad reports; 0: the reported maximum

    EWidthRule m_eWidthRule;
    EKeyRule m_eKeyRule;
    bool m_bHasScreen;      // screen switch, pen id, secure id and version display
    bool m_bHasFingerprint; // fingerprint reader, and canvases merged with its picture

    const char* m_pszReportedName;              // model name that the device information gives
    std::span<const CAcceptedModel> m_Accepted; // in the order of testing

    const CClassNames& NamesOf(EObjectKind eKind) const
    {
        return eKind == EObjectKind::Widget ? m_WidgetNames : m_ObjNames;
    }

    // Pad pressure to stroke width in pixels.
    double PressureScale(int nPenWidth, int nMaxPressure) const
    {
        return m_eWidthRule == EWidthRule::PressurePer306 ? nPenWidth / 306.0
                                                          : nPenWidth * 3.0 / nMaxPressure;
    }

    // Largest pressure of a pen move that is drawn.
    int PressureLimit(int nMaxPressure) const
    {
        return m_nFixedPressureLimit > 0 ? m_nFixedPressureLimit : nMaxPressure;
    }
};

#define DECLARE_PAD(Model) extern const CPadModel g_Pad##Model;
SCRIBERA_FAMILIES(DECLARE_PAD)
#undef DECLARE_PAD

// Every model once.
std::span<const CPadModel* const> AllPads();
