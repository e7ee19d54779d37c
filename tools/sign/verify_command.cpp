// scribera-sign verify: what the signatures of a document say, and whether that is true.
#include "document.h"
#include "output.h"
#include "output_file.h"
#include "program.h"
#include "quoted.h"
#include "sign_commands.h"
#include "text.h"
#include "verifier.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

using sign::SignatureReport;

// What was signed, counted from 1: several signatures may be of the same revision.
int revisionOf(const std::vector<SignatureReport>& reports, const SignatureReport& report)
{
    int revision = 0;
    std::size_t end = 0;
    for (const SignatureReport& other : reports)
        if (other.end > end && other.end <= report.end) {
            end = other.end;
            ++revision;
        }
    return revision;
}

// Why the document as it stands is not what was signed; empty when it is.
QString faultOf(const std::vector<SignatureReport>& reports, std::size_t size)
{
    const sign::Verdict verdict = sign::verdictOn(reports);
    switch (verdict.kind) {
    case sign::Verdict::Kind::AsSigned:
        break;
    case sign::Verdict::Kind::NotSigned:
        return Text::tr("it has no signature");
    case sign::Verdict::Kind::NotValid:
        return Text::tr("signature %1 is not valid").arg(quoted(verdict.field));
    case sign::Verdict::Kind::NotTrusted:
        return Text::tr("signature %1 is not trusted").arg(quoted(verdict.field));
    case sign::Verdict::Kind::Continued:
        return Text::tr("%n bytes were appended after the last signature", nullptr,
                        static_cast<int>(size - reports.back().end));
    }
    return {};
}

QString coverage(const std::vector<SignatureReport>& reports, const SignatureReport& report, std::size_t size)
{
    if (report.isWholeFile)
        return Text::tr("the whole file");
    if (report.end == 0)
        return Text::tr("unknown");
    return Text::tr("revision %1, the first %2 of %3 bytes")
        .arg(QString::number(revisionOf(reports, report)), numberText(report.end), numberText(size));
}

QString asText(const std::vector<SignatureReport>& reports, std::size_t size, bool isTrustAsked)
{
    QString text;
    for (const SignatureReport& report : reports) {
        NamedLines lines(13);
        const auto put = [&lines](const QString& label, const QString& value) {
            if (!value.isEmpty())
                lines.add(label, value);
        };
        text +=
            (report.page > 0
                 ? Text::tr("Signature %1, page %2").arg(quoted(report.field), QString::number(report.page))
                 : Text::tr("Signature %1, on no page").arg(quoted(report.field))) +
            QLatin1Char('\n');
        const bool isValid = report.fault.empty();
        put(Text::tr("result:"),
            isValid ? Text::tr("valid") : Text::tr("NOT VALID: %1").arg(quoted(report.fault)));
        put(Text::tr("covers:"), coverage(reports, report, size));
        if (isValid && !report.isWholeFile)
            put(Text::tr("later:"), report.limitsChanges ? Text::tr("what it allows to be changed")
                                                         : Text::tr("any changes; it does not limit them"));
        put(Text::tr("signer:"), quoted(report.signer));
        put(Text::tr("issuer:"), quoted(report.issuer));
        put(Text::tr("serial:"), quoted(report.serial));
        if (isTrustAsked && isValid)
            put(Text::tr("trust:"), report.distrust.empty()
                                        ? Text::tr("trusted")
                                        : Text::tr("NOT TRUSTED: %1").arg(quoted(report.distrust)));
        else
            put(Text::tr("trust:"), Text::tr("not checked"));
        put(Text::tr("time:"), quoted(report.time));
        put(Text::tr("name:"), quoted(report.name));
        put(Text::tr("reason:"), quoted(report.reason));
        put(Text::tr("location:"), quoted(report.location));
        for (const QString& line : lines.text().split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            text += QStringLiteral("  ") + line + QLatin1Char('\n');
    }
    if (reports.empty())
        return Text::tr("THE DOCUMENT IS NOT SIGNED.") + QLatin1Char('\n');
    const QString fault = faultOf(reports, size);
    return text +
           (fault.isEmpty() ? Text::tr("The document is as it was signed.")
                            : Text::tr("THE DOCUMENT IS NOT AS IT WAS SIGNED: %1.").arg(fault)) +
           QLatin1Char('\n');
}

QJsonObject asJson(const std::vector<SignatureReport>& reports, const SignatureReport& report,
                   bool isTrustAsked)
{
    const auto text = [](const std::string& value) {
        return value.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(value));
    };
    const bool isValid = report.fault.empty();
    return {
        {QStringLiteral("field"), QString::fromStdString(report.field)},
        {QStringLiteral("page"), report.page > 0 ? QJsonValue(report.page) : QJsonValue()},
        {QStringLiteral("valid"), isValid},
        {QStringLiteral("fault"), text(report.fault)},
        {QStringLiteral("wholeFile"), report.isWholeFile},
        {QStringLiteral("revision"), report.end > 0 ? QJsonValue(revisionOf(reports, report)) : QJsonValue()},
        {QStringLiteral("limitsChanges"),
         isValid && !report.isWholeFile ? QJsonValue(report.limitsChanges) : QJsonValue()},
        {QStringLiteral("end"), static_cast<qint64>(report.end)},
        {QStringLiteral("signer"), text(report.signer)},
        {QStringLiteral("issuer"), text(report.issuer)},
        {QStringLiteral("serial"), text(report.serial)},
        {QStringLiteral("trusted"),
         isTrustAsked && isValid ? QJsonValue(report.distrust.empty()) : QJsonValue()},
        {QStringLiteral("distrust"), text(report.distrust)},
        {QStringLiteral("time"), text(report.time)},
        {QStringLiteral("name"), text(report.name)},
        {QStringLiteral("reason"), text(report.reason)},
        {QStringLiteral("location"), text(report.location)},
    };
}

QByteArray asJson(const std::vector<SignatureReport>& reports, std::size_t size, bool isTrustAsked)
{
    QJsonArray signatures;
    for (const SignatureReport& report : reports)
        signatures.append(asJson(reports, report, isTrustAsked));
    const QString fault = faultOf(reports, size);
    return QJsonDocument(QJsonObject{
                             {QStringLiteral("valid"), fault.isEmpty()},
                             {QStringLiteral("fault"), fault.isEmpty() ? QJsonValue() : QJsonValue(fault)},
                             {QStringLiteral("size"), static_cast<qint64>(size)},
                             {QStringLiteral("signatures"), signatures},
                         })
        .toJson();
}

} // namespace

void addVerifyOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {QStringLiteral("trust"),
         Text::tr("Certificates in PEM to trust: a signer's must come from one of them, or be one."),
         Text::tr("file")},
        {QStringLiteral("json"), Text::tr("For programs.")},
    });
    addDocumentPasswordOption(parser);
}

int verifyDocument(const QCommandLineParser& parser, const QString& file)
{
    const std::string bytes = readDocument(file);
    const bool isTrustAsked = parser.isSet(QStringLiteral("trust"));
    const std::string trusted =
        isTrustAsked ? readDocument(parser.value(QStringLiteral("trust"))) : std::string();
    sign::Document document(bytes, documentPassword(parser));
    const std::vector<SignatureReport> reports = sign::verifySignatures(document, trusted);
    writeOutput(parser.isSet(QStringLiteral("json")) ? asJson(reports, bytes.size(), isTrustAsked)
                                                     : asText(reports, bytes.size(), isTrustAsked).toUtf8(),
                QStringLiteral("-"));
    return sign::verdictOn(reports).kind == sign::Verdict::Kind::AsSigned ? Done : Failed;
}
