// PluginController::loadPlugins(): which plugins run, in which order, and what a
// failure leaves behind. The order is observed from the plugins themselves (each test
// plugin records "initialize:<Name>" and "destroy:<Name>"); the list of loaded plugins
// is private and shows through shutdown(), which unloads exactly that list.
//
// Every test function, and every row of a data-driven one, runs in a process of its
// own (see loading.cmake): the controller is a process-wide singleton, and a load
// leaves libraries, handles, a model and an error text behind.

#include "loadingfixture.h"

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QPointer>
#include <QtTest/QTest>

using namespace LoadingTest;
using Zelvane::PluginController;

namespace {

const QString coreNotFound = QStringLiteral("The Core plugin is not found");

QString failedToInitialize(const QString& name, const QString& text)
{
    return QStringLiteral("The plugin \"%1\" failed to initialize. Error: \"%2\"").arg(name, text);
}

} // namespace

class tst_LoadPlugins : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void noCorePlugin_data();
    void noCorePlugin();
    void coreChoice_data();
    void coreChoice();
    void disabledExtensionsAreNotLoaded();
    void otherCategoriesAreNeverLoaded();
    void independentPluginsLoadInDiscoveryOrder();
    void fileNamesDifferingInCaseAndDigits_data();
    void fileNamesDifferingInCaseAndDigits();
    void coreMovesBehindItsDependency();
    void dependencyOnDisabledExtensionDropsThePlugin();
    void stuckOrderingDropsOnlyThePluginAtTheBoundary();
    void failureInTheMiddle();
    void failedLoadKeepsTheModel();
    void laterSuccessKeepsTheErrorText_data();
    void laterSuccessKeepsTheErrorText();
    void secondLoadAppends();
    void secondLoadOfTheSameDirectory();
    void everyPluginReceivesTheWholeArgumentMap();
};

void tst_LoadPlugins::init()
{
    ZelvaneTest::clearEvents();
}

void tst_LoadPlugins::noCorePlugin_data()
{
    QTest::addColumn<QStringList>("targets");
    QTest::addColumn<bool>("removeFolder");

    QTest::newRow("empty directory") << QStringList() << false;
    QTest::newRow("missing directory") << QStringList() << true;
    QTest::newRow("foreign interface identifier") << QStringList { "zt_loading_foreign" } << false;
    QTest::newRow("extensions only")
        << QStringList { "zt_loading_notes", "zt_loading_tags" } << false;
    QTest::newRow("core in lower case") << QStringList { "zt_loading_lower" } << false;
}

void tst_LoadPlugins::noCorePlugin()
{
    QFETCH(QStringList, targets);
    QFETCH(bool, removeFolder);

    Scenario scenario;
    QVERIFY(scenario.create(targets));
    scenario.configureController();
    if (removeFolder)
        QVERIFY(QDir(scenario.pluginDir()).removeRecursively());
    PluginController* controller = PluginController::instance();
    QCOMPARE(controller->errorString(), QStringLiteral("Unknown error"));

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), false);

    QCOMPARE(controller->errorString(), coreNotFound);
    QCOMPARE(controller->pluginsModel(), nullptr);
    QCOMPARE(ZelvaneTest::events(), QStringList());
    // Not even an extension's library was opened.
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList());

    // Nothing was listed, so there is nothing to unload.
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_LoadPlugins::coreChoice_data()
{
    // The stored selection of the first and of the second core plugin, in the order in
    // which discovery gives them; an invalid value stores nothing, and both plugins
    // are on by default.
    QTest::addColumn<QVariant>("first");
    QTest::addColumn<QVariant>("second");
    QTest::addColumn<int>("loaded");

    QTest::newRow("first disabled, second enabled") << QVariant(false) << QVariant(true) << 1;
    QTest::newRow("first disabled, second by default") << QVariant(false) << QVariant() << 1;
    QTest::newRow("both disabled") << QVariant(false) << QVariant(false) << 0;
    QTest::newRow("both enabled") << QVariant(true) << QVariant(true) << 0;
    QTest::newRow("first enabled, second disabled") << QVariant(true) << QVariant(false) << 0;
    QTest::newRow("both by default") << QVariant() << QVariant() << 0;
}

void tst_LoadPlugins::coreChoice()
{
    QFETCH(QVariant, first);
    QFETCH(QVariant, second);
    QFETCH(int, loaded);

    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_beta" }));
    scenario.configureController();
    const QStringList cores = discoveryOrder(scenario.pluginDir(), QStringLiteral("Core"));
    QCOMPARE(cores.size(), 2);
    if (first.isValid())
        scenario.settings()->setValue(QStringLiteral("plugin/") + cores.at(0), first);
    if (second.isValid())
        scenario.settings()->setValue(QStringLiteral("plugin/") + cores.at(1), second);
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ cores.at(loaded) }));
    // Both core plugins have a row, in discovery order.
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());
    QCOMPARE(controller->pluginsModel()->rowCount(), 2);
    QCOMPARE(controller->pluginsModel()->index(0, 0).data().toString(), cores.at(0));
    QCOMPARE(controller->pluginsModel()->index(1, 0).data().toString(), cores.at(1));

    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(),
             initializeEvents({ cores.at(loaded) }) + destroyEvents({ cores.at(loaded) }));
}

