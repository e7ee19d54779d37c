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
    const Signature& signature() const { return m_signature; } // what was confirmed

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
        NotTaken,
        Confirmed,
        Cancelled
    };

    QWidget* makeForm();
    QWidget* makeSettings();
    QWidget* makePenBox();
    void setState(State state);
    void showPoints();
    void notePoint(double pressure, bool onPad);
    void confirm(const Signature& signature);
    void startAgain(State state);
    void showNoPad(const QString& title, const QString& advice, const QString& reason);
    void applyPen();
    void pickColor();
    void placeFingerprint();
    void exportFingerprint();
    void loadInk();

    State m_state = State::NoPad;
    bool m_penIsDown = false;
    Signature m_signature; // empty until one is confirmed
    PenSettings m_pen;
    SignaturePanel* m_panel = nullptr;
    LiveMeter* m_meter = nullptr;
    QLabel* m_stateLine = nullptr;
    QLabel* m_count = nullptr;
    QComboBox* m_model = nullptr;
    QSlider* m_width = nullptr;
    QCheckBox* m_pressure = nullptr;
    QGroupBox* m_fingerprint = nullptr;
    QPushButton* m_exportFingerprint = nullptr;
    QComboBox* m_fingerprintPlace = nullptr;
    QLabel* m_fingerprintHolder = nullptr;
    QPushButton* m_confirm = nullptr;
    QPushButton* m_clear = nullptr;
    QPushButton* m_save = nullptr;
    QPushButton* m_replay = nullptr;
    QPushButton* m_document = nullptr;
    // Last, so that the pad is closed while the widgets that its signals reach are still there.
    PadSession m_session;
};
