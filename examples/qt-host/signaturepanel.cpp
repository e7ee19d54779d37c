#include "signaturepanel.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int margin = 6;
constexpr QSize smallestField(320, 200);

class Guide : public QWidget
{
public:
    explicit Guide(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_TransparentForMouseEvents); }

    bool blank = true;

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (!blank)
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const int baseline = height() * 76 / 100;
        const int indent = width() / 16;
        painter.setPen(QPen(QColor(0xc3, 0xcc, 0xd6), 1.2));
        painter.drawLine(indent, baseline, width() - indent, baseline);
        QFont font(QStringLiteral("DejaVu Serif"));
        font.setPixelSize(qBound(14, height() / 14, 24));
        font.setItalic(true);
        painter.setFont(font);
        painter.setPen(QColor(0x6b, 0x7a, 0x8c));
        painter.drawText(QRect(indent, baseline + 4, width() - 2 * indent, height() - baseline - 4),
                         Qt::AlignLeft | Qt::AlignTop, SignaturePanel::tr("\u2715  Please sign here"));
    }
};

} // namespace

SignaturePanel::SignaturePanel(QWidget* parent)
    : QFrame(parent), m_guide(new Guide(this)), m_notice(new QFrame(this)), m_noticeTitle(new QLabel),
      m_noticeAdvice(new QLabel)
{
    setMinimumSize(smallestField);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_guide->hide();
    m_notice->setObjectName(QStringLiteral("notice"));
    m_notice->hide();
    auto* const again = new QPushButton(tr("&Try again"));
    again->setObjectName(QStringLiteral("tryAgain"));
    again->setToolTip(tr("Looks for the pad once more"));
    connect(again, &QPushButton::clicked, this, &SignaturePanel::tryAgain);
    m_noticeTitle->setObjectName(QStringLiteral("noticeTitle"));
    m_noticeTitle->setAlignment(Qt::AlignCenter);
    m_noticeAdvice->setObjectName(QStringLiteral("noticeAdvice"));
    m_noticeAdvice->setAlignment(Qt::AlignCenter);
    m_noticeAdvice->setWordWrap(true);
    auto* const column = new QVBoxLayout(m_notice);
    column->addStretch();
    column->addWidget(m_noticeTitle);
    column->addWidget(m_noticeAdvice);
    column->addSpacing(8);
    column->addWidget(again, 0, Qt::AlignHCenter);
    column->addStretch();
}

void SignaturePanel::setCanvas(QWidget* canvas, const QSize& writingArea)
{
    m_canvas = canvas;
    m_writingArea = writingArea;
    m_notice->setVisible(!canvas);
    m_guide->setVisible(canvas);
    m_guide->raise(); // the library's widget came later
    setInk(false);
}

void SignaturePanel::showNotice(const QString& title, const QString& advice)
{
    setCanvas(nullptr, {});
    m_noticeTitle->setText(title);
    m_noticeAdvice->setText(advice);
}

void SignaturePanel::setInk(bool ink)
{
    m_ink = ink;
    static_cast<Guide*>(m_guide)->blank = !ink;
    m_guide->update();
    setMinimumSize(ink && m_canvas ? m_canvas->size() + QSize(2 * margin, 2 * margin) : smallestField);
    placeCanvas();
}

void SignaturePanel::resizeEvent(QResizeEvent*)
{
    placeCanvas();
}

void SignaturePanel::placeCanvas()
{
    const QRect field = rect().adjusted(margin, margin, -margin, -margin);
    m_notice->setGeometry(field);
    if (!m_canvas)
        return;
    // The pad's own proportions, so that the signature looks as it was written.
    const QSize before = m_canvas->size();
    QRect place({}, m_ink ? before : m_writingArea.scaled(field.size(), Qt::KeepAspectRatio));
    place.moveCenter(field.center());
    m_canvas->setGeometry(place);
    m_guide->setGeometry(place);
    if (place.size() != before)
        emit canvasResized();
    update();
}

void SignaturePanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xb4, 0xc0, 0xcd), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    if (!m_canvas)
        return;
    // Corner marks show how far the pad's writing area reaches.
    const QRectF area = QRectF(m_canvas->geometry()).adjusted(-2.5, -2.5, 2.5, 2.5);
    painter.setPen(QPen(QColor(0x8f, 0xa3, 0xb8), 1.2));
    for (const auto& [corner, x, y] : {std::tuple(area.topLeft(), 1, 1),
                                       {area.topRight(), -1, 1},
                                       {area.bottomLeft(), 1, -1},
                                       {area.bottomRight(), -1, -1}}) {
        painter.drawLine(corner, corner + QPointF(10 * x, 0));
        painter.drawLine(corner, corner + QPointF(0, 10 * y));
    }
}
