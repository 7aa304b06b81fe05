// What the controller keeps of a load: whether a plugin counts as enabled, the model,
// the list of loaded plugins as shutdown() walks it, and the argument map that the
// next load hands out.
//
// Every test function runs in a process of its own (see loading.cmake): the controller
// is a process-wide singleton, and what one scenario loads would still be listed,
// loaded and modelled in the next.

#include "loadingfixture.h"

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>
#include <zelvane/pluginsmodel.h>

#include <QtTest/QTest>

using namespace LoadingTest;
using Zelvane::PluginController;

class tst_ControllerState : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void isEnabled_data();
    void isEnabled();
    void pluginsModelIsNullUntilTheFirstSuccess();
    void shutdownWithNothingLoaded();
    void shutdownUnloadsInReverseLoadOrder();
    void shutdownTwice();
    void setArgumentsReachesOnlyTheNextLoad();
};

void tst_ControllerState::init()
{
    ZelvaneTest::clearEvents();
}

void tst_ControllerState::isEnabled_data()
{
    // Viewer is on by default, Outline is off by default. The INI text is the whole
    // settings file, written as a user's configuration would be.
    QTest::addColumn<QString>("target");
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<bool>("enabled");

    QTest::newRow("nothing stored, on by default") << "zt_viewer" << QByteArray() << true;
    QTest::newRow("nothing stored, off by default")
        << "zt_loading_outline" << QByteArray() << false;
    QTest::newRow("stored false overrides a true default")
        << "zt_viewer" << QByteArray("[plugin]\nViewer=false\n") << false;
    QTest::newRow("stored true overrides a false default")
        << "zt_loading_outline" << QByteArray("[plugin]\nOutline=true\n") << true;
    QTest::newRow("stored true, on by default")
        << "zt_viewer" << QByteArray("[plugin]\nViewer=true\n") << true;
    QTest::newRow("key of another plugin")
        << "zt_viewer" << QByteArray("[plugin]\nStorage=false\n") << true;
    QTest::newRow("key in other letter case")
        << "zt_viewer" << QByteArray("[plugin]\nviewer=false\n") << true;
    QTest::newRow("key outside the plugin group")
        << "zt_viewer" << QByteArray("[General]\nViewer=false\n") << true;
    QTest::newRow("key in a group of another name")
        << "zt_viewer" << QByteArray("[plugins]\nViewer=false\n") << true;
}

void tst_ControllerState::isEnabled()
{
    QFETCH(QString, target);
    QFETCH(QByteArray, ini);
    QFETCH(bool, enabled);

    Scenario scenario;
    QVERIFY(scenario.create({ target }, ini));
    scenario.configureController();
    const QStringList keysBefore = scenario.settings()->allKeys();
    Zelvane::PluginLoader plugin;
    QVERIFY(plugin.scan(QDir(scenario.pluginDir()).filePath("lib" + target + ".so")));

    QCOMPARE(PluginController::instance()->isEnabled(plugin), enabled);

    // Asking writes nothing.
    QCOMPARE(scenario.settings()->allKeys(), keysBefore);
    QCOMPARE(plugin.loaded(), false);
}

void tst_ControllerState::pluginsModelIsNullUntilTheFirstSuccess()
{
    Scenario failing;
    QVERIFY(failing.create({ "zt_loading_notes" }));
    Scenario working;
    QVERIFY(working.create({ "zt_loading_alpha", "zt_loading_outline" }));
    working.configureController();
    PluginController* controller = PluginController::instance();
    QCOMPARE(controller->pluginsModel(), nullptr);

    QCOMPARE(controller->loadPlugins(QDir(failing.pluginDir())), false);
    QCOMPARE(controller->pluginsModel(), nullptr);

    QCOMPARE(controller->loadPlugins(QDir(working.pluginDir())), true);
    QVERIFY(controller->pluginsModel());
    QCOMPARE(modelTesterComplaints(controller->pluginsModel()), QStringList());
    QCOMPARE(modelRows(controller->pluginsModel()), QStringList({ "Alpha=on", "Outline=off" }));

    controller->shutdown();
}

void tst_ControllerState::shutdownWithNothingLoaded()
{
    Scenario scenario;
    QVERIFY(scenario.create({}));
    scenario.configureController();
    PluginController* controller = PluginController::instance();

    controller->shutdown();

    QCOMPARE(ZelvaneTest::events(), QStringList());
    QCOMPARE(controller->pluginsModel(), nullptr);
    QCOMPARE(controller->errorString(), QStringLiteral("Unknown error"));
}

void tst_ControllerState::shutdownUnloadsInReverseLoadOrder()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_notes", "zt_loading_tags" }));
    scenario.configureController();
    PluginController* controller = PluginController::instance();
    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);
    const QStringList loadOrder = initializedNames();
    QCOMPARE(loadOrder.size(), 3);
    QCOMPARE(controller->pool()->allObjects().size(), 3);
    Zelvane::PluginsModel* model = controller->pluginsModel();
    ZelvaneTest::clearEvents();

    controller->shutdown();

    QCOMPARE(ZelvaneTest::events(), destroyEvents(reversed(loadOrder)));
    // The plugins' published objects went with them; model and error text stay.
    QCOMPARE(controller->pool()->allObjects(), QList<QObject*>());
    QCOMPARE(controller->pluginsModel(), model);
    QCOMPARE(controller->errorString(), QStringLiteral("Unknown error"));
}

void tst_ControllerState::shutdownTwice()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_loading_alpha", "zt_loading_notes" }));
    scenario.configureController();
    PluginController* controller = PluginController::instance();
    QCOMPARE(controller->loadPlugins(QDir(scenario.pluginDir())), true);
    ZelvaneTest::clearEvents();

    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), destroyEvents({ "Notes", "Alpha" }));

    // The handles stay listed, but unloading an unloaded plugin does nothing.
    ZelvaneTest::clearEvents();
    controller->shutdown();
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_ControllerState::setArgumentsReachesOnlyTheNextLoad()
{
    Scenario first;
    QVERIFY(first.create({ "zt_loading_alpha" }));
    Scenario second;
    QVERIFY(second.create({ "zt_loading_beta" }));
    first.configureController();
    PluginController* controller = PluginController::instance();
    controller->setArguments({ { QStringLiteral("theme"), QStringLiteral("light") } });
    QCOMPARE(controller->loadPlugins(QDir(first.pluginDir())), true);
    QObject* alpha = publishedPlugin(QStringLiteral("Alpha"));
    QVERIFY(alpha);

    controller->setArguments({ { QStringLiteral("theme"), QStringLiteral("dark") } });

    // Alpha was initialised before and keeps what it received then.
    const QVariantMap light { { QStringLiteral("theme"), QStringLiteral("light") } };
    const QVariantMap dark { { QStringLiteral("theme"), QStringLiteral("dark") } };
    QCOMPARE(alpha->property("arguments").toMap(), light);
    QCOMPARE(ZelvaneTest::events(), initializeEvents({ "Alpha" }));

    QCOMPARE(controller->loadPlugins(QDir(second.pluginDir())), true);
    QObject* beta = publishedPlugin(QStringLiteral("Beta"));
    QVERIFY(beta);
    QCOMPARE(beta->property("arguments").toMap(), dark);
    QCOMPARE(alpha->property("arguments").toMap(), light);

    controller->shutdown();
}

QTEST_MAIN(tst_ControllerState)

#include "tst_controllerstate.moc"
