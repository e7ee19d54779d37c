// The pad as the person sees and touches it.
#pragma once

#include "padlayout.h"
#include "virtualpad.h"

#include <QImage>
#include <QWidget>

#include <cstddef>
#include <optional>

namespace virtualpad {

class PadView : public QWidget
{
    Q_OBJECT

public:
    explicit PadView(VirtualPad& pad, QWidget* parent = nullptr);

    PadLayout layoutNow() const;
    QSize sizeHint() const override;

Q_SIGNALS:
    void sensorTouched();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void tabletEvent(QTabletEvent* event) override;

private:
    enum class Part
    {
        None,
        Screen,
        CancelKey,
        ConfirmKey,
        Sensor,
    };

    Part partAt(QPointF position) const;
    void press(QPointF position, std::optional<double> pressure);
    void release();
    void showCursor(Part part);
    void refresh();

    // Draws the ink that has come since, and asks for the repaint of where it came.
    void drawNewInk();
    void drawShadow(QPainter& painter, const PadLayout& layout, double radius) const;
    void drawBody(QPainter& painter, const PadLayout& layout) const;
    void drawScreen(QPainter& painter, const PadLayout& layout) const;
    void drawPicture(QPainter& painter, const PadLayout& layout) const;
    void drawVersion(QPainter& painter, const PadLayout& layout) const;
    void drawKey(QPainter& painter, const PadLayout& layout, Key key) const;
    void drawSensor(QPainter& painter, const PadLayout& layout) const;

    VirtualPad& m_pad;
    std::optional<Part> m_pressed; // where the button or stylus went down
    QImage m_body;                 // all that changes with the size and the model only
    QImage m_ink;                  // of the screen, in device pixels or finer
    std::size_t m_inkDrawn = 0;
    int m_sheetDrawn = -1;
};

} // namespace virtualpad
