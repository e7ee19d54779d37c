// What an export will look like, before it is saved or copied.
#pragma once

#include "signature.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

class PreviewDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PreviewDialog(const Signature& signature, QWidget* parent = nullptr);

    ExportSettings settings() const;

private:
    void refresh();
    QPixmap picture(const QByteArray& content) const;
    void save();
    void copy();

    const Signature& m_signature;
    QComboBox* m_type;
    QComboBox* m_dpi;
    QCheckBox* m_clip;
    QLabel* m_preview;
    QLabel* m_summary;
    QPushButton* m_save;
    QPushButton* m_copy;
};
