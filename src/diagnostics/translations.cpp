#include <zelvane/diagnostics/translations.h>

#include "diagnostics/trialwatch_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QTranslator>

#include <memory>

namespace Zelvane {

namespace {

// The translator that installTranslations() installed, so that a later call replaces it
// rather than stacking a second language under the first. It belongs to the
// application, which deletes it on the way out.
QPointer<QTranslator>& installedTranslator()
{
    static QPointer<QTranslator> translator;
    return translator;
}

// "de-DE" gives zelvane_de_DE.qm, then zelvane_de.qm: a regional catalogue first, the
// language's own after it.
QString catalogueFor(const QString& folder, const QString& uiLanguage)
{
    QStringList parts = uiLanguage.split(QLatin1Char('-'), Qt::SkipEmptyParts);
    while (!parts.isEmpty()) {
        const QString path = folder + QStringLiteral("/zelvane_") + parts.join(QLatin1Char('_'))
            + QStringLiteral(".qm");
        if (QFileInfo(path).isFile())
            return path;
        parts.removeLast();
    }
    return QString();
}

} // namespace

QString translationsDirectory()
{
    // From this library's folder by the path from the installed library folder to the
    // installed translations; the build tree has the same layout, and no path of the
    // build machine is written into the library.
    const QString folder = folderOfCode(reinterpret_cast<const void*>(&translationsDirectory));
    if (folder.isEmpty())
        return QString();
    return QDir::cleanPath(folder + QLatin1Char('/')
                           + QStringLiteral(ZELVANE_TRANSLATIONS_FROM_LIBRARY));
}

bool installTranslations(const QLocale& locale)
{
    QCoreApplication* application = QCoreApplication::instance();
    if (!application)
        return false;

    QString catalogue;
    const QString folder = translationsDirectory();
    if (!folder.isEmpty()) {
        for (const QString& uiLanguage : locale.uiLanguages()) {
            // The texts are written in English: a user who prefers English to the
            // languages after it gets them as they are.
            if (QLocale(uiLanguage).language() == QLocale::English)
                break;
            catalogue = catalogueFor(folder, uiLanguage);
            if (!catalogue.isEmpty())
                break;
        }
    }

    QPointer<QTranslator>& installed = installedTranslator();
    std::unique_ptr<QTranslator> translator;
    if (!catalogue.isEmpty()) {
        translator = std::make_unique<QTranslator>();
        if (!translator->load(catalogue))
            translator.reset();
    }
    if (installed) {
        QCoreApplication::removeTranslator(installed);
        delete installed.data();
    }
    if (!translator)
        return false;
    translator->setParent(application);
    installed = translator.get();
    QCoreApplication::installTranslator(translator.release());
    return true;
}

} // namespace Zelvane
