// Discovery of the plugins of one folder: which files become plugins, the debug line
// written for every file that is dropped, and the order of the result.
//
// The folder is listed in the QDir's own order, so every test that checks
// an order builds its scenario in a fresh folder and derives the expected order from
// the same listing call that discovery makes.

#include "controller/plugindiscovery_p.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QMultiMap>
#include <QtCore/QPair>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <memory>

using Zelvane::PluginController;
using Zelvane::PluginLoader;
using ZelvaneTest::LogCapture;
using ZelvaneTest::LogRecord;

namespace {

using Plugins = QMultiMap<QString, PluginLoader>;

const QString otherIid = QStringLiteral("org.zelvane.Other/1.0");

// The same listing call discovery makes: QDir::NoSort, which is the QDir's own
// sorting (by name ignoring case for a QDir made from a path).
QStringList listing(const QString& dir)
{
    return QDir(dir).entryList(QStringList { QStringLiteral("*.so") }, QDir::Files, QDir::NoSort);
}

// The file name that a plugin loader reports for a file of the folder.
QString reportedPath(const QString& dir, const QString& fileName)
{
    return QFileInfo(QDir(dir).filePath(fileName)).canonicalFilePath();
}

QString fileOf(const QString& target)
{
    return QStringLiteral("lib") + target + QStringLiteral(".so");
}

// "key:Name" for every entry, in the map's iteration order.
QStringList entries(const Plugins& plugins)
{
    QStringList result;
    for (auto it = plugins.cbegin(); it != plugins.cend(); ++it)
        result.append(it.key() + QLatin1Char(':') + it.value().name());
    return result;
}

QStringList names(const QList<PluginLoader>& plugins)
{
    QStringList result;
    for (const PluginLoader& plugin : plugins)
        result.append(plugin.name());
    return result;
}

QStringList descriptions(const QList<PluginLoader>& plugins)
{
    QStringList result;
    for (const PluginLoader& plugin : plugins)
        result.append(plugin.description());
    return result;
}

} // namespace

class tst_PluginDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void emptyFolder_data();
    void emptyFolder();
    void entriesThatAreNotListed_data();
    void entriesThatAreNotListed();
    void entriesThatAreListed_data();
    void entriesThatAreListed();
    void droppedFileIsLogged_data();
    void droppedFileIsLogged();
    void droppedFilesAreLoggedInListingOrder();
    void extensionsComeOutInReverseListingOrder();
    void fileNamesDifferingInCaseAndDigits_data();
    void fileNamesDifferingInCaseAndDigits();
    void categoriesIterateInKeyOrder();
    void sameNameTwiceIsKeptTwice();
    void sameFileUnderTwoNamesIsKeptTwice();
    void identifierChangeBetweenCalls();
    void identifierDiffersInLetterCase();
    void everyCallScansAfresh();
    void acceptedHandlesAreScannedNotLoaded();

private:
    // Each scenario gets its own folder, so the listing holds exactly its files.
    QString scenarioDir();
    bool copy(const QStringList& targets)
    {
        return ZelvaneTest::copyPlugins(m_dir->path(), targets);
    }
    void verifyDroppedLine(const LogRecord& record, const QString& expected);

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_PluginDiscovery::initTestCase()
{
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_PluginDiscovery::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY2(m_dir->isValid(), qPrintable(m_dir->errorString()));
}

void tst_PluginDiscovery::cleanup()
{
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    // Discovery reads metadata only: no plugin library may have run any code.
    QCOMPARE(ZelvaneTest::staticInitialised(), QStringList());
    m_dir.reset();
}

QString tst_PluginDiscovery::scenarioDir()
{
    return m_dir->path();
}

void tst_PluginDiscovery::verifyDroppedLine(const LogRecord& record, const QString& expected)
{
    QCOMPARE(record.message, expected);
    QCOMPARE(record.type, QtDebugMsg);
    QCOMPARE(record.category, QStringLiteral("default"));
    QCOMPARE(record.file, QStringLiteral("<null>"));
    QCOMPARE(record.function, QStringLiteral("<null>"));
    QCOMPARE(record.line, 0);
}

void tst_PluginDiscovery::emptyFolder_data()
{
    QTest::addColumn<bool>("exists");
    QTest::newRow("empty folder") << true;
    QTest::newRow("path that does not exist") << false;
}

