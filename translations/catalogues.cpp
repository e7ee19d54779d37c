#include "catalogues.h"

#include "texts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QStringList>
#include <QTranslator>

#include <clocale>
#include <cstring>

#include <langinfo.h>

namespace {

struct Catalogues
{
    QTranslator texts;
    QTranslator ofQt;
    QLocale locale = QLocale::c();
};

// Written by loadCatalogues() alone, before there are threads that could read it.
Catalogues& catalogues()
{
    static Catalogues loaded;
    return loaded;
}

std::string lookUp(const char* context, const char* english)
{
    const QString text = catalogues().texts.translate(context, english);
    return text.isEmpty() ? std::string(english) : text.toStdString();
}

// As gettext chooses: the locale tells whether another language is wanted at all, LANGUAGE which ones are
// liked best.
QStringList preferredLanguages()
{
    std::setlocale(LC_CTYPE, "");
    const QString locale = QString::fromLatin1(std::setlocale(LC_MESSAGES, ""));
    // Texts without Qt are UTF-8 on their way to the terminal.
    if (locale.isEmpty() || locale == QLatin1String("C") || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        return {};
    const QString preferred = qEnvironmentVariable("LANGUAGE");
    return (preferred.isEmpty() ? locale : preferred).split(QLatin1Char(':'));
}

// The one for "de" serves "de_AT", too.
bool load(QTranslator& translator, const QString& language)
{
    const QString name = QStringLiteral("scribera_") + language;
    const QString folder = qEnvironmentVariable("SCRIBERA_TRANSLATIONS");
    return (!folder.isEmpty() && translator.load(name, folder)) ||
           translator.load(name, QStringLiteral(":/translations"));
}

QString folderOfQt()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#endif
}

} // namespace

void loadCatalogues()
{
#ifdef SCRIBERA_HAS_CATALOGUES
    Q_INIT_RESOURCE(translations);
#endif
    static const QRegularExpression form(QStringLiteral("^([a-z]{2,3})(_[A-Z]{2})?(?=[.@]|$)"));
    Catalogues& loaded = catalogues();
    for (const QString& preferred : preferredLanguages()) {
        const QRegularExpressionMatch match = form.match(preferred);
        const QString language = match.captured();
        if (match.hasMatch() && load(loaded.texts, language)) {
            loaded.locale = QLocale(language);
            setTextLookup(lookUp);
            if (QCoreApplication::instance()) {
                if (loaded.ofQt.load(QStringLiteral("qtbase_") + language, folderOfQt()))
                    QCoreApplication::installTranslator(&loaded.ofQt);
                QCoreApplication::installTranslator(&loaded.texts); // is asked first
            }
            return;
        }
        if (match.captured(1) == QLatin1String("en") || preferred == QLatin1String("C"))
            return; // which the texts are in
    }
}

const QLocale& localeOfTexts()
{
    return catalogues().locale;
}
