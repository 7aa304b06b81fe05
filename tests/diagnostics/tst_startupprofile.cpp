// Zelvane::StartupProfile: the host's own last start, plugin by plugin, as the library
// recorded it while loadPlugins() ran, then its shutdown(); and the texts the screens
// show for it.
//
// Every test function runs in a process of its own: the profile is the process's last
// start. Times are only checked for being non-negative and adding up; the texts are
// compared whole, with the profile's own numbers.

#include "../controller/loadingfixture.h"

#include <zelvane/diagnostics/StartupProfile>

#include <QtTest/QTest>

using namespace LoadingTest;
using Zelvane::PluginController;
using Zelvane::StartupProfile;

Q_DECLARE_METATYPE(StartupProfile::Step)

namespace {

QStringList namesOf(const QList<StartupProfile::Plugin>& plugins)
{
    QStringList names;
    for (const StartupProfile::Plugin& plugin : plugins)
        names.append(plugin.name);
    return names;
}

QString oneDecimal(double value)
{
    return QString::number(value, 'f', 1);
}

QString ms(qint64 ns)
{
    return oneDecimal(double(ns) / 1e6) + " ms";
}

} // namespace

class tst_StartupProfile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void emptyBeforeTheFirstLoad();
    void pluginsInLoadOrder();
    void slowestFirst();
    void failedStep_data();
    void failedStep();
    void aProfileTakenStaysAsItWas();
    void shutdown();
    void texts_data();
    void texts();
    void pluginAndSummaryTexts();
    void failedStartTexts();
};

void tst_StartupProfile::init()
{
    ZelvaneTest::clearEvents();
    // The texts write numbers in the user's locale; the expectations here are written
    // in the C locale's digits, whatever the machine's locale is.
    QLocale::setDefault(QLocale::c());
}

void tst_StartupProfile::emptyBeforeTheFirstLoad()
{
    const StartupProfile profile = StartupProfile::last();
    QCOMPARE(profile.isValid(), false);
    QCOMPARE(profile.succeeded(), false);
    QCOMPARE(profile.plugins().size(), 0);
    QCOMPARE(profile.totalNs(), qint64(-1));
    QCOMPARE(profile.hasShutdown(), false);
    QCOMPARE(profile.summaryText(), QStringLiteral("No start-up has been profiled."));
    QCOMPARE(StartupProfile().isValid(), false);
}

void tst_StartupProfile::pluginsInLoadOrder()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupProfile profile = StartupProfile::last();
    QCOMPARE(profile.isValid(), true);
    QCOMPARE(profile.succeeded(), true);
    // The order initialize() ran in is the load order.
    QCOMPARE(ZelvaneTest::events(), initializeEvents(namesOf(profile.plugins())));
    QStringList fileNames;
    qint64 sum = profile.discoveryNs() + profile.orderingNs() + profile.modelNs();
    for (const StartupProfile::Plugin& plugin : profile.plugins()) {
        fileNames.append(plugin.fileName);
        QVERIFY(plugin.libraryNs >= 0);
        QVERIFY(plugin.rootObjectNs >= 0);
        QVERIFY(plugin.initializeNs >= 0);
        QCOMPARE(plugin.totalNs(), plugin.libraryNs + plugin.rootObjectNs + plugin.initializeNs);
        QCOMPARE(plugin.failedStep, StartupProfile::Step::None);
        QVERIFY(profile.share(plugin) >= 0.0 && profile.share(plugin) <= 100.0);
        sum += plugin.totalNs();
    }
    QCOMPARE(fileNames, QStringList({ "libzt_core.so", "libzt_storage.so", "libzt_viewer.so" }));
    QVERIFY(profile.discoveryNs() >= 0);
    QVERIFY(profile.orderingNs() >= 0);
    QVERIFY(profile.modelNs() >= 0);
    QVERIFY(profile.totalNs() >= sum);
    QCOMPARE(profile.failedPlugin().name, QString());
    QCOMPARE(profile.hasShutdown(), false);
}

void tst_StartupProfile::slowestFirst()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer", "zt_startup_sleeper" }));
    scenario.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupProfile profile = StartupProfile::last();
    const QList<StartupProfile::Plugin> sorted = profile.slowestFirst();
    QStringList sortedNames = namesOf(sorted);
    QStringList loadedNames = namesOf(profile.plugins());
    std::sort(sortedNames.begin(), sortedNames.end());
    std::sort(loadedNames.begin(), loadedNames.end());
    QCOMPARE(sortedNames, loadedNames);
    for (qsizetype i = 1; i < sorted.size(); ++i)
        QVERIFY2(sorted.at(i - 1).totalNs() >= sorted.at(i).totalNs(),
                 qPrintable(sorted.at(i - 1).name + " before " + sorted.at(i).name));
}

void tst_StartupProfile::failedStep_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<QString>("name");
    QTest::addColumn<StartupProfile::Step>("step");
    QTest::addColumn<QString>("stepText");

    QTest::newRow("library") << "zt_plugin_unresolved" << QByteArray("[plugin]\nUnresolved=true\n")
                             << "Unresolved" << StartupProfile::Step::Library
                             << "loading the library";
    QTest::newRow("root object") << "zt_plugin_notiplugin" << QByteArray() << "NotIPlugin"
                                 << StartupProfile::Step::RootObject << "creating the root object";
    QTest::newRow("initialize") << "zt_viewer" << QByteArray() << "Viewer"
                                << StartupProfile::Step::Initialize << "initialize()";
}

