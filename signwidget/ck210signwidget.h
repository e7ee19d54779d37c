#pragma once

#include "signwidget/signwidget.h"

// On-screen sign object of the K210.
class CK210SignWidget final : public CSignWidget
{
    Q_OBJECT

public:
    explicit CK210SignWidget(QWidget* parent);
};
