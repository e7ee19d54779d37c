// What a window shows to a person, and what of it they would miss.
#pragma once

#include <QStringList>
#include <QWidget>

// In the language of the tests: English, German or the pseudo one.
bool isPseudo();

// Everything that is wrong with the texts of a window, which is shown for that: words that no catalogue had,
// texts that are elided, cut off or beyond the window, keys of two things at once. Tool tips and menus count.
QStringList faultsOf(QWidget& window);
