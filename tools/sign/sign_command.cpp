// scribera-sign without a command: signs.
#include "document.h"
#include "document_signing.h"
#include "failures.h"
#include "ink_drawing.h"
#include "inkfile.h"
#include "inkpad.h"
#include "numbers.h"
#include "optionvalues.h"
#include "output_file.h"
#include "program.h"
#include "refusal.h"
#include "sealed_ink.h"
#include "sign_commands.h"
#include "signer.h"
#include "taking.h"
#include "text.h"
#include "waiting.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>

namespace {

constexpr double largestPage = 1e6; // points

double points(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && number >= 0 && number < largestPage ? number : -1;
}

QString value(const QCommandLineParser& parser, const char* option)
{
    return parser.value(QLatin1String(option));
}

bool isSet(const QCommandLineParser& parser, const char* option)
{
    return parser.isSet(QLatin1String(option));
}

sign::Spot spotOption(const QCommandLineParser& parser)
{
    sign::Spot spot;
    if (isSet(parser, "field") + isSet(parser, "at") + isSet(parser, "after") != 1)
        throw UsageError{Text::tr("one of --at, --after and --field says where the signature goes")};
    if (isSet(parser, "field")) {
        spot.field = value(parser, "field").toStdString();
        if (spot.field.empty() || isSet(parser, "page") || isSet(parser, "width"))
            throw UsageError{Text::tr("--field is a field's name, and has its own page and width")};
        return spot;
    }
    spot.corner.width = points(value(parser, "width"));
    if (spot.corner.width <= 0)
        throw UsageError{wrongValue(parser, "width", Text::tr("a width in points"))};
    spot.after = value(parser, "after").toStdString();
    if (isSet(parser, "page") || isSet(parser, "at")) {
        spot.page = positiveNumber(value(parser, "page"), 10'000'000);
        if (spot.page == 0)
            throw UsageError{wrongValue(parser, "page", Text::tr("the number of a page"))};
    }
    if (isSet(parser, "after")) {
        if (spot.after.empty())
            throw UsageError{Text::tr("--after is empty")};
        return spot;
    }
    const QStringList corner = value(parser, "at").split(QLatin1Char(','));
    spot.corner.left = corner.size() == 2 ? points(corner[0]) : -1;
    spot.corner.top = corner.size() == 2 ? points(corner[1]) : -1;
    if (spot.corner.left < 0 || spot.corner.top < 0)
        throw UsageError{
            wrongValue(parser, "at", Text::tr("X,Y in points from the page's upper left corner"))};
    return spot;
}

// What belongs to a certificate is checked before anybody signs.
struct Keys
{
    std::unique_ptr<sign::Signer> signer;
    std::string inkCertificate;
};

Keys keyOptions(const QCommandLineParser& parser)
{
    Keys keys;
    const auto naming = [](const QString& file, const auto& work) {
        try {
            return work();
        } catch (const sign::Refusal& refusal) {
            throw Failure{file + QStringLiteral(": ") + QString::fromStdString(refusal.reason)};
        }
    };
    if (isSet(parser, "certificate")) {
        const QString file = value(parser, "certificate");
        const std::string content = readDocument(file);
        const sign::Secret password = passwordOption(parser, "password-file");
        keys.signer = naming(file, [&] { return std::make_unique<sign::Signer>(content, password); });
    } else if (isSet(parser, "password-file")) {
        throw UsageError{Text::tr("--password-file is of --certificate")};
    }
    if (isSet(parser, "seal-ink")) {
        const QString file = value(parser, "seal-ink");
        keys.inkCertificate = readDocument(file);
        naming(file, [&] { return sign::sealInk("", "", keys.inkCertificate); });
    }
    return keys;
}

std::string utf8Option(const QCommandLineParser& parser, const char* option)
{
    return value(parser, option).toStdString();
}

std::vector<std::string> linesOption(const QCommandLineParser& parser, const sign::Statement& statement)
{
    std::vector<std::string> lines;
    if (!isSet(parser, "show"))
        return lines;
    for (const QString& line : value(parser, "show").split(QLatin1Char(','))) {
        if (line == QLatin1String("name"))
            lines.push_back(statement.name);
        else if (line == QLatin1String("date"))
            lines.push_back(QDateTime::fromSecsSinceEpoch(statement.time)
                                .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss t"))
                                .toStdString());
        else if (line == QLatin1String("reason"))
            lines.push_back(statement.reason);
        else
            throw UsageError{
                wrongValue(parser, "show", Text::tr("of name, date and reason, separated by commas"))};
        if (lines.back().empty())
            throw UsageError{Text::tr("--show %1 needs --%1").arg(line)};
    }
    return lines;
}

// Where the ink comes from.
struct Source
{
    InkPen pen;
    std::optional<Driver> driver; // of a pad; without one there is a file
    std::optional<int> timeout;
};

Source sourceOption(const QCommandLineParser& parser)
{
    const bool isFromPad = isSet(parser, "pad");
    if (isFromPad == isSet(parser, "ink"))
        throw UsageError{Text::tr("one of --pad and --ink says where the ink comes from")};
    for (const char* const option : {"driver", "timeout"})
        if (!isFromPad && isSet(parser, option))
            throw UsageError{Text::tr("--%1 is of --pad").arg(QLatin1String(option))};
    if (isFromPad && isSet(parser, "model"))
        throw UsageError{Text::tr("--model is of --ink; --pad names the pad itself")};
    const CPadModel* const pad = isFromPad ? padNamed(value(parser, "pad")) : &modelOption(parser);
    if (!pad)
        throw UsageError{wrongValue(parser, "pad", oneOf(padNames()))};
    Source source{{*pad, penWidthOption(parser, "pen-width"), colorOption(parser, "colour")}, {}, {}};
    if (isFromPad) {
        source.driver = driverOption(parser);
        source.timeout = secondsOption(parser, "timeout");
    }
    return source;
}

// The ink text that a pad hands over, whichever thread it comes on.
class TakenInk
{
public:
    bool take(const Session& session) noexcept
    {
        const std::lock_guard guard(m_taking);
        try {
            const int points = session.points();
            m_text = session.ink() + '\n';
            return session.points() == points;
        } catch (const std::exception&) {
            m_text.clear();
            return true;
        }
    }
    // Once the pad is closed.
    const QByteArray& text() const { return m_text; }

private:
    std::mutex m_taking; // held while something is taken, which changes what follows
    QByteArray m_text;
};

QByteArray takenInk(const Source& source)
{
    constexpr int height = 400;
    TakenInk ink;
    takeSignature(source.pen.pad, *source.driver, canvasFor(source.pen.pad, height),
                  {source.pen.width, source.pen.colour}, Deadline(source.timeout), nullptr,
                  [&ink](const Session& session) { return ink.take(session); });
    return ink.text();
}

} // namespace

