#include "signaturepanel.h"

#include <QGraphicsPixmapItem>
#include <QGraphicsProxyWidget>
#include <QGraphicsView>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

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
    : QFrame(parent), m_paper(new QWidget), m_signature(m_scene.addPixmap({})),
      m_view(new QGraphicsView(&m_scene, this)), m_guide(new Guide(this)), m_notice(new QFrame(this)),
      m_noticeTitle(new QLabel), m_noticeAdvice(new QLabel)
{
    setMinimumSize(smallestField);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    // A widget has one pixel per unit, however fine the screen. Here the canvas has as many as the screen,
    // and the view shows it at the size of the field.
    m_scene.addWidget(m_paper);
    m_paper->hide();
    m_signature->setTransformationMode(Qt::SmoothTransformation);
    m_view->setRenderHint(QPainter::SmoothPixmapTransform);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->setInteractive(false);
    m_view->setFocusPolicy(Qt::NoFocus);
    m_view->hide();
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

SignaturePanel::~SignaturePanel() = default;

void SignaturePanel::setCanvas(QWidget* canvas, const QSize& writingArea)
{
    m_canvas = canvas;
    m_writingArea = writingArea;
    m_signature->setPixmap({});
    m_paper->show();
    m_notice->hide();
    m_view->show();
    m_guide->show();
    m_ink = true; // of the one before
    setInk(false);
}

void SignaturePanel::showSignature(const QImage& picture)
{
    m_canvas = nullptr;
    m_paper->hide();
    m_signature->setPixmap(QPixmap::fromImage(picture));
    placeCanvas();
}

void SignaturePanel::showNotice(const QString& title, const QString& advice)
{
    m_canvas = nullptr;
    m_signature->setPixmap({});
    m_view->hide();
    m_guide->hide();
    m_noticeTitle->setText(title);
    m_noticeAdvice->setText(advice);
    m_notice->show();
    update();
}

void SignaturePanel::setInk(bool ink)
{
    if (m_ink == ink)
        return;
    m_ink = ink;
    static_cast<Guide*>(m_guide)->blank = !ink;
    m_guide->update();
    placeCanvas();
}

double SignaturePanel::pixelsPerUnit() const
{
    return m_view->transform().m11() > 0 ? 1 / m_view->transform().m11() : 1;
}

void SignaturePanel::resizeEvent(QResizeEvent*)
{
    placeCanvas();
}

void SignaturePanel::showEvent(QShowEvent*)
{
    if (QWindow* const screenWindow = window()->windowHandle())
        connect(screenWindow, &QWindow::screenChanged, this, &SignaturePanel::placeCanvas,
                Qt::UniqueConnection);
}

void SignaturePanel::placeCanvas()
{
    const QRect field = rect().adjusted(margin, margin, -margin, -margin);
    m_notice->setGeometry(field);
    if (!m_view->isVisibleTo(this))
        return;
    const bool resizes = m_canvas && !m_ink;
    QSize pixels = m_canvas ? m_canvas->size() : m_signature->pixmap().size();
    // The pad's own proportions, so that the signature looks as it was written.
    QRect place({}, (resizes ? m_writingArea : pixels).scaled(field.size(), Qt::KeepAspectRatio));
    place.moveCenter(field.center());
    const QSize finest = place.size() * devicePixelRatioF();
    const bool changes = resizes && pixels != finest;
    if (changes) {
        pixels = finest;
        m_paper->resize(pixels);
        m_canvas->resize(pixels);
    }
    m_view->setGeometry(place);
    m_view->setSceneRect(QRectF({}, pixels));
    m_view->setTransform(QTransform::fromScale(double(place.width()) / pixels.width(),
                                               double(place.height()) / pixels.height()));
    m_guide->setGeometry(place);
    m_guide->raise();
    if (changes)
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
    if (!m_view->isVisibleTo(this))
        return;
    // Corner marks show how far the pad's writing area reaches.
    const QRectF area = QRectF(m_view->geometry()).adjusted(-2.5, -2.5, 2.5, 2.5);
    painter.setPen(QPen(QColor(0x8f, 0xa3, 0xb8), 1.2));
    for (const auto& [corner, x, y] : {std::tuple(area.topLeft(), 1, 1),
                                       {area.topRight(), -1, 1},
                                       {area.bottomLeft(), 1, -1},
                                       {area.bottomRight(), -1, -1}}) {
        painter.drawLine(corner, corner + QPointF(10 * x, 0));
        painter.drawLine(corner, corner + QPointF(0, 10 * y));
    }
}
