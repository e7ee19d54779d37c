#pragma once

#include "signwidget/signwidget.h"

// On-screen sign object of the K421B.
class CK421BSignWidget final : public CSignWidget
{
    Q_OBJECT

public:
    explicit CK421BSignWidget(QWidget* parent);

    // Places the fingerprint: on this canvas if pParentWidget is this widget's own parent, else in a widget
    // of its own that covers pParentWidget. To be called on the GUI thread.
    int SetDisplayedFPImageAt(QWidget* pParentWidget, int nFPLeft, int nFPTop, int nFPWidth, int nFPHeight);
};
