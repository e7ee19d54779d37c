#include "documentdialog.h"

#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>

#include <sys/mman.h>
#include <unistd.h>

namespace {

QLineEdit* line(const char* name, const QString& toolTip)
{
    auto* const made = new QLineEdit;
    made->setObjectName(QLatin1String(name));
    made->setToolTip(toolTip);
    made->setMinimumWidth(300);
    return made;
}

QDoubleSpinBox* points(const char* name, double value, const QString& toolTip)
{
    auto* const made = new QDoubleSpinBox;
    made->setObjectName(QLatin1String(name));
    made->setRange(0, 14400);
    made->setDecimals(1);
    made->setValue(value);
    made->setSuffix(QStringLiteral(" pt"));
    made->setToolTip(toolTip);
    return made;
}

// Never on a disk, and never on a command line, where others could read it.
int secretFile(const QByteArray& secret)
{
    const int file = memfd_create("password", MFD_CLOEXEC);
    if (file >= 0 && write(file, secret.constData(), size_t(secret.size())) != secret.size()) {
        ::close(file);
        return -1;
    }
    return file;
}

} // namespace

DocumentDialog::DocumentDialog(const QByteArray& ink, const QString& model, const PenSettings& pen,
                               QWidget* parent)
    : QDialog(parent), m_ink(ink), m_model(model), m_pen(pen),
      m_document(line("document", tr("The PDF document; it stays as it is"))), m_page(new QSpinBox),
      m_left(points("left", 60, tr("From the left edge of the page"))),
      m_top(points("top", 640, tr("From the upper edge of the page"))),
      m_width(points("width", 180, tr("Room for the signature"))),
      m_reason(line("reason", tr("Why it is signed; may stay empty"))),
      m_certificate(line("certificate", tr("PKCS#12 file; without one, nothing shows later changes"))),
      m_password(line("password", tr("Opens the certificate's file"))),
      m_output(line("output", tr("The signed document"))), m_result(new QLabel),
      m_sign(new QPushButton(tr("&Sign")))
{
    setWindowTitle(tr("Sign a document"));
    m_page->setObjectName(QStringLiteral("page"));
    m_page->setRange(1, 1'000'000);
    m_page->setToolTip(tr("Page of the signature"));
    m_password->setEchoMode(QLineEdit::Password);
    m_result->setObjectName(QStringLiteral("result"));
    m_result->setWordWrap(true);
    m_sign->setObjectName(QStringLiteral("sign"));
    m_sign->setToolTip(tr("Writes the signed document"));
    m_sign->setDefault(true);

    const QString documents = tr("PDF documents (*.pdf)");
    auto* const place = new QHBoxLayout;
    for (QWidget* part : {static_cast<QWidget*>(m_page), static_cast<QWidget*>(m_left),
                          static_cast<QWidget*>(m_top), static_cast<QWidget*>(m_width)})
        place->addWidget(part);
    auto* const form = new QFormLayout(this);
    form->addRow(tr("&Document"), fileRow(m_document, tr("Document to sign"), documents, false));
    form->addRow(tr("Page, left, top, width"), place);
    form->addRow(tr("&Reason"), m_reason);
    form->addRow(tr("&Certificate"), fileRow(m_certificate, tr("Certificate to seal with"),
                                             tr("PKCS#12 files (*.p12 *.pfx)"), false));
    form->addRow(tr("Pass&word"), m_password);
    form->addRow(tr("S&igned document"), fileRow(m_output, tr("Signed document"), documents, true));
    form->addRow(m_result);
    form->addRow(m_sign);

    connect(m_document, &QLineEdit::textChanged, this, &DocumentDialog::refresh);
    connect(m_output, &QLineEdit::textChanged, this, &DocumentDialog::refresh);
    connect(m_sign, &QPushButton::clicked, this, &DocumentDialog::sign);
    connect(&m_program, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &DocumentDialog::finish);
    connect(&m_program, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finish(1, QProcess::CrashExit);
    });
    if (program().isEmpty())
        m_result->setText(tr("scribera-sign is not installed."));
    refresh();
}

