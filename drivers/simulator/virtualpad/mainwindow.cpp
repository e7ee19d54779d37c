#include "mainwindow.h"

#include "fingerdialog.h"

#include <QAbstractButton>
#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QMenuBar>
#include <QMessageBox>
#include <QPalette>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace virtualpad {
namespace {

constexpr int NoticeTime = 8000;

QColor mixed(const QColor& one, const QColor& other, double part)
{
    const auto mix = [part](int from, int to) {
        return static_cast<int>(std::lround(from + (to - from) * part));
    };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

// In the colours of the desktop's theme, be it light or dark.
QString barStyle(const QPalette& palette)
{
    const QColor& window = palette.color(QPalette::Window);
    const QColor& text = palette.color(QPalette::WindowText);
    const QColor& button = palette.color(QPalette::Button);
    const QColor& label = palette.color(QPalette::ButtonText);
    const QColor recording(0xd0, 0x40, 0x30);
    return QStringLiteral("#bar { border-top: 1px solid %1; }"
                          "#bar QToolButton { background: %2; color: %3; border: 1px solid %1;"
                          "                   border-radius: 5px; padding: 5px 16px; }"
                          "#bar QToolButton:hover { border-color: %4; }"
                          "#bar QToolButton:focus { border-color: %5; }"
                          "#bar QToolButton:pressed { background: %1; }"
                          "#bar QToolButton:checked { background: %6; border-color: %7; }"
                          "#bar QToolButton:disabled { color: %4; background: %8; }")
        .arg(mixed(window, text, 0.2).name(), button.name(), label.name(), mixed(window, text, 0.45).name(),
             palette.color(QPalette::Highlight).name(), mixed(button, recording, 0.3).name(),
             recording.name(), window.name());
}

QString textOf(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

} // namespace

void followScreenScale()
{
#if QT_VERSION_MAJOR < 6 // later ones do so unasked
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::RoundPreferFloor);
}

MainWindow::MainWindow(VirtualPad& pad)
    : m_pad(pad), m_view(new PadView(pad, this)), m_models(new QActionGroup(this))
{
    setWindowTitle(tr("Scribera virtual pad"));
    setAccessibleName(tr("Scribera virtual pad"));
    makeMenus();
    makeStatusLine();
    makeBar();
    m_view->setFocus();
    connect(m_view, &PadView::sensorTouched, this, &MainWindow::askForFinger);
    connect(&pad, &VirtualPad::changed, this, &MainWindow::refresh);
    connect(&pad, &VirtualPad::inkChanged, this, &MainWindow::refreshCounts);
    connect(&pad, &VirtualPad::noticed, this, &MainWindow::tell);
    refresh();
}

void MainWindow::makeMenus()
{
    QMenu* const padMenu = menuBar()->addMenu(tr("&Pad"));
    QMenu* const modelMenu = padMenu->addMenu(tr("&Model"));
    const QStringList names = QString::fromStdString(simulator::modelNames()).split(QLatin1Char(' '));
    for (const QString& name : names) {
        QAction* const action = m_models->addAction(modelMenu->addAction(name));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this,
                [this, name] { m_pad.setModel(*simulator::padForModel(name.toStdString())); });
    }
    m_keepModel = padMenu->addAction(tr("&Keep this model"));
    m_keepModel->setCheckable(true);
    m_keepModel->setChecked(m_pad.isPinned());
    m_keepModel->setToolTip(tr("Stay this model also when a host asks for another device type"));
    padMenu->setToolTipsVisible(true);
    connect(m_keepModel, &QAction::toggled, this, [this](bool keep) { m_pad.setPinned(keep); });
    padMenu->addSeparator();
    QAction* const quit = padMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);

    QMenu* const penMenu = menuBar()->addMenu(tr("P&en"));
    m_replay = penMenu->addAction(QString());
    m_replay->setShortcut(QKeySequence(QStringLiteral("Ctrl+O"), QKeySequence::PortableText));
    m_replay->setToolTip(tr("Play a recorded signature on the pad (Ctrl+O)"));
    connect(m_replay, &QAction::triggered, this, &MainWindow::toggleReplay);
    m_loop = penMenu->addAction(tr("Replay again and &again"));
    m_loop->setCheckable(true);
    m_record = penMenu->addAction(tr("Re&cord"));
    m_record->setShortcut(QKeySequence(QStringLiteral("Ctrl+R"), QKeySequence::PortableText));
    m_record->setCheckable(true);
    m_record->setToolTip(tr("Record what the pen does, and save it in the end (Ctrl+R)"));
    connect(m_record, &QAction::triggered, this, &MainWindow::toggleRecording);
    penMenu->addSeparator();
    m_fingerprint = penMenu->addAction(tr("&Fingerprint…"));
    m_fingerprint->setShortcut(QKeySequence(Qt::Key_F));
    m_fingerprint->setToolTip(tr("Put a finger on the sensor of the SCK421B (F)"));
    connect(m_fingerprint, &QAction::triggered, this, &MainWindow::askForFinger);
}