void tst_PluginDiscovery::emptyFolder()
{
    QFETCH(bool, exists);
    const QString path = exists ? scenarioDir() : scenarioDir() + QStringLiteral("/missing");
    QCOMPARE(QFileInfo::exists(path), exists);

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(path));
    QCOMPARE(entries(plugins), QStringList());
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::entriesThatAreNotListed_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("folder named x.so holding a plugin") << QStringLiteral("folder");
    QTest::newRow("plugin named libx.so.1") << QStringLiteral("versioned");
    QTest::newRow("hidden plugin .x.so") << QStringLiteral("hidden");
    QTest::newRow("dangling link x.so") << QStringLiteral("dangling");
}

void tst_PluginDiscovery::entriesThatAreNotListed()
{
    QFETCH(QString, kind);
    const QString dir = scenarioDir();
    const QString alpha = ZelvaneTest::pluginPath(QStringLiteral("zt_discovery_alpha"));
    if (kind == QLatin1String("folder")) {
        QVERIFY(QDir(dir).mkdir(QStringLiteral("x.so")));
        QVERIFY(QFile::copy(alpha, dir + QStringLiteral("/x.so/libzt_discovery_alpha.so")));
    } else if (kind == QLatin1String("versioned")) {
        QVERIFY(QFile::copy(alpha, dir + QStringLiteral("/libx.so.1")));
    } else if (kind == QLatin1String("hidden")) {
        QVERIFY(QFile::copy(alpha, dir + QStringLiteral("/.x.so")));
    } else {
        QVERIFY(
            QFile::link(dir + QStringLiteral("/nothing-here.so"), dir + QStringLiteral("/x.so")));
    }
    QCOMPARE(QDir(dir)
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
                 .size(),
             1);

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(entries(plugins), QStringList());
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::entriesThatAreListed_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("fileName");
    // Name filters match regardless of letter case unless QDir::CaseSensitive is given.
    QTest::newRow("upper-case suffix") << QStringLiteral("copy") << QStringLiteral("LIBX.SO");
    QTest::newRow("link to a plugin elsewhere") << QStringLiteral("link") << QStringLiteral("x.so");
}

