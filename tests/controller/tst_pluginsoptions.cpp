// PluginController::pluginsOptions(): the command-line options that the plugins of a
// folder declare, for the host's QCommandLineParser.
//
// Asking for options loads nothing and changes nothing, so the rows of one function
// may share a process; the functions still run one per process (see loading.cmake),
// because the last one loads plugins.

#include "controller/loadplan_p.h"
#include "loadingfixture.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QCommandLineParser>
#include <QtCore/QFile>
#include <QtCore/QRandomGenerator>
#include <QtTest/QTest>

using namespace LoadingTest;
using Zelvane::PluginController;

namespace {

// One option as "<names> <valueName> description [defaults]".
QString describe(const QCommandLineOption& option)
{
    return QStringLiteral("%1 <%2> %3 [%4]")
        .arg(option.names().join(QLatin1Char('|')), option.valueName(), option.description(),
             option.defaultValues().join(QLatin1Char('|')));
}

QStringList describe(const QList<QCommandLineOption>& options)
{
    QStringList result;
    for (const QCommandLineOption& option : options)
        result.append(describe(option));
    return result;
}

// What each test plugin declares in its metadata, in declaration order.
QStringList declaredBy(const QString& plugin)
{
    static const QMap<QString, QStringList> declared {
        { QStringLiteral("Editor"),
          { QStringLiteral("editor-theme <theme> Colour theme []"),
            QStringLiteral("safe-mode <> Starts without extensions []") } },
        { QStringLiteral("Spelling"),
          { QStringLiteral("Language <code> Dictionary language []"),
            QStringLiteral("spell-ignore-case <> Ignores letter case []") } },
        { QStringLiteral("Export"),
          { QStringLiteral("export-format <format> Output format []"),
            QStringLiteral("safe-mode <> Exports without filters []") } },
        { QStringLiteral("Twice"),
          { QStringLiteral("verbose <> More output []"),
            QStringLiteral("verbose <level> Output level []") } },
        { QStringLiteral("Sidebar"),
          { QStringLiteral("sidebar-width <pixels> Width of the sidebar []") } },
    };
    return declared.value(plugin);
}

// The options expected from a folder: categories in ascending order of their keys,
// the plugins of one category in discovery order, each plugin's arguments in
// declaration order.
QStringList expectedOptions(const QDir& dir)
{
    QStringList result;
    const QStringList categories { QStringLiteral("Core"), QStringLiteral("Extension"),
                                   QStringLiteral("Sidebar") };
    for (const QString& category : categories) {
        const QStringList plugins = discoveryOrder(dir, category);
        for (const QString& plugin : plugins)
            result += declaredBy(plugin);
    }
    return result;
}

} // namespace

class tst_PluginsOptions : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void noOptions_data();
    void noOptions();
    void declaredOptions_data();
    void declaredOptions();
    void fileNamesDifferingInCaseAndDigits_data();
    void fileNamesDifferingInCaseAndDigits();
    void sameNameClashesOnlyInTheParser();
    void sameAsFromTheDiscoveredMap();
    void parsedOptionsReachInitialize();
};

void tst_PluginsOptions::init()
{
    ZelvaneTest::clearEvents();
}

void tst_PluginsOptions::noOptions_data()
{
    QTest::addColumn<QStringList>("targets");
    QTest::addColumn<bool>("removeFolder");

    QTest::newRow("empty directory") << QStringList() << false;
    QTest::newRow("missing directory") << QStringList() << true;
    QTest::newRow("no Arguments key, empty Arguments")
        << QStringList { "zt_loading_plain", "zt_loading_bare" } << false;
    QTest::newRow("another interface identifier") << QStringList { "zt_loading_foreign" } << false;
}

void tst_PluginsOptions::noOptions()
{
    QFETCH(QStringList, targets);
    QFETCH(bool, removeFolder);

    Scenario scenario;
    QVERIFY(scenario.create(targets));
    scenario.configureController();
    if (removeFolder)
        QVERIFY(QDir(scenario.pluginDir()).removeRecursively());

    const QList<QCommandLineOption> options
        = PluginController::instance()->pluginsOptions(QDir(scenario.pluginDir()));

    QCOMPARE(describe(options), QStringList());
}

