// The load plan is the one place that decides what loads: the controller carries it
// out and zelvane-inspect explains it. Over the same folders and settings, what the
// inspector says would load, in which order, and what it says is dropped, must be
// exactly what loadPlugins() then loads.

#include "loadingfixture.h"
#include "processrunner.h"

#include "controller/loadplan_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QTest>

namespace {

struct Report
{
    QString error;
    QStringList loadOrder; // "Name (file)"
    QStringList dropped; // "Name (file)"
};

QStringList entries(const QJsonArray& array)
{
    QStringList result;
    for (const QJsonValue& value : array) {
        const QJsonObject entry = value.toObject();
        result.append(
            QStringLiteral("%1 (%2)").arg(entry.value(QStringLiteral("name")).toString(),
                                          entry.value(QStringLiteral("file")).toString()));
    }
    return result;
}

Report inspect(const LoadingTest::Scenario& scenario)
{
    const ZelvaneTest::ProcessResult result = ZelvaneTest::runProcess(
        QStringLiteral(ZELVANE_INSPECT_EXECUTABLE),
        { scenario.pluginDir(), QStringLiteral("--iid"), QStringLiteral(ZELVANE_TEST_IID),
          QStringLiteral("--settings"), scenario.settingsFile(), QStringLiteral("--json") });
    const QJsonObject json = QJsonDocument::fromJson(result.out.toUtf8()).object();
    return Report { json.value(QStringLiteral("error")).toString(),
                    entries(json.value(QStringLiteral("loadOrder")).toArray()),
                    entries(json.value(QStringLiteral("dropped")).toArray()) };
}

// The plan made in this process, in the inspector's words.
Report plan(const LoadingTest::Scenario& scenario)
{
    Zelvane::LoadPlan plan { QDir(scenario.pluginDir()) };
    plan.decide(scenario.settings());
    Report report { plan.error(), {}, {} };
    const QList<Zelvane::LoadPlan::File> files = plan.files();
    const QList<int> loadOrder = plan.loadOrderFiles();
    for (int index : loadOrder)
        report.loadOrder.append(
            QStringLiteral("%1 (%2)").arg(files.at(index).name, files.at(index).fileName));
    for (const Zelvane::LoadPlan::File& file : files) {
        if (file.fate == Zelvane::LoadPlan::Fate::Dropped)
            report.dropped.append(QStringLiteral("%1 (%2)").arg(file.name, file.fileName));
    }
    return report;
}

QString fateName(Zelvane::LoadPlan::Fate fate)
{
    using Fate = Zelvane::LoadPlan::Fate;
    switch (fate) {
    case Fate::Refused:
        return QStringLiteral("refused");
    case Fate::Discovered:
        return QStringLiteral("discovered");
    case Fate::OtherCategory:
        return QStringLiteral("other category");
    case Fate::NoCore:
        return QStringLiteral("no core");
    case Fate::NoSettings:
        return QStringLiteral("no settings");
    case Fate::OtherCoreChosen:
        return QStringLiteral("not the chosen core");
    case Fate::Disabled:
        return QStringLiteral("disabled");
    case Fate::Dropped:
        return QStringLiteral("dropped");
    case Fate::Loads:
        return QStringLiteral("loads");
    }
    return QString();
}

QString blockerName(const Zelvane::LoadPlan::Blocker& blocker)
{
    using Kind = Zelvane::LoadPlan::Blocker::Kind;
    switch (blocker.kind) {
    case Kind::NamesItself:
        return QStringLiteral("itself");
    case Kind::Missing:
        return QStringLiteral("missing ") + blocker.dependency;
    case Kind::Refused:
        return QStringLiteral("refused ") + blocker.dependency;
    case Kind::SwitchedOff:
        return QStringLiteral("disabled ") + blocker.dependency;
    case Kind::OtherCoreChosen:
        return QStringLiteral("core not chosen ") + blocker.dependency;
    case Kind::NeverLoaded:
        return QStringLiteral("never loaded ") + blocker.dependency + QLatin1Char('/')
            + blocker.category;
    case Kind::Cycle:
        return QStringLiteral("cycle ") + blocker.cycle.join(QLatin1Char('>'));
    case Kind::Unordered:
        return QStringLiteral("unordered ") + blocker.dependency;
    }
    return QString();
}

// Every file as "<file>: <fate>[ <blockers>]", sorted by file name.
QStringList describeFates(const Zelvane::LoadPlan& plan)
{
    QStringList result;
    const QList<Zelvane::LoadPlan::File> files = plan.files();
    for (const Zelvane::LoadPlan::File& file : files) {
        QString line = file.fileName + QStringLiteral(": ") + fateName(file.fate);
        for (const Zelvane::LoadPlan::Blocker& blocker : file.blockers)
            line += QStringLiteral(" (") + blockerName(blocker) + QLatin1Char(')');
        result.append(line);
    }
    result.sort();
    return result;
}

QStringList namesOf(const QStringList& entries)
{
    QStringList names;
    for (const QString& entry : entries)
        names.append(entry.section(QStringLiteral(" ("), 0, 0));
    return names;
}

} // namespace

