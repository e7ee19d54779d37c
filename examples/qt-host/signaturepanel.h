// The signature field of the form: the place for the library's canvas, or a notice when there is no pad.
#pragma once

#include <QFrame>
#include <QPointer>

class QLabel;
class QPushButton;

class SignaturePanel : public QFrame
{
    Q_OBJECT

public:
    explicit SignaturePanel(QWidget* parent = nullptr);

    void setCanvas(QWidget* canvas, const QSize& writingArea);
    QWidget* canvas() const { return m_canvas; }
    void showNotice(const QString& title, const QString& advice);
    // A canvas with ink keeps its size: ink stays where it is in pixels while new samples are mapped to the
    // new size, so that a resize would take the signature apart.
    void setInk(bool ink);

signals:
    void canvasResized();
    void tryAgain();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void placeCanvas();

    QPointer<QWidget> m_canvas; // the library's; it deletes it
    QSize m_writingArea;
    bool m_ink = false;
    QWidget* m_guide; // over the canvas: the line to sign on
    QFrame* m_notice;
    QLabel* m_noticeTitle;
    QLabel* m_noticeAdvice;
};