void tst_PluginsOptions::declaredOptions_data()
{
    QTest::addColumn<QStringList>("targets");
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<int>("count");

    QTest::newRow("option with a value, option without")
        << QStringList { "zt_loading_editor" } << QByteArray() << 2;
    QTest::newRow("name in its own letter case")
        << QStringList { "zt_loading_spelling" } << QByteArray() << 2;
    QTest::newRow("plugin disabled by the user")
        << QStringList { "zt_loading_spelling" } << QByteArray("[plugin]\nSpelling=false\n") << 2;
    QTest::newRow("plugin with an unmet dependency")
        << QStringList { "zt_loading_export" } << QByteArray() << 2;
    QTest::newRow("plugin of another category")
        << QStringList { "zt_loading_sidebar" } << QByteArray() << 1;
    QTest::newRow("same name in two plugins")
        << QStringList { "zt_loading_editor", "zt_loading_export" } << QByteArray() << 4;
    QTest::newRow("same name twice in one plugin")
        << QStringList { "zt_loading_twice" } << QByteArray() << 2;
    QTest::newRow("every plugin") << QStringList { "zt_loading_sidebar", "zt_loading_export",
                                                   "zt_loading_editor",  "zt_loading_spelling",
                                                   "zt_loading_twice",   "zt_loading_plain",
                                                   "zt_loading_bare",    "zt_loading_foreign" }
                                  << QByteArray("[plugin]\nSpelling=false\nEditor=false\n") << 9;
}

void tst_PluginsOptions::declaredOptions()
{
    QFETCH(QStringList, targets);
    QFETCH(QByteArray, ini);
    QFETCH(int, count);

    Scenario scenario;
    QVERIFY(scenario.create(targets, ini));
    scenario.configureController();
    const QStringList keysBefore = scenario.settings()->allKeys();
    PluginController* controller = PluginController::instance();

    const QList<QCommandLineOption> options
        = controller->pluginsOptions(QDir(scenario.pluginDir()));

    const QStringList expected = expectedOptions(scenario.pluginDir());
    QCOMPARE(expected.size(), count);
    QCOMPARE(describe(options), expected);
    for (const QCommandLineOption& option : options)
        QCOMPARE(option.flags(), QCommandLineOption::Flags());

    // A pure query: no plugin code ran and the controller is as it was.
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList());
    QCOMPARE(ZelvaneTest::events(), QStringList());
    QCOMPARE(controller->pluginsModel(), nullptr);
    QCOMPARE(controller->errorString(), QStringLiteral("Unknown error"));
    QCOMPARE(scenario.settings()->allKeys(), keysBefore);
}

void tst_PluginsOptions::fileNamesDifferingInCaseAndDigits_data()
{
    ZelvaneTest::addSortingRows();
}

void tst_PluginsOptions::fileNamesDifferingInCaseAndDigits()
{
    // Three extensions with options under names that differ only in letter case and
    // digit runs: their options come in discovery order, which follows the QDir's
    // listing, not an order of the file names of the library's own.
    QFETCH(int, sorting);
    const QDir::SortFlags flags = QDir::SortFlags(QFlag(sorting));
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_editor" }));
    const QString dir = scenario.pluginDir();
    const QStringList fileNames = ZelvaneTest::copyUnderMixedNames(
        dir, { "zt_loading_spelling", "zt_loading_export", "zt_loading_twice" }, flags);
    QVERIFY2(fileNames.size() == 3, "no set of names that the file system lists unsorted");
    QVERIFY2(ZelvaneTest::listingTellsTheSorting(dir, fileNames, flags),
             qPrintable(ZelvaneTest::listing(dir, flags).join(QLatin1String(", "))));
    scenario.configureController();
    const QDir folder = ZelvaneTest::sortedFolder(dir, flags);

    const QList<QCommandLineOption> options = PluginController::instance()->pluginsOptions(folder);

    const QStringList expected = expectedOptions(folder);
    QCOMPARE(expected.size(), 8);
    QCOMPARE(describe(options), expected);
}

