#pragma once

#include "signwidget/signwidget.h"

// On-screen sign object of the K420.
class CK420SignWidget final : public CSignWidget
{
    Q_OBJECT

public:
    explicit CK420SignWidget(QWidget* parent);
};