void tst_PluginDiscovery::entriesThatAreListed()
{
    QFETCH(QString, kind);
    QFETCH(QString, fileName);
    const QString dir = scenarioDir();
    const QString alpha = ZelvaneTest::pluginPath(QStringLiteral("zt_discovery_alpha"));
    if (kind == QLatin1String("copy"))
        QVERIFY(QFile::copy(alpha, QDir(dir).filePath(fileName)));
    else
        QVERIFY(QFile::link(alpha, QDir(dir).filePath(fileName)));
    QCOMPARE(listing(dir), QStringList { fileName });

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(entries(plugins), QStringList { QStringLiteral("Extension:Alpha") });
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::droppedFileIsLogged_data()
{
    QTest::addColumn<QString>("target"); // empty: a file written by the test
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("line"); // %1 is the path the loader reports

    const QString notAPlugin = QStringLiteral("\"%1 is not a plugin (no string IID found)\"");
    QTest::newRow("shared object that is not a Qt plugin")
        << QStringLiteral("zt_notaplugin") << fileOf(QStringLiteral("zt_notaplugin"))
        << QByteArray() << notAPlugin;
    QTest::newRow("text file") << QString() << QStringLiteral("notes.so")
                               << QByteArray("not a library\n") << notAPlugin;
    QTest::newRow("empty file") << QString() << QStringLiteral("empty.so") << QByteArray()
                                << notAPlugin;
    QTest::newRow("other interface identifier")
        << QStringLiteral("zt_discovery_stranger")
        << fileOf(QStringLiteral("zt_discovery_stranger")) << QByteArray()
        << QStringLiteral("\"%1 plugin ignored (IID does not match)\"");
    QTest::newRow("no metadata") << QStringLiteral("zt_discovery_nometadata")
                                 << fileOf(QStringLiteral("zt_discovery_nometadata"))
                                 << QByteArray()
                                 << QStringLiteral(
                                        "\"The file \\\"%1\\\" has no plugin metadata\"");
    QTest::newRow("no name") << QStringLiteral("zt_discovery_noname")
                             << fileOf(QStringLiteral("zt_discovery_noname")) << QByteArray()
                             << QStringLiteral(
                                    "\"The plugin \\\"%1\\\" has no name property in metadata\"");
    // Malformed arguments are refused without a text: the line is an empty quoted string.
    QTest::newRow("malformed arguments") << QStringLiteral("zt_discovery_badarguments")
                                         << fileOf(QStringLiteral("zt_discovery_badarguments"))
                                         << QByteArray() << QStringLiteral("\"\"");
}

void tst_PluginDiscovery::droppedFileIsLogged()
{
    QFETCH(QString, target);
    QFETCH(QString, fileName);
    QFETCH(QByteArray, content);
    QFETCH(QString, line);

    const QString dir = scenarioDir();
    if (target.isEmpty())
        QVERIFY(ZelvaneTest::writeFile(QDir(dir).filePath(fileName), content));
    else
        QVERIFY(copy({ target }));
    QVERIFY(copy({ QStringLiteral("zt_discovery_alpha") }));

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    const QList<LogRecord> records = log.records();

    QCOMPARE(entries(plugins), QStringList { QStringLiteral("Extension:Alpha") });
    const QString expected
        = line.contains(QLatin1String("%1")) ? line.arg(reportedPath(dir, fileName)) : line;
    // An empty file also makes Qt's plugin loader warn, in its own category.
    QStringList lines;
    for (const LogRecord& record : records) {
        if (record.category == QLatin1String("default"))
            lines.append(record.message);
        else
            QCOMPARE(record.category, QStringLiteral("qt.core.plugin.loader"));
    }
    QCOMPARE(lines, QStringList { expected });
    for (const LogRecord& record : records) {
        if (record.category == QLatin1String("default"))
            verifyDroppedLine(record, expected);
    }
}

void tst_PluginDiscovery::droppedFilesAreLoggedInListingOrder()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_notaplugin"), QStringLiteral("zt_discovery_stranger"),
                   QStringLiteral("zt_discovery_nometadata"), QStringLiteral("zt_discovery_noname"),
                   QStringLiteral("zt_discovery_badarguments"),
                   QStringLiteral("zt_discovery_alpha"), QStringLiteral("zt_discovery_beta") }));
    QVERIFY(ZelvaneTest::writeFile(dir + QStringLiteral("/notes.so"), "not a library\n"));

    const QHash<QString, QString> lines {
        { fileOf(QStringLiteral("zt_notaplugin")),
          QStringLiteral("\"%1 is not a plugin (no string IID found)\"") },
        { QStringLiteral("notes.so"),
          QStringLiteral("\"%1 is not a plugin (no string IID found)\"") },
        { fileOf(QStringLiteral("zt_discovery_stranger")),
          QStringLiteral("\"%1 plugin ignored (IID does not match)\"") },
        { fileOf(QStringLiteral("zt_discovery_nometadata")),
          QStringLiteral("\"The file \\\"%1\\\" has no plugin metadata\"") },
        { fileOf(QStringLiteral("zt_discovery_noname")),
          QStringLiteral("\"The plugin \\\"%1\\\" has no name property in metadata\"") },
        { fileOf(QStringLiteral("zt_discovery_badarguments")), QStringLiteral("\"\"") },
    };
    QStringList expected;
    const QStringList listed = listing(dir);
    QCOMPARE(listed.size(), 8);
    for (const QString& name : listed) {
        if (!lines.contains(name))
            continue;
        const QString line = lines.value(name);
        expected.append(line.contains(QLatin1String("%1")) ? line.arg(reportedPath(dir, name))
                                                           : line);
    }

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(log.messages(), expected);
    for (const LogRecord& record : log.records())
        verifyDroppedLine(record, record.message);
    QCOMPARE(plugins.size(), 2);
    QCOMPARE(plugins.uniqueKeys(), QStringList { QStringLiteral("Extension") });
}

void tst_PluginDiscovery::extensionsComeOutInReverseListingOrder()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_discovery_alpha"), QStringLiteral("zt_discovery_beta") }));
    const QHash<QString, QString> nameOf {
        { fileOf(QStringLiteral("zt_discovery_alpha")), QStringLiteral("Alpha") },
        { fileOf(QStringLiteral("zt_discovery_beta")), QStringLiteral("Beta") },
    };
    // The entry inserted last comes first within one key.
    QStringList expected;
    for (const QString& file : listing(dir))
        expected.prepend(nameOf.value(file));
    QCOMPARE(expected.size(), 2);

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(names(plugins.values(QStringLiteral("Extension"))), expected);
    QStringList iterated;
    for (const QString& name : expected)
        iterated.append(QStringLiteral("Extension:") + name);
    QCOMPARE(entries(plugins), iterated);
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::fileNamesDifferingInCaseAndDigits_data()
{
    ZelvaneTest::addSortingRows();
}