void addDocumentPasswordOption(QCommandLineParser& parser)
{
    parser.addOption({QStringLiteral("document-password-file"),
                      Text::tr("File whose first line opens the document."), Text::tr("file")});
}

std::string documentPassword(const QCommandLineParser& parser)
{
    return std::string(passwordOption(parser, "document-password-file").view());
}

sign::Secret passwordOption(const QCommandLineParser& parser, const char* option)
{
    if (!isSet(parser, option))
        return {};
    const sign::Secret content = readSecret(value(parser, option));
    return sign::Secret(content.view().substr(0, content.view().find_first_of("\r\n")));
}

void addSigningOptions(QCommandLineParser& parser)
{
    const auto add = [&parser](const char* name, const QString& description, const QString& valueName,
                               const char* byDefault = "") {
        parser.addOption({QLatin1String(name), description, valueName, QLatin1String(byDefault)});
    };
    parser.addOption({{QStringLiteral("o"), QStringLiteral("output")},
                      Text::tr("The signed document."),
                      Text::tr("file")});
    add("page", Text::tr("From 1. Default 1 with --at, all with --after."), Text::tr("number"), "1");
    add("at", Text::tr("Upper left corner of the signature, in points from that of the page."),
        QStringLiteral("X,Y"));
    add("width",
        Text::tr("Room for the ink in points, default 180. What is written on all of the pad fills it."),
        Text::tr("points", "a width"), "180");
    add("after", Text::tr("Text after which the signature stands, on its line. It must be there once."),
        Text::tr("text"));
    add("field", Text::tr("Signature field that is filled."), Text::tr("name"));
    add("pad", Text::tr("Sign now, on this pad."), Text::tr("model"));
    addDriverOption(parser);
    add("timeout", Text::tr("Wait no longer than this for the signature."), Text::tr("seconds"));
    add("ink", Text::tr("Ink packet stream to draw; - is standard input."), Text::tr("file"));
    parser.addOption({QStringLiteral("model"), Text::tr("The pad that --ink is from, default K210."),
                      Text::tr("model"), QStringLiteral("K210")});
    add("pen-width", Text::tr("1 to 10, default 3; strokes follow it and the pressure."), Text::tr("width"),
        "3");
    add("colour", Text::tr("Of the ink as #rrggbb or by name, default black."), Text::tr("colour"), "black");
    add("show", Text::tr("Lines below the ink: name, date, reason, separated by commas."), Text::tr("lines"));
    add("certificate", Text::tr("PKCS#12 file whose key seals the document. Without one it is only marked."),
        Text::tr("file"));
    add("password-file", Text::tr("File whose first line opens the certificate's."), Text::tr("file"));
    add("name", Text::tr("Who signs, default what the certificate says."), Text::tr("name"));
    add("reason", Text::tr("Why."), Text::tr("text"));
    add("location", Text::tr("Where."), Text::tr("text"));
    add("seal-ink", Text::tr("Certificate in PEM whose key alone shall read the ink in the document."),
        Text::tr("file"));
    addDocumentPasswordOption(parser);
}

