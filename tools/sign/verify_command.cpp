// scribera-sign verify: what the signatures of a document say, and whether that is true.
#include "document.h"
#include "output.h"
#include "output_file.h"
#include "program.h"
#include "quoted.h"
#include "sign_commands.h"
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
QString verdict(const std::vector<SignatureReport>& reports, std::size_t size)
{
    if (reports.empty())
        return QStringLiteral("it has no signature");
    for (const SignatureReport& report : reports) {
        if (!report.fault.empty())
            return QStringLiteral("signature %1 is not valid").arg(quoted(report.field));
        if (!report.distrust.empty())
            return QStringLiteral("signature %1 is not trusted").arg(quoted(report.field));
    }
    if (reports.back().isWholeFile)
        return {};
    return QStringLiteral("%1 bytes were appended after the last signature").arg(size - reports.back().end);
}

QString coverage(const std::vector<SignatureReport>& reports, const SignatureReport& report, std::size_t size)
{
    if (report.isWholeFile)
        return QStringLiteral("the whole file");
    if (report.end == 0)
        return QStringLiteral("unknown");
    return QStringLiteral("revision %1, the first %2 of %3 bytes")
        .arg(revisionOf(reports, report))
        .arg(report.end)
        .arg(size);
}

QString asText(const std::vector<SignatureReport>& reports, std::size_t size, bool isTrustAsked)
{
    QString text;
    const auto put = [&text](const char* label, const QString& value) {
        if (!value.isEmpty())
            text += QStringLiteral("  %1 %2\n").arg(QLatin1String(label), -12).arg(value);
    };
    for (const SignatureReport& report : reports) {
        text += QStringLiteral("Signature %1%2\n")
                    .arg(quoted(report.field), report.page > 0 ? QStringLiteral(", page %1").arg(report.page)
                                                               : QStringLiteral(", on no page"));
        const bool isValid = report.fault.empty();
        put("result:",
            isValid ? QStringLiteral("valid") : QStringLiteral("NOT VALID: ") + quoted(report.fault));
        put("covers:", coverage(reports, report, size));
        if (isValid && !report.isWholeFile)
            put("later:", report.limitsChanges ? QStringLiteral("what it allows to be changed")
                                               : QStringLiteral("any changes; it does not limit them"));
        put("signer:", quoted(report.signer));
        put("issuer:", quoted(report.issuer));
        put("serial:", quoted(report.serial));
        if (isTrustAsked && isValid)
            put("trust:", report.distrust.empty()
                              ? QStringLiteral("trusted")
                              : QStringLiteral("NOT TRUSTED: ") + quoted(report.distrust));
        else
            put("trust:", QStringLiteral("not checked"));
        put("time:", quoted(report.time));
        put("name:", quoted(report.name));
        put("reason:", quoted(report.reason));
        put("location:", quoted(report.location));
    }
    if (reports.empty())
        return QStringLiteral("THE DOCUMENT IS NOT SIGNED.\n");
    const QString fault = verdict(reports, size);
    return text + (fault.isEmpty()
                       ? QStringLiteral("The document is as it was signed.\n")
                       : QStringLiteral("THE DOCUMENT IS NOT AS IT WAS SIGNED: %1.\n").arg(fault));
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
    const QString fault = verdict(reports, size);
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
         QStringLiteral("Certificates in PEM to trust: a signer's must come from one of them, or be one."),
         QStringLiteral("file")},
        {QStringLiteral("json"), QStringLiteral("For programs.")},
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
    return verdict(reports, bytes.size()).isEmpty() ? Done : Failed;
}
