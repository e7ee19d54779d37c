// The pressure of the last points, as they come.
#pragma once

#include <QVector>
#include <QWidget>

class LiveMeter : public QWidget
{
    Q_OBJECT

public:
    explicit LiveMeter(QWidget* parent = nullptr);
    void add(double pressure, bool onPad);
    void clear();
    QSize sizeHint() const override { return {220, 56}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVector<double> m_pressures; // 0 while the pen is lifted
};
