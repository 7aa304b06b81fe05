// Runs tst_pluginspage.qml: the controller has loaded a folder of test plugins, and the
// module Zelvane comes from the build tree, as a host would find it installed.

#include "../controller/loadingfixture.h"

#include <zelvane/quick/QmlPlugins>

#include <QtQml/QQmlEngine>
#include <QtQuickTest/QtQuickTest>

class Setup : public QObject
{
    Q_OBJECT

public slots:
    void applicationAvailable()
    {
        // Core and AltCore, Viewer needing Storage, a file that is not a plugin.
        QVERIFY(m_scenario.create(
            { "zt_core", "zt_inspect_altcore", "zt_viewer", "zt_storage", "zt_notaplugin" }));
        m_scenario.configureController();
        QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(m_scenario.pluginDir())));
        Zelvane::QmlPlugins::setDefaultPluginDirectory(QDir(m_scenario.pluginDir()));
    }

    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->addImportPath(QStringLiteral(ZELVANE_QML_DIR));
    }

    void cleanupTestCase() { Zelvane::PluginController::instance()->shutdown(); }

private:
    LoadingTest::Scenario m_scenario;
};

QUICK_TEST_MAIN_WITH_SETUP(tst_pluginspage, Setup)

#include "tst_pluginspage.moc"
