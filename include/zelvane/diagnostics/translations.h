#pragma once

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QLocale>
#include <QtCore/QString>

namespace Zelvane {

/// Makes the texts of the Diagnostics, Widgets and Quick components speak the user's
/// language: installs on the application a translator with the components' catalogue
/// zelvane_<language>.qm for the first of locale's user-interface languages that has
/// one, and returns whether it did. The default locale follows the system's language
/// (LANGUAGE, LC_ALL, LC_MESSAGES, LANG), so a host calls it once, after it created
/// its QCoreApplication and before it shows a plugin screen:
///
///     QApplication app(argc, argv);
///     Zelvane::installTranslations();
///
/// The texts are written in English: an English language ahead of every catalogue in
/// the list keeps them so. A second call replaces the translator of the first, and a
/// call that finds no catalogue removes it. The plugin screens read their texts when
/// they are built: a host that switches languages while it runs builds its plugin
/// screen again. Use it on the application's thread. False without a QCoreApplication.
///
/// The library's own texts (the refusal and failure messages of PluginController and
/// PluginsModel, in the "QObject" context) are not in this catalogue: a host that
/// wants them translated installs a catalogue of its own.
ZELVANE_DIAGNOSTICS_EXPORT bool installTranslations(const QLocale& locale = QLocale());

/// The folder that installTranslations() loads from: share/zelvane/translations/ of the
/// prefix that this library is installed in (or of the build tree it was built in).
/// Empty when the library cannot tell its own location.
ZELVANE_DIAGNOSTICS_EXPORT QString translationsDirectory();

} // namespace Zelvane
