// scribera-sign fields: where a document wants to be signed.
#include "document.h"
#include "numbers.h"
#include "output_file.h"
#include "program.h"
#include "quoted.h"
#include "sign_commands.h"
#include "texts.h"

void addFieldOptions(QCommandLineParser& parser)
{
    addDocumentPasswordOption(parser);
}

int listFields(const QCommandLineParser& parser, const QString& path)
{
    const std::string bytes = readDocument(path);
    sign::Document document(bytes, documentPassword(parser));
    std::string text;
    for (const sign::SignatureField& field : document.signatureFields()) {
        const auto number = [](double value) { return sign::decimal(value, 1); };
        text += quoted(field.name).toStdString() + ": ";
        const std::string place =
            field.page == 0
                ? trText("Sign", "on no page")
                : filled(trText("Sign", "page %1 at %2,%3, %4 by %5 points"),
                         {std::to_string(field.page), number(field.place.left), number(field.place.top),
                          number(field.place.width), number(field.place.height)});
        text += filled(field.isSigned ? trText("Sign", "%1, signed") : trText("Sign", "%1, not signed"),
                       {place}) +
                '\n';
    }
    return printHelp(QString::fromStdString(text));
}