class tst_LoadPlan : public QObject
{
    Q_OBJECT

private slots:
    void fates_data();
    void fates();
    void inspectorAgreesWithLoadPlugins_data();
    void inspectorAgreesWithLoadPlugins();
    void withoutExplanations_data();
    void withoutExplanations();
};

void tst_LoadPlan::fates_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<bool>("withSettings");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("one file of each fate")
        << QStringList { "zt_core",    "zt_inspect_altcore", "zt_viewer",
                         "zt_storage", "zt_notaplugin",      "zt_inspect_tool" }
        << QByteArray("[plugin]\nStorage=false\n") << true << QString()
        << QStringList { "libzt_core.so: loads",
                         "libzt_inspect_altcore.so: not the chosen core",
                         "libzt_inspect_tool.so: other category",
                         "libzt_notaplugin.so: refused",
                         "libzt_storage.so: disabled",
                         "libzt_viewer.so: dropped (disabled Storage)" };
    QTest::newRow("a missing dependency")
        << QStringList { "zt_core", "zt_viewer" } << QByteArray() << true << QString()
        << QStringList { "libzt_core.so: loads", "libzt_viewer.so: dropped (missing Storage)" };
    QTest::newRow("a plugin that names itself")
        << QStringList { "zt_core", "zt_inspect_selfish" } << QByteArray() << true << QString()
        << QStringList { "libzt_core.so: loads", "libzt_inspect_selfish.so: dropped (itself)" };
    QTest::newRow("no core plugin")
        << QStringList { "zt_viewer", "zt_storage", "zt_inspect_tool" } << QByteArray() << true
        << QStringLiteral("The Core plugin is not found")
        << QStringList { "libzt_inspect_tool.so: other category", "libzt_storage.so: no core",
                         "libzt_viewer.so: no core" };
    QTest::newRow("no settings object")
        << QStringList { "zt_core", "zt_storage" } << QByteArray() << false
        << QStringLiteral("No settings object is set: call PluginController::setSettings() "
                          "before loadPlugins()")
        << QStringList { "libzt_core.so: no settings", "libzt_storage.so: no settings" };
}

void tst_LoadPlan::fates()
{
    QFETCH(QStringList, plugins);
    QFETCH(QByteArray, settings);
    QFETCH(bool, withSettings);
    QFETCH(QString, error);
    QFETCH(QStringList, expected);

    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(plugins, settings));
    scenario.configureController();

    Zelvane::LoadPlan plan { QDir(scenario.pluginDir()) };
    QCOMPARE(plan.error(), QString());
    plan.decide(withSettings ? scenario.settings() : nullptr);
    QCOMPARE(plan.error(), error);
    QCOMPARE(describeFates(plan), expected);
    QCOMPARE(plan.chosenCore() >= 0, error.isEmpty());
}

