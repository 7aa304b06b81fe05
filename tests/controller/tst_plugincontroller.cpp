// The controller singleton: identity, the pool it owns, its configuration and the
// error text it reports. Each function runs in a fresh process (see
// plugincontroller.cmake), so "fresh controller" means what it says.

#include "zelvanetest.h"

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>

#include <QtCore/QDir>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVariantMap>
#include <QtTest/QTest>

using Zelvane::ObjectPool;
using Zelvane::PluginController;

namespace {

// The root objects of the loaded test plugins named name, in load order: every test
// plugin publishes itself into the pool.
QList<QObject*> publishedPlugins(const QString& name)
{
    QList<QObject*> found;
    const QList<QObject*> objects = PluginController::instance()->pool()->allObjects();
    for (QObject* object : objects) {
        if (object && object->objectName() == name)
            found.append(object);
    }
    return found;
}

} // namespace

class tst_PluginController : public QObject
{
    Q_OBJECT

private slots:
    // These need a controller that nothing has configured yet.
    void instanceIsUnique();
    void poolOwnedByController();
    void errorStringOnFreshController();
    void pluginIidOnFreshController();

    void settingsRoundTrip();
    void pluginIidRoundTrip();
    void controllerMetaObject();
    void errorStringAfterFailedLoad();
    void loadWithoutSettingsIsRefused();
    void errorStringOfFailingPlugin();
    void argumentsTakeEffectAtNextLoad();

    void cleanup();
};

void tst_PluginController::cleanup()
{
    // Plugins are unloaded while the application still exists, as a host does.
    PluginController::instance()->shutdown();
}

void tst_PluginController::instanceIsUnique()
{
    PluginController* controller = PluginController::instance();
    QVERIFY(controller);
    QCOMPARE(PluginController::instance(), controller);
    QCOMPARE(controller->parent(), nullptr);
}

void tst_PluginController::poolOwnedByController()
{
    PluginController* controller = PluginController::instance();
    ObjectPool* pool = controller->pool();
    QVERIFY(pool);
    QCOMPARE(pool->parent(), controller);
    QCOMPARE(controller->children(), QList<QObject*> { pool });
    QCOMPARE(pool->allObjects(), QList<QObject*>());

    // The same pool for the whole run, also after a load.
    QTemporaryDir empty;
    QVERIFY(empty.isValid());
    QVERIFY(!controller->loadPlugins(QDir(empty.path())));
    QCOMPARE(controller->pool(), pool);
    QCOMPARE(PluginController::instance()->pool(), pool);
}

void tst_PluginController::errorStringOnFreshController()
{
    QCOMPARE(PluginController::instance()->errorString(), QStringLiteral("Unknown error"));
}

void tst_PluginController::pluginIidOnFreshController()
{
    QCOMPARE(PluginController::instance()->pluginIID(), QString());
    QVERIFY(PluginController::instance()->pluginIID().isEmpty());
}

void tst_PluginController::settingsRoundTrip()
{
    PluginController* controller = PluginController::instance();
    QCOMPARE(controller->settings(), nullptr);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    {
        QSettings settings(dir.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
        controller->setSettings(&settings);
        QCOMPARE(controller->settings(), &settings);
        // Not owned: the controller neither adopts nor deletes it.
        QCOMPARE(settings.parent(), nullptr);
        controller->setSettings(nullptr);
        QCOMPARE(controller->settings(), nullptr);
        controller->setSettings(&settings);
    }
    // The host's object is gone; the controller still only holds the pointer it was given.
    controller->setSettings(nullptr);
    QCOMPARE(controller->settings(), nullptr);
}

void tst_PluginController::pluginIidRoundTrip()
{
    PluginController* controller = PluginController::instance();
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    QCOMPARE(controller->pluginIID(), QStringLiteral(ZELVANE_TEST_IID));
    controller->setPluginIID(QStringLiteral("org.zelvane.Other/1.0"));
    QCOMPARE(controller->pluginIID(), QStringLiteral("org.zelvane.Other/1.0"));
    controller->setPluginIID(QString());
    QCOMPARE(controller->pluginIID(), QString());
}

void tst_PluginController::controllerMetaObject()
{
    const QMetaObject* meta = PluginController::instance()->metaObject();
    const QMetaObject& base = QObject::staticMetaObject;
    QCOMPARE(meta, &PluginController::staticMetaObject);
    QCOMPARE(QByteArray(meta->className()), QByteArrayLiteral("Zelvane::PluginController"));
    QCOMPARE(meta->superClass(), &base);
    // No signals, slots, properties or enums of its own.
    QCOMPARE(meta->methodCount(), base.methodCount());
    QCOMPARE(meta->propertyCount(), base.propertyCount());
    QCOMPARE(meta->enumeratorCount(), base.enumeratorCount());
    QCOMPARE(meta->classInfoCount(), base.classInfoCount());
}

void tst_PluginController::errorStringAfterFailedLoad()
{
    PluginController* controller = PluginController::instance();
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    QTemporaryDir empty;
    QVERIFY(empty.isValid());

    QCOMPARE(controller->loadPlugins(QDir(empty.path())), false);
    QCOMPARE(controller->errorString(), QStringLiteral("The Core plugin is not found"));
    // Asked again, the recorded text stays.
    QCOMPARE(controller->errorString(), QStringLiteral("The Core plugin is not found"));
}

void tst_PluginController::loadWithoutSettingsIsRefused()
{
    // A host that forgot setSettings() gets an error, not a crash, and nothing runs.
    PluginController* controller = PluginController::instance();
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(ZelvaneTest::copyPlugins(dir.path(), { QStringLiteral("zt_core") }));

    QCOMPARE(controller->settings(), nullptr);
    QCOMPARE(controller->loadPlugins(QDir(dir.path())), false);
    QCOMPARE(controller->errorString(),
             QStringLiteral("No settings object is set: call PluginController::setSettings() "
                            "before loadPlugins()"));
    QCOMPARE(ZelvaneTest::events(), QStringList());
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList());
    QCOMPARE(controller->pluginsModel(), nullptr);

    // An empty folder still reports the missing core first.
    QTemporaryDir empty;
    QVERIFY(empty.isValid());
    QCOMPARE(controller->loadPlugins(QDir(empty.path())), false);
    QCOMPARE(controller->errorString(), QStringLiteral("The Core plugin is not found"));
}

