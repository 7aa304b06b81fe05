// The loader handle: its states, loading and initialising a plugin, the failure texts,
// the record that copies share, and the two log lines that reach a host's message
// handler.

#include "zelvanetest.h"

#include <zelvane/iplugin.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QPluginLoader>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <algorithm>

using Zelvane::IPlugin;
using Zelvane::PluginController;
using Zelvane::PluginLoader;
using ZelvaneTest::LogCapture;
using ZelvaneTest::LogRecord;

using Arguments = QMap<QString, QString>;

namespace {

const QString loadable = QStringLiteral("Loadable");
const QString initializeLoadable = QStringLiteral("initialize:Loadable");
const QString destroyLoadable = QStringLiteral("destroy:Loadable");

} // namespace

class tst_PluginLoader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void defaultHandle();
    void scannedHandle();
    void refusedHandle_data();
    void refusedHandle();

    void loadAndUnload();
    void rootObjectNotAnIPlugin();
    void initializeFails_data();
    void initializeFails();
    void errorTextIsNeverCleared();
    void libraryCannotBeLoaded();
    void loadTwiceInitialisesTwice();

    void copiesShareOneRecord();
    void lastCopyUnloads();
    void scanAgainReleasesTheOldRecord();

    void dependsOn_data();
    void dependsOn();
    void equalityWithName_data();
    void equalityWithName();
    void findByName();

    void conflictsWithWarns();
    void droppedPluginLogRecord();

private:
    // A fresh copy of a test plugin in a folder of its own; its canonical path is the
    // file name that Qt's plugin loader reports.
    QString copy(const QString& target);
    QTemporaryDir m_dir;
};

void tst_PluginLoader::initTestCase()
{
    QVERIFY(m_dir.isValid());
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_PluginLoader::init()
{
    ZelvaneTest::clearEvents();
}

QString tst_PluginLoader::copy(const QString& target)
{
    return ZelvaneTest::copyToOwnFolder(m_dir.path(), target);
}

void tst_PluginLoader::defaultHandle()
{
    const PluginLoader plugin;
    QCOMPARE(plugin.isValid(), false);
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(plugin.instance(), nullptr);
    QCOMPARE(plugin.name(), QString());
    QCOMPARE(plugin.category(), QString());
    QCOMPARE(plugin.dependencies(), QStringList());
    QCOMPARE(plugin.dependencyCount(), 0);
    QCOMPARE(plugin.loadByDefault(), false);
    QCOMPARE(plugin.description(), QString());
    QCOMPARE(plugin.errorString(), QStringLiteral("Unknown error"));
    QCOMPARE(plugin.dependsOn(PluginLoader()), false);
    QCOMPARE(plugin.dependsOn(ZelvaneTest::makePlugin(QStringLiteral("A"), QStringLiteral("Core"),
                                                      { QString() })),
             false);

    PluginLoader unloaded;
    unloaded.unload(); // nothing to do, and nothing goes wrong
    QCOMPARE(unloaded.isValid(), false);
}

void tst_PluginLoader::scannedHandle()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QCOMPARE(plugin.isValid(), true);
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(plugin.instance(), nullptr);
    QCOMPARE(plugin.name(), loadable);
    QCOMPARE(plugin.category(), QStringLiteral("Extension"));
    QCOMPARE(plugin.loadByDefault(), true);
    QCOMPARE(plugin.description(),
             QStringLiteral("Loads, fails or initialises as its arguments say"));
    // Nothing has failed: the stored text is empty, not "Unknown error".
    QCOMPARE(plugin.errorString(), QString());
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_PluginLoader::refusedHandle_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("error"); // %1 is the file name

    QTest::newRow("not a Qt plugin")
        << "zt_notaplugin" << QStringLiteral("%1 is not a plugin (no string IID found)");
    QTest::newRow("another IID") << "zt_plugin_otheriid"
                                 << QStringLiteral("%1 plugin ignored (IID does not match)");
    QTest::newRow("no metadata") << "zt_plugin_nometadata"
                                 << QStringLiteral("The file \"%1\" has no plugin metadata");
    QTest::newRow("no name") << "zt_plugin_categoryonly"
                             << QStringLiteral(
                                    "The plugin \"%1\" has no name property in metadata");
    QTest::newRow("malformed Arguments") << "zt_plugin_argsnull" << QString();
}

void tst_PluginLoader::refusedHandle()
{
    QFETCH(QString, target);
    QFETCH(QString, error);

    const QString fileName = copy(target);
    PluginLoader plugin;
    QVERIFY(!plugin.scan(fileName));
    QCOMPARE(plugin.isValid(), true);
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(plugin.errorString(), error.isEmpty() ? QString() : error.arg(fileName));
}