void tst_LoadPlugins::disabledExtensionsAreNotLoaded()
{
    // Outline is off by default; Tags is on by default but switched off by the user.
    Scenario scenario;
    QVERIFY(scenario.create(
        { "zt_loading_alpha", "zt_loading_notes", "zt_loading_outline", "zt_loading_tags" },
        "[plugin]\nTags=false\n"));
    scenario.configureController();
    const QStringList extensions
        = discoveryOrder(scenario.pluginDir(), QStringLiteral("Extension"));
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha", "Notes" }));
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList({ "Alpha", "Notes" }));

    // The disabled extensions still have their (clear) rows on the settings screen.
    Zelvane::PluginsModel* model = controller->pluginsModel();
    QVERIFY(model);
    QCOMPARE(modelTesterComplaints(model), QStringList());
    QStringList expectedRows { "Alpha=on" };
    for (const QString& name : extensions)
        expectedRows.append(name + (name == QLatin1String("Notes") ? "=on" : "=off"));
    QCOMPARE(modelRows(model), expectedRows);

    // Only what was loaded is unloaded.
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(),
             initializeEvents({ "Alpha", "Notes" }) + destroyEvents({ "Notes", "Alpha" }));
}

void tst_LoadPlugins::otherCategoriesAreNeverLoaded()
{
    // Sidebar is enabled by default and by the user, Lower's category is "core" in
    // lower case: neither is a category that the controller loads.
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_sidebar", "zt_loading_lower" },
                            "[plugin]\nSidebar=true\nLower=true\n"));
    scenario.configureController();
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha" }));
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList({ "Alpha" }));
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());
    QCOMPARE(modelRows(controller->pluginsModel()), QStringList({ "Alpha=on" }));

    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha" }) + destroyEvents({ "Alpha" }));
}

void tst_LoadPlugins::independentPluginsLoadInDiscoveryOrder()
{
    Scenario scenario;
    QVERIFY(scenario.create(
        { "zt_loading_alpha", "zt_loading_notes", "zt_loading_tags", "zt_loading_links" }));
    scenario.configureController();
    // No plugin names a dependency, so ordering moves nothing: the core plugin, then
    // the extensions as discovery gives them.
    const QStringList order = QStringList { "Alpha" }
        + discoveryOrder(scenario.pluginDir(), QStringLiteral("Extension"));
    QCOMPARE(order.size(), 4);
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);
    QCOMPARE(ZelvaneTest::events(), initializeEvents(order));

    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), initializeEvents(order) + destroyEvents(reversed(order)));
}

void tst_LoadPlugins::fileNamesDifferingInCaseAndDigits_data()
{
    ZelvaneTest::addSortingRows();
}

void tst_LoadPlugins::fileNamesDifferingInCaseAndDigits()
{
    // Four extensions under names that differ only in letter case and digit runs: they
    // load, and get their model rows, in discovery order, which follows the listing of
    // the QDir that the host passes (by name ignoring case, unless it says otherwise).
    QFETCH(int, sorting);
    const QDir::SortFlags flags = QDir::SortFlags(QFlag(sorting));
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha" }));
    const QString dir = scenario.pluginDir();
    const QStringList fileNames = ZelvaneTest::copyUnderMixedNames(
        dir, { "zt_loading_notes", "zt_loading_tags", "zt_loading_links", "zt_loading_plain" },
        flags);
    QVERIFY2(fileNames.size() == 4, "no set of names that the file system lists unsorted");
    QVERIFY2(ZelvaneTest::listingTellsTheSorting(dir, fileNames, flags),
             qPrintable(ZelvaneTest::listing(dir, flags).join(QLatin1String(", "))));
    scenario.configureController();
    const QDir folder = ZelvaneTest::sortedFolder(dir, flags);
    const QStringList order
        = QStringList { "Alpha" } + discoveryOrder(folder, QStringLiteral("Extension"));
    QCOMPARE(order.size(), 5);
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(folder), true);
    QCOMPARE(ZelvaneTest::events(), initializeEvents(order));
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelRows(controller->pluginsModel()), withSuffix(order, QStringLiteral("=on")));
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());

    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), initializeEvents(order) + destroyEvents(reversed(order)));
}