void MainWindow::makeBar()
{
    auto* const central = new QWidget(this);
    m_bar = new QWidget(central);
    m_bar->setObjectName(QStringLiteral("bar"));
    m_bar->setAttribute(Qt::WA_StyledBackground);
    m_bar->setStyleSheet(barStyle(palette()));
    auto* const buttons = new QHBoxLayout(m_bar);
    buttons->setContentsMargins(12, 7, 12, 7);
    buttons->setSpacing(8);
    buttons->addStretch();
    for (QAction* action : {m_replay, m_record, m_fingerprint}) {
        auto* const button = new QToolButton(m_bar);
        button->setDefaultAction(action);
        button->setFocusPolicy(Qt::TabFocus);
        button->setAccessibleName(action->toolTip());
        buttons->addWidget(button);
    }
    buttons->addStretch();
    auto* const column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_view, 1);
    column->addWidget(m_bar);
    setCentralWidget(central);
}

void MainWindow::makeStatusLine()
{
    m_hostLabel = new QLabel(this);
    m_rateLabel = new QLabel(this);
    m_countLabel = new QLabel(this);
    m_hostLabel->setAccessibleName(tr("Connected host"));
    m_rateLabel->setAccessibleName(tr("Report rate"));
    m_countLabel->setAccessibleName(tr("Samples sent"));
    m_rateLabel->setToolTip(tr("Samples a second, as measured in the last stroke"));
    m_countLabel->setToolTip(tr("Samples that this host was sent"));
    statusBar()->addWidget(m_hostLabel, 1);
    statusBar()->addPermanentWidget(m_rateLabel);
    statusBar()->addPermanentWidget(m_countLabel);
    for (QLabel* label : {m_rateLabel, m_countLabel})
        label->setContentsMargins(14, 0, 0, 0);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setContentsMargins(6, 0, 6, 0);
}

// --- What the person asks for

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    const bool isConfirm = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto* const button = qobject_cast<QAbstractButton*>(focusWidget());
    if (!isConfirm && event->key() != Qt::Key_Escape) {
        QMainWindow::keyPressEvent(event);
    } else if (event->isAutoRepeat()) {
        return;
    } else if (isConfirm && button != nullptr) {
        button->click();
    } else {
        m_pad.touchKey(isConfirm ? Key::Confirm : Key::Cancel);
    }
}

void MainWindow::keyReleaseEvent(QKeyEvent* event)
{
    const bool isKey =
        event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Escape;
    if (!isKey)
        QMainWindow::keyReleaseEvent(event);
    else if (!event->isAutoRepeat())
        m_pad.releaseKey();
}

