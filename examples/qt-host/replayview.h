// Shows an ink packet stream as it was written, in its own time.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QPointF>
#include <QTimer>
#include <QVector>

class QLabel;
class QPushButton;
class QSlider;

struct InkPoint
{
    QPointF place; // in pad units
    double pressure = 0;
    bool lifted = false;
    int millisecond = 0; // since the first point
};

// Empty when the text is no ink packet stream.
QVector<InkPoint> readInk(const QByteArray& text);

class ReplayView : public QDialog
{
    Q_OBJECT

public:
    explicit ReplayView(QWidget* parent = nullptr);

    bool setInk(const QByteArray& text); // plays it
    int duration() const;
    void setMillisecond(int millisecond);
    QRect drawingArea() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void play(bool on);
    void advance();
    void loadFile();
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
