#include "padview.h"

#include <QCursor>
#include <QHelpEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTabletEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace virtualpad {
namespace {

// A pad with a screen is dark; one to lay paper on is light.
struct Colours
{
    QColor bodyTop;
    QColor bodyBottom;
    QColor bodyEdge;
    QColor bodyGloss;
    QColor key;
    QColor keyEdge;
    QColor text;
    QColor ink;
    double inkOpacity;
};

const Colours& coloursOf(const simulator::Pad& pad)
{
    static const Colours dark{QColor(0x46, 0x4c, 0x55),  QColor(0x2a, 0x2e, 0x34),  QColor(0x17, 0x19, 0x1d),
                              QColor(255, 255, 255, 46), QColor(255, 255, 255, 16), QColor(255, 255, 255, 44),
                              QColor(0xc3, 0xc9, 0xd1),  QColor(0x14, 0x22, 0x4a),  1.0};
    static const Colours light{
        QColor(0xea, 0xe8, 0xe4),   QColor(0xcf, 0xcc, 0xc6),   QColor(0xa9, 0xa5, 0x9d),
        QColor(255, 255, 255, 180), QColor(255, 255, 255, 110), QColor(0, 0, 0, 46),
        QColor(0x6b, 0x68, 0x62),   QColor(0x2b, 0x37, 0x5c),   0.55};
    return hasScreen(pad) ? dark : light;
}

const QColor CancelColour(0xd9, 0x5f, 0x4e);
const QColor ConfirmColour(0x3f, 0xa8, 0x6c);
const QColor WarningColour(0xe0, 0xa0, 0x30);

// In widths of the writing area. A large tablet writes finer.
double inkWidth(const PadState& state, float pressure)
{
    const double scale = hasScreen(state.pad()) ? 1.0 : 0.7;
    return scale * (state.isWithPressure() ? 0.0016 + 0.0085 * static_cast<double>(pressure) : 0.0042);
}

// Qt 5 has a name of its own for each kind of event, Qt 6 one for all.
template <typename Event>
QPointF positionOf(const Event& event)
{
    if constexpr (requires { event.position(); })
        return event.position();
    else if constexpr (requires { event.localPos(); })
        return event.localPos();
    else
        return event.posF();
}

QImage imageOf(const simulator::padlink::Picture& picture)
{
    QImage image(picture.width, picture.height, QImage::Format_RGB16);
    const unsigned char* bytes = picture.pixels.data();
    for (int y = 0; y < picture.height; ++y) {
        auto* line = reinterpret_cast<quint16*>(image.scanLine(y));
        for (int x = 0; x < picture.width; ++x, bytes += 2)
            line[x] = static_cast<quint16>(bytes[0] << 8 | bytes[1]);
    }
    return image;
}

QFont fontOf(const QWidget& widget, double pixels, bool bold = false)
{
    QFont font = widget.font();
    font.setPixelSize(std::max(static_cast<int>(std::lround(pixels)), 1));
    font.setBold(bold);
    return font;
}

} // namespace

PadView::PadView(VirtualPad& pad, QWidget* parent) : QWidget(parent), m_pad(pad)
{
    setMinimumSize(320, 240);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Pad"));
    setAccessibleDescription(tr("Writing area with a cancel key and a confirm key"));
    connect(&pad, &VirtualPad::changed, this, &PadView::refresh);
    connect(&pad, &VirtualPad::inkChanged, this, &PadView::drawNewInk);
}

QSize PadView::sizeHint() const
{
    return {760, 600};
}

PadLayout PadView::layoutNow() const
{
    return {m_pad.state().pad(), QSizeF(size())};
}

void PadView::refresh()
{
    m_body = QImage();
    drawNewInk();
    update();
}

// --- The person's hand

PadView::Part PadView::partAt(QPointF position) const
{
    const PadLayout layout = layoutNow();
    if (layout.screen.contains(position))
        return Part::Screen;
    if (layout.cancelKey.contains(position))
        return Part::CancelKey;
    if (layout.confirmKey.contains(position))
        return Part::ConfirmKey;
    if (layout.sensor && layout.sensor->contains(position))
        return Part::Sensor;
    return Part::None;
}

