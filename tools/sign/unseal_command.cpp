// scribera-sign unseal: the ink that only the holder of a key can read.
#include "document.h"
#include "failures.h"
#include "output_file.h"
#include "program.h"
#include "quoted.h"
#include "sealed_ink.h"
#include "sign_commands.h"
#include "text.h"
#include "verifier.h"

#include <optional>
#include <string_view>

namespace {

QString originOf(const std::optional<sign::SignatureReport>& signature)
{
    if (!signature)
        return Text::tr("the ink of a mark. Nobody signed it: anybody may have put it there");
    return (signature->isWholeFile
                ? Text::tr("the ink of the field %1, signed by %2; the signature is valid")
                : Text::tr(
                      "the ink of the field %1, signed by %2; the signature is valid, and the document was "
                      "changed afterwards"))
        .arg(quoted(signature->field), quoted(signature->signer));
}

} // namespace

void addUnsealOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {QStringLiteral("key"),
         Text::tr("Private key in PEM, of the certificate that the ink was sealed for."), Text::tr("file")},
        {QStringLiteral("password-file"), Text::tr("File whose first line is the password of the key."),
         Text::tr("file")},
        {{QStringLiteral("o"), QStringLiteral("output")}, Text::tr("File for the ink."), Text::tr("file")},
        {QStringLiteral("field"), Text::tr("Of several signatures with sealed ink, the one of this field."),
         Text::tr("name")},
    });
    addDocumentPasswordOption(parser);
}

int unsealInkOf(const QCommandLineParser& parser, const QString& file)
{
    for (const char* option : {"key", "output"})
        if (!parser.isSet(QLatin1String(option)))
            throw UsageError{Text::tr("--%1 is missing").arg(QLatin1String(option))};
    const auto value = [&parser](const char* option) { return parser.value(QLatin1String(option)); };
    const OutputFile target(value("output"),
                            {file, value("key"), value("password-file"), value("document-password-file")},
                            OutputFile::Readers::Owner);
    const std::string bytes = readDocument(file);
    const sign::Secret key = readSecret(value("key"));
    sign::Document document(bytes, documentPassword(parser));
    const sign::SealedInk sealed = sign::sealedInkOf(document, value("field").toStdString());
    const std::string ink = sign::unsealInk(sealed.bytes, std::string_view(bytes).substr(0, sealed.offset),
                                            key.view(), passwordOption(parser, "password-file"));
    target.write({ink}, [](const std::string&) {});
    print(stdout, value("output") + QStringLiteral(": ") + originOf(sealed.signature) + QLatin1Char('\n'));
    return Done;
}
