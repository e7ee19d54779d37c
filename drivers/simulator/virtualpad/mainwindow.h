// The window: the pad, its menu and its status line.
#pragma once

#include "padview.h"
#include "virtualpad.h"

#include <QMainWindow>

#include <string>

class QAction;
class QActionGroup;
class QLabel;

namespace virtualpad {

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(VirtualPad& pad);

    // Proposed when a finger is put on.
    void setFinger(std::string source) { m_finger = std::move(source); }

    PadView& view() { return *m_view; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void makeMenus();
    void makeBar();
    void makeStatusLine();

    void toggleReplay();
    void toggleRecording();
    bool saveRecording(const simulator::Recording& recording);
    void askForFinger();
    void tell(const QString& text);
    void refresh();
    void refreshCounts();

    VirtualPad& m_pad;
    PadView* m_view;
    QWidget* m_bar = nullptr;
    QActionGroup* m_models;
    QAction* m_keepModel = nullptr;
    QAction* m_replay = nullptr;
    QAction* m_loop = nullptr;
    QAction* m_record = nullptr;
    QAction* m_fingerprint = nullptr;
    QLabel* m_hostLabel = nullptr;
    QLabel* m_rateLabel = nullptr;
    QLabel* m_countLabel = nullptr;
    std::string m_finger = "loop";
};

// The window is as large as the screen's scale wants it. Before the application is made.
void followScreenScale();

} // namespace virtualpad