void tst_PluginController::errorStringOfFailingPlugin()
{
    PluginController* controller = PluginController::instance();
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QSettings settings(dir.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    const QString plugins = dir.filePath(QStringLiteral("plugins"));
    QVERIFY(QDir().mkpath(plugins));
    QVERIFY(ZelvaneTest::copyPlugins(plugins, { QStringLiteral("zt_core") }));

    controller->setSettings(&settings);
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    controller->setArguments({ { QStringLiteral("Core/fail"), QStringLiteral("no licence") } });
    QCOMPARE(controller->loadPlugins(QDir(plugins)), false);
    QCOMPARE(controller->errorString(),
             QStringLiteral("The plugin \"Core\" failed to initialize. Error: \"no licence\""));
}

void tst_PluginController::argumentsTakeEffectAtNextLoad()
{
    PluginController* controller = PluginController::instance();
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QSettings settings(dir.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    controller->setSettings(&settings);
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));

    // Two folders with a copy of the same core plugin each: two separate libraries.
    const QString first = dir.filePath(QStringLiteral("first"));
    const QString second = dir.filePath(QStringLiteral("second"));
    QVERIFY(QDir().mkpath(first));
    QVERIFY(QDir().mkpath(second));
    QVERIFY(ZelvaneTest::copyPlugins(first, { QStringLiteral("zt_core") }));
    QVERIFY(ZelvaneTest::copyPlugins(second, { QStringLiteral("zt_core") }));

    const QVariantMap firstMap { { QStringLiteral("core-mode"), QStringLiteral("first") } };
    const QVariantMap secondMap { { QStringLiteral("core-mode"), QStringLiteral("second") },
                                  { QStringLiteral("viewer-theme"), QStringLiteral("dark") } };

    controller->setArguments({ { QStringLiteral("core-mode"), QStringLiteral("first") } });
    QVERIFY2(controller->loadPlugins(QDir(first)), qPrintable(controller->errorString()));
    QCOMPARE(publishedPlugins(QStringLiteral("Core")).size(), 1);
    QObject* firstCore = publishedPlugins(QStringLiteral("Core")).first();
    QCOMPARE(firstCore->property("arguments").toMap(), firstMap);

    controller->setArguments({ { QStringLiteral("core-mode"), QStringLiteral("second") },
                               { QStringLiteral("viewer-theme"), QStringLiteral("dark") } });
    // The plugin already loaded keeps what it was given.
    QCOMPARE(firstCore->property("arguments").toMap(), firstMap);
    QCOMPARE(ZelvaneTest::events(), QStringList { QStringLiteral("initialize:Core") });

    QVERIFY2(controller->loadPlugins(QDir(second)), qPrintable(controller->errorString()));
    const QList<QObject*> cores = publishedPlugins(QStringLiteral("Core"));
    QCOMPARE(cores.size(), 2);
    QCOMPARE(cores.at(0), firstCore);
    QCOMPARE(cores.at(0)->property("arguments").toMap(), firstMap);
    QCOMPARE(cores.at(1)->property("arguments").toMap(), secondMap);
}

QTEST_GUILESS_MAIN(tst_PluginController)

#include "tst_plugincontroller.moc"