// pluginsOptions() keeps only each plugin's options while it scans. Its result must be
// what the map of discovered plugins gives, read whole after the scan, on random
// folders: the plugins in random numbers of copies under random file names, refused
// files among them, listed by the QDir's own sorting or unsorted.
void tst_PluginsOptions::sameAsFromTheDiscoveredMap()
{
    quint32 seed = QRandomGenerator::global()->generate();
    if (qEnvironmentVariableIsSet("ZELVANE_TEST_SEED"))
        seed = qEnvironmentVariableIntValue("ZELVANE_TEST_SEED");
    qInfo("sameAsFromTheDiscoveredMap seed: %u (set ZELVANE_TEST_SEED to repeat)", seed);
    QRandomGenerator random(seed);

    const QStringList targets { "zt_loading_sidebar",  "zt_loading_export", "zt_loading_editor",
                                "zt_loading_spelling", "zt_loading_twice",  "zt_loading_plain",
                                "zt_loading_bare",     "zt_loading_foreign" };
    const QString characters = QStringLiteral("aAbB019_-");
    for (int round = 0; round < 40; ++round) {
        Scenario scenario;
        QVERIFY(scenario.create({}));
        scenario.configureController();
        const int files = random.bounded(25);
        for (int index = 0; index < files; ++index) {
            QString fileName;
            for (int length = 1 + random.bounded(6); length > 0; --length)
                fileName += characters.at(random.bounded(int(characters.size())));
            const QString path
                = scenario.pluginDir() + QLatin1Char('/') + fileName + QStringLiteral(".so");
            if (QFile::exists(path))
                continue;
            const QString target = targets.at(random.bounded(int(targets.size())));
            QVERIFY(QFile::copy(ZelvaneTest::pluginPath(target), path));
        }
        const QDir folder(scenario.pluginDir(), QString(),
                          random.bounded(2) ? QDir::SortFlags(QDir::Unsorted)
                                            : QDir::SortFlags(QDir::Name | QDir::IgnoreCase));

        QStringList expected;
        const QMultiMap<QString, Zelvane::PluginLoader> discovered
            = Zelvane::LoadPlan(folder).discovered();
        for (const Zelvane::PluginLoader& plugin : discovered) {
            const QList<Zelvane::PluginArgumentDescription> arguments
                = plugin.argumentDescriptions();
            for (const Zelvane::PluginArgumentDescription& argument : arguments)
                expected.append(describe(QCommandLineOption(argument.name, argument.description,
                                                            argument.parameter, QString())));
        }
        const QStringList actual = describe(PluginController::instance()->pluginsOptions(folder));
        QVERIFY2(
            actual == expected,
            qPrintable(QStringLiteral("seed %1, round %2, files %3:\n%4\n--\n%5")
                           .arg(seed)
                           .arg(round)
                           .arg(ZelvaneTest::listing(scenario.pluginDir(), folder.sorting())
                                    .join(QLatin1String(", ")),
                                actual.join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')))));
    }
}

void tst_PluginsOptions::sameNameClashesOnlyInTheParser()
{
    // Editor and Export both declare "safe-mode": the controller hands out both, and it
    // is the host's parser that refuses the second.
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_editor", "zt_loading_export" }));
    scenario.configureController();
    const QList<QCommandLineOption> options
        = PluginController::instance()->pluginsOptions(QDir(scenario.pluginDir()));
    QCOMPARE(describe(options), expectedOptions(scenario.pluginDir()));

    QCommandLineParser parser;
    QTest::ignoreMessage(QtWarningMsg,
                         "QCommandLineParser: already having an option named \"safe-mode\"");
    QCOMPARE(parser.addOptions(options), false);
}

void tst_PluginsOptions::parsedOptionsReachInitialize()
{
    // The host's start-up: plugin options into its parser, the parsed values into the
    // argument map, and the map into every plugin's initialize().
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_editor", "zt_loading_spelling" }));
    scenario.configureController();
    PluginController* controller = PluginController::instance();
    const QList<QCommandLineOption> options
        = controller->pluginsOptions(QDir(scenario.pluginDir()));

    QCommandLineParser parser;
    QVERIFY(parser.addOptions(options));
    QVERIFY2(parser.parse({ "editor", "--editor-theme", "dark", "--Language", "de", "--safe-mode",
                            "letter.txt" }),
             qPrintable(parser.errorText()));
    QCOMPARE(parser.positionalArguments(), QStringList({ "letter.txt" }));

    QMap<QString, QString> arguments;
    for (const QCommandLineOption& option : options) {
        if (!parser.isSet(option))
            continue;
        // A switch has no value: its presence in the map is what counts.
        arguments.insert(option.names().constFirst(),
                         option.valueName().isEmpty() ? QString() : parser.value(option));
    }
    controller->setArguments(arguments);

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Editor", "Spelling" }));
    const QVariantMap expected {
        { QStringLiteral("editor-theme"), QStringLiteral("dark") },
        { QStringLiteral("Language"), QStringLiteral("de") },
        { QStringLiteral("safe-mode"), QString() },
    };
    QObject* editor = publishedPlugin(QStringLiteral("Editor"));
    QObject* spelling = publishedPlugin(QStringLiteral("Spelling"));
    QVERIFY(editor);
    QVERIFY(spelling);
    QCOMPARE(editor->property("arguments").toMap(), expected);
    QCOMPARE(spelling->property("arguments").toMap(), expected);

    controller->shutdown();
}

QTEST_MAIN(tst_PluginsOptions)

#include "tst_pluginsoptions.moc"
