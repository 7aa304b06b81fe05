// The start-up profile: what the last loadPlugins() of the process took, plugin by
// plugin and step by step, and its shutdown(); and the "zelvane.startup" log lines that
// tell it when a host asks for them, and only then.
//
// Times are only ever checked for being non-negative and adding up: the lines are
// compared whole, with every number as the record holds it.

#include "controller/loadplan_p.h"
#include "controller/startupprofile_p.h"
#include "loadingfixture.h"
#include "logcapture.h"
#include "processrunner.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QLoggingCategory>
#include <QtCore/QRegularExpression>
#include <QtTest/QTest>

using namespace LoadingTest;
using Zelvane::PluginController;
using Zelvane::StartupRecord;

Q_DECLARE_METATYPE(StartupRecord::Step)

namespace {

const QStringList healthy { "zt_core", "zt_storage", "zt_viewer", "zt_startup_sleeper" };

QString ms(qint64 ns)
{
    return QString::number(double(ns) / 1e6, 'f', 2) + QStringLiteral(" ms");
}

qint64 pluginNs(const StartupRecord::Plugin& plugin)
{
    return qMax<qint64>(plugin.libraryNs, 0) + qMax<qint64>(plugin.rootObjectNs, 0)
        + qMax<qint64>(plugin.initializeNs, 0);
}

QString percent(qint64 part, qint64 whole)
{
    return QString::number(100.0 * double(part) / double(whole), 'f', 1) + QLatin1Char('%');
}

// The lines with every number replaced by "#": their shape, whatever the clock said.
QStringList shapes(const QStringList& lines)
{
    static const QRegularExpression number(QStringLiteral("\\d+\\.\\d+"));
    QStringList result;
    for (QString line : lines)
        result.append(line.replace(number, QStringLiteral("#")));
    return result;
}

QStringList namesOf(const QList<Zelvane::PluginLoader>& plugins)
{
    QStringList names;
    for (const Zelvane::PluginLoader& plugin : plugins)
        names.append(plugin.name());
    return names;
}

// What the library plans to load from the scenario's folder, made before it loads.
QStringList plannedOrder(const Scenario& scenario)
{
    Zelvane::LoadPlan plan { QDir(scenario.pluginDir()) };
    plan.decide(scenario.settings());
    return namesOf(plan.loadOrder());
}

void turnLogOn()
{
    QLoggingCategory::setFilterRules(QStringLiteral("zelvane.startup.debug=true"));
}

} // namespace

class tst_StartupProfile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void nothingRecordedBeforeTheFirstLoad();
    void recordsEveryPluginInLoadOrder();
    void recordsTheStepThatFailed_data();
    void recordsTheStepThatFailed();
    void recordsAStartWithoutCore();
    void recordsShutdown();
    void logsOneLinePerPluginThenTheTotal();
    void logsTheFailedStep();
    void logsShutdown();
    void logsNothingWhileTheCategoryIsOff();
    void hostPrintsTheProfileOnlyWhenAsked();
};

void tst_StartupProfile::init()
{
    ZelvaneTest::clearEvents();
}

void tst_StartupProfile::nothingRecordedBeforeTheFirstLoad()
{
    const StartupRecord record = Zelvane::lastStartupRecord();
    QCOMPARE(record.recorded, false);
    QCOMPARE(record.shutDown, false);
    QCOMPARE(record.plugins.size(), 0);
    QCOMPARE(record.totalNs, qint64(-1));
}

void tst_StartupProfile::recordsEveryPluginInLoadOrder()
{
    Scenario scenario;
    QVERIFY(scenario.create(healthy));
    scenario.configureController();
    const QStringList planned = plannedOrder(scenario);
    QCOMPARE(planned.size(), 4);

    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupRecord record = Zelvane::lastStartupRecord();
    QCOMPARE(record.recorded, true);
    QCOMPARE(record.succeeded, true);
    QStringList names;
    QStringList fileNames;
    qint64 sum = record.discoveryNs + record.orderingNs + record.modelNs;
    for (const StartupRecord::Plugin& plugin : record.plugins) {
        names.append(plugin.name);
        fileNames.append(plugin.fileName);
        QVERIFY2(plugin.libraryNs >= 0 && plugin.rootObjectNs >= 0 && plugin.initializeNs >= 0,
                 qPrintable(plugin.name));
        QCOMPARE(plugin.failedStep, StartupRecord::Step::None);
        sum += pluginNs(plugin);
    }
    QCOMPARE(names, planned);
    QStringList expectedFiles;
    for (const QString& name : planned) {
        const QString target = name == "Sleeper" ? "startup_sleeper" : name.toLower();
        expectedFiles.append("libzt_" + target + ".so");
    }
    QCOMPARE(fileNames, expectedFiles);
    QVERIFY(record.discoveryNs >= 0);
    QVERIFY(record.orderingNs >= 0);
    QVERIFY(record.modelNs >= 0);
    QVERIFY2(record.totalNs >= sum, qPrintable(ms(record.totalNs) + " < " + ms(sum)));
    QCOMPARE(record.shutDown, false);
    QCOMPARE(record.unloads.size(), 0);
}

