// The plugin interface: its meta-object, how a root object is recognised through it,
// and what initialize() receives and reports.

#include "zelvanetest.h"

#include <zelvane/iplugin.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QMetaObject>
#include <QtCore/QMetaProperty>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVariantMap>
#include <QtTest/QTest>

using Zelvane::IPlugin;
using Zelvane::PluginController;
using Zelvane::PluginLoader;

namespace {

// Derives without a meta-object of its own, so the object's meta-object functions are
// IPlugin's.
class BarePlugin : public IPlugin
{
public:
    bool initialize(const QMap<QString, QString>&, QString*) override { return true; }
};

} // namespace

class tst_IPlugin : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void ownMetaObject();
    void metaObjectFunctionsOfIPlugin();
    void metaCallPassesToQObject();
    void metaCastOnRootObject();
    void rootObjectThatIsNotAnIPlugin();
    void initializeReceivesTheWholeMap();
    void initializeFailsWithoutText();

private:
    QString copy(const QString& target);
    QTemporaryDir m_dir;
};

void tst_IPlugin::initTestCase()
{
    QVERIFY(m_dir.isValid());
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_IPlugin::init()
{
    ZelvaneTest::clearEvents();
}

QString tst_IPlugin::copy(const QString& target)
{
    return ZelvaneTest::copyToOwnFolder(m_dir.path(), target);
}

void tst_IPlugin::ownMetaObject()
{
    const QMetaObject& meta = IPlugin::staticMetaObject;
    const QMetaObject& base = QObject::staticMetaObject;
    QCOMPARE(QByteArray(meta.className()), QByteArrayLiteral("Zelvane::IPlugin"));
    QCOMPARE(meta.superClass(), &base);

    // Nothing of its own: every count is QObject's, every offset starts after QObject.
    QCOMPARE(meta.methodCount(), base.methodCount());
    QCOMPARE(meta.methodOffset(), base.methodCount());
    QCOMPARE(meta.propertyCount(), base.propertyCount());
    QCOMPARE(meta.propertyOffset(), base.propertyCount());
    QCOMPARE(meta.enumeratorCount(), base.enumeratorCount());
    QCOMPARE(meta.enumeratorOffset(), base.enumeratorCount());
    QCOMPARE(meta.classInfoCount(), base.classInfoCount());
    QCOMPARE(meta.classInfoOffset(), base.classInfoCount());
    QCOMPARE(meta.constructorCount(), 0);
    QCOMPARE(meta.indexOfMethod("initialize(QMap<QString,QString>,QString*)"), -1);
}

void tst_IPlugin::metaObjectFunctionsOfIPlugin()
{
    BarePlugin plugin;
    QCOMPARE(plugin.metaObject(), &IPlugin::staticMetaObject);
    QCOMPARE(plugin.qt_metacast("Zelvane::IPlugin"), static_cast<void*>(&plugin));
    QCOMPARE(plugin.qt_metacast("QObject"), static_cast<void*>(&plugin));
    QCOMPARE(plugin.qt_metacast(nullptr), nullptr);
    QCOMPARE(plugin.qt_metacast("IPlugin"), nullptr);
    QCOMPARE(plugin.qt_metacast("zelvane::iplugin"), nullptr);
    QCOMPARE(plugin.qt_metacast(ZELVANE_TEST_IID), nullptr);
    QCOMPARE(qobject_cast<IPlugin*>(static_cast<QObject*>(&plugin)), &plugin);
    QVERIFY(plugin.inherits("Zelvane::IPlugin"));
}

void tst_IPlugin::metaCallPassesToQObject()
{
    // Reading and writing QObject's property and invoking QObject's slot all go
    // through IPlugin's qt_metacall.
    auto* plugin = new BarePlugin;
    QPointer<QObject> guard = plugin;
    const QMetaProperty objectName
        = plugin->metaObject()->property(plugin->metaObject()->indexOfProperty("objectName"));
    QVERIFY(objectName.write(plugin, QStringLiteral("bare")));
    QCOMPARE(plugin->objectName(), QStringLiteral("bare"));
    QCOMPARE(objectName.read(plugin).toString(), QStringLiteral("bare"));

    QVERIFY(QMetaObject::invokeMethod(plugin, "deleteLater"));
    QVERIFY(guard);
    QTRY_VERIFY(guard.isNull());
}

void tst_IPlugin::metaCastOnRootObject()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY2(plugin.load({}), qPrintable(plugin.errorString()));
    QObject* root = plugin.instance();
    QVERIFY(root);

    QCOMPARE(root->qt_metacast("Zelvane::IPlugin"), static_cast<void*>(root));
    QCOMPARE(root->qt_metacast("QObject"), static_cast<void*>(root));
    QCOMPARE(root->qt_metacast(nullptr), nullptr);
    QCOMPARE(root->qt_metacast("Zelvane::ObjectPool"), nullptr);
    // The plugin's IID is metadata, not an interface the object can be cast to.
    QCOMPARE(root->qt_metacast(ZELVANE_TEST_IID), nullptr);

    // IPlugin's own answers on the same object.
    auto* iplugin = static_cast<IPlugin*>(root->qt_metacast("Zelvane::IPlugin"));
    QCOMPARE(static_cast<QObject*>(iplugin), root);
    QCOMPARE(iplugin->IPlugin::qt_metacast("Zelvane::IPlugin"), static_cast<void*>(iplugin));
    QCOMPARE(iplugin->IPlugin::qt_metacast("QObject"), static_cast<void*>(iplugin));
    QCOMPARE(iplugin->IPlugin::qt_metacast("TestPlugin"), nullptr);
    QCOMPARE(iplugin->IPlugin::qt_metacast(nullptr), nullptr);

    QCOMPARE(root->metaObject()->superClass(), &IPlugin::staticMetaObject);
    QCOMPARE(qobject_cast<IPlugin*>(root), iplugin);
}

