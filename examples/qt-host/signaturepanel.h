// The signature field of the form: the library's canvas while somebody signs, the signature afterwards, or a
// notice when there is no pad.
#pragma once

#include <QFrame>
#include <QGraphicsScene>
#include <QPointer>

class QGraphicsPixmapItem;
class QGraphicsView;
class QLabel;
class QPushButton;

class SignaturePanel : public QFrame
{
    Q_OBJECT

public:
    explicit SignaturePanel(QWidget* parent = nullptr);
    ~SignaturePanel() override;

    QWidget* paper() const
    {
        return m_paper;
    } // the canvas's parent; as large as the canvas, not as the panel
    void setCanvas(QWidget* canvas, const QSize& writingArea);
    QWidget* canvas() const { return m_canvas; }
    double pixelsPerUnit() const; // of the canvas, per unit of the window
    void showSignature(const QImage& picture);
    void showNotice(const QString& title, const QString& advice);
    // A canvas with ink keeps its size and is shown larger or smaller: ink stays where it is in pixels while
    // new samples are mapped to the new size, so that a resize would take the signature apart.
    void setInk(bool ink);

signals:
    void canvasResized();
    void tryAgain();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void placeCanvas();

    QPointer<QWidget> m_canvas; // the library's; it deletes it
    QSize m_writingArea;
    bool m_ink = false;
    QGraphicsScene m_scene; // in pixels of the canvas
    QWidget* m_paper;
    QGraphicsPixmapItem* m_signature;
    QGraphicsView* m_view;
    QWidget* m_guide; // over the view: the line to sign on
    QFrame* m_notice;
    QLabel* m_noticeTitle;
    QLabel* m_noticeAdvice;
};