DocumentDialog::~DocumentDialog()
{
    m_program.disconnect(this);
    if (m_program.state() != QProcess::NotRunning) {
        m_program.terminate(); // it leaves nothing behind
        m_program.waitForFinished();
    }
    if (m_secret >= 0)
        ::close(m_secret);
}

QString DocumentDialog::program()
{
    const QString name = QStringLiteral("scribera-sign");
    QString chosen = qEnvironmentVariable("SCRIBERA_SIGN");
    if (!chosen.isEmpty())
        return chosen;
    const QString own = QCoreApplication::applicationDirPath();
    const QString beside = QStandardPaths::findExecutable(name, {own, own + QStringLiteral("/../../tools")});
    return beside.isEmpty() ? QStandardPaths::findExecutable(name) : beside;
}

QWidget* DocumentDialog::fileRow(QLineEdit* path, const QString& title, const QString& filter, bool isNew)
{
    auto* const row = new QWidget;
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const browse = new QPushButton(tr("Browse…"));
    browse->setToolTip(title);
    browse->setAutoDefault(false);
    layout->addWidget(path, 1);
    layout->addWidget(browse);
    connect(browse, &QPushButton::clicked, this, [this, path, title, filter, isNew] {
        const QString chosen = isNew ? QFileDialog::getSaveFileName(this, title, path->text(), filter)
                                     : QFileDialog::getOpenFileName(this, title, path->text(), filter);
        if (chosen.isEmpty())
            return;
        path->setText(chosen);
        if (path == m_document && m_output->text().isEmpty()) {
            const QFileInfo file(chosen);
            m_output->setText(file.path() + QLatin1Char('/') + file.completeBaseName() + tr("-signed.pdf"));
        }
    });
    return row;
}

void DocumentDialog::refresh()
{
    m_sign->setEnabled(!program().isEmpty() && m_program.state() == QProcess::NotRunning &&
                       !m_document->text().isEmpty() && !m_output->text().isEmpty());
}

void DocumentDialog::sign()
{
    const auto number = [](const QDoubleSpinBox* box) { return QString::number(box->value(), 'f', 1); };
    QStringList arguments = {QStringLiteral("--output=") + m_output->text(),
                             QStringLiteral("--page=%1").arg(m_page->value()),
                             QStringLiteral("--at=%1,%2").arg(number(m_left), number(m_top)),
                             QStringLiteral("--width=") + number(m_width),
                             QStringLiteral("--ink=-"),
                             QStringLiteral("--model=") + m_model,
                             QStringLiteral("--colour=") + m_pen.color.name()};
    if (!m_reason->text().isEmpty())
        arguments += QStringLiteral("--reason=") + m_reason->text();
    if (!m_certificate->text().isEmpty()) {
        arguments += QStringLiteral("--certificate=") + m_certificate->text();
        m_secret = secretFile(m_password->text().toUtf8() + '\n');
        arguments += QStringLiteral("--password-file=/proc/%1/fd/%2").arg(getpid()).arg(m_secret);
    }
    m_result->setText(tr("Signing…"));
    m_program.start(program(), arguments + QStringList{QStringLiteral("--"), m_document->text()});
    m_program.write(m_ink);
    m_program.closeWriteChannel();
    refresh();
}

void DocumentDialog::finish(int exitCode, QProcess::ExitStatus status)
{
    if (m_secret >= 0)
        ::close(m_secret);
    m_secret = -1;
    const bool isDone = status == QProcess::NormalExit && exitCode == 0;
    const QByteArray text = isDone ? m_program.readAllStandardOutput() : m_program.readAllStandardError();
    m_result->setText(text.isEmpty() ? m_program.errorString() : QString::fromLocal8Bit(text).trimmed());
    refresh();
}