void tst_IPlugin::rootObjectThatIsNotAnIPlugin()
{
    // The root class has initialize() with the very same signature, and is refused.
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_notiplugin"))));
    QVERIFY(!plugin.load({}));
    QCOMPARE(plugin.errorString(),
             QStringLiteral("The plugin \"NotIPlugin\" has not compatible interface"));
    QObject* root = plugin.instance();
    QVERIFY(root);
    QCOMPARE(root->qt_metacast("Zelvane::IPlugin"), nullptr);
    QCOMPARE(root->metaObject()->superClass(), &QObject::staticMetaObject);
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_IPlugin::initializeReceivesTheWholeMap()
{
    // Whatever the plugin declares, it gets every argument, those of other plugins too.
    const QMap<QString, QString> arguments {
        { QStringLiteral("viewer-theme"), QStringLiteral("dark") },
        { QStringLiteral("storage-path"), QStringLiteral("/srv/documents") },
        { QStringLiteral("Loadable/unused"), QString() },
    };
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY2(plugin.load(arguments), qPrintable(plugin.errorString()));

    const QVariantMap received = plugin.instance()->property("arguments").toMap();
    QCOMPARE(received,
             (QVariantMap {
                 { QStringLiteral("viewer-theme"), QStringLiteral("dark") },
                 { QStringLiteral("storage-path"), QStringLiteral("/srv/documents") },
                 { QStringLiteral("Loadable/unused"), QString() },
             }));
    QCOMPARE(ZelvaneTest::events(), QStringList { QStringLiteral("initialize:Loadable") });
}

void tst_IPlugin::initializeFailsWithoutText()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY(!plugin.load({ { QStringLiteral("Loadable/fail"), QString() } }));
    QCOMPARE(plugin.errorString(),
             QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"\""));
}

QTEST_GUILESS_MAIN(tst_IPlugin)

#include "tst_iplugin.moc"
