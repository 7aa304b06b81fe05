// LoadDiagnostics is the load plan as public values: every file of a folder with its
// metadata, its relations, whether it is loaded now and whether and why (not) it loads
// at the next start. The answers are checked exactly, over the folders of the load
// plan's own test, and against what loadPlugins() then does.

#include "../controller/loadingfixture.h"

#include <zelvane/diagnostics/LoadDiagnostics>

#include <QtCore/QSettings>
#include <QtTest/QTest>

namespace {

using Zelvane::DependencyProblem;
using Zelvane::LoadDiagnostics;
using Zelvane::PluginDiagnostic;

QString stateName(PluginDiagnostic::State state)
{
    using State = PluginDiagnostic::State;
    switch (state) {
    case State::Invalid:
        return QStringLiteral("invalid");
    case State::Loads:
        return QStringLiteral("loads");
    case State::LoadsUnordered:
        return QStringLiteral("loads unordered");
    case State::Disabled:
        return QStringLiteral("disabled");
    case State::OtherCoreChosen:
        return QStringLiteral("other core chosen");
    case State::Dropped:
        return QStringLiteral("dropped");
    case State::Refused:
        return QStringLiteral("refused");
    case State::OtherCategory:
        return QStringLiteral("other category");
    case State::NoCore:
        return QStringLiteral("no core");
    case State::NoSettings:
        return QStringLiteral("no settings");
    }
    return QString();
}

// "<file>: <name> <state>[ #<position>][ needs ...][ missing ...][ needed by ...]", by file.
QStringList describe(const LoadDiagnostics& diagnostics)
{
    QStringList lines;
    const QList<PluginDiagnostic> plugins = diagnostics.plugins();
    for (const PluginDiagnostic& plugin : plugins) {
        QString line = plugin.fileName() + QStringLiteral(": ") + plugin.name() + QLatin1Char(' ')
            + stateName(plugin.state());
        if (plugin.position() >= 0)
            line += QStringLiteral(" #") + QString::number(plugin.position());
        if (!plugin.dependencies().isEmpty())
            line += QStringLiteral(" needs ") + plugin.dependencies().join(QLatin1Char(','));
        if (!plugin.missingDependencies().isEmpty())
            line += QStringLiteral(" missing ")
                + plugin.missingDependencies().join(QLatin1Char(','));
        if (!plugin.dependants().isEmpty())
            line += QStringLiteral(" needed by ") + plugin.dependants().join(QLatin1Char(','));
        lines.append(line);
    }
    lines.sort();
    return lines;
}

// Every sentence a user reads about the folder, by file.
QStringList texts(const LoadDiagnostics& diagnostics)
{
    QStringList lines;
    const QList<PluginDiagnostic> plugins = diagnostics.plugins();
    for (const PluginDiagnostic& plugin : plugins) {
        QString line = plugin.fileName() + QStringLiteral(": ") + plugin.stateText();
        const QList<DependencyProblem> problems = plugin.problems();
        for (const DependencyProblem& problem : problems)
            line += QLatin1Char(' ') + problem.text();
        lines.append(line);
    }
    lines.sort();
    return lines;
}

QStringList modelNames(const QAbstractItemModel* model)
{
    QStringList names;
    for (int row = 0; row < model->rowCount(); ++row)
        names.append(model->index(row, 0).data(Zelvane::PluginsModel::NameRole).toString());
    return names;
}

} // namespace

class tst_LoadDiagnostics : public QObject
{
    Q_OBJECT

private slots:
    void plugins_data();
    void plugins();
    void texts_data();
    void texts();
    void metadata();
    void refusal();
    void noSettings();
    void emptyAndMissingFolder();
    void loadedNowAndAtTheNextStart();
    void modelRowsAreTheControllersRows();
};

