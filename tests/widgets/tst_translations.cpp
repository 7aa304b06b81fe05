// The components' German catalogue: complete, with the placeholders of each text, and
// loaded by installTranslations() from the build tree's share/zelvane/translations/, so
// that the plugins screen speaks German under a German locale and English again after.

#include "../controller/loadingfixture.h"

#include <zelvane/diagnostics/Translations>
#include <zelvane/widgets/PluginsWidget>

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QXmlStreamReader>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QTreeWidget>

namespace {

struct Message
{
    QString context;
    QString source;
    QString translation;
    QString type;
};

// Every message of a .ts file, with its translation's type attribute ("unfinished",
// "vanished", "obsolete" or empty for a finished one).
QList<Message> messagesOf(const QString& fileName, QString* error)
{
    QList<Message> messages;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return messages;
    }
    QXmlStreamReader xml(&file);
    QString context;
    Message message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        const auto name = xml.name();
        if (name == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (name == QLatin1String("message")) {
            message = Message { context, QString(), QString(), QString() };
        } else if (name == QLatin1String("source")) {
            message.source = xml.readElementText();
        } else if (name == QLatin1String("translation")) {
            message.type = xml.attributes().value(QLatin1String("type")).toString();
            message.translation = xml.readElementText();
            messages.append(message);
        }
    }
    if (xml.hasError())
        *error = xml.errorString();
    return messages;
}

QStringList placeholdersOf(const QString& text)
{
    // %L1 is %1 written in the user's locale: the same argument.
    static const QRegularExpression placeholder(QStringLiteral("%L?\\d+"));
    QStringList found;
    for (const QRegularExpressionMatch& match : placeholder.globalMatch(text))
        found.append(match.captured());
    found.sort();
    found.removeDuplicates();
    return found;
}

} // namespace

class tst_Translations : public QObject
{
    Q_OBJECT

private slots:
    void germanCatalogueIsComplete();
    void templateHasTheSameTexts();
    void libraryContextIsLeftToHosts();
    void germanLocaleLoadsTheCatalogue();
    void pluginsWidgetSpeaksGerman();
    void englishLocaleRemovesTheCatalogue();
};

