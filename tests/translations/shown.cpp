#include "shown.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainterPath>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTextItem>
#include <QToolButton>

#include <cmath>

namespace {

struct ShownText
{
    QString text;
    QRectF place; // on the window
    QRectF room;  // that it may be painted in
};

// Notes texts instead of painting them.
class NotingEngine : public QPaintEngine
{
public:
    explicit NotingEngine(QList<ShownText>& texts) : QPaintEngine(AllFeatures), m_texts(texts) {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState& state) override
    {
        if (state.state() & DirtyTransform)
            m_transform = state.transform();
    }
    void drawPath(const QPainterPath&) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
    void drawTextItem(const QPointF& position, const QTextItem& item) override
    {
        const QRectF place(position.x(), position.y() - item.ascent(), item.width(),
                           item.ascent() + item.descent());
        m_texts.append({item.text(), m_transform.mapRect(place), QRectF(systemClip().boundingRect())});
    }

private:
    QList<ShownText>& m_texts;
    QTransform m_transform;
};

class NotingDevice : public QPaintDevice
{
public:
    explicit NotingDevice(const QSize& size) : m_size(size), m_engine(texts) {}

    QPaintEngine* paintEngine() const override { return &m_engine; }

    QList<ShownText> texts;

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 0;
        }
    }

private:
    const QSize m_size;
    mutable NotingEngine m_engine;
};

// A pseudo text has an accent on every vowel.
QStringList untranslatedWords(const QString& text)
{
    static const QRegularExpression word(QStringLiteral("\\b[A-Za-z]{2,}\\b"));
    static const QRegularExpression vowel(QStringLiteral("[aeiou]"));
    static const QRegularExpression path(QStringLiteral("\\S*/\\S*"));
    QStringList found;
    for (auto match = word.globalMatch(QString(text).remove(path)); match.hasNext();) {
        const QString one = match.next().captured();
        if (one.contains(vowel))
            found += one;
    }
    return found;
}

void checkWords(const QString& text, const QString& place, QStringList& faults)
{
    if (isPseudo() && !untranslatedWords(text).isEmpty())
        faults += QStringLiteral("%1 is not translated: %2").arg(place, text);
}

// Whether the widget has the room that its text needs.
bool hasRoom(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) {
        if (label->text().isEmpty())
            return true;
        if (label->wordWrap())
            return label->heightForWidth(label->width()) <= label->height();
        return label->sizeHint().width() <= label->width() && label->sizeHint().height() <= label->height();
    }
    if (const auto* const line = qobject_cast<const QLineEdit*>(&widget))
        return line->fontMetrics().horizontalAdvance(line->placeholderText()) <= line->contentsRect().width();
    if (qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget))
        return widget.sizeHint().width() <= widget.width();
    if (qobject_cast<const QGroupBox*>(&widget))
        return widget.minimumSizeHint().width() <= widget.width();
    return true;
}

QStringList textsOf(const QWidget& widget)
{
    QStringList texts = {widget.toolTip(), widget.accessibleName(), widget.accessibleDescription(),
                         widget.isWindow() ? widget.windowTitle() : QString()};
    for (const QAction* const action : widget.actions())
        texts += {action->text(), action->toolTip()};
    if (const auto* const choice = qobject_cast<const QComboBox*>(&widget))
        for (int index = 0; index < choice->count(); ++index)
            texts += choice->itemText(index);
    if (const auto* const line = qobject_cast<const QLineEdit*>(&widget))
        texts += line->placeholderText();
    return texts;
}

// The key that brings a person to the widget; empty for most.
QKeySequence keyOf(const QWidget& widget)
{
    if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget))
        return button->shortcut();
    if (const auto* const group = qobject_cast<const QGroupBox*>(&widget))
        return QKeySequence::mnemonic(group->title());
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    return label && label->buddy() ? QKeySequence::mnemonic(label->text()) : QKeySequence();
}

// A key that stands for two things only steps between them.
class Keys
{
public:
    void add(const QKeySequence& key, const QString& owner)
    {
        if (!key.isEmpty())
            m_owners[key.toString()] += owner;
    }
    void addMnemonicsOf(const QWidget& menu)
    {
        for (const QAction* const action : menu.actions())
            if (action->isVisible())
                add(QKeySequence::mnemonic(action->text()), action->text());
    }
    QStringList doubles() const
    {
        QStringList faults;
        for (auto key = m_owners.begin(); key != m_owners.end(); ++key)
            if (key->size() > 1)
                faults += QStringLiteral("%1 is the key of several: %2")
                              .arg(key.key(), key->join(QStringLiteral(", ")));
        return faults;
    }

private:
    QMap<QString, QStringList> m_owners;
};

// Within the window, and within each of its menus.
QStringList doubledKeys(const QWidget& window, const QList<QWidget*>& widgets)
{
    QStringList faults;
    Keys ofWindow;
    for (const QWidget* const widget : widgets) {
        if (qobject_cast<const QMenu*>(widget)) {
            Keys ofMenu;
            ofMenu.addMnemonicsOf(*widget);
            faults += ofMenu.doubles();
        } else if (widget->window() == &window && widget->isVisibleTo(&window)) {
            ofWindow.add(keyOf(*widget), widget->property("text").toString());
            if (qobject_cast<const QMenuBar*>(widget))
                ofWindow.addMnemonicsOf(*widget);
        }
    }
    return faults + ofWindow.doubles();
}

} // namespace

bool isPseudo()
{
    return qEnvironmentVariable("LANGUAGE") == QLatin1String("en_XA");
}

QStringList faultsOf(QWidget& window)
{
    window.show();
    // A layout may ask for another one.
    for (int pass = 0; pass < 4; ++pass) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    QCoreApplication::sendPostedEvents(); // for a text that the last of them has changed
    QStringList faults;
    QList<QWidget*> widgets = window.findChildren<QWidget*>();
    widgets.prepend(&window);
    faults += doubledKeys(window, widgets);
    for (const QWidget* const widget : widgets) {
        const QString place =
            QStringLiteral("%1 \"%2\"")
                .arg(QLatin1String(widget->metaObject()->className()), widget->objectName());
        for (const QString& text : textsOf(*widget))
            checkWords(text, place, faults);
        if (widget->isVisibleTo(&window) && !hasRoom(*widget))
            faults += QStringLiteral("%1 has no room for its text: %2")
                          .arg(place, widget->property("text").toString());
    }

    NotingDevice device(window.size());
    window.render(&device);
    QString all;
    for (const ShownText& shown : std::as_const(device.texts)) {
        all += shown.text;
        checkWords(shown.text, QStringLiteral("what is painted"), faults);
        const QRectF room = shown.room.isEmpty() ? QRectF(window.rect()) : shown.room;
        if (!room.adjusted(-1, -1, 1, 1).contains(shown.place))
            faults += QStringLiteral("cut off: %1").arg(shown.text);
    }
    if (isPseudo() && all.count(QChar(0x27e6)) != all.count(QChar(0x27e7)))
        faults += QStringLiteral("something is elided: %1").arg(all);
    if (all.isEmpty())
        faults += QStringLiteral("the window shows no text at all");
    const Qt::LayoutDirection direction = isPseudo() ? Qt::RightToLeft : Qt::LeftToRight;
    for (const QWidget* const widget : std::as_const(widgets))
        if (widget->layoutDirection() != direction)
            faults += QStringLiteral("%1 runs in the wrong direction")
                          .arg(QLatin1String(widget->metaObject()->className()));
    return faults;
}
