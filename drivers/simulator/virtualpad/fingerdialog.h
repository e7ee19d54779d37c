// Asks which finger is put on the sensor.
#pragma once

#include <QDialog>

#include <string>

class QButtonGroup;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace virtualpad {

class FingerDialog : public QDialog
{
    Q_OBJECT

public:
    explicit FingerDialog(const std::string& source, QWidget* parent = nullptr);

    // A pattern's name or a file's path.
    std::string source() const;
    int score() const;

private:
    void chooseFile();
    void showPreview();

    QButtonGroup* m_patterns;
    QLineEdit* m_file;
    QSpinBox* m_score;
    QLabel* m_preview;
    QLabel* m_reason;
    QPushButton* m_accept;
};

} // namespace virtualpad
