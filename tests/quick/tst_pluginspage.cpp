// Runs tst_pluginspage.qml: the controller has loaded a folder of test plugins, and the
// module Zelvane comes from the build tree, as a host would find it installed.

#include "../controller/loadingfixture.h"

#include <zelvane/quick/QmlPlugins>

#include <QtCore/QTemporaryDir>
#include <QtQml/QQmlEngine>
#include <QtQml/qqml.h>
#include <QtQuickTest/QtQuickTest>

// Where the test writes the page's picture: $ZELVANE_SCREENSHOT_DIR when set.
class Screenshots : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE QString path(const QString& name) const
    {
        const QByteArray target = qgetenv("ZELVANE_SCREENSHOT_DIR");
        return QDir(target.isEmpty() ? m_scratch.path() : QString::fromLocal8Bit(target))
            .filePath(name);
    }

private:
    QTemporaryDir m_scratch;
};

class Setup : public QObject
{
    Q_OBJECT

public slots:
    void applicationAvailable()
    {
        // Core and AltCore, Viewer needing Storage, a file that is not a plugin, and three
        // plugins of categories that the host does not load, one with a long description.
        QVERIFY(m_scenario.create({ "zt_core", "zt_inspect_altcore", "zt_viewer", "zt_storage",
                                    "zt_notaplugin", "zt_loading_sidebar", "zt_inspect_tool",
                                    "zt_quick_longread" }));
        m_scenario.configureController();
        QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(m_scenario.pluginDir())));
        Zelvane::QmlPlugins::setDefaultPluginDirectory(QDir(m_scenario.pluginDir()));
    }

    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->addImportPath(QStringLiteral(ZELVANE_QML_DIR));
        qmlRegisterSingletonInstance("ZelvaneTest", 1, 0, "Screenshots", &m_screenshots);
    }

    void cleanupTestCase() { Zelvane::PluginController::instance()->shutdown(); }

private:
    LoadingTest::Scenario m_scenario;
    Screenshots m_screenshots;
};

QUICK_TEST_MAIN_WITH_SETUP(tst_pluginspage, Setup)

#include "tst_pluginspage.moc"
