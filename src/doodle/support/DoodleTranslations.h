#pragma once

#include <doodle/DoodleExport.h>

#include <QLocale>
#include <QString>

// The library's own translations, compiled into its resources as
// ":/io.doodle.board/translations/doodle_<language>.qm". The library installs
// none by itself: a host that shows the board in another language than
// English installs the one for its locale (and Qt's own "qtbase" translation,
// as for any Qt application), for example
//
//     DoodleTranslations::install(QLocale());
class DOODLE_EXPORT DoodleTranslations
{
public:
    // The resource folder that holds the .qm files, for a host that loads
    // them with its own QTranslator.
    static QString directory();
    // Loads the library's translation for `locale` (the first of its UI
    // languages that has one) and installs it on the application, replacing
    // one installed before. False, with nothing installed, when the library
    // has no translation for the locale (English needs none).
    static bool install(const QLocale &locale = QLocale());
    // Takes back what install() put in.
    static void remove();
};
