// Shows an ink packet stream as it was written, in its own time.
#pragma once

#include "signature.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>
#include <QVector>

class QLabel;
class QPushButton;
class QSlider;

class ReplayView : public QDialog
{
    Q_OBJECT

public:
    // The text is an ink packet stream, and is played at once.
    explicit ReplayView(const QByteArray& text, QWidget* parent = nullptr);

    int duration() const;
    void setMillisecond(int millisecond);
    QRect drawingArea() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void play(bool on);
    void advance();
    void saveFile();

    QByteArray m_text;
    QVector<InkPoint> m_points;
    int m_millisecond = 0;
    int m_startedAt = 0;
    QElapsedTimer m_clock;
    QTimer m_frames;
    QWidget* m_paper;
    QPushButton* m_play;
    QSlider* m_position;
    QLabel* m_time;
};