void tst_LoadPlugins::coreMovesBehindItsDependency()
{
    // The core plugin Shell needs the extension Notes.
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_shell", "zt_loading_notes" }));
    scenario.configureController();
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);
    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Notes", "Shell" }));

    // Shell goes first on the way down, ahead of the plugin it needs.
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(),
             initializeEvents({ "Notes", "Shell" }) + destroyEvents({ "Shell", "Notes" }));
}

void tst_LoadPlugins::dependencyOnDisabledExtensionDropsThePlugin()
{
    // Preview needs Outline, which is off by default; Notes needs nothing.
    Scenario scenario;
    QVERIFY(scenario.create(
        { "zt_loading_alpha", "zt_loading_outline", "zt_loading_preview", "zt_loading_notes" }));
    scenario.configureController();
    PluginController* controller = PluginController::instance();

    // Dropping Preview is not a failure, and says nothing.
    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);
    QCOMPARE(controller->errorString(), QStringLiteral("Unknown error"));

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha", "Notes" }));
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList({ "Alpha", "Notes" }));
    // The model still shows both: Preview ticked as chosen, Outline clear.
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());
    QStringList expectedRows { "Alpha=on" };
    const QStringList extensions
        = discoveryOrder(scenario.pluginDir(), QStringLiteral("Extension"));
    for (const QString& name : extensions)
        expectedRows.append(name + (name == QLatin1String("Outline") ? "=off" : "=on"));
    QCOMPARE(modelRows(controller->pluginsModel()), expectedRows);

    controller->shutdown();
}

void tst_LoadPlugins::stuckOrderingDropsOnlyThePluginAtTheBoundary()
{
    // Charts and Tables both need a plugin that does not exist. Once the core plugin
    // is placed neither is ready: the one standing first is dropped, and the other is
    // loaded all the same, behind the core plugin.
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_charts", "zt_loading_tables" }));
    scenario.configureController();
    const QStringList extensions
        = discoveryOrder(scenario.pluginDir(), QStringLiteral("Extension"));
    QCOMPARE(extensions.size(), 2);
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha", extensions.at(1) }));
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList({ "Alpha", extensions.at(1) }));

    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(),
             initializeEvents({ "Alpha", extensions.at(1) })
                 + destroyEvents({ extensions.at(1), "Alpha" }));
}

void tst_LoadPlugins::failureInTheMiddle()
{
    Scenario scenario;
    QVERIFY(scenario.create(
        { "zt_loading_alpha", "zt_loading_notes", "zt_loading_tags", "zt_loading_links" }));
    scenario.configureController();
    const QStringList extensions
        = discoveryOrder(scenario.pluginDir(), QStringLiteral("Extension"));
    QCOMPARE(extensions.size(), 3);
    // The second of the three extensions, in load order, refuses to start.
    const QString failing = extensions.at(1);
    PluginController* controller = PluginController::instance();
    controller->setArguments({ { failing + "/fail", QStringLiteral("disk full") } });

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), false);

    QCOMPARE(controller->errorString(), failedToInitialize(failing, QStringLiteral("disk full")));
    // The failing plugin is not kept: its handles go when loadPlugins() returns, and
    // with them the plugin. The third extension was never even opened.
    QCOMPARE(ZelvaneTest::events(),
             initializeEvents({ "Alpha", extensions.at(0), failing }) + destroyEvents({ failing }));
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList({ "Alpha", extensions.at(0), failing }));
    QCOMPARE(controller->pluginsModel(), nullptr);

    // The plugins loaded before the failure stay loaded and listed: shutdown()
    // unloads them, newest first.
    ZelvaneTest::clearEvents();
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), destroyEvents({ extensions.at(0), "Alpha" }));
}

void tst_LoadPlugins::failedLoadKeepsTheModel()
{
    Scenario first;
    QVERIFY(first.create({ "zt_loading_beta" }));
    Scenario second;
    QVERIFY(second.create({ "zt_loading_alpha", "zt_loading_notes" }));
    first.configureController();
    PluginController* controller = PluginController::instance();
    QCOMPARE(controller->loadPlugins(QDir(first.pluginDir())), true);
    const QPointer<Zelvane::PluginsModel> model = controller->pluginsModel();
    QVERIFY(model);
    QCOMPARE(modelTesterComplaints(model), QStringList());

    controller->setArguments({ { QStringLiteral("Notes/fail"), QStringLiteral("no notebook") } });
    QCOMPARE(controller->loadPlugins(QDir(second.pluginDir())), false);

    QCOMPARE(controller->errorString(), failedToInitialize("Notes", "no notebook"));
    QCOMPARE(controller->pluginsModel(), model.data());
    QCOMPARE(modelRows(model), QStringList({ "Beta=on" }));

    controller->shutdown();
}

