#include "fingerdialog.h"

#include "virtualpad.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <vector>

namespace virtualpad {
namespace {

constexpr std::array<const char*, 3> Patterns{"loop", "whorl", "arch"};
constexpr int FileChoice = static_cast<int>(Patterns.size());

} // namespace

FingerDialog::FingerDialog(const std::string& source, QWidget* parent)
    : QDialog(parent), m_patterns(new QButtonGroup(this)), m_file(new QLineEdit(this)),
      m_score(new QSpinBox(this)), m_preview(new QLabel(this)), m_reason(new QLabel(this)),
      m_accept(new QPushButton(tr("Put the finger on"), this))
{
    setWindowTitle(tr("Fingerprint"));
    const std::array<QString, 4> names{tr("&Loop"), tr("&Whorl"), tr("&Arch"), tr("&Picture file")};
    auto* const choices = new QVBoxLayout;
    int chosen = FileChoice;
    for (int index = 0; index <= FileChoice; ++index) {
        auto* const button = new QRadioButton(names[static_cast<std::size_t>(index)], this);
        m_patterns->addButton(button, index);
        choices->addWidget(button);
        if (index < FileChoice && source == Patterns[static_cast<std::size_t>(index)])
            chosen = index;
    }
    auto* const browse = new QPushButton(tr("&Browse…"), this);
    auto* const fileRow = new QHBoxLayout;
    fileRow->addSpacing(22);
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(browse);
    choices->addLayout(fileRow);
    m_file->setPlaceholderText(tr("Grey PGM picture"));
    m_file->setAccessibleName(tr("Picture file"));
    constexpr int frame = 20;
    m_file->setMinimumWidth(
        std::max(220, m_file->fontMetrics().horizontalAdvance(m_file->placeholderText()) + frame));

    auto* const scoreLabel = new QLabel(tr("&Score"), this);
    scoreLabel->setBuddy(m_score);
    m_score->setRange(0, 100);
    m_score->setValue(80);
    m_score->setAccessibleName(tr("Score of the fingerprint"));
    m_score->setToolTip(tr("How good the sensor takes the fingerprint to be"));
    auto* const scoreRow = new QHBoxLayout;
    scoreRow->addWidget(scoreLabel);
    scoreRow->addWidget(m_score);
    scoreRow->addStretch();
    choices->addSpacing(8);
    choices->addLayout(scoreRow);
    choices->addStretch();
    m_reason->setWordWrap(true);
    choices->addWidget(m_reason);

    m_preview->setFixedSize(simulator::FingerprintWidth * 2 / 3 + 8,
                            simulator::FingerprintHeight * 2 / 3 + 8);
    m_preview->setAlignment(Qt::AlignCenter);
    m_preview->setFrameShape(QFrame::StyledPanel);
    m_preview->setAccessibleName(tr("Preview of the fingerprint"));

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(m_accept, QDialogButtonBox::AcceptRole);
    m_accept->setDefault(true);
    auto* const upper = new QHBoxLayout;
    upper->addLayout(choices, 1);
    upper->addSpacing(16);
    upper->addWidget(m_preview);
    auto* const all = new QVBoxLayout(this);
    all->addLayout(upper);
    all->addSpacing(8);
    all->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(browse, &QPushButton::clicked, this, &FingerDialog::chooseFile);
    connect(m_patterns, &QButtonGroup::idClicked, this, &FingerDialog::showPreview);
    connect(m_file, &QLineEdit::textChanged, this, [this] {
        m_patterns->button(FileChoice)->setChecked(true);
        showPreview();
    });
    if (chosen == FileChoice)
        m_file->setText(QString::fromStdString(source));
    m_patterns->button(chosen)->setChecked(true);
    showPreview();
}

std::string FingerDialog::source() const
{
    const int chosen = m_patterns->checkedId();
    return chosen == FileChoice ? m_file->text().toStdString() : Patterns[static_cast<std::size_t>(chosen)];
}

int FingerDialog::score() const
{
    return m_score->value();
}

void FingerDialog::chooseFile()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Picture of a fingerprint"), m_file->text(),
                                                      tr("Grey pictures (*.pgm);;All files (*)"));
    if (!path.isEmpty())
        m_file->setText(path);
}

void FingerDialog::showPreview()
{
    std::vector<unsigned char> pixels;
    std::string error;
    // A name typed in part must not be taken for a pattern's.
    const std::string chosen = source();
    const bool isFile = m_patterns->checkedId() == FileChoice;
    const bool read = isFile ? simulator::readGreyMap(chosen, pixels, error)
                             : VirtualPad::readFinger(chosen, pixels, error);
    m_accept->setEnabled(read);
    m_reason->setText(read || chosen.empty() ? QString() : QString::fromStdString(error));
    if (!read) {
        m_preview->clear();
        return;
    }
    const QImage image(pixels.data(), simulator::FingerprintWidth, simulator::FingerprintHeight,
                       simulator::FingerprintWidth, QImage::Format_Grayscale8);
    QPixmap pixmap = QPixmap::fromImage(image.scaled((m_preview->size() - QSize(8, 8)) * devicePixelRatioF(),
                                                     Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    m_preview->setPixmap(pixmap);
}

} // namespace virtualpad
