// scribera-sign fields: where a document wants to be signed.
#include "document.h"
#include "numbers.h"
#include "output_file.h"
#include "program.h"
#include "quoted.h"
#include "sign_commands.h"

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
        text += field.page == 0 ? "on no page"
                                : "page " + std::to_string(field.page) + " at " + number(field.place.left) +
                                      ',' + number(field.place.top) + ", " + number(field.place.width) +
                                      " by " + number(field.place.height) + " points";
        text += field.isSigned ? ", signed\n" : ", not signed\n";
    }
    return printHelp(QString::fromStdString(text));
}