void tst_LoadDiagnostics::plugins_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QStringList>("loadOrder");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("one file of each fate")
        << QStringList { "zt_core",    "zt_inspect_altcore", "zt_viewer",
                         "zt_storage", "zt_notaplugin",      "zt_inspect_tool" }
        << QByteArray("[plugin]\nStorage=false\n") << QString() << QStringList { "Core" }
        << QStringList { "libzt_core.so: Core loads #0",
                         "libzt_inspect_altcore.so: AltCore other core chosen",
                         "libzt_inspect_tool.so: Tool other category",
                         "libzt_notaplugin.so:  refused",
                         "libzt_storage.so: Storage disabled needed by Viewer",
                         "libzt_viewer.so: Viewer dropped needs Storage" };
    QTest::newRow("a missing dependency")
        << QStringList { "zt_core", "zt_viewer" } << QByteArray() << QString()
        << QStringList { "Core" }
        << QStringList { "libzt_core.so: Core loads #0",
                         "libzt_viewer.so: Viewer dropped needs Storage missing Storage" };
    QTest::newRow("everything loads")
        << QStringList { "zt_core", "zt_viewer", "zt_storage" } << QByteArray() << QString()
        << QStringList { "Core", "Storage", "Viewer" }
        << QStringList { "libzt_core.so: Core loads #0",
                         "libzt_storage.so: Storage loads #1 needed by Viewer",
                         "libzt_viewer.so: Viewer loads #2 needs Storage" };
    QTest::newRow("a plugin that names itself")
        << QStringList { "zt_core", "zt_inspect_selfish" } << QByteArray() << QString()
        << QStringList { "Core" }
        << QStringList { "libzt_core.so: Core loads #0",
                         "libzt_inspect_selfish.so: Selfish dropped needs Selfish needed by "
                         "Selfish" };
    QTest::newRow("a dependency cycle")
        << QStringList { "zt_core", "zt_inspect_ping", "zt_inspect_pong" } << QByteArray()
        << QString() << QStringList { "Core", "Ping" }
        << QStringList { "libzt_core.so: Core loads #0",
                         "libzt_inspect_ping.so: Ping loads unordered #1 needs Pong needed by "
                         "Pong",
                         "libzt_inspect_pong.so: Pong dropped needs Ping needed by Ping" };
    QTest::newRow("the settings pick the second core plugin")
        << QStringList { "zt_core", "zt_inspect_altcore" }
        << QByteArray("[plugin]\nCore=false\nAltCore=true\n") << QString()
        << QStringList { "AltCore" }
        << QStringList { "libzt_core.so: Core other core chosen",
                         "libzt_inspect_altcore.so: AltCore loads #0" };
    QTest::newRow("no core plugin")
        << QStringList { "zt_viewer", "zt_storage", "zt_inspect_tool" } << QByteArray()
        << QStringLiteral("The Core plugin is not found") << QStringList()
        << QStringList { "libzt_inspect_tool.so: Tool other category",
                         "libzt_storage.so: Storage no core needed by Viewer",
                         "libzt_viewer.so: Viewer no core needs Storage" };
}

void tst_LoadDiagnostics::plugins()
{
    QFETCH(QStringList, plugins);
    QFETCH(QByteArray, settings);
    QFETCH(QString, error);
    QFETCH(QStringList, loadOrder);
    QFETCH(QStringList, expected);

    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(plugins, settings));
    scenario.configureController();

    const LoadDiagnostics diagnostics(QDir(scenario.pluginDir()), scenario.settings());
    QCOMPARE(diagnostics.error(), error);
    QCOMPARE(diagnostics.loadOrder(), loadOrder);
    QCOMPARE(describe(diagnostics), expected);
    QCOMPARE(diagnostics.directory(), QDir(scenario.pluginDir()));
    QCOMPARE(diagnostics.differsFromRunning(), false); // nothing is loaded

    // Rereads keep what discovery set, the relations by name among them, and tell the same.
    const LoadDiagnostics again = diagnostics.reread(scenario.settings());
    QCOMPARE(describe(again), expected);
    QCOMPARE(describe(again.reread(scenario.settings())), expected);
    QCOMPARE(again.reread(scenario.settings()).loadOrder(), loadOrder);
}

