#pragma once

#include "signwidget/signwidget.h"

// On-screen sign object of the T580.
class CT580SignWidget final : public CSignWidget
{
    Q_OBJECT

public:
    explicit CT580SignWidget(QWidget* parent);
};