void PadView::press(QPointF position, std::optional<double> pressure)
{
    release();
    const Part part = partAt(position);
    m_pressed = part;
    if (part == Part::Screen)
        m_pad.penDown(layoutNow().placeAt(position), pressure);
    else if (part == Part::CancelKey || part == Part::ConfirmKey)
        m_pad.touchKey(part == Part::ConfirmKey ? Key::Confirm : Key::Cancel);
}

void PadView::release()
{
    const Part part = m_pressed.value_or(Part::None);
    m_pressed.reset();
    if (part == Part::Screen)
        m_pad.penUp();
    else if (part == Part::CancelKey || part == Part::ConfirmKey)
        m_pad.releaseKey();
    else if (part == Part::Sensor)
        Q_EMIT sensorTouched();
}

void PadView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        press(positionOf(*event), std::nullopt);
}

void PadView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressed == Part::Screen)
        m_pad.penMove(layoutNow().placeAt(positionOf(*event)));
    else if (!m_pressed)
        showCursor(partAt(positionOf(*event)));
}

void PadView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        release();
}

void PadView::tabletEvent(QTabletEvent* event)
{
    event->accept();
    switch (event->type()) {
    case QEvent::TabletPress:
        if (event->button() == Qt::LeftButton)
            press(positionOf(*event), event->pressure());
        break;
    case QEvent::TabletMove:
        if (m_pressed == Part::Screen)
            m_pad.penMove(layoutNow().placeAt(positionOf(*event)), event->pressure());
        else if (!m_pressed)
            showCursor(partAt(positionOf(*event)));
        break;
    case QEvent::TabletRelease:
        release();
        break;
    default:
        event->ignore();
    }
}

void PadView::showCursor(Part part)
{
    setCursor(part == Part::Screen ? Qt::CrossCursor
              : part == Part::None ? Qt::ArrowCursor
                                   : Qt::PointingHandCursor);
}

void PadView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        m_body = QImage();
    QWidget::changeEvent(event);
}

bool PadView::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    auto* help = static_cast<QHelpEvent*>(event);
    QString text;
    switch (partAt(help->pos())) {
    case Part::CancelKey:
        text = tr("Cancel key (Escape)");
        break;
    case Part::ConfirmKey:
        text = tr("Confirm key (Enter)");
        break;
    case Part::Sensor:
        text = tr("Fingerprint sensor (F)");
        break;
    case Part::Screen:
    case Part::None:
        break;
    }
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), text, this);
    return true;
}

// --- The drawing

void PadView::drawNewInk()
{
    const PadState& state = m_pad.state();
    const PadLayout layout = layoutNow();
    // Strokes are many short lines, whose ends would show on a coarse screen.
    const int finer = devicePixelRatioF() < 2 ? 2 : 1;
    const double ratio = devicePixelRatioF() * finer;
    const QSize wanted = (layout.screen.size() * devicePixelRatioF()).toSize() * finer;
    if (m_ink.size() != wanted || m_sheetDrawn != state.sheet()) {
        m_ink = QImage(wanted, QImage::Format_ARGB32_Premultiplied);
        m_ink.setDevicePixelRatio(ratio);
        m_ink.fill(Qt::transparent);
        m_inkDrawn = 0;
        m_sheetDrawn = state.sheet();
        update();
    }
    if (m_inkDrawn == state.ink().size())
        return;
    QPainter painter(&m_ink);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto place = [&](const InkPoint& point) {
        return QPointF(static_cast<double>(point.x) * layout.screen.width(),
                       static_cast<double>(point.y) * layout.screen.height());
    };
    QRectF touched;
    for (; m_inkDrawn < state.ink().size(); ++m_inkDrawn) {
        const InkPoint& point = state.ink()[m_inkDrawn];
        const bool begins = point.beginsStroke || m_inkDrawn == 0;
        const QPointF from = place(begins ? point : state.ink()[m_inkDrawn - 1]);
        const QPointF to = place(point);
        const double pen = layout.scaled(inkWidth(state, point.pressure));
        painter.setPen(QPen(coloursOf(state.pad()).ink, pen, Qt::SolidLine, Qt::RoundCap));
        if (from == to)
            painter.drawPoint(to);
        else
            painter.drawLine(from, to);
        touched |= QRectF(from, to).normalized().adjusted(-pen, -pen, pen, pen);
    }
    update(touched.translated(layout.screen.topLeft()).toAlignedRect().adjusted(-2, -2, 2, 2));
}