void tst_LoadDiagnostics::texts_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("one file of each fate")
        << QStringList { "zt_core",    "zt_inspect_altcore", "zt_viewer",
                         "zt_storage", "zt_notaplugin",      "zt_inspect_tool" }
        << QByteArray("[plugin]\nStorage=false\n")
        << QStringList {
               "libzt_core.so: Will load at the next start.",
               "libzt_inspect_altcore.so: Will not load: another Core plugin, Core, is chosen.",
               "libzt_inspect_tool.so: Will not load: its category \"Tool\" is neither Core nor "
               "Extension.",
               "libzt_notaplugin.so: Will not load: the library refuses the file: "
               "%1/libzt_notaplugin.so is not a plugin (no string IID found).",
               "libzt_storage.so: Will not load: it is switched off.",
               "libzt_viewer.so: Will not load: its dependencies cannot be met. Needs Storage, "
               "which is switched off."
           };
    QTest::newRow("missing, itself, cycle: one is dropped, the others load unordered")
        << QStringList { "zt_core", "zt_viewer", "zt_inspect_selfish", "zt_inspect_ping",
                         "zt_inspect_pong" }
        << QByteArray()
        << QStringList {
               "libzt_core.so: Will load at the next start.",
               "libzt_inspect_ping.so: Will load at the next start, before a plugin it needs. "
               "Needs Pong in a dependency cycle: Ping → Pong → Ping.",
               "libzt_inspect_pong.so: Will load at the next start, before a plugin it needs. "
               "Needs Ping in a dependency cycle: Pong → Ping → Pong.",
               "libzt_inspect_selfish.so: Will load at the next start, before a plugin it needs. "
               "Names itself as a dependency.",
               "libzt_viewer.so: Will not load: its dependencies cannot be met. Needs Storage, "
               "which is not in the plugin folder."
           };
    QTest::newRow("a dependency of another category, a Core plugin not chosen")
        << QStringList { "zt_loading_alpha", "zt_loading_beta", "zt_loading_sidebar",
                         "zt_diagnostics_toolbar", "zt_diagnostics_theme" }
        << QByteArray()
        << QStringList {
               "libzt_diagnostics_theme.so: Will load at the next start, before a plugin it "
               "needs. Needs Alpha, a Core plugin that is not the chosen one.",
               "libzt_diagnostics_toolbar.so: Will not load: its dependencies cannot be met. "
               "Needs Sidebar, whose category \"Sidebar\" never loads.",
               "libzt_loading_alpha.so: Will not load: another Core plugin, Beta, is chosen.",
               "libzt_loading_beta.so: Will load at the next start.",
               "libzt_loading_sidebar.so: Will not load: its category \"Sidebar\" is neither "
               "Core nor Extension."
           };
}

void tst_LoadDiagnostics::texts()
{
    QFETCH(QStringList, plugins);
    QFETCH(QByteArray, settings);
    QFETCH(QStringList, expected);

    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(plugins, settings));
    scenario.configureController();

    const LoadDiagnostics diagnostics(QDir(scenario.pluginDir()), scenario.settings());
    QStringList withFolder;
    for (const QString& line : std::as_const(expected))
        withFolder.append(line.contains(QLatin1String("%1")) ? line.arg(scenario.pluginDir())
                                                             : line);
    QCOMPARE(::texts(diagnostics), withFolder);
}

