// A window to sign in: the library's canvas and buttons.
#pragma once

#include "signature.h"
#include "waiting.h"

#include <QWidget>

#include <optional>

class QLabel;
class QPushButton;

class SignWindow : public QWidget
{
public:
    explicit SignWindow(const QSize& canvas);

    // In which the library puts its canvas.
    QWidget* canvasParent() const { return m_canvasParent; }

    // Shows the window until the person has decided. Nothing when the time is over first. Throws Interrupted.
    std::optional<Signing::State> run(Session& session, Signing& signing, const Deadline& deadline);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* m_canvasParent;
    QLabel* m_status;
    QPushButton* m_confirm;
    QPushButton* m_clear;
    QPushButton* m_cancel;
    bool m_isCancelled = false;
};
