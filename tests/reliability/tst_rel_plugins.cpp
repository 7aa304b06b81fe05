// Plugins that misbehave while the host starts or stops: the host gets a false result
// and the plugin's reason, never a crash, and shutdown() still unloads what was loaded.
// Every function runs in its own process (see CMakeLists.txt).

#include "reliability.h"
#include "zelvanetest.h"

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>

#include <QtCore/QPointer>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using Zelvane::PluginController;

namespace {

QObject* published(const QString& name)
{
    const QList<QObject*> objects = PluginController::instance()->pool()->allObjects();
    for (QObject* object : objects) {
        if (object && object->objectName() == name)
            return object;
    }
    return nullptr;
}

QStringList publishedNames()
{
    QStringList names;
    const QList<QObject*> objects = PluginController::instance()->pool()->allObjects();
    for (const QObject* object : objects)
        names.append(object ? object->objectName() : QStringLiteral("<null>"));
    return names;
}

} // namespace

class tst_RelPlugins : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void initializeFailsWithText();
    void initializeFailsWithoutText();
    void notAnIPlugin();
    void unresolvedSymbol();
    void callsBackIntoController();
    void throwsStdException();
    void throwsOtherException();
    void destructorDeletesOtherPluginsObjects();

private:
    // Loads the plugins of the given targets with the given arguments and checks the
    // result, the controller's text and the trace of initialised and destroyed plugins.
    void load(const QStringList& targets, const QMap<QString, QString>& arguments, bool result,
              const QString& errorString, const QStringList& events);

    QTemporaryDir m_dir;
    QString m_pluginDir;
    QSettings* m_settings = nullptr;
};

void tst_RelPlugins::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_pluginDir = m_dir.filePath(QStringLiteral("plugins"));
    QVERIFY(QDir().mkpath(m_pluginDir));
    m_settings
        = new QSettings(m_dir.filePath(QStringLiteral("host.ini")), QSettings::IniFormat, this);
    PluginController::instance()->setSettings(m_settings);
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_RelPlugins::load(const QStringList& targets, const QMap<QString, QString>& arguments,
                          bool result, const QString& errorString, const QStringList& events)
{
    QVERIFY(ZelvaneTest::copyPlugins(m_pluginDir, targets));
    PluginController* controller = PluginController::instance();
    controller->setArguments(arguments);
    ZelvaneTest::LogCapture capture;
    QCOMPARE(controller->loadPlugins(QDir(m_pluginDir)), result);
    QCOMPARE(controller->errorString(), errorString);
    QCOMPARE(ZelvaneTest::events(), events);
    QCOMPARE(capture.messages(), QStringList());
    QCOMPARE(controller->pluginsModel() != nullptr, result);
}

void tst_RelPlugins::initializeFailsWithText()
{
    // The failed plugin stays loaded only while the loading sequence holds it.
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_storage") },
         { { QStringLiteral("Storage/fail"), QStringLiteral("disk \"D:\" full") } }, false,
         QStringLiteral("The plugin \"Storage\" failed to initialize. Error: \"disk \"D:\" full\""),
         { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Storage"),
           QStringLiteral("destroy:Storage") });
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().constLast(), QStringLiteral("destroy:Core"));
    QCOMPARE(publishedNames(), QStringList());
}

void tst_RelPlugins::initializeFailsWithoutText()
{
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_storage") },
         { { QStringLiteral("Storage/fail"), QString() } }, false,
         QStringLiteral("The plugin \"Storage\" failed to initialize. Error: \"\""),
         { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Storage"),
           QStringLiteral("destroy:Storage") });
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().constLast(), QStringLiteral("destroy:Core"));
}

void tst_RelPlugins::notAnIPlugin()
{
    // Its initialize() is never called, although it has one.
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_rel_foreign") }, {}, false,
         QStringLiteral("The plugin \"Foreign\" has not compatible interface"),
         { QStringLiteral("initialize:Core"), QStringLiteral("destroy:Foreign") });
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().constLast(), QStringLiteral("destroy:Core"));
}

void tst_RelPlugins::unresolvedSymbol()
{
    const QString path = QDir(m_pluginDir).filePath(QStringLiteral("libzt_rel_unresolved.so"));
    // Qt's own text, with the dynamic loader's reason. No code of the plugin ran.
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_rel_unresolved") }, {}, false,
         QStringLiteral("Cannot load library %1: (%1: undefined symbol: "
                        "zelvane_test_symbol_that_nothing_defines)")
             .arg(path),
         { QStringLiteral("initialize:Core") });
    QVERIFY(!ZelvaneTest::staticInitialised().contains(QStringLiteral("Unresolved")));
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().constLast(), QStringLiteral("destroy:Core"));
}