void tst_Translations::germanCatalogueIsComplete()
{
    QString error;
    const QList<Message> messages
        = messagesOf(QStringLiteral(ZELVANE_TRANSLATIONS_SOURCE_DIR "/zelvane_de.ts"), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QVERIFY(messages.size() > 100);
    for (const Message& message : messages) {
        const QByteArray where = (message.context + QStringLiteral(": ") + message.source).toUtf8();
        QVERIFY2(message.type.isEmpty(), where + " is " + message.type.toUtf8());
        QVERIFY2(!message.translation.isEmpty(), where + " has no translation");
        QVERIFY2(placeholdersOf(message.translation) == placeholdersOf(message.source),
                 where + " has other placeholders in German: " + message.translation.toUtf8());
    }
}

void tst_Translations::templateHasTheSameTexts()
{
    QString error;
    const QList<Message> german
        = messagesOf(QStringLiteral(ZELVANE_TRANSLATIONS_SOURCE_DIR "/zelvane_de.ts"), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    const QList<Message> empty = messagesOf(
        QStringLiteral(ZELVANE_TRANSLATIONS_SOURCE_DIR "/zelvane_untranslated.ts"), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QStringList germanTexts;
    for (const Message& message : german)
        germanTexts.append(message.context + QLatin1Char('\n') + message.source);
    QStringList templateTexts;
    for (const Message& message : empty) {
        templateTexts.append(message.context + QLatin1Char('\n') + message.source);
        QVERIFY2(message.translation.isEmpty() && message.type == QStringLiteral("unfinished"),
                 qPrintable(message.source));
    }
    QCOMPARE(templateTexts, germanTexts);
}

// The library's own texts are in the "QObject" context and a host translates them
// itself: a text of the components there would be a second translation of that context,
// which the host's own catalogue might contradict.
void tst_Translations::libraryContextIsLeftToHosts()
{
    QString error;
    const QList<Message> messages
        = messagesOf(QStringLiteral(ZELVANE_TRANSLATIONS_SOURCE_DIR "/zelvane_de.ts"), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QStringList contexts;
    for (const Message& message : messages) {
        QVERIFY2(message.context != QStringLiteral("QObject"), qPrintable(message.source));
        contexts.append(message.context);
    }
    QVERIFY(contexts.contains(QStringLiteral("Zelvane::TrialWatch")));
    QVERIFY(contexts.contains(QStringLiteral("Zelvane::SafeStart")));
}

void tst_Translations::germanLocaleLoadsTheCatalogue()
{
    QCOMPARE(QDir(Zelvane::translationsDirectory()).canonicalPath(),
             QDir(QStringLiteral(ZELVANE_TRANSLATIONS_BUILD_DIR)).canonicalPath());
    QVERIFY(QFile::exists(Zelvane::translationsDirectory() + QStringLiteral("/zelvane_de.qm")));
    QVERIFY(Zelvane::installTranslations(QLocale(QLocale::German, QLocale::Austria)));
    QCOMPARE(QCoreApplication::translate("Zelvane::PluginDiagnostic", "Loaded now."),
             QStringLiteral("Jetzt geladen."));
    // A second call replaces the first translator rather than adding one.
    QVERIFY(Zelvane::installTranslations(QLocale(QLocale::German)));
    QCOMPARE(QCoreApplication::translate("Zelvane::PluginsWidget", "Filter plugins"),
             QStringLiteral("Plugins filtern"));
}

void tst_Translations::pluginsWidgetSpeaksGerman()
{
    QVERIFY(Zelvane::installTranslations(QLocale(QLocale::German)));
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_viewer", "zt_storage", "zt_notaplugin" },
                            QByteArray("[plugin]\nStorage=false\n")));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    {
        Zelvane::PluginsWidget widget;
        widget.setPluginDirectory(QDir(scenario.pluginDir()));
        widget.resize(720, 480);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));

        QStringList labels;
        for (const QLabel* label : widget.findChildren<QLabel*>())
            labels.append(label->text());
        QVERIFY2(labels.contains(QStringLiteral("&Core")), qPrintable(labels.join(u'|')));
        QVERIFY2(labels.contains(QStringLiteral("&Erweiterungen")), qPrintable(labels.join(u'|')));
        QVERIFY2(labels.contains(QStringLiteral("Andere &Dateien")), qPrintable(labels.join(u'|')));
        const auto* filter = widget.findChild<QLineEdit*>(QStringLiteral("filter"));
        QVERIFY(filter);
        QCOMPARE(filter->placeholderText(), QStringLiteral("Plugins filtern"));
        const auto* restart = widget.findChild<QPushButton*>(QStringLiteral("restart"));
        QVERIFY(restart);
        QCOMPARE(restart->text(), QStringLiteral("&Jetzt neu starten"));

        const auto* details = widget.findChild<QTextBrowser*>(QStringLiteral("details"));
        QVERIFY(details);
        widget.setCurrentPlugin(QStringLiteral("Viewer"));
        const QString path = QDir(scenario.pluginDir()).absoluteFilePath("libzt_viewer.so");
        QCOMPARE(details->toPlainText(),
                 QStringLiteral("Viewer\n"
                                "Shows documents\n"
                                "Zustand: Wird nicht geladen: seine Abhängigkeiten lassen sich "
                                "nicht erfüllen.\n"
                                "Benötigt Storage, das ausgeschaltet ist.\n"
                                "Benötigt:\n"
                                "Storage\n"
                                "Benötigt von: nichts\n"
                                "Kommandozeilenoptionen:\n"
                                "--viewer-theme <theme> Colour theme\n"
                                "--viewer-readonly Opens documents read-only\n"
                                "Datei: %1")
                     .arg(path));

        widget.setCurrentPlugin(QStringLiteral("Core"));
        QVERIFY2(details->toPlainText().contains(QStringLiteral("Zustand: Jetzt geladen.")),
                 qPrintable(details->toPlainText()));

        // The library's own refusal stays English inside the German sentence: its texts
        // are not in the components' catalogue.
        auto* otherFiles = widget.findChild<QTreeWidget*>(QStringLiteral("otherFiles"));
        QVERIFY(otherFiles);
        const QList<QTreeWidgetItem*> refused = otherFiles->findItems(
            QStringLiteral("libzt_notaplugin.so"), Qt::MatchExactly | Qt::MatchRecursive);
        QCOMPARE(refused.size(), 1);
        otherFiles->setCurrentItem(refused.first());
        QCOMPARE(details->toPlainText(),
                 QStringLiteral("libzt_notaplugin.so\n"
                                "Zustand: Wird nicht geladen: die Bibliothek weist die Datei "
                                "zurück: %1 is not a plugin (no string IID found).\n"
                                "Datei: %1")
                     .arg(QDir(scenario.pluginDir()).absoluteFilePath("libzt_notaplugin.so")));
    }
    Zelvane::PluginController::instance()->shutdown();
}

void tst_Translations::englishLocaleRemovesTheCatalogue()
{
    QVERIFY(Zelvane::installTranslations(QLocale(QLocale::German)));
    QCOMPARE(QCoreApplication::translate("Zelvane::PluginDiagnostic", "Loaded now."),
             QStringLiteral("Jetzt geladen."));
    // The texts are written in English: no catalogue, and the German one is gone.
    QVERIFY(!Zelvane::installTranslations(QLocale(QLocale::English, QLocale::UnitedKingdom)));
    QCOMPARE(QCoreApplication::translate("Zelvane::PluginDiagnostic", "Loaded now."),
             QStringLiteral("Loaded now."));
    // A language without a catalogue leaves the texts English too.
    QVERIFY(Zelvane::installTranslations(QLocale(QLocale::German)));
    QVERIFY(!Zelvane::installTranslations(QLocale(QLocale::Japanese)));
    QCOMPARE(QCoreApplication::translate("Zelvane::PluginsWidget", "Filter plugins"),
             QStringLiteral("Filter plugins"));
}

QTEST_MAIN(tst_Translations)

#include "tst_translations.moc"