void tst_LoadPlugins::laterSuccessKeepsTheErrorText_data()
{
    QTest::addColumn<QStringList>("failingTargets");
    QTest::addColumn<QString>("failingArgument");
    QTest::addColumn<QString>("error");

    QTest::newRow("after a missing core plugin")
        << QStringList { "zt_loading_notes" } << QString() << coreNotFound;
    QTest::newRow("after a failing plugin")
        << QStringList { "zt_loading_alpha" } << QStringLiteral("Alpha/fail")
        << failedToInitialize("Alpha", "out of paper");
}

void tst_LoadPlugins::laterSuccessKeepsTheErrorText()
{
    QFETCH(QStringList, failingTargets);
    QFETCH(QString, failingArgument);
    QFETCH(QString, error);

    Scenario failing;
    QVERIFY(failing.create(failingTargets));
    Scenario working;
    QVERIFY(working.create({ "zt_loading_beta" }));
    failing.configureController();
    PluginController* controller = PluginController::instance();
    if (!failingArgument.isEmpty())
        controller->setArguments({ { failingArgument, QStringLiteral("out of paper") } });
    QCOMPARE(controller->loadPlugins(QDir(failing.pluginDir())), false);
    QCOMPARE(controller->errorString(), error);

    controller->setArguments({});
    working.configureController();
    QCOMPARE(controller->loadPlugins(QDir(working.pluginDir())), true);

    QCOMPARE(controller->errorString(), error);
    QCOMPARE(initializedNames().last(), QStringLiteral("Beta"));
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());
    QCOMPARE(modelRows(controller->pluginsModel()), QStringList({ "Beta=on" }));

    controller->shutdown();
}

void tst_LoadPlugins::secondLoadAppends()
{
    Scenario first;
    QVERIFY(first.create({ "zt_loading_alpha", "zt_loading_notes" }));
    Scenario second;
    QVERIFY(second.create({ "zt_loading_beta", "zt_loading_tags" }));
    first.configureController();
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(first.pluginDir())), true);
    const QPointer<Zelvane::PluginsModel> firstModel = controller->pluginsModel();
    QVERIFY(firstModel);
    QCOMPARE(modelRows(firstModel), QStringList({ "Alpha=on", "Notes=on" }));

    QCOMPARE(controller->loadPlugins(QDir(second.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha", "Notes", "Beta", "Tags" }));
    // The new model describes the second folder; the first one is gone.
    QVERIFY(firstModel.isNull());
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());
    QCOMPARE(modelRows(controller->pluginsModel()), QStringList({ "Beta=on", "Tags=on" }));

    // Both loads are in the one list: shutdown() unloads all four, newest first.
    ZelvaneTest::clearEvents();
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), destroyEvents({ "Tags", "Beta", "Notes", "Alpha" }));
}

void tst_LoadPlugins::secondLoadOfTheSameDirectory()
{
    // Nothing guards against loading twice: the second call meets libraries that are
    // already loaded, and Qt hands back the same root objects, which are initialised
    // a second time. Each library stays until the last of its loads is undone.
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_notes" }));
    scenario.configureController();
    PluginController* controller = PluginController::instance();

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);
    QObject* alpha = publishedPlugin(QStringLiteral("Alpha"));
    QVERIFY(alpha);
    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha", "Notes", "Alpha", "Notes" }));
    QCOMPARE(publishedPlugin(QStringLiteral("Alpha")), alpha);

    ZelvaneTest::clearEvents();
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), destroyEvents({ "Notes", "Alpha" }));
}

void tst_LoadPlugins::everyPluginReceivesTheWholeArgumentMap()
{
    // Editor declares "editor-theme", Spelling declares "Language"; each receives both,
    // and an argument that no plugin declares as well.
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_editor", "zt_loading_spelling" }));
    scenario.configureController();
    const QMap<QString, QString> arguments {
        { QStringLiteral("editor-theme"), QStringLiteral("dark") },
        { QStringLiteral("Language"), QStringLiteral("de") },
        { QStringLiteral("window-title"), QStringLiteral("Letters") },
    };
    const QVariantMap expected {
        { QStringLiteral("editor-theme"), QStringLiteral("dark") },
        { QStringLiteral("Language"), QStringLiteral("de") },
        { QStringLiteral("window-title"), QStringLiteral("Letters") },
    };
    PluginController* controller = PluginController::instance();
    controller->setArguments(arguments);

    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);

    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Editor", "Spelling" }));
    QObject* editor = publishedPlugin(QStringLiteral("Editor"));
    QObject* spelling = publishedPlugin(QStringLiteral("Spelling"));
    QVERIFY(editor);
    QVERIFY(spelling);
    QCOMPARE(editor->property("arguments").toMap(), expected);
    QCOMPARE(spelling->property("arguments").toMap(), expected);

    controller->shutdown();
    // The plugins' objects leave the pool with them.
    QCOMPARE(controller->pool()->allObjects(), QList<QObject*>());
}

QTEST_MAIN(tst_LoadPlugins)

#include "tst_loadplugins.moc"