void tst_RelPlugins::callsBackIntoController()
{
    // Options is switched off: it is not loaded, but its options are there.
    m_settings->setValue(QStringLiteral("plugin/Options"), false);
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_rel_misbehaving"),
           QStringLiteral("zt_rel_options") },
         { { QStringLiteral("Misbehaving/callback"), m_pluginDir } }, true,
         QStringLiteral("Unknown error"),
         { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Misbehaving") });

    // What the plugin saw from inside initialize(), halfway through loading.
    QObject* plugin = published(QStringLiteral("Misbehaving"));
    QVERIFY(plugin);
    QCOMPARE(plugin->property("modelWasNull"), QVariant(true));
    QCOMPARE(plugin->property("invalidHandleEnabled"), QVariant(false));
    QCOMPARE(plugin->property("hasSettings"), QVariant(true));
    QCOMPARE(plugin->property("iid"), QVariant(QStringLiteral(ZELVANE_TEST_IID)));
    QCOMPARE(plugin->property("errorString"), QVariant(QStringLiteral("Unknown error")));
    QCOMPARE(plugin->property("pooled").toStringList(),
             QStringList({ QStringLiteral("Core"), QStringLiteral("Misbehaving") }));
    QCOMPARE(plugin->property("options").toStringList(),
             QStringList({ QStringLiteral("verbose"), QStringLiteral("level") }));

    QCOMPARE(publishedNames(),
             QStringList({ QStringLiteral("Core"), QStringLiteral("Misbehaving") }));
    PluginController::instance()->shutdown();
    QCOMPARE(
        ZelvaneTest::events().mid(2),
        QStringList({ QStringLiteral("destroy:Misbehaving"), QStringLiteral("destroy:Core") }));
    QCOMPARE(publishedNames(), QStringList());
}

void tst_RelPlugins::throwsStdException()
{
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_storage") },
         { { QStringLiteral("Storage/throw"), QStringLiteral("boom") } }, false,
         QStringLiteral("The plugin \"Storage\" failed to initialize. Error: \"boom\""),
         { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Storage"),
           QStringLiteral("destroy:Storage") });
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().constLast(), QStringLiteral("destroy:Core"));
}

void tst_RelPlugins::throwsOtherException()
{
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_rel_misbehaving") },
         { { QStringLiteral("Misbehaving/throw"), QString() } }, false,
         QStringLiteral(
             "The plugin \"Misbehaving\" failed to initialize. Error: \"unknown exception\""),
         { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Misbehaving"),
           QStringLiteral("destroy:Misbehaving") });
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().constLast(), QStringLiteral("destroy:Core"));
}

void tst_RelPlugins::destructorDeletesOtherPluginsObjects()
{
    load({ QStringLiteral("zt_core"), QStringLiteral("zt_rel_misbehaving") },
         { { QStringLiteral("Misbehaving/sweep"), QString() } }, true,
         QStringLiteral("Unknown error"),
         { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Misbehaving") });
    // The host publishes an object of its own too.
    QPointer<QObject> hostObject = new QObject;
    hostObject->setObjectName(QStringLiteral("Host"));
    PluginController::instance()->pool()->add(hostObject);
    QPointer<QObject> core = published(QStringLiteral("Core"));
    QVERIFY(core);

    // Misbehaving goes first and takes the Core plugin's root object with it; unloading
    // the Core plugin afterwards finds its object gone and must not delete it again.
    ZelvaneTest::LogCapture capture;
    PluginController::instance()->shutdown();
    QCOMPARE(
        ZelvaneTest::events(),
        QStringList({ QStringLiteral("initialize:Core"), QStringLiteral("initialize:Misbehaving"),
                      QStringLiteral("destroy:Misbehaving"), QStringLiteral("destroy:Core") }));
    QVERIFY(core.isNull());
    QVERIFY(hostObject.isNull());
    QCOMPARE(publishedNames(), QStringList());
    QCOMPARE(capture.messages(), QStringList());

    // A second shutdown finds nothing left to do.
    PluginController::instance()->shutdown();
    QCOMPARE(ZelvaneTest::events().size(), 4);
}

QTEST_MAIN(tst_RelPlugins)
#include "tst_rel_plugins.moc"