void PadView::paintEvent(QPaintEvent*)
{
    const double ratio = devicePixelRatioF();
    const PadState& state = m_pad.state();
    const PadLayout layout = layoutNow();
    drawNewInk();
    if (m_body.size() != size() * ratio) {
        m_body = QImage(size() * ratio, QImage::Format_ARGB32_Premultiplied);
        m_body.setDevicePixelRatio(ratio);
        QPainter painter(&m_body);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                               QPainter::SmoothPixmapTransform);
        drawBody(painter, layout);
        drawScreen(painter, layout);
        drawKey(painter, layout, Key::Cancel);
        drawKey(painter, layout, Key::Confirm);
        drawSensor(painter, layout);
    }
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.drawImage(0, 0, m_body);
    if (!state.isLit())
        return;
    // Pixel on pixel, or the ink would be blurred.
    const QPoint corner = (layout.screen.topLeft() * ratio).toPoint();
    painter.setOpacity(coloursOf(state.pad()).inkOpacity);
    painter.drawImage(QPointF(corner) / ratio, m_ink);
    painter.setOpacity(1);
    drawVersion(painter, layout);
}

// Drawn apart: so many thin layers over a coloured ground would each round its colour.
void PadView::drawShadow(QPainter& painter, const PadLayout& layout, double radius) const
{
    QImage shadow(m_body.size(), QImage::Format_ARGB32_Premultiplied);
    shadow.setDevicePixelRatio(m_body.devicePixelRatio());
    shadow.fill(Qt::transparent);
    QPainter layers(&shadow);
    layers.setRenderHint(QPainter::Antialiasing);
    layers.setPen(Qt::NoPen);
    layers.setBrush(QColor(0, 0, 0, 3));
    for (int layer = 20; layer > 0; --layer) {
        const double grow = layout.scaled(0.0015) * layer;
        const QRectF place =
            layout.body.adjusted(-grow, -grow, grow, grow).translated(0, layout.scaled(0.012));
        layers.drawRoundedRect(place, radius + grow, radius + grow);
    }
    layers.end();
    painter.drawImage(0, 0, shadow);
}

void PadView::drawBody(QPainter& painter, const PadLayout& layout) const
{
    const PadState& state = m_pad.state();
    const Colours& colours = coloursOf(state.pad());

    const QColor window = palette().color(QPalette::Window);
    QLinearGradient desk(0, 0, 0, height());
    desk.setColorAt(0, window.lighter(103));
    desk.setColorAt(1, window.darker(107));
    painter.fillRect(rect(), desk);

    const double radius = layout.scaled(0.035);
    drawShadow(painter, layout, radius);

    QLinearGradient body(layout.body.topLeft(), layout.body.bottomLeft());
    body.setColorAt(0, colours.bodyTop);
    body.setColorAt(1, colours.bodyBottom);
    painter.setBrush(body);
    painter.setPen(QPen(colours.bodyEdge, layout.scaled(0.0018)));
    painter.drawRoundedRect(layout.body, radius, radius);
    QPainterPath gloss;
    const double inset = layout.scaled(0.003);
    gloss.addRoundedRect(layout.body.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    QLinearGradient edge(layout.body.topLeft(), layout.body.bottomLeft());
    edge.setColorAt(0, colours.bodyGloss);
    edge.setColorAt(0.12, Qt::transparent);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(edge, layout.scaled(0.0022)));
    painter.drawPath(gloss);

    painter.setPen(Qt::NoPen);
    const QColor light = m_pad.isMismatch() ? WarningColour
                         : state.hasHost()  ? ConfirmColour
                                            : QColor(128, 128, 128, 120);
    if (state.hasHost()) {
        const QPointF centre = layout.light.center();
        QRadialGradient glow(centre, layout.light.width() * 1.8);
        QColor shine = light;
        shine.setAlpha(110);
        glow.setColorAt(0, shine);
        shine.setAlpha(0);
        glow.setColorAt(1, shine);
        painter.setBrush(glow);
        painter.drawEllipse(centre, layout.light.width() * 1.8, layout.light.width() * 1.8);
    }
    painter.setBrush(light);
    painter.drawEllipse(layout.light);

    QFont font = fontOf(*this, layout.scaled(0.023));
    font.setLetterSpacing(QFont::PercentageSpacing, 112);
    painter.setFont(font);
    painter.setPen(colours.text);
    const std::string_view model = state.pad().model;
    painter.drawText(layout.label, Qt::AlignRight | Qt::AlignVCenter,
                     QString::fromUtf8(model.data(), static_cast<int>(model.size())));
}