void tst_StartupProfile::recordsTheStepThatFailed_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<QString>("name");
    QTest::addColumn<StartupRecord::Step>("step");

    QTest::newRow("the library does not load")
        << "zt_plugin_unresolved" << QByteArray("[plugin]\nUnresolved=true\n") << "Unresolved"
        << StartupRecord::Step::Library;
    QTest::newRow("the root object is not an IPlugin")
        << "zt_plugin_notiplugin" << QByteArray() << "NotIPlugin"
        << StartupRecord::Step::RootObject;
    QTest::newRow("initialize() answers false")
        << "zt_viewer" << QByteArray() << "Viewer" << StartupRecord::Step::Initialize;
}

void tst_StartupProfile::recordsTheStepThatFailed()
{
    QFETCH(QString, target);
    QFETCH(QByteArray, ini);
    QFETCH(QString, name);
    QFETCH(StartupRecord::Step, step);

    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", target }, ini));
    scenario.configureController();
    PluginController::instance()->setArguments({ { "Viewer/fail", "no screen" } });

    QVERIFY(!PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupRecord record = Zelvane::lastStartupRecord();
    QCOMPARE(record.succeeded, false);
    QVERIFY(!record.plugins.isEmpty());
    const StartupRecord::Plugin failed = record.plugins.last();
    QCOMPARE(failed.name, name);
    QCOMPARE(failed.failedStep, step);
    // The failing step is timed; the steps after it were never entered.
    QCOMPARE(failed.libraryNs >= 0, true);
    QCOMPARE(failed.rootObjectNs >= 0, step != StartupRecord::Step::Library);
    QCOMPARE(failed.initializeNs >= 0, step == StartupRecord::Step::Initialize);
    for (qsizetype i = 0; i + 1 < record.plugins.size(); ++i)
        QCOMPARE(record.plugins.at(i).failedStep, StartupRecord::Step::None);
    QCOMPARE(record.modelNs, qint64(-1));
    QVERIFY(record.totalNs >= 0);
}

void tst_StartupProfile::recordsAStartWithoutCore()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_storage" }));
    scenario.configureController();

    QVERIFY(!PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupRecord record = Zelvane::lastStartupRecord();
    QCOMPARE(record.recorded, true);
    QCOMPARE(record.succeeded, false);
    QCOMPARE(record.plugins.size(), 0);
    QVERIFY(record.discoveryNs >= 0);
    QVERIFY(record.orderingNs >= 0);
    QVERIFY(record.totalNs >= record.discoveryNs + record.orderingNs);
}

void tst_StartupProfile::recordsShutdown()
{
    Scenario scenario;
    QVERIFY(scenario.create(healthy));
    scenario.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    const StartupRecord loaded = Zelvane::lastStartupRecord();

    PluginController::instance()->shutdown();

    const StartupRecord record = Zelvane::lastStartupRecord();
    QCOMPARE(record.shutDown, true);
    QStringList loadOrder;
    for (const StartupRecord::Plugin& plugin : loaded.plugins)
        loadOrder.prepend(plugin.name);
    QStringList unloaded;
    qint64 sum = 0;
    for (const StartupRecord::Unload& unload : record.unloads) {
        unloaded.append(unload.name);
        QVERIFY(unload.ns >= 0);
        sum += unload.ns;
    }
    QCOMPARE(unloaded, loadOrder);
    QVERIFY(record.shutdownNs >= sum);
    // The start-up itself is as it was.
    QCOMPARE(record.totalNs, loaded.totalNs);
    QCOMPARE(record.plugins.size(), loaded.plugins.size());
}

void tst_StartupProfile::logsOneLinePerPluginThenTheTotal()
{
    Scenario scenario;
    QVERIFY(scenario.create(healthy));
    scenario.configureController();
    const QStringList planned = plannedOrder(scenario);
    turnLogOn();

    QStringList messages;
    QList<ZelvaneTest::LogRecord> records;
    {
        ZelvaneTest::LogCapture capture;
        QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
        messages = capture.messages();
        records = capture.records();
    }

    QStringList expectedShapes;
    for (const QString& name : planned)
        expectedShapes.append(name
                              + ": # ms, #% (library # ms, root object # ms, initialize() # ms)");
    expectedShapes.append(
        "Total: # ms (discovery # ms, ordering # ms, 4 plugins # ms, plugins model # ms)");
    QCOMPARE(shapes(messages), expectedShapes);
    for (const ZelvaneTest::LogRecord& record : std::as_const(records)) {
        QCOMPARE(record.category, QStringLiteral("zelvane.startup"));
        QCOMPARE(record.type, QtDebugMsg);
    }

    // The numbers are the record's.
    const StartupRecord record = Zelvane::lastStartupRecord();
    QStringList expected;
    qint64 loading = 0;
    for (const StartupRecord::Plugin& plugin : record.plugins) {
        expected.append(plugin.name + ": " + ms(pluginNs(plugin)) + ", "
                        + percent(pluginNs(plugin), record.totalNs) + " (library "
                        + ms(plugin.libraryNs) + ", root object " + ms(plugin.rootObjectNs)
                        + ", initialize() " + ms(plugin.initializeNs) + ")");
        loading += pluginNs(plugin);
    }
    expected.append("Total: " + ms(record.totalNs) + " (discovery " + ms(record.discoveryNs)
                    + ", ordering " + ms(record.orderingNs) + ", 4 plugins " + ms(loading)
                    + ", plugins model " + ms(record.modelNs) + ")");
    QCOMPARE(messages, expected);
}

void tst_StartupProfile::logsTheFailedStep()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    PluginController::instance()->setArguments({ { "Viewer/fail", "no screen" } });
    turnLogOn();

    ZelvaneTest::LogCapture capture;
    QVERIFY(!PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    QCOMPARE(shapes(capture.messages()),
             QStringList({
                 "Core: # ms, #% (library # ms, root object # ms, initialize() # ms)",
                 "Storage: # ms, #% (library # ms, root object # ms, initialize() # ms)",
                 "Viewer: # ms, #% (library # ms, root object # ms, initialize() # ms), "
                 "failed in initialize()",
                 "Total: # ms, failed (discovery # ms, ordering # ms, 3 plugins # ms)",
             }));
}

void tst_StartupProfile::logsShutdown()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    turnLogOn();

    ZelvaneTest::LogCapture capture;
    PluginController::instance()->shutdown();

    const StartupRecord record = Zelvane::lastStartupRecord();
    QStringList expected;
    for (const StartupRecord::Unload& unload : record.unloads)
        expected.append("Unloaded " + unload.name + ": " + ms(unload.ns));
    expected.append("Shutdown total: " + ms(record.shutdownNs));
    QCOMPARE(capture.messages(), expected);
    QCOMPARE(shapes(expected),
             QStringList({ "Unloaded Viewer: # ms", "Unloaded Storage: # ms", "Unloaded Core: # ms",
                           "Shutdown total: # ms" }));
}

