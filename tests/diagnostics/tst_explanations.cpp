// One explanation, told the same way everywhere: zelvane-inspect's report, the Widgets
// screen's details pane and the QML page tell a user the same sentences about every file
// of the same folder, including folders of metadata written for other hosts. The page
// lays out the QML singleton's explanation(), which tst_pluginspage holds it to; here the
// singleton is held to the inspector and the widget.

#include "../controller/loadingfixture.h"
#include "diagnostics/pluginexplanation_p.h"
#include "diagnostics/pluginpresentation_p.h"

#include <zelvane/diagnostics/LoadDiagnostics>
#include <zelvane/quick/QmlPlugins>
#include <zelvane/widgets/PluginsWidget>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLibraryInfo>
#include <QtCore/QProcess>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickItem>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QTreeWidget>

namespace {

const QString iid = QStringLiteral(ZELVANE_TEST_IID);

// A part's sentences as the inspector's JSON carries them, laid out as
// PluginExplanation::sentences() lays them out.
QStringList sentencesOf(const QJsonArray& parts)
{
    QStringList sentences;
    for (const QJsonValue& value : parts) {
        const QJsonObject part = value.toObject();
        QStringList line { part.value(QLatin1String("label")).toString(),
                           part.value(QLatin1String("text")).toString() };
        line.removeAll(QString());
        if (!line.isEmpty())
            sentences.append(line.join(QLatin1Char(' ')));
        const QJsonArray items = part.value(QLatin1String("items")).toArray();
        for (const QJsonValue& itemValue : items) {
            const QJsonObject item = itemValue.toObject();
            QStringList pieces { item.value(QLatin1String("code")).toString(),
                                 item.value(QLatin1String("text")).toString() };
            pieces.removeAll(QString());
            const QString note = item.value(QLatin1String("note")).toString();
            if (!note.isEmpty())
                pieces.append(pieces.isEmpty() ? note : QStringLiteral("— ") + note);
            sentences.append(pieces.join(QLatin1Char(' ')));
        }
    }
    return sentences;
}

// The same from the QML singleton's explanation().
QStringList sentencesOf(const QVariantList& parts)
{
    return sentencesOf(QJsonArray::fromVariantList(parts));
}

struct Inspected
{
    QMap<QString, QStringList> sentences; // by file path
    QString text; // the text report
};

Inspected inspect(const QString& dir, const QString& settingsFile, const QString& pluginIid)
{
    Inspected result;
    const QStringList arguments { dir, QStringLiteral("--iid"), pluginIid,
                                  QStringLiteral("--settings"), settingsFile };
    QProcess json;
    json.start(QStringLiteral(ZELVANE_INSPECT_EXECUTABLE),
               arguments + QStringList { QStringLiteral("--json") });
    json.waitForFinished(60000);
    const QJsonArray files = QJsonDocument::fromJson(json.readAllStandardOutput())
                                 .object()
                                 .value(QLatin1String("files"))
                                 .toArray();
    for (const QJsonValue& value : files) {
        const QJsonObject file = value.toObject();
        result.sentences.insert(file.value(QLatin1String("path")).toString(),
                                sentencesOf(file.value(QLatin1String("explanation")).toArray()));
    }
    QProcess text;
    text.start(QStringLiteral(ZELVANE_INSPECT_EXECUTABLE), arguments);
    text.waitForFinished(60000);
    result.text = QString::fromUtf8(text.readAllStandardOutput());
    return result;
}

} // namespace

class tst_Explanations : public QObject
{
    Q_OBJECT

private slots:
    void sameSentences_data();
    void sameSentences();
    void qtsOwnPlugins_data();
    void qtsOwnPlugins();

private:
    void compareAll(const LoadingTest::Scenario& scenario, const QString& pluginIid, bool load);
};

void tst_Explanations::sameSentences_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QByteArray>("settings");

    QTest::newRow("accepted, refused and other files")
        << QStringList { "zt_core",         "zt_inspect_altcore", "zt_viewer",
                         "zt_storage",      "zt_notaplugin",      "zt_inspect_badarguments",
                         "zt_inspect_tool", "zt_inspect_stranger" }
        << QByteArray();
    QTest::newRow("a switched-off dependency")
        << QStringList { "zt_core", "zt_viewer", "zt_storage" }
        << QByteArray("[plugin]\nStorage=false\n");
    QTest::newRow("a dependency cycle")
        << QStringList { "zt_core", "zt_inspect_ping", "zt_inspect_pong", "zt_inspect_selfish" }
        << QByteArray();
    QTest::newRow("metadata written for another host") << QStringList { "zt_core",
                                                                        "zt_foreign_objects",
                                                                        "zt_foreign_single",
                                                                        "zt_foreign_chatty",
                                                                        "zt_foreign_nameless",
                                                                        "zt_foreign_novel",
                                                                        "zt_foreign_theme01",
                                                                        "zt_foreign_tool02" }
                                                       << QByteArray("[plugin]\nNovel=true\n");
}

void tst_Explanations::sameSentences()
{
    QFETCH(QStringList, plugins);
    QFETCH(QByteArray, settings);

    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(plugins, settings));
    scenario.configureController();
    compareAll(scenario, iid, true);
}

