// The catalogues of texts, and which of them is the person's.
#pragma once

#include <QLocale>

// Loads the catalogue of the language that LANGUAGE, LC_ALL, LC_MESSAGES and LANG name, and what Qt has of
// its own for it. Without one, texts stay English. Once, when the application is made; without an application
// for trText() alone.
void loadCatalogues();

// How people who read these texts write numbers. In English as a program does: no digits are grouped.
const QLocale& localeOfTexts();
