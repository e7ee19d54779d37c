// What an export will look like, before it is saved or copied.
#pragma once

#include "padsession.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;

class PreviewDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PreviewDialog(const PadSession& session, QWidget* parent = nullptr);

    ExportSettings settings() const;

private:
    void refresh();
    QPixmap picture(const QByteArray& content) const;
    void save();
    void copy();

    const PadSession& m_session;
    QComboBox* m_type;
    QComboBox* m_dpi;
    QCheckBox* m_clip;
    QSpinBox* m_marginX;
    QSpinBox* m_marginY;
    QLabel* m_preview;
    QLabel* m_summary;
    QPushButton* m_save;
    QPushButton* m_copy;
};