void tst_PluginDiscovery::fileNamesDifferingInCaseAndDigits()
{
    // Four extensions under names that differ only in letter case and digit runs, such
    // as "Beta.so" and "alpha.so", "p10.so" and "p9.so": the order that discovery gives
    // is the one the QDir lists them in, so a library that sorted the names by a rule of
    // its own (with letter case, numbers as numbers, or always by name) fails here.
    QFETCH(int, sorting);
    const QDir::SortFlags flags = QDir::SortFlags(QFlag(sorting));
    const QString dir = scenarioDir();
    const QStringList fileNames = ZelvaneTest::copyUnderMixedNames(
        dir, { "zt_discovery_alpha", "zt_discovery_beta", "zt_loading_notes", "zt_loading_tags" },
        flags);
    QVERIFY2(fileNames.size() == 4, "no set of names that the file system lists unsorted");
    const QStringList listed = ZelvaneTest::listing(dir, flags);
    QVERIFY2(ZelvaneTest::listingTellsTheSorting(dir, fileNames, flags),
             qPrintable(listed.join(QLatin1String(", "))));
    const QStringList pluginNames { "Alpha", "Beta", "Notes", "Tags" };
    QStringList expected;
    for (const QString& file : listed)
        expected.prepend(pluginNames.at(fileNames.indexOf(file)));
    QCOMPARE(expected.size(), 4);

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(ZelvaneTest::sortedFolder(dir, flags));
    QCOMPARE(names(plugins.values(QStringLiteral("Extension"))), expected);
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::categoriesIterateInKeyOrder()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_core"), QStringLiteral("zt_discovery_alpha"),
                   QStringLiteral("zt_discovery_beta"), QStringLiteral("zt_discovery_loose"),
                   QStringLiteral("zt_discovery_minor") }));
    const QHash<QString, QPair<QString, QString>> pluginOf {
        { fileOf(QStringLiteral("zt_core")), { QStringLiteral("Core"), QStringLiteral("Core") } },
        { fileOf(QStringLiteral("zt_discovery_alpha")),
          { QStringLiteral("Extension"), QStringLiteral("Alpha") } },
        { fileOf(QStringLiteral("zt_discovery_beta")),
          { QStringLiteral("Extension"), QStringLiteral("Beta") } },
        { fileOf(QStringLiteral("zt_discovery_loose")), { QString(), QStringLiteral("Loose") } },
        { fileOf(QStringLiteral("zt_discovery_minor")),
          { QStringLiteral("core"), QStringLiteral("Minor") } },
    };
    // Keys ascend by UTF-16 code units: the empty category first, and "core" in lower
    // case after every upper-case key. Within a key, reverse listing order.
    const QStringList keyOrder { QString(), QStringLiteral("Core"), QStringLiteral("Extension"),
                                 QStringLiteral("core") };
    QStringList expected;
    for (const QString& key : keyOrder) {
        QStringList ofKey;
        for (const QString& file : listing(dir)) {
            if (pluginOf.value(file).first == key)
                ofKey.prepend(key + QLatin1Char(':') + pluginOf.value(file).second);
        }
        expected += ofKey;
    }
    QCOMPARE(expected.size(), 5);

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(entries(plugins), expected);
    QCOMPARE(plugins.firstKey(), QString());
    QCOMPARE(names(plugins.values(QString())), QStringList { QStringLiteral("Loose") });
    QCOMPARE(plugins.first().category(), QString());
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::sameNameTwiceIsKeptTwice()
{
    const QString dir = scenarioDir();
    QVERIFY(
        copy({ QStringLiteral("zt_discovery_alpha"), QStringLiteral("zt_discovery_alpha_twin") }));
    const QHash<QString, QString> descriptionOf {
        { fileOf(QStringLiteral("zt_discovery_alpha")), QStringLiteral("The first extension") },
        { fileOf(QStringLiteral("zt_discovery_alpha_twin")),
          QStringLiteral("Another plugin that calls itself Alpha") },
    };
    QStringList expected;
    for (const QString& file : listing(dir))
        expected.prepend(descriptionOf.value(file));

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    const QList<PluginLoader> extensions = plugins.values(QStringLiteral("Extension"));
    QCOMPARE(names(extensions), (QStringList { QStringLiteral("Alpha"), QStringLiteral("Alpha") }));
    QCOMPARE(descriptions(extensions), expected);
    QCOMPARE(plugins.size(), 2);
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::sameFileUnderTwoNamesIsKeptTwice()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_discovery_beta=first.so"),
                   QStringLiteral("zt_discovery_beta=second.so") }));

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(entries(plugins),
             (QStringList { QStringLiteral("Extension:Beta"), QStringLiteral("Extension:Beta") }));
    QCOMPARE(log.messages(), QStringList());
}