void tst_StartupProfile::failedStep()
{
    QFETCH(QString, target);
    QFETCH(QByteArray, ini);
    QFETCH(QString, name);
    QFETCH(StartupProfile::Step, step);
    QFETCH(QString, stepText);

    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", target }, ini));
    scenario.configureController();
    PluginController::instance()->setArguments({ { "Viewer/fail", "no screen" } });
    QVERIFY(!PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupProfile profile = StartupProfile::last();
    QCOMPARE(profile.isValid(), true);
    QCOMPARE(profile.succeeded(), false);
    QCOMPARE(profile.failedPlugin().name, name);
    QCOMPARE(profile.failedPlugin().failedStep, step);
    QCOMPARE(profile.plugins().constLast().name, name);
    QCOMPARE(profile.modelNs(), qint64(-1));
    QCOMPARE(StartupProfile::stepText(step), stepText);
}

void tst_StartupProfile::aProfileTakenStaysAsItWas()
{
    Scenario first;
    QVERIFY(first.create({ "zt_core" }));
    first.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(first.pluginDir())));
    const StartupProfile taken = StartupProfile::last();
    PluginController::instance()->shutdown();

    Scenario second;
    QVERIFY(second.create({ "zt_storage" }));
    second.configureController();
    QVERIFY(!PluginController::instance()->loadPlugins(QDir(second.pluginDir())));

    QCOMPARE(namesOf(taken.plugins()), QStringList({ "Core" }));
    QCOMPARE(taken.succeeded(), true);
    QCOMPARE(taken.hasShutdown(), false);
    // The latest start has no Core plugin: nothing loaded, nothing shut down since.
    const StartupProfile latest = StartupProfile::last();
    QCOMPARE(latest.plugins().size(), 0);
    QCOMPARE(latest.succeeded(), false);
    QCOMPARE(latest.hasShutdown(), false);
}

void tst_StartupProfile::shutdown()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    PluginController::instance()->shutdown();

    const StartupProfile profile = StartupProfile::last();
    QCOMPARE(profile.hasShutdown(), true);
    QStringList unloaded;
    qint64 sum = 0;
    for (const StartupProfile::Unload& unload : profile.unloads()) {
        unloaded.append(unload.name);
        QVERIFY(unload.ns >= 0);
        sum += unload.ns;
    }
    // Destructors ran in the same order.
    QCOMPARE(ZelvaneTest::events().mid(3), destroyEvents(unloaded));
    QCOMPARE(unloaded, reversed(namesOf(profile.plugins())));
    QVERIFY(profile.shutdownNs() >= sum);
}

void tst_StartupProfile::texts_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<qint64>("ns");
    QTest::addColumn<QString>("duration");

    const QLocale c = QLocale::c();
    QTest::newRow("zero") << c << qint64(0) << "0.0 ms";
    QTest::newRow("rounds down") << c << qint64(1'249'999) << "1.2 ms";
    QTest::newRow("rounds up") << c << qint64(1'250'001) << "1.3 ms";
    QTest::newRow("seconds") << c << qint64(2'345'600'000) << "2345.6 ms";
    QTest::newRow("not reached") << c << qint64(-1) << "0.0 ms";
    // The user's locale writes the number; the untranslated unit stays as it is.
    const QLocale german(QLocale::German, QLocale::Germany);
    QTest::newRow("German") << german << qint64(1'250'001) << "1,3 ms";
    QTest::newRow("German seconds") << german << qint64(2'345'600'000) << "2.345,6 ms";
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    QTest::newRow("English seconds") << english << qint64(2'345'600'000) << "2,345.6 ms";
}

void tst_StartupProfile::texts()
{
    QFETCH(QLocale, locale);
    QFETCH(qint64, ns);
    QFETCH(QString, duration);
    const QLocale before;
    QLocale::setDefault(locale);
    const QString text = StartupProfile::durationText(ns);
    const QString share = StartupProfile::shareText(45.66);
    QLocale::setDefault(before);
    QCOMPARE(text, duration);
    QCOMPARE(share, locale.toString(45.66, 'f', 1) + QLatin1Char('%'));
}

void tst_StartupProfile::pluginAndSummaryTexts()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage" }));
    scenario.configureController();
    QVERIFY(PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupProfile profile = StartupProfile::last();
    QStringList texts;
    QStringList expected;
    for (const StartupProfile::Plugin& plugin : profile.plugins()) {
        texts.append(profile.pluginText(plugin));
        expected.append(plugin.name + ": " + ms(plugin.totalNs()) + " ("
                        + oneDecimal(100.0 * double(plugin.totalNs()) / double(profile.totalNs()))
                        + "%)");
    }
    QCOMPARE(texts, expected);
    QCOMPARE(profile.summaryText(),
             "Started in " + ms(profile.totalNs()) + ": 2 plugins, discovery "
                 + ms(profile.discoveryNs()) + ", ordering " + ms(profile.orderingNs()));
    QCOMPARE(StartupProfile::shareText(45.66), QStringLiteral("45.7%"));
}

void tst_StartupProfile::failedStartTexts()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    PluginController::instance()->setArguments({ { "Viewer/fail", "no screen" } });
    QVERIFY(!PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    const StartupProfile profile = StartupProfile::last();
    const StartupProfile::Plugin viewer = profile.failedPlugin();
    QCOMPARE(profile.pluginText(viewer),
             "Viewer: " + ms(viewer.totalNs()) + " ("
                 + oneDecimal(100.0 * double(viewer.totalNs()) / double(profile.totalNs()))
                 + "%), failed in initialize()");
    QCOMPARE(profile.summaryText(),
             "Start failed after " + ms(profile.totalNs()) + ": 3 plugins, discovery "
                 + ms(profile.discoveryNs()) + ", ordering " + ms(profile.orderingNs()));
}

QTEST_GUILESS_MAIN(tst_StartupProfile)
#include "tst_startupprofile.moc"