// Folders that nobody here wrote: Qt's own plugins, whose metadata has none of the keys
// this library reads, once under their own interface and once under another.
void tst_Explanations::qtsOwnPlugins_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("pluginIid");

    QTest::newRow("image formats, their interface")
        << "imageformats"
        << "org.qt-project.Qt.QImageIOHandlerFactoryInterface";
    QTest::newRow("platforms, another interface") << "platforms" << iid;
}

void tst_Explanations::qtsOwnPlugins()
{
    QFETCH(QString, folder);
    QFETCH(QString, pluginIid);

    const QDir qtFolder(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QLatin1Char('/') + folder);
    const QStringList files = qtFolder.entryList({ QStringLiteral("*.so") }, QDir::Files);
    if (files.isEmpty())
        QSKIP(qPrintable(QStringLiteral("no Qt plugins in %1").arg(qtFolder.path())));
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core" }));
    for (const QString& file : files)
        QVERIFY(QFile::copy(qtFolder.filePath(file), QDir(scenario.pluginDir()).filePath(file)));
    scenario.configureController();
    Zelvane::PluginController::instance()->setPluginIID(pluginIid);
    // Not loaded: no file of these folders is a plugin of this library.
    compareAll(scenario, pluginIid, false);
}

void tst_Explanations::compareAll(const LoadingTest::Scenario& scenario, const QString& pluginIid,
                                  bool load)
{
    const QString dir = QDir(scenario.pluginDir()).absolutePath();
    const int count = QDir(dir).entryList(QDir::Files).size();

    // The inspector runs no plugin, so it tells what the folder says before a start; the
    // screens, in the host, after it. Both from the one source of the sentences.
    const Zelvane::LoadDiagnostics beforeStart(QDir(dir), scenario.settings());
    const Inspected inspected = inspect(dir, scenario.settingsFile(), pluginIid);
    const QList<Zelvane::PluginDiagnostic> unloaded = beforeStart.plugins();
    QCOMPARE(unloaded.size(), count);
    for (const Zelvane::PluginDiagnostic& file : unloaded)
        QCOMPARE(inspected.sentences.value(file.filePath()),
                 Zelvane::PluginExplanation(file, beforeStart).sentences());

    if (load)
        Zelvane::PluginController::instance()->loadPlugins(QDir(dir));
    const Zelvane::LoadDiagnostics folder(QDir(dir), scenario.settings());
    const QList<Zelvane::PluginDiagnostic> files = folder.plugins();

    Zelvane::PluginsWidget widget;
    widget.setPluginDirectory(QDir(dir));
    const QTextBrowser* pane = widget.findChild<QTextBrowser*>(QStringLiteral("details"));
    QVERIFY(pane);
    QTreeWidget* otherFiles = widget.findChild<QTreeWidget*>(QStringLiteral("otherFiles"));
    QVERIFY(otherFiles);

    Zelvane::QmlPlugins singleton;
    singleton.setPluginDirectory(dir);

    // A reread shares the first reading's discovery, and what it keeps of each file's
    // metadata: it explains every file in the same words.
    const Zelvane::LoadDiagnostics again = folder.reread(scenario.settings());
    const QList<Zelvane::PluginDiagnostic> filesAgain = again.plugins();
    QCOMPARE(filesAgain.size(), files.size());

    for (qsizetype index = 0; index < files.size(); ++index) {
        const Zelvane::PluginDiagnostic& file = files.at(index);
        const Zelvane::PluginExplanation explanation(file, folder);
        const QStringList expected = explanation.sentences();
        QVERIFY2(!expected.isEmpty(), qPrintable(file.fileName()));
        QCOMPARE(Zelvane::PluginExplanation(filesAgain.at(index), again).sentences(), expected);
        QCOMPARE(Zelvane::PluginExplanation(file, folder).sentences(), expected);

        QCOMPARE(sentencesOf(singleton.explanation(file.filePath())), expected);

        if (Zelvane::PluginPresentation::isOtherFile(file)) {
            const QList<QTreeWidgetItem*> found
                = otherFiles->findItems(explanation.title(), Qt::MatchExactly | Qt::MatchRecursive);
            QCOMPARE(found.size(), 1);
            otherFiles->setCurrentItem(found.constFirst());
        } else {
            widget.setCurrentPlugin(file.name());
            QCOMPARE(widget.currentPlugin(), file.name());
        }
        QCOMPARE(pane->toPlainText().split(QLatin1Char('\n')),
                 QStringList { explanation.title() } + expected);

        // Nothing anyone can act on: an option that does not exist, a blank dependency.
        for (const QString& sentence : expected) {
            QVERIFY2(!sentence.contains(QLatin1String("---")), qPrintable(sentence));
            QVERIFY2(!sentence.contains(QLatin1String("Needs ,")), qPrintable(sentence));
        }
    }
    // The inspector's own lines: never a dependency list of blanks, never "(none)" for
    // a plugin that has entries.
    const QStringList lines = inspected.text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        QVERIFY2(!line.contains(QLatin1String("---")), qPrintable(line));
        QVERIFY2(!line.contains(QLatin1String(", ,")), qPrintable(line));
        QVERIFY2(!line.endsWith(QLatin1String("Dependencies: ")), qPrintable(line));
    }
    Zelvane::PluginController::instance()->shutdown();
}

QTEST_MAIN(tst_Explanations)

#include "tst_explanations.moc"