void tst_LoadDiagnostics::metadata()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_viewer", "zt_storage" },
                            QByteArray("[plugin]\nViewer=false\n")));
    scenario.configureController();

    const LoadDiagnostics diagnostics(QDir(scenario.pluginDir()), scenario.settings());
    const PluginDiagnostic viewer = diagnostics.plugin(QStringLiteral("Viewer"));
    QVERIFY(viewer.isValid());
    QCOMPARE(viewer.fileName(), QStringLiteral("libzt_viewer.so"));
    QCOMPARE(viewer.filePath(), QDir(scenario.pluginDir()).absoluteFilePath("libzt_viewer.so"));
    QCOMPARE(viewer.category(), QStringLiteral("Extension"));
    QCOMPARE(viewer.description(), QStringLiteral("Shows documents"));
    QCOMPARE(viewer.loadsByDefault(), true);
    QCOMPARE(viewer.isSelected(), false);
    QCOMPARE(viewer.isCore(), false);
    QCOMPARE(viewer.isExtension(), true);
    QCOMPARE(viewer.isLoaded(), false);
    QCOMPARE(viewer.state(), PluginDiagnostic::State::Disabled);
    QCOMPARE(viewer.willLoad(), false);
    QCOMPARE(viewer.position(), -1);

    // The same options as pluginsOptions() hands the host's parser.
    QStringList options;
    const QList<QCommandLineOption> declared = viewer.options();
    for (const QCommandLineOption& option : declared)
        options.append(option.names().join(QLatin1Char('|')) + QLatin1Char('=') + option.valueName()
                       + QLatin1Char(':') + option.description());
    QCOMPARE(options,
             QStringList({ "viewer-theme=theme:Colour theme",
                           "viewer-readonly=:Opens documents read-only" }));
    QCOMPARE(
        declared.size(),
        Zelvane::PluginController::instance()->pluginsOptions(QDir(scenario.pluginDir())).size());

    const PluginDiagnostic core = diagnostics.plugin(QStringLiteral("Core"));
    QCOMPARE(core.isCore(), true);
    QCOMPARE(core.options().size(), 0);
    QCOMPARE(diagnostics.plugin(QStringLiteral("Nobody")).isValid(), false);
    QCOMPARE(diagnostics.plugin(QString()).isValid(), false);
    QCOMPARE(PluginDiagnostic().stateText(), QString());

    // Ticking Viewer again is read over the same files.
    scenario.settings()->setValue(QStringLiteral("plugin/Viewer"), true);
    const LoadDiagnostics again = diagnostics.reread(scenario.settings());
    QCOMPARE(again.loadOrder(), QStringList({ "Core", "Storage", "Viewer" }));
    QCOMPARE(diagnostics.loadOrder(), QStringList({ "Core", "Storage" }));
    QCOMPARE(again.plugin(QStringLiteral("Viewer")).isSelected(), true);
}

void tst_LoadDiagnostics::refusal()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_inspect_badarguments", "zt_inspect_stranger" }));
    scenario.configureController();

    const LoadDiagnostics diagnostics(QDir(scenario.pluginDir()), scenario.settings());
    // A file of another host is refused before its name is read.
    QCOMPARE(describe(diagnostics),
             QStringList({ "libzt_core.so: Core loads #0",
                           "libzt_inspect_badarguments.so: BadArguments refused",
                           "libzt_inspect_stranger.so:  refused" }));
    const PluginDiagnostic bad = diagnostics.plugin(QStringLiteral("BadArguments"));
    QCOMPARE(bad.refusal(), QString());
    QCOMPARE(bad.stateText(),
             QStringLiteral("Will not load: the library refuses the file (its \"Arguments\" are "
                            "malformed)."));
    const PluginDiagnostic stranger = diagnostics.plugins().at(2);
    QCOMPARE(stranger.fileName(), QStringLiteral("libzt_inspect_stranger.so"));
    const QString path = QDir(scenario.pluginDir()).absoluteFilePath("libzt_inspect_stranger.so");
    QCOMPARE(stranger.refusal(),
             QStringLiteral("%1 plugin ignored (IID does not match)").arg(path));
    QCOMPARE(stranger.stateText(),
             QStringLiteral("Will not load: the library refuses the file: %1 plugin ignored (IID "
                            "does not match).")
                 .arg(path));
    QCOMPARE(stranger.options().size(), 0);
}

void tst_LoadDiagnostics::noSettings()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage" }));
    scenario.configureController();

    const LoadDiagnostics diagnostics(QDir(scenario.pluginDir()), nullptr);
    QCOMPARE(diagnostics.error(),
             QStringLiteral("No settings object is set: call PluginController::setSettings() "
                            "before loadPlugins()"));
    QCOMPARE(describe(diagnostics),
             QStringList(
                 { "libzt_core.so: Core no settings", "libzt_storage.so: Storage no settings" }));
    QCOMPARE(diagnostics.plugin(QStringLiteral("Core")).stateText(),
             QStringLiteral("Will not load: no settings object is set."));
    QCOMPARE(diagnostics.plugin(QStringLiteral("Storage")).isSelected(), false);
}

