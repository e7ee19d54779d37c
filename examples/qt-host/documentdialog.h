// Puts the confirmed signature into a PDF document, by the program scribera-sign.
#pragma once

#include "padsession.h"

#include <QDialog>
#include <QProcess>

class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

class DocumentDialog : public QDialog
{
    Q_OBJECT

public:
    DocumentDialog(const QByteArray& ink, const QString& model, const PenSettings& pen,
                   QWidget* parent = nullptr);
    ~DocumentDialog() override;

    // That of SCRIBERA_SIGN, or beside this program, where it is built, or in PATH; empty otherwise.
    static QString program();

private:
    QWidget* fileRow(QLineEdit* path, const QString& title, const QString& filter, bool isNew);
    void sign();
    void finish(int exitCode, QProcess::ExitStatus status);
    void refresh();

    const QByteArray m_ink;
    const QString m_model;
    const PenSettings m_pen;
    QLineEdit* m_document;
    QSpinBox* m_page;
    QDoubleSpinBox* m_left;
    QDoubleSpinBox* m_top;
    QDoubleSpinBox* m_width;
    QLineEdit* m_reason;
    QLineEdit* m_certificate;
    QLineEdit* m_password;
    QLineEdit* m_output;
    QLabel* m_result;
    QPushButton* m_sign;
    int m_secret = -1; // a file in memory with the password, while the program runs
    QProcess m_program;
};