void PadView::drawScreen(QPainter& painter, const PadLayout& layout) const
{
    const PadState& state = m_pad.state();
    const double radius = layout.scaled(0.012);
    painter.setPen(Qt::NoPen);
    if (!hasScreen(state.pad())) {
        painter.setBrush(QColor(0, 0, 0, 26));
        painter.drawRoundedRect(layout.bezel, radius, radius);
        painter.setBrush(QColor(0xfd, 0xfc, 0xf8));
        painter.drawRect(layout.screen);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(0, 0, 0, 40), layout.scaled(0.0012)));
        painter.drawRect(layout.screen);
        return;
    }
    painter.setBrush(QColor(0x0c, 0x0e, 0x10));
    painter.drawRoundedRect(layout.bezel, radius, radius);
    QLinearGradient glass(layout.screen.topLeft(), layout.screen.bottomRight());
    if (state.isLit()) {
        glass.setColorAt(0, QColor(0xf8, 0xfa, 0xf9));
        glass.setColorAt(1, QColor(0xec, 0xf0, 0xef));
    } else {
        glass.setColorAt(0, QColor(0x2c, 0x31, 0x36));
        glass.setColorAt(0.48, QColor(0x20, 0x24, 0x28));
        glass.setColorAt(0.5, QColor(0x1b, 0x1e, 0x22));
        glass.setColorAt(1, QColor(0x17, 0x1a, 0x1d));
    }
    painter.setBrush(glass);
    painter.drawRect(layout.screen);
    if (!state.isLit())
        return;
    drawPicture(painter, layout);
    if (!state.hasHost() && state.ink().empty()) {
        painter.setFont(fontOf(*this, layout.scaled(0.024)));
        painter.setPen(QColor(0x8a, 0x93, 0x9c));
        painter.drawText(layout.screen, Qt::AlignCenter, tr("No host is connected.\nTry the pen."));
    }
}

void PadView::drawPicture(QPainter& painter, const PadLayout& layout) const
{
    const auto& picture = m_pad.state().picture();
    if (!picture)
        return;
    const double margin = layout.scaled(0.03);
    const QRectF space = layout.screen.adjusted(margin, margin, -margin, -margin);
    const QSizeF size = QSizeF(picture->width, picture->height)
                            .scaled(QSizeF(space.width() * 0.3, space.height() * 0.62), Qt::KeepAspectRatio);
    const QRectF place(QPointF(space.right() - size.width(), space.center().y() - size.height() / 2), size);
    // Scaled beforehand: the painter reads four pixels for one, too few for a picture made this much smaller.
    const QImage image = imageOf(*picture).scaled((size * devicePixelRatioF()).toSize(),
                                                  Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(place, image);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 50), layout.scaled(0.0014)));
    painter.drawRect(place);
    painter.setPen(Qt::NoPen);
}

