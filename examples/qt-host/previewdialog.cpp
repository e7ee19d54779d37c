#include "previewdialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSvgRenderer>

namespace {

constexpr QSize previewSize(520, 340);

QBrush chequers()
{
    QPixmap tile(16, 16);
    tile.fill(Qt::white);
    QPainter painter(&tile);
    painter.fillRect(0, 0, 8, 8, QColor(0xee, 0xf2, 0xf6));
    painter.fillRect(8, 8, 8, 8, QColor(0xee, 0xf2, 0xf6));
    return QBrush(tile);
}

} // namespace

PreviewDialog::PreviewDialog(const Signature& signature, QWidget* parent)
    : QDialog(parent), m_signature(signature), m_type(new QComboBox), m_dpi(new QComboBox),
      m_clip(new QCheckBox(tr("Cut to the &ink"))), m_preview(new QLabel), m_summary(new QLabel),
      m_save(new QPushButton(tr("&Save…"))), m_copy(new QPushButton(tr("Copy as &Base64")))
{
    setWindowTitle(tr("Save the signature"));
    m_type->setObjectName(QStringLiteral("type"));
    m_type->addItem(tr("PNG, transparent paper"), EBITI_PNG);
    m_type->addItem(tr("JPEG"), EBITI_JPG);
    m_type->addItem(tr("BMP"), EBITI_BITMAP);
    m_type->addItem(tr("PDF, one A4 page"), EBITI_PDF);
    m_type->addItem(tr("SVG, vector drawing"), EBITI_SVG);
    m_type->setToolTip(tr("Kind of file"));
    m_dpi->addItem(tr("150 dpi"), 150);
    m_dpi->addItem(tr("300 dpi"), 300);
    m_dpi->setCurrentIndex(1);
    m_dpi->setToolTip(tr("Dots per inch: how large the picture is on paper"));
    m_clip->setChecked(true);
    m_clip->setToolTip(tr("Leaves the empty paper around the signature out"));
    m_save->setDefault(true);
    m_save->setToolTip(tr("Saves what the preview shows"));
    m_copy->setObjectName(QStringLiteral("copy"));
    m_copy->setToolTip(tr("Puts the picture on the clipboard, as text"));
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setFixedSize(previewSize);
    m_summary->setObjectName(QStringLiteral("hint"));
    m_summary->setWordWrap(true);

    auto* const form = new QFormLayout;
    form->addRow(tr("&File"), m_type);
    form->addRow(tr("&Resolution"), m_dpi);
    form->addRow(m_clip);
    form->addRow(m_summary);
    auto* const side = new QVBoxLayout;
    side->addLayout(form);
    side->addStretch();
    side->addWidget(m_save);
    side->addWidget(m_copy);
    auto* const row = new QHBoxLayout(this);
    row->addWidget(m_preview);
    row->addLayout(side);
    setTabOrder(m_save, m_copy);

    const auto changed = qOverload<int>(&QComboBox::currentIndexChanged);
    connect(m_type, changed, this, &PreviewDialog::refresh);
    connect(m_dpi, changed, this, &PreviewDialog::refresh);
    connect(m_clip, &QCheckBox::toggled, this, &PreviewDialog::refresh);
    connect(m_save, &QPushButton::clicked, this, &PreviewDialog::save);
    connect(m_copy, &QPushButton::clicked, this, &PreviewDialog::copy);
    refresh();
}

ExportSettings PreviewDialog::settings() const
{
    return {m_type->currentData().toInt(), m_dpi->currentData().toInt(), m_clip->isChecked()};
}

void PreviewDialog::refresh()
{
    m_preview->setPixmap(picture(m_signature.file(settings())));
}

// The picture on its paper: a chequered ground for what is transparent, a page for PDF.
QPixmap PreviewDialog::picture(const QByteArray& content) const
{
    ExportSettings shown = settings();
    const bool page = shown.imageType == EBITI_PDF;
    QByteArray raster = content;
    if (page) { // its page holds the same pixels as the PNG
        shown.imageType = EBITI_PNG;
        raster = m_signature.file(shown);
    }
    QSvgRenderer vectors;
    QImage image;
    if (shown.imageType == EBITI_SVG)
        vectors.load(content);
    else
        image = QImage::fromData(raster);
    const QSizeF size = vectors.isValid() ? vectors.viewBoxF().size() : QSizeF(image.size());

    QPixmap pixmap(previewSize * devicePixelRatioF());
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    pixmap.fill(QColor(0xe9, 0xee, 0xf3));
    const QSizeF inches = size / shown.dpi;
    m_summary->setText(tr("%1 × %2 pixels, %3 × %4 mm on paper, %5 kB")
                           .arg(size.width())
                           .arg(size.height())
                           .arg(qRound(inches.width() * 25.4))
                           .arg(qRound(inches.height() * 25.4))
                           .arg(qMax(1, content.size() / 1024)));
    QPainter painter(&pixmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QSizeF paperSize = page ? QSizeF(210, 297) : size;
    const QSizeF fitted = paperSize.scaled(QSizeF(previewSize) - QSizeF(24, 24), Qt::KeepAspectRatio);
    QRectF paper({}, page || fitted.width() < paperSize.width() ? fitted : paperSize);
    paper.moveCenter(QRectF({}, previewSize).center());
    painter.fillRect(paper, Qt::white);
    if (shown.imageType == EBITI_PNG && !page)
        painter.fillRect(paper, chequers());
    QRectF target = paper;
    if (page) { // dots on a page of 210 mm with margins of 10 points
        const double perInch = paper.width() / 210 * 25.4;
        target = QRectF(paper.topLeft() + QPointF(10, 10) / 72 * perInch, inches * perInch);
    }
    painter.setClipRect(paper); // as viewers do
    vectors.isValid() ? vectors.render(&painter, target) : painter.drawImage(target, image);
    return pixmap;
}

void PreviewDialog::save()
{
    const QString ending = suffix(settings().imageType);
    QFileDialog dialog(this, windowTitle(), {}, tr("%1 (*.%2)").arg(ending.toUpper(), ending));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(ending);
    dialog.selectFile(QStringLiteral("signature.") + ending);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString path = dialog.selectedFiles().constFirst();
    if (writeFile(path, m_signature.file(settings())))
        accept();
    else
        QMessageBox::warning(this, windowTitle(), tr("%1 cannot be written.").arg(path));
}

void PreviewDialog::copy()
{
    QApplication::clipboard()->setText(QString::fromLatin1(m_signature.file(settings()).toBase64()));
}
