#include "mainwindow.h"

#include "documentdialog.h"
#include "livemeter.h"
#include "previewdialog.h"
#include "replayview.h"
#include "signaturepanel.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDate>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QTime>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char* const formStyle = R"(
QWidget { color: #1d2b3a; font-size: 10pt; }
MainWindow, QDialog { background: #e9eef3; }
#paper { background: white; border: 1px solid #d5dce4; border-radius: 8px; }
#bank { color: #1f5f8b; font-size: 8.5pt; font-weight: bold; letter-spacing: 1px; }
#title { font-family: "DejaVu Serif", serif; font-size: 18pt; }
#factName, #hint { color: #5a6878; font-size: 9pt; }
#state { font-weight: bold; padding: 4px 12px; border-radius: 11px; background: #e9eef3; }
#state[tone="busy"] { background: #fdf0cf; color: #6a4a00; }
#state[tone="good"] { background: #d9f0df; color: #145a2a; }
#state[tone="bad"] { background: #f8dedb; color: #8a1c12; }
#noticeTitle { font-family: "DejaVu Serif", serif; font-size: 14pt; }
#noticeAdvice { color: #5a6878; }
QGroupBox { background: white; border: 1px solid #d5dce4; border-radius: 8px; margin-top: 0; padding: 26px 6px 4px 6px; }
QGroupBox::title { subcontrol-origin: padding; left: 12px; top: 8px; color: #1f5f8b; }
QPushButton { background: white; border: 1px solid #b4c0cd; border-radius: 5px; padding: 6px 14px; }
QPushButton:hover { background: #f2f6fa; }
QPushButton:focus { border: 2px solid #1f5f8b; padding: 5px 13px; }
QPushButton:disabled { color: #9aa7b4; border-color: #d5dce4; }
QPushButton#confirm { background: #1f5f8b; border-color: #1f5f8b; color: white; font-weight: bold; }
QPushButton#confirm:hover { background: #2870a3; }
QPushButton#confirm:focus { border: 2px solid #0d3652; }
QPushButton#confirm:disabled { background: #b9c9d6; border-color: #b9c9d6; }
QToolButton { border: 2px solid white; border-radius: 11px; width: 18px; height: 18px; }
QToolButton:checked { border-color: #5aa0d0; }
QToolButton:focus { border-color: #1d2b3a; }
)";

QLabel* label(const QString& text, const char* name)
{
    auto* const made = new QLabel(text);
    made->setObjectName(QLatin1String(name));
    return made;
}

QPushButton* button(const QString& text, const char* name, const QString& toolTip)
{
    auto* const made = new QPushButton(text);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(toolTip);
    return made;
}

} // namespace

MainWindow::MainWindow(const QString& model, QWidget* parent) : QWidget(parent)
{
    setWindowTitle(tr("Account agreement – Scribera demo"));
    setStyleSheet(QLatin1String(formStyle));
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(16, 16, 16, 16);
    row->setSpacing(14);
    QWidget* const settings = makeSettings(); // made first: the pad is chosen before it is signed on
    row->addWidget(makeForm(), 1);
    row->addWidget(settings);
    m_model->setCurrentText(model);
    resize(1080, 660);
    setTabOrder(m_confirm, m_replay); // saving comes after signing
    setTabOrder(m_replay, m_save);
    setTabOrder(m_save, m_document);

    connect(m_model, qOverload<int>(&QComboBox::currentIndexChanged), this, &MainWindow::openPad);
    connect(m_panel, &SignaturePanel::tryAgain, this, &MainWindow::openPad);
    connect(m_panel, &SignaturePanel::canvasResized, this, &MainWindow::placeFingerprint);
    connect(m_panel, &SignaturePanel::canvasResized, this, &MainWindow::applyPen);
    connect(m_confirm, &QPushButton::clicked, this, [this] { confirm(m_session.take()); });
    connect(m_clear, &QPushButton::clicked, this,
            [this] { m_session.clear() ? startAgain(State::Waiting) : openPad(); });
    connect(m_save, &QPushButton::clicked, this, [this] { PreviewDialog(m_signature, this).exec(); });
    connect(m_document, &QPushButton::clicked, this,
            [this] { DocumentDialog(m_signature.ink, m_model->currentText(), m_pen, this).exec(); });
    connect(m_replay, &QPushButton::clicked, this,
            [this] { ReplayView(m_session.isOpen() ? m_session.inkText() : m_signature.ink, this).exec(); });
    connect(&m_session, &PadSession::pointStored, this,
            [this](QPointF, double pressure, bool onPad) { notePoint(pressure, onPad); });
    connect(&m_session, &PadSession::confirmed, this, &MainWindow::confirm);
    connect(&m_session, &PadSession::cancelled, this, [this] {
        startAgain(State::Cancelled);
        emit cancelled();
    });
    connect(&m_session, &PadSession::wentAway, this, [this] {
        const QString model = m_model->currentText();
        showNoPad(tr("The %1 went away").arg(model),
                  tr("Plug it in again. The signature that was being made is not kept."),
                  tr("the %1 went away").arg(model));
    });
    setState(State::NoPad);
}

QWidget* MainWindow::makeForm()
{
    auto* const paper = new QFrame;
    paper->setObjectName(QStringLiteral("paper"));
    auto* const column = new QVBoxLayout(paper);
    column->setContentsMargins(30, 24, 30, 20);
    column->setSpacing(6);
    column->addWidget(label(tr("COUNTER 3"), "bank"));
    column->addWidget(label(tr("Current account agreement"), "title"));
    column->addSpacing(4);
    auto* const facts = new QGridLayout;
    facts->setHorizontalSpacing(28);
    facts->setVerticalSpacing(1);
    const std::pair<QString, QString> rows[] = {
        {tr("Account holder"), tr("Ada Winterfeld")},
        {tr("Account"), tr("4402 1187 2065")},
        {tr("Overdraft"), tr("up to 1,500.00")},
        {tr("Date"), QLocale().toString(QDate::currentDate(), tr("d MMMM yyyy", "date, in Qt's letters"))}};
    int place = 0;
    for (const auto& [name, value] : rows) {
        facts->addWidget(label(name, "factName"), 0, place);
        facts->addWidget(label(value, "fact"), 1, place++);
    }
    facts->setColumnStretch(place - 1, 1);
    column->addLayout(facts);
    column->addSpacing(6);
    auto* const summary =
        label(tr("The account is kept free of charge. Either side may end the agreement with a notice of one "
                 "month. By signing, the account holder confirms to have received the terms."),
              "summary");
    summary->setWordWrap(true);
    column->addWidget(summary);
    column->addSpacing(8);
    m_panel = new SignaturePanel;
    column->addWidget(m_panel, 1);
    column->addWidget(label(tr("Signature of the account holder"), "factName"));
    column->addSpacing(4);

    m_stateLine = label({}, "state");
    m_stateLine->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // no text widens the window
    m_stateLine->setWordWrap(true);                                           // and none is cut off
    m_clear = button(tr("Clear and &retry"), "clear", tr("Takes the signature off the form and the pad"));
    m_confirm = button(tr("&Confirm"), "confirm", tr("Accepts the signature, as the pad's confirm key does"));
    auto* const bottom = new QHBoxLayout;
    bottom->addWidget(m_stateLine, 1);
    bottom->addWidget(m_clear);
    bottom->addWidget(m_confirm);
    column->addLayout(bottom);
    return paper;
}

QWidget* MainWindow::makePenBox()
{
    auto* const box = new QGroupBox(tr("Pen"));
    m_width = new QSlider(Qt::Horizontal);
    m_width->setObjectName(QStringLiteral("penWidth"));
    m_width->setRange(1, 10);
    m_width->setValue(m_pen.width);
    m_width->setToolTip(tr("Width of the pen, 1 to 10"));
    m_pressure = new QCheckBox(tr("Follows the &pressure"));
    m_pressure->setObjectName(QStringLiteral("pressure"));
    m_pressure->setChecked(true);
    m_pressure->setToolTip(tr("Harder strokes are drawn wider"));
    auto* const colors = new QButtonGroup(this);
    auto* const swatches = new QHBoxLayout;
    const std::tuple<const char*, QString, QColor> inks[] = {
        {"black", tr("Black"), Qt::black},
        {"blue", tr("Blue"), QColor(0x10, 0x35, 0x9c)},
        {"green", tr("Green"), QColor(0x0b, 0x6b, 0x3a)}};
    for (const auto& [name, text, color] : inks) {
        auto* const swatch = new QToolButton;
        swatch->setObjectName(QLatin1String(name));
        swatch->setAccessibleName(text);
        swatch->setToolTip(text);
        swatch->setCheckable(true);
        swatch->setFocusPolicy(Qt::StrongFocus);
        swatch->setStyleSheet(QStringLiteral("background: %1").arg(color.name()));
        colors->addButton(swatch);
        swatches->addWidget(swatch);
        connect(swatch, &QToolButton::clicked, this, [this, color = color] {
            m_pen.color = color;
            applyPen();
        });
    }
    colors->buttons().constFirst()->setChecked(true);
    auto* const other = button(tr("&Other…"), "otherColor", tr("Any other colour"));
    swatches->addWidget(other);
    swatches->addStretch();
    connect(other, &QPushButton::clicked, this, &MainWindow::pickColor);
    connect(m_width, &QSlider::valueChanged, this, &MainWindow::applyPen);
    connect(m_pressure, &QCheckBox::toggled, this, &MainWindow::applyPen);
    auto* const form = new QFormLayout(box);
    form->addRow(tr("&Width"), m_width);
    form->addRow(tr("Colour"), swatches);
    form->addRow(m_pressure);
    return box;
}

QWidget* MainWindow::makeSettings()
{
    auto* const side = new QWidget;
    auto* const column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    column->addStrut(282); // wider where a language needs it

    auto* const padBox = new QGroupBox(tr("Pad"));
    auto* const padForm = new QFormLayout(padBox);
    m_model = new QComboBox;
    m_model->setObjectName(QStringLiteral("model"));
    m_model->addItems(PadSession::models());
    m_model->setToolTip(tr("The model on the counter"));
    padForm->addRow(tr("&Model"), m_model);
    column->addWidget(padBox);
    column->addWidget(makePenBox());

    auto* const liveBox = new QGroupBox(tr("Live"));
    auto* const live = new QVBoxLayout(liveBox);
    m_count = label({}, "count");
    m_meter = new LiveMeter;
    live->addWidget(m_count);
    live->addWidget(m_meter);
    column->addWidget(liveBox);

    m_fingerprint = new QGroupBox(tr("Fingerprint"));
    auto* const fingerprint = new QGridLayout(m_fingerprint);
    m_fingerprintPlace = new QComboBox;
    m_fingerprintPlace->setObjectName(QStringLiteral("fingerprintPlace"));
    m_fingerprintPlace->addItems({tr("In the signature field"), tr("Here, small")});
    m_fingerprintPlace->setToolTip(tr("Where the next fingerprint is shown"));
    m_fingerprintPlace->setAccessibleName(tr("Place of the fingerprint"));
    m_exportFingerprint =
        button(tr("Export &fingerprint…"), "exportFingerprint", tr("Saves the fingerprint alone as PNG"));
    fingerprint->addWidget(m_fingerprintPlace, 0, 0);
    fingerprint->addWidget(m_exportFingerprint, 1, 0);
    fingerprint->setColumnStretch(0, 1);
    QSizePolicy keepsItsPlace =
        m_fingerprint->sizePolicy(); // so that the window's smallest size is always the same
    keepsItsPlace.setRetainSizeWhenHidden(true);
    m_fingerprint->setSizePolicy(keepsItsPlace);
    column->addWidget(m_fingerprint);
    connect(m_fingerprintPlace, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &MainWindow::placeFingerprint);
    connect(m_exportFingerprint, &QPushButton::clicked, this, &MainWindow::exportFingerprint);

    column->addStretch();
    m_replay = button(tr("Repl&ay…"), "replay", tr("Shows how the signature was written; exports the ink"));
    QPushButton* const load = button(tr("&Load ink…"), "load", tr("Plays an ink packet stream from a file"));
    m_save = button(tr("&Save or copy…"), "save", tr("Preview, then BMP, JPEG, PNG, PDF, SVG or Base64"));
    m_document = button(tr("Sign a &document…"), "signDocument",
                        tr("Puts the signature into a PDF document, and seals it with a certificate"));
    auto* const players = new QHBoxLayout;
    players->addWidget(m_replay, 1);
    players->addWidget(load, 1);
    column->addLayout(players);
    column->addWidget(m_save);
    column->addWidget(m_document);
    connect(load, &QPushButton::clicked, this, &MainWindow::loadInk);
    side->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    return side;
}

void MainWindow::openPad()
{
    m_session.close();
    m_signature = {};
    const QString model = m_model->currentText();
    // The size is a first guess: the panel fits the canvas to the pad's proportions once they are known.
    if (m_session.open(model, m_panel->paper(), m_panel->size())) {
        m_panel->setCanvas(m_session.canvas(), m_session.writingArea());
        applyPen();
        placeFingerprint();
        startAgain(State::Waiting);
        return;
    }
    if (PadSession::driverIsThere())
        showNoPad(
            tr("The %1 does not answer").arg(model),
            tr("Plug the pad in and wait until it lights up, or choose the model that is on the counter. "
               "Nothing is lost."),
            tr("no pad: %1").arg(PadSession::whyNotOpen()));
    else
        showNoPad(tr("The pad's driver is missing"),
                  tr("Put libscriberadrv.so into the folder %1, or start this program in the folder that has "
                     "it. Then try again.")
                      .arg(QDir::currentPath()),
                  tr("no pad: %1").arg(PadSession::whyNotOpen()));
}

void MainWindow::showNoPad(const QString& title, const QString& advice, const QString& reason)
{
    m_session.close();
    m_panel->showNotice(title, advice);
    startAgain(State::NoPad);
    emit noPad(reason);
}

void MainWindow::setState(State state)
{
    m_state = state;
    static const QMap<State, std::pair<QString, const char*>> lines = {
        {State::NoPad, {tr("No pad"), "bad"}},
        {State::Waiting, {tr("Waiting for the signature"), ""}},
        {State::Signing, {tr("Signing"), "busy"}},
        {State::NotTaken, {tr("Not confirmed – please confirm again"), "bad"}},
        {State::Confirmed, {tr("Confirmed at %1"), "good"}},
        {State::Cancelled, {tr("Cancelled – please sign again"), "bad"}}};
    const auto& [text, tone] = lines[state];
    m_stateLine->setText(
        state == State::Confirmed ? text.arg(QTime::currentTime().toString(QStringLiteral("HH:mm"))) : text);
    m_stateLine->setProperty("tone", QLatin1String(tone));
    m_stateLine->setStyleSheet(m_stateLine->styleSheet()); // looks at the tone again
    const bool isOpen = m_session.isOpen();
    const bool isInked = state == State::Signing || state == State::NotTaken;
    const bool isConfirmed = state == State::Confirmed;
    m_model->setEnabled(!isConfirmed);
    m_fingerprint->setVisible(PadSession::hasFingerprintReader(m_model->currentText()));
    m_fingerprintPlace->setEnabled(isOpen);
    m_exportFingerprint->setEnabled(!m_signature.fingerprint.isEmpty());
    m_confirm->setEnabled(isInked);
    m_clear->setEnabled(isOpen || isConfirmed);
    m_replay->setEnabled(isInked || isConfirmed);
    m_save->setEnabled(isConfirmed);
    m_document->setEnabled(isConfirmed);
    showPoints();
}

void MainWindow::showPoints()
{
    const int points = m_session.isOpen() ? m_session.points() : m_signature.points;
    m_count->setText(points == 1 ? tr("1 point") : tr("%n points", nullptr, points));
    if (m_session.isOpen())
        m_panel->setInk(points > 0);
}

void MainWindow::notePoint(double pressure, bool onPad)
{
    m_meter->add(pressure, onPad);
    // A tap leaves no ink: that takes a second point of the stroke.
    const bool isStroke = onPad && m_penIsDown;
    m_penIsDown = onPad;
    if (isStroke && m_state != State::Signing)
        setState(State::Signing);
    else
        showPoints();
}

// The signature is taken: the pad is closed, and nothing that is drawn on it now counts.
void MainWindow::confirm(const Signature& signature)
{
    if (!signature.isWhole()) {
        if (m_confirm->isEnabled()) // otherwise nothing is signed yet
            setState(State::NotTaken);
        return;
    }
    m_signature = signature;
    m_session.close();
    m_panel->showSignature(signature.canvas);
    if (m_fingerprintHolder)
        m_fingerprintHolder->setPixmap(QPixmap::fromImage(QImage::fromData(signature.fingerprint)));
    setState(State::Confirmed);
    emit confirmed();
}

void MainWindow::startAgain(State state)
{
    m_meter->clear();
    m_penIsDown = false;
    setState(state);
}

void MainWindow::applyPen()
{
    // The library's widths count in pixels of the canvas, and end at 10.
    m_pen.width = qMin(10, qRound(m_width->value() * m_panel->pixelsPerUnit()));
    m_pen.pressure = m_pressure->isChecked();
    if (m_session.isOpen() && !m_session.apply(m_pen))
        QMessageBox::warning(this, windowTitle(), tr("The pad did not take the pen settings."));
}

void MainWindow::pickColor()
{
    const QColor color = QColorDialog::getColor(m_pen.color, this, tr("Ink"));
    if (!color.isValid())
        return;
    if (color.rgb() == qRgb(255, 255, 255)) {
        QMessageBox::information(this, windowTitle(), tr("White ink would not be seen on the paper."));
        return;
    }
    m_pen.color = color;
    applyPen();
}

void MainWindow::placeFingerprint()
{
    if (!m_session.isOpen() || !PadSession::hasFingerprintReader(m_model->currentText()))
        return;
    QWidget* const former = std::exchange(m_fingerprintHolder, nullptr);
    if (m_fingerprintPlace->currentIndex() == 0) {
        const QSize canvas = m_session.canvas()->size();
        const int height = canvas.height() * 45 / 100;
        const QSize size(height * 208 / 288, height);
        m_session.placeFingerprint(m_panel->paper(), {QPoint(canvas.width() - size.width() - 8, 8), size});
    } else {
        // The library takes rectangles of up to 100 by 30 pixels outside the canvas.
        m_fingerprintHolder = new QLabel;
        m_fingerprintHolder->setFixedSize(22, 30);
        static_cast<QGridLayout*>(m_fingerprint->layout())->addWidget(m_fingerprintHolder, 0, 1, 2, 1);
        m_session.placeFingerprint(m_fingerprintHolder, {0, 0, 22, 30});
    }
    delete former; // and with it the library's widget that covered it
}

void MainWindow::exportFingerprint()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Export fingerprint"),
                                                      QStringLiteral("fingerprint.png"), tr("PNG (*.png)"));
    if (!path.isEmpty() && !writeFile(path, m_signature.fingerprint))
        QMessageBox::warning(this, windowTitle(), tr("%1 cannot be written.").arg(path));
}

void MainWindow::loadInk()
{
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Load ink"), {}, tr("Ink (*.ink);;All files (*)"));
    if (path.isEmpty())
        return;
    QFile file(path);
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (readInk(text).isEmpty())
        QMessageBox::warning(this, windowTitle(), tr("%1 holds no ink packet stream.").arg(path));
    else
        ReplayView(text, this).exec();
}