void PadView::drawVersion(QPainter& painter, const PadLayout& layout) const
{
    const PadState& state = m_pad.state();
    if (!state.isVersionShown())
        return;
    const QString text = QString::fromStdString(state.versionText());
    QRectF panel(0, 0, layout.scaled(0.46), layout.scaled(0.16));
    panel.moveCenter(layout.screen.center());
    painter.setBrush(QColor(Qt::white));
    painter.setPen(QPen(QColor(0, 0, 0, 60), layout.scaled(0.0014)));
    painter.drawRoundedRect(panel, layout.scaled(0.01), layout.scaled(0.01));
    painter.setPen(QColor(0x25, 0x2b, 0x33));
    const QRectF upper(panel.left(), panel.top(), panel.width(), panel.height() * 0.52);
    const QRectF lower(panel.left(), panel.center().y(), panel.width(), panel.height() * 0.42);
    painter.setFont(fontOf(*this, layout.scaled(0.023)));
    painter.drawText(upper, Qt::AlignHCenter | Qt::AlignBottom, tr("Version"));
    painter.setFont(fontOf(*this, layout.scaled(0.032), true));
    painter.drawText(lower, Qt::AlignCenter, text);
    painter.setPen(Qt::NoPen);
}

void PadView::drawKey(QPainter& painter, const PadLayout& layout, Key key) const
{
    const Colours& colours = coloursOf(m_pad.state().pad());
    const QRectF place = key == Key::Confirm ? layout.confirmKey : layout.cancelKey;
    const QColor colour = key == Key::Confirm ? ConfirmColour : CancelColour;
    const bool pressed = m_pad.state().pressedKey() == key;
    painter.setBrush(pressed ? colour : colours.key);
    painter.setPen(QPen(pressed ? colour.darker(120) : colours.keyEdge, layout.scaled(0.0018)));
    painter.drawRoundedRect(place, place.height() / 2, place.height() / 2);

    const double size = place.height() * 0.2;
    const QPointF centre = place.center();
    QPainterPath sign;
    if (key == Key::Confirm) {
        sign.moveTo(centre + QPointF(-1.15, 0.05) * size);
        sign.lineTo(centre + QPointF(-0.3, 0.9) * size);
        sign.lineTo(centre + QPointF(1.25, -0.85) * size);
    } else {
        sign.moveTo(centre + QPointF(-0.85, -0.85) * size);
        sign.lineTo(centre + QPointF(0.85, 0.85) * size);
        sign.moveTo(centre + QPointF(0.85, -0.85) * size);
        sign.lineTo(centre + QPointF(-0.85, 0.85) * size);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(pressed ? QColor(Qt::white) : colour, place.height() * 0.075, Qt::SolidLine,
                        Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(sign);
}

void PadView::drawSensor(QPainter& painter, const PadLayout& layout) const
{
    if (!layout.sensor)
        return;
    const QRectF place = *layout.sensor;
    const double radius = layout.scaled(0.016);
    QLinearGradient glass(place.topLeft(), place.bottomRight());
    glass.setColorAt(0, QColor(0x1d, 0x22, 0x28));
    glass.setColorAt(1, QColor(0x10, 0x13, 0x16));
    painter.setBrush(glass);
    painter.setPen(QPen(QColor(255, 255, 255, 40), layout.scaled(0.0018)));
    painter.drawRoundedRect(place, radius, radius);

    // A few ridges say what it is for.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0x7f, 0xb2, 0xc9, 170), layout.scaled(0.0032), Qt::SolidLine, Qt::RoundCap));
    const QPointF centre = place.center() + QPointF(0, place.height() * 0.03);
    for (int ridge = 1; ridge <= 4; ++ridge) {
        const double across = place.width() * 0.075 * ridge;
        const double along = across * 1.3;
        QPainterPath path;
        path.moveTo(centre + QPointF(-across, along * 0.75));
        path.lineTo(centre + QPointF(-across, 0));
        path.arcTo(QRectF(centre.x() - across, centre.y() - along, 2 * across, 2 * along), 180, -180);
        path.lineTo(centre + QPointF(across, along * (ridge % 2 == 0 ? 0.55 : 0.8)));
        painter.drawPath(path);
    }
}

} // namespace virtualpad