void MainWindow::changeEvent(QEvent* event)
{
    // The release of a held key goes to another window then.
    if (event->type() == QEvent::ActivationChange && !isActiveWindow())
        m_pad.releaseKey();
    // The style sheet's own change of the bar's palette is none of the window's.
    if (event->type() == QEvent::PaletteChange && m_bar != nullptr)
        m_bar->setStyleSheet(barStyle(palette()));
    QMainWindow::changeEvent(event);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_pad.isRecording())
        saveRecording(m_pad.stopRecording());
    event->accept();
}

void MainWindow::toggleReplay()
{
    if (m_pad.isReplaying()) {
        m_pad.stopReplay();
        return;
    }
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Replay a recording"), QString(),
                                     tr("Recordings and ink (*.rec *.txt *.ink);;All files (*)"));
    std::string error;
    if (!path.isEmpty() && !m_pad.startReplay(path.toStdString(), m_loop->isChecked(), error))
        QMessageBox::warning(this, tr("Replay"), QString::fromStdString(error));
}

void MainWindow::toggleRecording()
{
    if (m_pad.isRecording())
        saveRecording(m_pad.stopRecording());
    else
        m_pad.startRecording();
}

bool MainWindow::saveRecording(const simulator::Recording& recording)
{
    if (recording.samples.empty()) {
        tell(tr("Nothing was recorded"));
        return false;
    }
    for (;;) {
        const QString path = QFileDialog::getSaveFileName(
            this, tr("Save the recording"), QStringLiteral("signature.rec"), tr("Recordings (*.rec)"));
        if (path.isEmpty())
            return false;
        std::string error;
        if (simulator::writeRecording(recording, path.toStdString(), error)) {
            tell(tr("Saved %n samples in %1", nullptr, static_cast<int>(recording.samples.size())).arg(path));
            return true;
        }
        QMessageBox::warning(this, tr("Save the recording"), QString::fromStdString(error));
    }
}

void MainWindow::askForFinger()
{
    if (!hasFingerprintSensor(m_pad.state().pad()))
        return;
    auto* const dialog = new FingerDialog(m_finger, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        m_finger = dialog->source();
        std::string error;
        if (m_pad.putFinger(m_finger, dialog->score(), error))
            tell(tr("The fingerprint was sent"));
        else
            tell(QString::fromStdString(error));
    });
    dialog->open();
}

// --- What there is to see

void MainWindow::tell(const QString& text)
{
    statusBar()->showMessage(text, NoticeTime);
}

void MainWindow::refresh()
{
    const simulator::Pad& pad = m_pad.state().pad();
    const QString model = textOf(pad.model);
    for (QAction* action : m_models->actions())
        action->setChecked(action->text() == model);
    setWindowTitle(tr("%1 – Scribera virtual pad").arg(model));

    m_replay->setText(m_pad.isReplaying() ? tr("Stop &replay") : tr("&Replay…"));
    m_record->setText(m_pad.isRecording() ? tr("Stop and &save…") : tr("Re&cord"));
    m_record->setChecked(m_pad.isRecording());
    m_fingerprint->setEnabled(hasFingerprintSensor(pad));

    QString host = tr("No host");
    if (m_pad.isMismatch())
        host = tr("Host for device type %1 connected; %2 is none, so it refuses the pad")
                   .arg(*m_pad.hostDeviceType())
                   .arg(model);
    else if (m_pad.hostDeviceType())
        host = tr("Host connected, device type %1").arg(*m_pad.hostDeviceType());
    if (m_pad.isMismatch() && host != m_hostLabel->text())
        statusBar()->clearMessage(); // it would hide this
    m_hostLabel->setText(host);
    refreshCounts();
}

void MainWindow::refreshCounts()
{
    m_rateLabel->setText(tr("%1 samples/s").arg(std::lround(m_pad.measuredRate())));
    m_countLabel->setText(tr("%1 sent").arg(QLocale().toString(static_cast<qlonglong>(m_pad.samplesSent()))));
}

} // namespace virtualpad