void tst_StartupProfile::logsNothingWhileTheCategoryIsOff()
{
    Scenario scenario;
    QVERIFY(scenario.create(healthy));
    scenario.configureController();

    ZelvaneTest::LogCapture capture;
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    PluginController::instance()->shutdown();

    QCOMPARE(capture.messages(), QStringList());
    // Recorded all the same, for whoever asks afterwards.
    QCOMPARE(Zelvane::lastStartupRecord().plugins.size(), 4);
    QCOMPARE(Zelvane::lastStartupRecord().shutDown, true);
}

void tst_StartupProfile::hostPrintsTheProfileOnlyWhenAsked()
{
    Scenario scenario;
    QVERIFY(scenario.create(healthy));
    scenario.configureController();
    const QStringList planned = plannedOrder(scenario);
    QCOMPARE(planned.size(), 4);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_LOGGING_RULES");
    environment.insert("QT_FORCE_STDERR_LOGGING", "1");
    environment.insert("QT_MESSAGE_PATTERN", "%{category}|%{type}|%{message}");
    const QStringList arguments { scenario.pluginDir(), scenario.settingsFile() };

    const ZelvaneTest::ProcessResult quiet
        = ZelvaneTest::runProcess(ZELVANE_STARTUP_HOST, arguments, environment);
    QCOMPARE(quiet.exitCode, 0);
    QCOMPARE(quiet.out, QString());
    QCOMPARE(quiet.err, QString());

    environment.insert("QT_LOGGING_RULES", "zelvane.startup.debug=true");
    const ZelvaneTest::ProcessResult asked
        = ZelvaneTest::runProcess(ZELVANE_STARTUP_HOST, arguments, environment);
    QCOMPARE(asked.exitCode, 0);
    QCOMPARE(asked.out, QString());
    QStringList expected;
    for (const QString& name : planned)
        expected.append("zelvane.startup|debug|" + name
                        + ": # ms, #% (library # ms, root object # ms, initialize() # ms)");
    expected.append("zelvane.startup|debug|Total: # ms (discovery # ms, ordering # ms, "
                    "4 plugins # ms, plugins model # ms)");
    for (const QString& name : QStringList { planned.crbegin(), planned.crend() })
        expected.append("zelvane.startup|debug|Unloaded " + name + ": # ms");
    expected.append("zelvane.startup|debug|Shutdown total: # ms");
    QCOMPARE(shapes(asked.err.split('\n', Qt::SkipEmptyParts)), expected);
}

QTEST_GUILESS_MAIN(tst_StartupProfile)
#include "tst_startupprofile.moc"