void tst_PluginLoader::loadAndUnload()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));

    QVERIFY2(plugin.load({}), qPrintable(plugin.errorString()));
    QCOMPARE(plugin.loaded(), true);
    QPointer<QObject> root = plugin.instance();
    QVERIFY(root);
    QCOMPARE(root->objectName(), loadable);
    QVERIFY(qobject_cast<IPlugin*>(root.data()));
    QCOMPARE(ZelvaneTest::events(), QStringList { initializeLoadable });
    QCOMPARE(plugin.errorString(), QString());

    plugin.unload();
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(plugin.instance(), nullptr);
    QVERIFY(root.isNull());
    QCOMPARE(ZelvaneTest::events(), (QStringList { initializeLoadable, destroyLoadable }));
    // The metadata stays, and the plugin can be loaded again.
    QCOMPARE(plugin.name(), loadable);
    QVERIFY2(plugin.load({}), qPrintable(plugin.errorString()));
    QCOMPARE(plugin.loaded(), true);
    QCOMPARE(ZelvaneTest::events(),
             (QStringList { initializeLoadable, destroyLoadable, initializeLoadable }));
}

void tst_PluginLoader::rootObjectNotAnIPlugin()
{
    // Its root class has an initialize() of the same signature, but does not derive
    // from IPlugin.
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_notiplugin"))));
    QCOMPARE(plugin.name(), QStringLiteral("NotIPlugin"));

    QCOMPARE(plugin.load({ { QStringLiteral("NotIPlugin/fail"), QStringLiteral("never seen") } }),
             false);
    QCOMPARE(plugin.errorString(),
             QStringLiteral("The plugin \"NotIPlugin\" has not compatible interface"));
    QCOMPARE(ZelvaneTest::events(), QStringList());
    // Refused, yet left loaded: the caller decides.
    QCOMPARE(plugin.loaded(), true);
    QObject* root = plugin.instance();
    QVERIFY(root);
    QCOMPARE(qobject_cast<IPlugin*>(root), nullptr);
    QCOMPARE(root->objectName(), QStringLiteral("NotIPlugin"));

    plugin.unload();
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(ZelvaneTest::events(), QStringList { QStringLiteral("destroy:NotIPlugin") });
}

void tst_PluginLoader::initializeFails_data()
{
    QTest::addColumn<Arguments>("arguments");
    QTest::addColumn<QString>("error");

    QTest::newRow("with a text") << Arguments {
        { QStringLiteral("Loadable/fail"), QStringLiteral("no licence") }
    } << QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"no licence\"");
    QTest::newRow("without a text")
        << Arguments { { QStringLiteral("Loadable/fail"), QString() } }
        << QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"\"");
    // Both placeholders are filled at once, so a text that looks like one stays as it is.
    QTest::newRow("with a text that looks like placeholders")
        << Arguments { { QStringLiteral("Loadable/fail"), QStringLiteral("%1 and %2") } }
        << QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"%1 and %2\"");
    QTest::newRow("by throwing") << Arguments {
        { QStringLiteral("Loadable/throw"), QStringLiteral("disk full") }
    } << QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"disk full\"");
}

void tst_PluginLoader::initializeFails()
{
    QFETCH(Arguments, arguments);
    QFETCH(QString, error);

    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QCOMPARE(plugin.load(arguments), false);
    QCOMPARE(plugin.errorString(), error);
    QCOMPARE(ZelvaneTest::events(), QStringList { initializeLoadable });
    // The plugin stays loaded, its root object alive.
    QCOMPARE(plugin.loaded(), true);
    QVERIFY(plugin.instance());
}

void tst_PluginLoader::errorTextIsNeverCleared()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY(!plugin.load({ { QStringLiteral("Loadable/fail"), QStringLiteral("first try") } }));
    QVERIFY(plugin.load({}));
    QCOMPARE(plugin.errorString(),
             QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"first try\""));
}

void tst_PluginLoader::libraryCannotBeLoaded()
{
    // The library references a symbol that nothing defines: the dynamic loader refuses
    // it, and the handle keeps Qt's own text. Qt's plugin loader is asked about another
    // copy, since Qt shares its record of one file between loaders.
    const QString reference = copy(QStringLiteral("zt_plugin_unresolved"));
    QPluginLoader qt(reference);
    QVERIFY(!qt.load());
    const QString qtText = qt.errorString();
    QVERIFY2(qtText.contains(QStringLiteral("zelvane_test_symbol_that_nothing_defines")),
             qPrintable(qtText));

    const QString fileName = copy(QStringLiteral("zt_plugin_unresolved"));
    PluginLoader plugin;
    QVERIFY(plugin.scan(fileName));
    QCOMPARE(plugin.load({}), false);
    QCOMPARE(plugin.errorString(), QString(qtText).replace(reference, fileName));
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(plugin.instance(), nullptr);
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_PluginLoader::loadTwiceInitialisesTwice()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY(plugin.load({}));
    QPointer<QObject> root = plugin.instance();
    QVERIFY(plugin.load({}));
    QCOMPARE(ZelvaneTest::events(), (QStringList { initializeLoadable, initializeLoadable }));
    // The same root object, initialised a second time.
    QCOMPARE(plugin.instance(), root.data());
}

