#include "livemeter.h"

#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int visiblePoints = 240;
}

LiveMeter::LiveMeter(QWidget* parent) : QWidget(parent)
{
    setFixedHeight(56);
    setToolTip(tr("Pressure of the pen, point by point while the person signs"));
    setAccessibleName(tr("Pen pressure"));
}

void LiveMeter::add(double pressure, bool onPad)
{
    m_pressures += onPad ? pressure : 0;
    if (m_pressures.size() > visiblePoints)
        m_pressures.removeFirst();
    update();
}

void LiveMeter::clear()
{
    m_pressures.clear();
    update();
}

void LiveMeter::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QColor(0xd5, 0xdc, 0xe4));
    painter.setBrush(QColor(0xf7, 0xf9, 0xfb));
    painter.drawRoundedRect(frame, 4, 4);
    if (m_pressures.isEmpty()) {
        painter.setPen(QColor(0x6b, 0x7a, 0x8c));
        painter.drawText(rect(), Qt::AlignCenter, tr("No pressure yet"));
        return;
    }
    const double step = (frame.width() - 4) / (visiblePoints - 1);
    const double left = frame.right() - 2 - step * (m_pressures.size() - 1);
    QPainterPath area(QPointF(left, frame.bottom() - 1));
    for (int i = 0; i < m_pressures.size(); ++i)
        area.lineTo(left + i * step, frame.bottom() - 1 - m_pressures[i] * (frame.height() - 4));
    area.lineTo(frame.right() - 2, frame.bottom() - 1);
    painter.setPen(QPen(QColor(0x1f, 0x5f, 0x8b), 1.2));
    painter.setBrush(QColor(0x1f, 0x5f, 0x8b, 60));
    painter.drawPath(area);
}
