#include "replayview.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSlider>

#include <algorithm>

ReplayView::ReplayView(const QByteArray& text, QWidget* parent)
    : QDialog(parent), m_text(text), m_points(readInk(text)), m_paper(new QWidget),
      m_play(new QPushButton(tr("&Play"))), m_position(new QSlider(Qt::Horizontal)), m_time(new QLabel)
{
    setWindowTitle(tr("Replay of the ink"));
    resize(720, 480);
    m_paper->setMinimumSize(240, 140);
    m_play->setToolTip(tr("Plays the signature at the speed at which it was written"));
    m_position->setToolTip(tr("Moment of the signature"));
    m_position->setAccessibleName(tr("Moment"));
    m_time->setMinimumWidth(m_time->fontMetrics().horizontalAdvance(
        tr("%L1 of %L2 s").arg(QStringLiteral("00.0"), QStringLiteral("00.0")) + QStringLiteral("  ")));
    auto* const save = new QPushButton(tr("&Export…"));
    save->setToolTip(tr("Saves this ink packet stream as a file"));
    auto* const controls = new QHBoxLayout;
    controls->addWidget(m_play);
    controls->addWidget(m_position, 1);
    controls->addWidget(m_time);
    controls->addWidget(save);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(m_paper, 1);
    column->addLayout(controls);

    m_frames.setInterval(16);
    connect(&m_frames, &QTimer::timeout, this, &ReplayView::advance);
    connect(m_play, &QPushButton::clicked, this, [this] { play(!m_frames.isActive()); });
    connect(m_position, &QSlider::valueChanged, this, [this](int value) {
        if (value != m_millisecond) { // by hand
            play(false);
            setMillisecond(value);
        }
    });
    connect(save, &QPushButton::clicked, this, &ReplayView::saveFile);
    m_position->setRange(0, duration());
    setMillisecond(0);
    play(true);
}

int ReplayView::duration() const
{
    return m_points.isEmpty() ? 0 : m_points.last().millisecond;
}

void ReplayView::play(bool on)
{
    if (on && m_millisecond >= duration())
        setMillisecond(0);
    m_startedAt = m_millisecond;
    m_clock.start();
    on ? m_frames.start() : m_frames.stop();
    m_play->setText(on ? tr("&Pause") : tr("&Play"));
}

void ReplayView::advance()
{
    setMillisecond(int(std::min<qint64>(m_startedAt + m_clock.elapsed(), duration())));
    if (m_millisecond == duration())
        play(false);
}

void ReplayView::setMillisecond(int millisecond)
{
    m_millisecond = millisecond;
    m_position->setValue(millisecond);
    m_time->setText(
        tr("%L1 of %L2 s").arg(millisecond / 1000.0, 0, 'f', 1).arg(duration() / 1000.0, 0, 'f', 1));
    update();
}

QRect ReplayView::drawingArea() const
{
    return m_paper->geometry();
}

void ReplayView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0xb4, 0xc0, 0xcd));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(drawingArea()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    if (m_points.isEmpty())
        return;
    // A stream does not name its pad, so the ink itself says how large it is drawn.
    QPolygonF all;
    double highest = 1;
    for (const InkPoint& point : m_points) {
        all << point.place;
        highest = std::max(highest, point.pressure);
    }
    const QRectF ink = all.boundingRect();
    const QRectF target = QRectF(drawingArea()).adjusted(24, 24, -24, -24);
    const double scale =
        std::min(target.width() / std::max(1.0, ink.width()), target.height() / std::max(1.0, ink.height()));
    const auto mapped = [&](const QPointF& place) {
        return target.center() + (place - ink.center()) * scale;
    };
    for (int i = 1; i < m_points.size() && m_points[i].millisecond <= m_millisecond; ++i) {
        const InkPoint& point = m_points[i];
        if (m_points[i - 1].lifted)
            continue;
        painter.setPen(QPen(QColor(0x14, 0x2b, 0x52), 1 + 3.5 * std::max(0.0, point.pressure) / highest,
                            Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(mapped(m_points[i - 1].place), mapped(point.place));
    }
}

void ReplayView::saveFile()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Export ink"), QStringLiteral("signature.ink"),
                                                      tr("Ink (*.ink)"));
    if (!path.isEmpty() && !writeFile(path, m_text))
        QMessageBox::warning(this, windowTitle(), tr("%1 cannot be written.").arg(path));
}
