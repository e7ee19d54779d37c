// The counter's window: the form with its signature field, and the settings beside it.
#pragma once

#include "padsession.h"

#include <QDialog>

class LiveMeter;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QSlider;
class SignaturePanel;

class MainWindow : public QWidget
{
    Q_OBJECT

public:
    explicit MainWindow(const QString& model, QWidget* parent = nullptr);

    void openPad();
    const PadSession& session() const { return m_session; }

signals:
    void noPad(const QString& reason);
    void confirmed();
    void cancelled();

private:
    enum class State
    {
        NoPad,
        Waiting,
        Signing,
        Confirmed,
        Cancelled
    };

    QWidget* makeForm();
    QWidget* makeSettings();
    QWidget* makePenBox();
    void setState(State state);
    void noteInk();
    void confirm();
    void startAgain(State state);
    void applyPen();
    void pickColor();
    void placeFingerprint();
    void exportFingerprint();
    void replay();

    State m_state = State::NoPad;
    PenSettings m_pen;
    SignaturePanel* m_panel = nullptr;
    LiveMeter* m_meter = nullptr;
    QLabel* m_stateLine = nullptr;
    QLabel* m_count = nullptr;
    QComboBox* m_model = nullptr;
    QSlider* m_width = nullptr;
    QCheckBox* m_pressure = nullptr;
    QGroupBox* m_fingerprint = nullptr;
    QComboBox* m_fingerprintPlace = nullptr;
    QWidget* m_fingerprintHolder = nullptr;
    QPushButton* m_confirm = nullptr;
    QPushButton* m_clear = nullptr;
    QPushButton* m_save = nullptr;
    QPushButton* m_replay = nullptr;
    // Last, so that the pad is closed while the widgets that its signals reach are still there.
    PadSession m_session;
};