void tst_PluginDiscovery::identifierChangeBetweenCalls()
{
    const QString dir = scenarioDir();
    QVERIFY(
        copy({ QStringLiteral("zt_discovery_alpha"), QStringLiteral("zt_discovery_stranger") }));
    const QString ignored = QStringLiteral("\"%1 plugin ignored (IID does not match)\"");

    {
        LogCapture log;
        const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
        QCOMPARE(entries(plugins), QStringList { QStringLiteral("Extension:Alpha") });
        QCOMPARE(log.messages(),
                 QStringList { ignored.arg(
                     reportedPath(dir, fileOf(QStringLiteral("zt_discovery_stranger")))) });
    }

    PluginController::instance()->setPluginIID(otherIid);
    {
        LogCapture log;
        const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
        QCOMPARE(entries(plugins), QStringList { QStringLiteral("Extension:Stranger") });
        QCOMPARE(log.messages(),
                 QStringList { ignored.arg(
                     reportedPath(dir, fileOf(QStringLiteral("zt_discovery_alpha")))) });
    }

    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    {
        LogCapture log;
        const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
        QCOMPARE(entries(plugins), QStringList { QStringLiteral("Extension:Alpha") });
        QCOMPARE(log.messages().size(), 1);
    }
}

void tst_PluginDiscovery::identifierDiffersInLetterCase()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_discovery_alpha"), QStringLiteral("zt_discovery_beta") }));
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID).toLower());
    QVERIFY(PluginController::instance()->pluginIID() != QStringLiteral(ZELVANE_TEST_IID));

    QStringList expected;
    for (const QString& file : listing(dir))
        expected.append(QStringLiteral("\"%1 plugin ignored (IID does not match)\"")
                            .arg(reportedPath(dir, file)));

    LogCapture log;
    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(entries(plugins), QStringList());
    QCOMPARE(log.messages(), expected);
}

void tst_PluginDiscovery::everyCallScansAfresh()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_discovery_alpha") }));
    QCOMPARE(entries(Zelvane::scanPlugins(QDir(dir))),
             QStringList { QStringLiteral("Extension:Alpha") });

    QVERIFY(copy({ QStringLiteral("zt_core") }));
    QCOMPARE(entries(Zelvane::scanPlugins(QDir(dir))),
             (QStringList { QStringLiteral("Core:Core"), QStringLiteral("Extension:Alpha") }));

    QVERIFY(QFile::remove(QDir(dir).filePath(fileOf(QStringLiteral("zt_discovery_alpha")))));
    QCOMPARE(entries(Zelvane::scanPlugins(QDir(dir))), QStringList { QStringLiteral("Core:Core") });
}

void tst_PluginDiscovery::acceptedHandlesAreScannedNotLoaded()
{
    const QString dir = scenarioDir();
    QVERIFY(copy({ QStringLiteral("zt_discovery_alpha"), QStringLiteral("zt_core") }));

    const Plugins plugins = Zelvane::scanPlugins(QDir(dir));
    QCOMPARE(plugins.size(), 2);
    for (const PluginLoader& plugin : plugins) {
        QVERIFY(plugin.isValid());
        QVERIFY(!plugin.loaded());
        QCOMPARE(plugin.instance(), nullptr);
        QCOMPARE(plugin.errorString(), QString());
    }
    const PluginLoader alpha = plugins.value(QStringLiteral("Extension"));
    QCOMPARE(alpha.name(), QStringLiteral("Alpha"));
    QCOMPARE(alpha.description(), QStringLiteral("The first extension"));
    QVERIFY(alpha.loadByDefault());
    QCOMPARE(plugins.value(QStringLiteral("Core")).name(), QStringLiteral("Core"));
}

QTEST_GUILESS_MAIN(tst_PluginDiscovery)

#include "tst_plugindiscovery.moc"
