#include "signwindow.h"

#include "interrupts.h"
#include "text.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>

SignWindow::SignWindow(const QSize& canvas)
    : m_canvasParent(new QWidget(this)), m_status(new QLabel(this)),
      m_confirm(new QPushButton(Text::tr("Confirm"), this)),
      m_clear(new QPushButton(Text::tr("Clear"), this)), m_cancel(new QPushButton(Text::tr("Cancel"), this))
{
    setWindowTitle(Text::tr("Please sign"));
    m_canvasParent->setFixedSize(canvas);
    m_status->setText(Text::tr("Please sign"));
    m_confirm->setEnabled(false);
    m_clear->setEnabled(false);
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(m_status, 1);
    for (QPushButton* const button : {m_clear, m_cancel, m_confirm}) {
        button->setFocusPolicy(Qt::NoFocus); // Enter confirms wherever the focus was
        buttons->addWidget(button);
    }
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_canvasParent);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    connect(m_cancel, &QPushButton::clicked, this, [this] { m_isCancelled = true; });
}

void SignWindow::closeEvent(QCloseEvent* event)
{
    m_isCancelled = true;
    event->ignore(); // the pad is closed before the window is
}

void SignWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        m_cancel->click();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        m_confirm->click();
    else
        QWidget::keyPressEvent(event);
}

std::optional<Signing::State> SignWindow::run(Session& session, Signing& signing, const Deadline& deadline)
{
    constexpr int interval = 100; // ms between changes of what the window tells
    connect(m_confirm, &QPushButton::clicked, this, [&signing] { signing.confirm(); });
    connect(m_clear, &QPushButton::clicked, this, [&signing] { signing.clear(); });
    QEventLoop loop;
    const QSocketNotifier atThePad(session.descriptor(), QSocketNotifier::Read);
    const QSocketNotifier atTheEnd(interruptDescriptor(), QSocketNotifier::Read);
    QTimer timer;
    timer.start(interval);
    Presence presence(session);
    show();
    for (;;) {
        loop.processEvents(QEventLoop::WaitForMoreEvents);
        throwIfInterrupted();
        const Signing::State state = m_isCancelled ? Signing::State::Cancelled : signing.proceed();
        if (state != Signing::State::Going)
            return state;
        if (deadline.isOver())
            return std::nullopt;
        presence.look();
        const Strokes& strokes = signing.strokes();
        m_confirm->setEnabled(strokes.hasInk());
        m_clear->setEnabled(strokes.points() > 0);
        m_status->setText(!presence.isThere() ? Text::tr("The pad does not answer")
                          : strokes.points() > 0
                              ? Text::tr("%1, %2, %3 s", "strokes, points, seconds")
                                    .arg(strokesText(strokes.strokes()), pointsText(strokes.points()),
                                         numberText(strokes.seconds(), 1))
                              : Text::tr("Please sign"));
    }
}