int signDocument(const QCommandLineParser& parser, const QString& path)
{
    const QString output = value(parser, "output");
    if (output.isEmpty())
        throw UsageError{Text::tr("--output is missing")};
    const sign::Spot spot = spotOption(parser);
    const Source source = sourceOption(parser);
    const CPadModel& pad = source.pen.pad;
    const OutputFile target(output, {path, value(parser, "ink"), value(parser, "certificate"),
                                     value(parser, "seal-ink"), value(parser, "password-file"),
                                     value(parser, "document-password-file")});
    const Keys keys = keyOptions(parser);

    sign::Statement statement{utf8Option(parser, "name"), utf8Option(parser, "reason"),
                              utf8Option(parser, "location"), std::time(nullptr)};
    if (statement.name.empty() && keys.signer)
        statement.name = keys.signer->name();
    const std::string bytes = readDocument(path);
    sign::Document document(bytes, documentPassword(parser));
    const std::vector<sign::SignatureField> fields = document.signatureFields();
    const bool isAnySigned = std::any_of(fields.begin(), fields.end(),
                                         [](const sign::SignatureField& field) { return field.isSigned; });
    const auto prepared = [&] {
        return sign::DocumentSigning(document, spot, keys.signer != nullptr,
                                     static_cast<double>(pad.m_nAreaHeight) / pad.m_nAreaWidth,
                                     linesOption(parser, statement));
    };
    auto signing = std::make_unique<sign::DocumentSigning>(prepared());

    const QString inkPath = value(parser, "ink");
    const QByteArray inkText = source.driver ? takenInk(source) : readInput(inkPath);
    if (source.driver) { // people take their time
        statement.time = std::time(nullptr);
        signing = std::make_unique<sign::DocumentSigning>(prepared());
    }
    const CInkSnapshot points = inkOf(inkText, source.driver ? value(parser, "pad") : inkPath);
    std::optional<sign::Seal> seal;
    if (keys.signer)
        seal = {keys.signer->reservedSize(),
                [&](const std::vector<std::string_view>& parts) { return keys.signer->sign(parts); }};
    sign::InkSealing sealInk;
    if (!keys.inkCertificate.empty())
        sealInk = [&](std::string_view before) {
            return sign::sealInk(inkText.toStdString(), before, keys.inkCertificate);
        };
    const std::string revision = signing->revision(drawnInk(points, source.pen), statement, seal, sealInk);
    target.write({bytes, revision}, [&](const std::string& draft) { signing->refuseUnlessIn(draft); });

    const QString page = QString::number(signing->page());
    const QString text =
        keys.signer ? Text::tr("%1: page %2, field %3, sealed by %4")
                          .arg(output, page, QString::fromStdString(signing->field()),
                               QString::fromStdString(keys.signer->name()))
        : isAnySigned
            ? Text::tr("%1: page %2, marked. This is no seal: without --certificate nothing shows later "
                       "changes. The signatures in the document do not cover it.")
                  .arg(output, page)
            : Text::tr("%1: page %2, marked. This is no seal: without --certificate nothing shows later "
                       "changes.")
                  .arg(output, page);
    print(stdout, text + QLatin1Char('\n'));
    return Done;
}