void tst_PluginLoader::copiesShareOneRecord()
{
    PluginLoader first;
    QVERIFY(first.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    const PluginLoader second = first;
    PluginLoader third;
    third = second;

    QVERIFY(first.load({}));
    QCOMPARE(second.loaded(), true);
    QCOMPARE(third.loaded(), true);
    QCOMPARE(second.instance(), first.instance());
    QCOMPARE(third.instance(), first.instance());

    third.unload();
    QCOMPARE(first.loaded(), false);
    QCOMPARE(second.loaded(), false);
    QCOMPARE(first.instance(), nullptr);

    // The error text is shared too.
    QVERIFY(!third.load({ { QStringLiteral("Loadable/fail"), QStringLiteral("shared") } }));
    QCOMPARE(first.errorString(),
             QStringLiteral("The plugin \"Loadable\" failed to initialize. Error: \"shared\""));
    QCOMPARE(second.loaded(), true);
}

void tst_PluginLoader::lastCopyUnloads()
{
    QPointer<QObject> root;
    {
        PluginLoader plugin;
        QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
        QVERIFY(plugin.load({}));
        root = plugin.instance();
        {
            const PluginLoader other = plugin;
            QVERIFY(other.loaded());
        }
        // One copy gone, one left: still loaded.
        QVERIFY(plugin.loaded());
        QVERIFY(root);
        QCOMPARE(ZelvaneTest::events(), QStringList { initializeLoadable });
    }
    QVERIFY(root.isNull());
    QCOMPARE(ZelvaneTest::events(), (QStringList { initializeLoadable, destroyLoadable }));
}

void tst_PluginLoader::scanAgainReleasesTheOldRecord()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY(plugin.load({}));
    const PluginLoader kept = plugin;

    // Another copy still holds the old record: nothing is unloaded.
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_minimal"))));
    QCOMPARE(plugin.name(), QStringLiteral("Minimal"));
    QCOMPARE(plugin.loaded(), false);
    QCOMPARE(kept.name(), loadable);
    QCOMPARE(kept.loaded(), true);
    QCOMPARE(ZelvaneTest::events(), QStringList { initializeLoadable });

    // The only handle of a loaded plugin scans again: the old record goes, and with it
    // the plugin.
    PluginLoader alone;
    QVERIFY(alone.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QVERIFY(alone.load({}));
    QVERIFY(alone.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    QCOMPARE(alone.loaded(), false);
    QCOMPARE(ZelvaneTest::events(),
             (QStringList { initializeLoadable, initializeLoadable, destroyLoadable }));
}

void tst_PluginLoader::dependsOn_data()
{
    QTest::addColumn<PluginLoader>("plugin");
    QTest::addColumn<PluginLoader>("other");
    QTest::addColumn<bool>("dependsOn");

    const QString core = QStringLiteral("Core");
    const QString extension = QStringLiteral("Extension");
    // P names Q, Q names R.
    const PluginLoader p
        = ZelvaneTest::makePlugin(QStringLiteral("P"), extension, { QStringLiteral("Q") });
    const PluginLoader q
        = ZelvaneTest::makePlugin(QStringLiteral("Q"), extension, { QStringLiteral("R") });
    const PluginLoader r = ZelvaneTest::makePlugin(QStringLiteral("R"), core);
    const PluginLoader self
        = ZelvaneTest::makePlugin(QStringLiteral("S"), extension, { QStringLiteral("S") });
    const PluginLoader emptyName
        = ZelvaneTest::makePlugin(QStringLiteral("E"), extension, { QString() });

    QTest::newRow("P names Q") << p << q << true;
    QTest::newRow("Q names R") << q << r << true;
    QTest::newRow("P does not depend on R through Q") << p << r << false;
    QTest::newRow("Q does not depend on P") << q << p << false;
    QTest::newRow("a plugin that names itself") << self << self << true;
    QTest::newRow("a name in other letter case")
        << ZelvaneTest::makePlugin(QStringLiteral("L"), extension, { QStringLiteral("q") }) << q
        << false;
    QTest::newRow("an invalid other") << p << PluginLoader() << false;
    QTest::newRow("an invalid other against an empty name") << emptyName << PluginLoader() << true;
    QTest::newRow("an invalid plugin") << PluginLoader() << q << false;
}

void tst_PluginLoader::dependsOn()
{
    QFETCH(PluginLoader, plugin);
    QFETCH(PluginLoader, other);
    QFETCH(bool, dependsOn);

    QCOMPARE(plugin.dependsOn(other), dependsOn);
}

void tst_PluginLoader::equalityWithName_data()
{
    QTest::addColumn<PluginLoader>("plugin");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("equal");

    const PluginLoader viewer
        = ZelvaneTest::makePlugin(QStringLiteral("Viewer"), QStringLiteral("Extension"));
    QTest::newRow("the same name") << viewer << "Viewer" << true;
    QTest::newRow("in lower case") << viewer << "viewer" << false;
    QTest::newRow("in upper case") << viewer << "VIEWER" << false;
    QTest::newRow("with a blank") << viewer << "Viewer " << false;
    QTest::newRow("an empty name") << viewer << QString() << false;
    QTest::newRow("an invalid handle and an empty name") << PluginLoader() << QString() << true;
    QTest::newRow("an invalid handle and a name") << PluginLoader() << "Viewer" << false;
}

void tst_PluginLoader::equalityWithName()
{
    QFETCH(PluginLoader, plugin);
    QFETCH(QString, name);
    QFETCH(bool, equal);

    QCOMPARE(plugin == name, equal);
    QCOMPARE(plugin != name, !equal);
}

void tst_PluginLoader::findByName()
{
    const QList<PluginLoader> plugins {
        ZelvaneTest::makePlugin(QStringLiteral("Core"), QStringLiteral("Core")),
        ZelvaneTest::makePlugin(QStringLiteral("Storage"), QStringLiteral("Extension")),
        ZelvaneTest::makePlugin(QStringLiteral("Viewer"), QStringLiteral("Extension")),
    };
    const auto found = std::find(plugins.cbegin(), plugins.cend(), QStringLiteral("Storage"));
    QCOMPARE(found - plugins.cbegin(), 1);
    QCOMPARE(std::find(plugins.cbegin(), plugins.cend(), QStringLiteral("storage")),
             plugins.cend());
}

void tst_PluginLoader::conflictsWithWarns()
{
    PluginLoader valid;
    QVERIFY(valid.scan(copy(QStringLiteral("zt_plugin_loadable"))));
    const PluginLoader invalid;

    LogCapture log;
    QCOMPARE(valid.conflictsWith(valid), false);
    QCOMPARE(valid.conflictsWith(invalid), false);
    QCOMPARE(invalid.conflictsWith(valid), false);
    QCOMPARE(invalid.conflictsWith(invalid), false);

    // One warning per call, in the "default" category and with no source location,
    // although this library is built with debug information.
    const QList<LogRecord> records = log.records();
    QCOMPARE(records.size(), 4);
    for (const LogRecord& record : records) {
        QCOMPARE(record.type, QtWarningMsg);
        QCOMPARE(record.category, QStringLiteral("default"));
        QCOMPARE(record.file, QStringLiteral("<null>"));
        QCOMPARE(record.function, QStringLiteral("<null>"));
        QCOMPARE(record.line, 0);
        QCOMPARE(record.message, QStringLiteral("Unimplemented code."));
    }
}

void tst_PluginLoader::droppedPluginLogRecord()
{
    // Discovery drops refused files with one debug line each: the error text as QDebug
    // streams a QString, quoted and with its quotes escaped.
    const QString notAPlugin = copy(QStringLiteral("zt_notaplugin"));
    const QString noName = copy(QStringLiteral("zt_plugin_categoryonly"));
    const QString badArguments = copy(QStringLiteral("zt_plugin_argsobject"));
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const QString& file : { notAPlugin, noName, badArguments })
        QVERIFY(QFile::copy(file, QDir(dir.path()).filePath(QFileInfo(file).fileName())));
    const QDir plugins(QFileInfo(dir.path()).canonicalFilePath());

    LogCapture log;
    QCOMPARE(PluginController::instance()->pluginsOptions(plugins).size(), 0);

    QStringList messages;
    for (const LogRecord& record : log.records()) {
        QCOMPARE(record.type, QtDebugMsg);
        QCOMPARE(record.category, QStringLiteral("default"));
        QCOMPARE(record.file, QStringLiteral("<null>"));
        QCOMPARE(record.function, QStringLiteral("<null>"));
        QCOMPARE(record.line, 0);
        messages.append(record.message);
    }
    // The folder is listed in the file system's order.
    messages.sort();
    QCOMPARE(messages,
             (QStringList {
                 QStringLiteral("\"\""),
                 QStringLiteral("\"%1 is not a plugin (no string IID found)\"")
                     .arg(plugins.filePath(QStringLiteral("libzt_notaplugin.so"))),
                 QStringLiteral("\"The plugin \\\"%1\\\" has no name property in metadata\"")
                     .arg(plugins.filePath(QStringLiteral("libzt_plugin_categoryonly.so"))),
             }));
}

QTEST_GUILESS_MAIN(tst_PluginLoader)

#include "tst_pluginloader.moc"
