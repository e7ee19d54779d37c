#pragma once

#include "signwidget/signwidget.h"

// On-screen sign object of the KM730.
class CKM730SignWidget final : public CSignWidget
{
    Q_OBJECT

public:
    explicit CKM730SignWidget(QWidget* parent);
};