void tst_LoadPlan::inspectorAgreesWithLoadPlugins_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<int>("expectedLoads"); // guards the scenario itself

    // The inspector's own folders.
    QTest::newRow("accepted and rejected files")
        << QStringList { "zt_core",        "zt_viewer",           "zt_storage",
                         "zt_notaplugin",  "zt_inspect_stranger", "zt_inspect_badarguments",
                         "zt_inspect_tool" }
        << QByteArray() << 3;
    QTest::newRow("a disabled dependency drops its dependent")
        << QStringList { "zt_core", "zt_viewer", "zt_storage" }
        << QByteArray("[plugin]\nStorage=false\n") << 1;
    QTest::newRow("a missing dependency drops its dependent")
        << QStringList { "zt_core", "zt_viewer" } << QByteArray() << 1;
    QTest::newRow("a plugin that depends on itself is dropped")
        << QStringList { "zt_core", "zt_inspect_selfish" } << QByteArray() << 1;
    QTest::newRow("the settings pick the second core plugin")
        << QStringList { "zt_core", "zt_inspect_altcore", "zt_storage" }
        << QByteArray("[plugin]\nCore=false\nAltCore=true\n") << 2;
    QTest::newRow("a dependency cycle")
        << QStringList { "zt_core", "zt_inspect_ping", "zt_inspect_pong" } << QByteArray() << 2;
    QTest::newRow("no core plugin")
        << QStringList { "zt_viewer", "zt_storage" } << QByteArray() << 0;
    QTest::newRow("empty folder") << QStringList() << QByteArray() << 0;

    // The loading tests' folders.
    QTest::newRow("two core plugins, both by default")
        << QStringList { "zt_loading_alpha", "zt_loading_beta", "zt_loading_notes" } << QByteArray()
        << 2;
    QTest::newRow("two core plugins, both disabled")
        << QStringList { "zt_loading_alpha", "zt_loading_beta" }
        << QByteArray("[plugin]\nAlpha=false\nBeta=false\n") << 1;
    QTest::newRow("other categories")
        << QStringList { "zt_loading_alpha", "zt_loading_sidebar", "zt_loading_lower" }
        << QByteArray() << 1;
    QTest::newRow("the core plugin moves behind its dependency")
        << QStringList { "zt_loading_shell", "zt_loading_notes" } << QByteArray() << 2;
    QTest::newRow("a dependency switched off by its default")
        << QStringList { "zt_loading_alpha", "zt_loading_preview", "zt_loading_outline",
                         "zt_loading_links" }
        << QByteArray() << 2;
    QTest::newRow("stuck ordering: two plugins need the same missing one")
        << QStringList { "zt_loading_alpha", "zt_loading_charts", "zt_loading_tables",
                         "zt_loading_tags" }
        << QByteArray() << 3;
    QTest::newRow("independent plugins")
        << QStringList { "zt_loading_alpha", "zt_loading_notes", "zt_loading_tags",
                         "zt_loading_links", "zt_loading_plain", "zt_loading_bare" }
        << QByteArray("[plugin]\nTags=false\n") << 5;
    QTest::newRow("only a core plugin of another host")
        << QStringList { "zt_loading_foreign", "zt_loading_notes" } << QByteArray() << 0;
}

void tst_LoadPlan::inspectorAgreesWithLoadPlugins()
{
    QFETCH(QStringList, plugins);
    QFETCH(QByteArray, settings);
    QFETCH(int, expectedLoads);

    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(plugins, settings));
    scenario.configureController();

    const Report inspected = inspect(scenario);
    QCOMPARE(plan(scenario).loadOrder, inspected.loadOrder);
    QCOMPARE(plan(scenario).dropped, inspected.dropped);

    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    ZelvaneTest::clearEvents();
    const bool loaded = controller->loadPlugins(QDir(scenario.pluginDir()));
    const QStringList initialized = LoadingTest::initializedNames();
    controller->shutdown();

    QCOMPARE(loaded, inspected.error.isEmpty());
    if (!loaded)
        QCOMPARE(controller->errorString(), inspected.error);
    QCOMPARE(initialized, namesOf(inspected.loadOrder));
    QCOMPARE(initialized.size(), expectedLoads);
    for (const QString& dropped : namesOf(inspected.dropped))
        QVERIFY2(!initialized.contains(dropped), qPrintable(dropped));
}

void tst_LoadPlan::withoutExplanations_data()
{
    inspectorAgreesWithLoadPlugins_data();
}

// The lean plan that loadPlugins() makes decides exactly what the explained one decides;
// it only leaves the blockers out.
void tst_LoadPlan::withoutExplanations()
{
    QFETCH(QStringList, plugins);
    QFETCH(QByteArray, settings);

    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(plugins, settings));
    scenario.configureController();

    Zelvane::LoadPlan explained { QDir(scenario.pluginDir()),
                                  Zelvane::LoadPlan::Explanations::Included };
    explained.decide(scenario.settings());
    Zelvane::LoadPlan lean { QDir(scenario.pluginDir()), Zelvane::LoadPlan::Explanations::Omitted };
    lean.decide(scenario.settings());

    QCOMPARE(lean.error(), explained.error());
    QCOMPARE(lean.loadOrderFiles(), explained.loadOrderFiles());
    QCOMPARE(lean.chosenCore(), explained.chosenCore());
    QCOMPARE(lean.discoveredFiles(), explained.discoveredFiles());
    const QList<Zelvane::LoadPlan::File> leanFiles = lean.files();
    const QList<Zelvane::LoadPlan::File> explainedFiles = explained.files();
    QCOMPARE(leanFiles.size(), explainedFiles.size());
    for (qsizetype i = 0; i < leanFiles.size(); ++i) {
        const Zelvane::LoadPlan::File& file = leanFiles.at(i);
        const Zelvane::LoadPlan::File& reference = explainedFiles.at(i);
        QCOMPARE(file.fileName, reference.fileName);
        QCOMPARE(file.path, reference.path);
        QCOMPARE(fateName(file.fate), fateName(reference.fate));
        QCOMPARE(file.refusal, reference.refusal);
        QCOMPARE(file.name, reference.name);
        QCOMPARE(file.position, reference.position);
        QCOMPARE(file.blockers.size(), 0);
    }
}

QTEST_MAIN(tst_LoadPlan)
#include "tst_loadplan.moc"