void tst_LoadDiagnostics::emptyAndMissingFolder()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({}));
    scenario.configureController();

    const LoadDiagnostics empty(QDir(scenario.pluginDir()), scenario.settings());
    QCOMPARE(empty.plugins().size(), 0);
    QCOMPARE(empty.error(), QStringLiteral("The Core plugin is not found"));
    const LoadDiagnostics missing(QDir(scenario.pluginDir() + QStringLiteral("/none")),
                                  scenario.settings());
    QCOMPARE(missing.plugins().size(), 0);
    const LoadDiagnostics none;
    QCOMPARE(none.plugins().size(), 0);
    QCOMPARE(none.reread(scenario.settings()).plugins().size(), 0);
    QCOMPARE(none.modelRow(0).isValid(), false);
}

void tst_LoadDiagnostics::loadedNowAndAtTheNextStart()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_viewer", "zt_storage" }));
    scenario.configureController();
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    QVERIFY(controller->loadPlugins(QDir(scenario.pluginDir())));

    const QDir dir(scenario.pluginDir());
    const LoadDiagnostics running(dir, scenario.settings());
    QCOMPARE(running.differsFromRunning(), false);
    QCOMPARE(running.plugin(QStringLiteral("Viewer")).isLoaded(), true);
    QCOMPARE(running.plugin(QStringLiteral("Viewer")).stateText(), QStringLiteral("Loaded now."));

    // Clearing Storage through the model clears Viewer too; both stay loaded until the
    // next start.
    Zelvane::PluginsModel* model = controller->pluginsModel();
    const int storage = modelNames(model).indexOf(QStringLiteral("Storage"));
    QVERIFY(model->setData(model->index(storage, 0), Qt::Unchecked, Qt::CheckStateRole));
    const LoadDiagnostics changed = running.reread(scenario.settings());
    QCOMPARE(changed.differsFromRunning(), true);
    QCOMPARE(changed.plugin(QStringLiteral("Storage")).stateText(),
             QStringLiteral("Loaded now; will not load at the next start: it is switched off."));
    QCOMPARE(changed.plugin(QStringLiteral("Viewer")).stateText(),
             QStringLiteral("Loaded now; will not load at the next start: it is switched off."));
    QCOMPARE(changed.plugin(QStringLiteral("Core")).stateText(), QStringLiteral("Loaded now."));

    QVERIFY(model->setData(model->index(storage, 0), Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(changed.reread(scenario.settings()).differsFromRunning(), true); // Viewer stays off
    const int viewer = modelNames(model).indexOf(QStringLiteral("Viewer"));
    QVERIFY(model->setData(model->index(viewer, 0), Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(changed.reread(scenario.settings()).differsFromRunning(), false);

    controller->shutdown();
    const LoadDiagnostics after = running.reread(scenario.settings());
    QCOMPARE(after.plugin(QStringLiteral("Core")).isLoaded(), false);
    QCOMPARE(after.plugin(QStringLiteral("Core")).stateText(),
             QStringLiteral("Will load at the next start."));
    QCOMPARE(after.differsFromRunning(), false);
}

void tst_LoadDiagnostics::modelRowsAreTheControllersRows()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_beta", "zt_loading_notes",
                              "zt_loading_tags", "zt_loading_links", "zt_loading_sidebar" }));
    scenario.configureController();
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    QVERIFY(controller->loadPlugins(QDir(scenario.pluginDir())));

    const LoadDiagnostics diagnostics(QDir(scenario.pluginDir()), scenario.settings());
    const QStringList rows = modelNames(controller->pluginsModel());
    QStringList fromDiagnostics;
    for (int row = 0; row < rows.size(); ++row)
        fromDiagnostics.append(diagnostics.modelRow(row).name());
    QCOMPARE(fromDiagnostics, rows);
    QCOMPARE(diagnostics.modelRow(int(rows.size())).isValid(), false);
    QCOMPARE(diagnostics.modelRow(-1).isValid(), false);
    controller->shutdown();
}

QTEST_MAIN(tst_LoadDiagnostics)
#include "tst_loaddiagnostics.moc"
