// Hostile plugin directories: whatever lies in the folder that the host points the
// library at, discovery keeps the acceptable plugins, writes one debug line for each
// refused file, and loading and the command-line options go on from there. No file
// may crash, hang or touch the user's saved selection.

#include "reliability.h"
#include "zelvanetest.h"

#include "controller/plugindiscovery_p.h"
#include "elffile.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtCore/QRandomGenerator>
#include <QtCore/QScopeGuard>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

#include <fcntl.h>
#include <unistd.h>

using Zelvane::PluginController;
using Zelvane::PluginLoader;
using ZelvaneReliability::ElfSection;
using ZelvaneReliability::logged;
using ZelvaneReliability::readFile;
using ZelvaneReliability::writeFile;

namespace {

// What discovery made of a directory.
struct Scan
{
    QStringList accepted; // "<category>/<name>" in the order of the result map
    QStringList log; // the library's own lines
    QList<ZelvaneTest::LogRecord> other; // what Qt itself said
};

Scan scan(const QString& dir)
{
    ZelvaneTest::LogCapture capture;
    const QMultiMap<QString, PluginLoader> plugins = Zelvane::scanPlugins(QDir(dir));
    Scan result;
    for (auto it = plugins.cbegin(); it != plugins.cend(); ++it)
        result.accepted.append(it.key() + QLatin1Char('/') + it.value().name());
    const QList<ZelvaneTest::LogRecord> records = capture.records();
    for (const ZelvaneTest::LogRecord& record : records) {
        if (record.category == QLatin1String("default"))
            result.log.append(record.message);
        else
            result.other.append(record);
    }
    return result;
}

QString notAPlugin(const QString& path)
{
    return logged(QStringLiteral("%1 is not a plugin (no string IID found)").arg(path));
}

QStringList optionNames(const QList<QCommandLineOption>& options)
{
    QStringList names;
    for (const QCommandLineOption& option : options)
        names.append(option.names());
    return names;
}

} // namespace

class tst_RelDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void zeroByteFile();
    void truncatedPlugin_data();
    void truncatedPlugin();
    void randomBytes_data();
    void randomBytes();
    void notAQtPlugin();
    void otherArchitecture_data();
    void otherArchitecture();
    void directoryNamedSo();
    void symbolicLinks();
    void nonUtf8FileName();
    void manyNonPlugins();
    void hugeDescription();
    void manyDependencies();
    void manyArguments();
    void deepNesting_data();
    void deepNesting();

private:
    // Checks the library's lines of a scan, and that anything else logged is Qt's own
    // account of a file it could not read.
    void verifyScan(const Scan& result, const QStringList& accepted, QStringList log);
    // Asks for the command-line options first, as a host does: the same files must be
    // refused with the same lines. Then loads the directory and checks the trace of
    // initialised plugins; the saved selection must come out of it byte for byte.
    void verifyLoad(const QString& dir, bool result, const QString& errorString,
                    const QStringList& events, const QStringList& options = {});

    QTemporaryDir m_settingsDir;
    QString m_settingsPath;
    QSettings* m_settings = nullptr;
    QByteArray m_savedSelection;
    QStringList m_scanLog; // the library's lines of the last scan, sorted
    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_RelDiscovery::initTestCase()
{
    QVERIFY(m_settingsDir.isValid());
    m_settingsPath = m_settingsDir.filePath(QStringLiteral("host.ini"));
    m_savedSelection = "[plugin]\nCore=true\nStorage=true\nOptions=true\n";
    QVERIFY(writeFile(m_settingsPath, m_savedSelection));
    m_settings = new QSettings(m_settingsPath, QSettings::IniFormat, this);
    PluginController::instance()->setSettings(m_settings);
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_RelDiscovery::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    ZelvaneTest::clearEvents();
}

void tst_RelDiscovery::cleanup()
{
    PluginController::instance()->shutdown();
    m_dir.reset();
}

void tst_RelDiscovery::verifyScan(const Scan& result, const QStringList& accepted, QStringList log)
{
    QCOMPARE(result.accepted, accepted);
    // The listing order is the file system's: compare the lines as a set.
    QStringList actual = result.log;
    actual.sort();
    log.sort();
    QCOMPARE(actual, log);
    m_scanLog = actual;
    for (const ZelvaneTest::LogRecord& record : result.other) {
        QVERIFY2(record.category.startsWith(QLatin1String("qt.core.plugin")),
                 qPrintable(record.category + QLatin1String(": ") + record.message));
        QVERIFY2(record.type == QtWarningMsg || record.type == QtDebugMsg,
                 qPrintable(record.message));
    }
}

void tst_RelDiscovery::verifyLoad(const QString& dir, bool result, const QString& errorString,
                                  const QStringList& events, const QStringList& options)
{
    PluginController* controller = PluginController::instance();
    ZelvaneTest::LogCapture capture;
    const auto libraryLog = [&capture] {
        QStringList log;
        const QList<ZelvaneTest::LogRecord> records = capture.records();
        for (const ZelvaneTest::LogRecord& record : records) {
            if (record.category == QLatin1String("default"))
                log.append(record.message);
        }
        log.sort();
        return log;
    };

    QCOMPARE(optionNames(controller->pluginsOptions(QDir(dir))), options);
    QCOMPARE(libraryLog(), m_scanLog);

    QStringList twice = m_scanLog + m_scanLog;
    twice.sort();
    QCOMPARE(controller->loadPlugins(QDir(dir)), result);
    QCOMPARE(libraryLog(), twice);
    if (!result)
        QCOMPARE(controller->errorString(), errorString);
    QCOMPARE(ZelvaneTest::events(), events);
    if (result)
        QCOMPARE(ZelvaneReliability::modelTesterComplaints(controller->pluginsModel()),
                 QStringList());
    QCOMPARE(readFile(m_settingsPath), m_savedSelection);
}

void tst_RelDiscovery::zeroByteFile()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    const QString path = m_dir->filePath(QStringLiteral("x.so"));
    QVERIFY(writeFile(path, QByteArray()));

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, { notAPlugin(path) });
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::truncatedPlugin_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("accepted");

    // Cut copies of an Extension plugin, so that the intact Core plugin beside it is
    // the only Core candidate.
    const QByteArray plugin = readFile(ZelvaneTest::pluginPath(QStringLiteral("zt_storage")));
    QVERIFY(!plugin.isEmpty());
    ElfSection metadata = ZelvaneReliability::findSection(plugin, ".note.qt.metadata");
    if (metadata.offset < 0)
        metadata = ZelvaneReliability::findSection(plugin, ".qtmetadata");
    QVERIFY2(metadata.offset > 64 && metadata.size > 16, "no metadata section found");
    const qint64 loaded = ZelvaneReliability::loadedSize(plugin);
    QVERIFY(loaded > metadata.offset + metadata.size && loaded < plugin.size());

    // Qt reads the metadata only from a file that holds every loadable segment whole,
    // so a file cut anywhere before their end is refused at discovery, even when its
    // metadata is intact. Cut after them (only section headers and the like are
    // missing), it is still a plugin that loads and runs.
    QTest::newRow("inside the ELF header") << qint64(32) << false;
    QTest::newRow("after the ELF header") << qint64(64) << false;
    QTest::newRow("before the metadata") << metadata.offset << false;
    QTest::newRow("inside the metadata note header") << metadata.offset + 8 << false;
    QTest::newRow("in the middle of the metadata") << metadata.offset + metadata.size / 2 << false;
    QTest::newRow("last byte of the metadata missing")
        << metadata.offset + metadata.size - 1 << false;
    QTest::newRow("right after the metadata") << metadata.offset + metadata.size << false;
    QTest::newRow("last loadable byte missing") << loaded - 1 << false;
    QTest::newRow("right after the loadable segments") << loaded << true;
    QTest::newRow("last byte missing") << qint64(plugin.size() - 1) << true;
}

void tst_RelDiscovery::truncatedPlugin()
{
    QFETCH(qint64, size);
    QFETCH(bool, accepted);

    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    const QString path = m_dir->filePath(QStringLiteral("libzt_storage.so"));
    QVERIFY(writeFile(path,
                      readFile(ZelvaneTest::pluginPath(QStringLiteral("zt_storage"))).left(size)));

    if (accepted) {
        verifyScan(scan(dir), { QStringLiteral("Core/Core"), QStringLiteral("Extension/Storage") },
                   {});
        verifyLoad(dir, true, QString(),
                   { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Storage") });
    } else {
        verifyScan(scan(dir), { QStringLiteral("Core/Core") }, { notAPlugin(path) });
        verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
    }
}

void tst_RelDiscovery::randomBytes_data()
{
    QTest::addColumn<QByteArray>("content");

    QRandomGenerator random(20261121);
    QByteArray bytes(65536, Qt::Uninitialized);
    random.fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
    QTest::newRow("64 KiB of random bytes") << bytes;
    QByteArray elf = bytes;
    elf.replace(0, 4,
                "\x7f"
                "ELF");
    QTest::newRow("ELF magic, then random bytes") << elf;
    QByteArray elf64 = elf;
    elf64[4] = 2; // 64-bit
    elf64[5] = 1; // little-endian
    elf64[6] = 1; // version 1
    QTest::newRow("64-bit little-endian ELF identification, then random bytes") << elf64;
}

void tst_RelDiscovery::randomBytes()
{
    QFETCH(QByteArray, content);

    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    const QString path = m_dir->filePath(QStringLiteral("random.so"));
    QVERIFY(writeFile(path, content));

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, { notAPlugin(path) });
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::notAQtPlugin()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(
        dir, { QStringLiteral("zt_core"), QStringLiteral("zt_notaplugin") }));
    const QString path = m_dir->filePath(QStringLiteral("libzt_notaplugin.so"));

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, { notAPlugin(path) });
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::otherArchitecture_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("patch");

    // A real plugin with its identification changed: Qt checks class, byte order and
    // machine before it looks for metadata, so such a file never reaches the loader.
    QTest::newRow("32-bit class") << ZelvaneReliability::Elf::classOffset << QByteArray(1, 1);
    QTest::newRow("big-endian data")
        << ZelvaneReliability::Elf::classOffset + 1 << QByteArray(1, 2);
    QTest::newRow("AArch64 machine")
        << ZelvaneReliability::Elf::machineOffset << QByteArray("\xb7\x00", 2);
}

void tst_RelDiscovery::otherArchitecture()
{
    QFETCH(int, offset);
    QFETCH(QByteArray, patch);

    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    const QString path = m_dir->filePath(QStringLiteral("libzt_storage.so"));
    QByteArray content = readFile(ZelvaneTest::pluginPath(QStringLiteral("zt_storage")));
    QCOMPARE(content.mid(offset, patch.size()) == patch, false);
    content.replace(offset, patch.size(), patch);
    QVERIFY(writeFile(path, content));

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, { notAPlugin(path) });
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::directoryNamedSo()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    // A directory with a plugin name, holding a real plugin: neither is looked at.
    QVERIFY(QDir(dir).mkdir(QStringLiteral("libzt_storage.so")));
    QVERIFY(ZelvaneTest::copyPlugins(m_dir->filePath(QStringLiteral("libzt_storage.so")),
                                     { QStringLiteral("zt_storage") }));

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, {});
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::symbolicLinks()
{
    const QString dir = m_dir->filePath(QStringLiteral("plugins"));
    const QString elsewhere = m_dir->filePath(QStringLiteral("elsewhere"));
    QVERIFY(QDir().mkpath(dir));
    QVERIFY(QDir().mkpath(elsewhere));
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    QVERIFY(ZelvaneTest::copyPlugins(elsewhere, { QStringLiteral("zt_rel_options") }));

    const QDir plugins(dir);
    // A link to a plugin kept elsewhere is a plugin; a link whose target is missing
    // and two links that point at each other are not files and are not listed.
    QVERIFY(QFile::link(QDir(elsewhere).filePath(QStringLiteral("libzt_rel_options.so")),
                        plugins.filePath(QStringLiteral("liboptions.so"))));
    QVERIFY(QFile::link(plugins.filePath(QStringLiteral("missing.so.1")),
                        plugins.filePath(QStringLiteral("dangling.so"))));
    QVERIFY(QFile::link(plugins.filePath(QStringLiteral("loopb.so")),
                        plugins.filePath(QStringLiteral("loopa.so"))));
    QVERIFY(QFile::link(plugins.filePath(QStringLiteral("loopa.so")),
                        plugins.filePath(QStringLiteral("loopb.so"))));
    QVERIFY(QFile::link(elsewhere, plugins.filePath(QStringLiteral("directory.so"))));

    verifyScan(scan(dir), { QStringLiteral("Core/Core"), QStringLiteral("Extension/Options") }, {});
    verifyLoad(dir, true, QString(),
               { QStringLiteral("initialize:Core"), QStringLiteral("initialize:Options") },
               { QStringLiteral("verbose"), QStringLiteral("level") });
}

void tst_RelDiscovery::nonUtf8FileName()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core") }));
    const QByteArray plugin = readFile(ZelvaneTest::pluginPath(QStringLiteral("zt_rel_options")));
    QVERIFY(!plugin.isEmpty());
    // Bytes that are no UTF-8: Qt cannot spell the name as a QString, and the file is
    // passed over without a word.
    const QByteArray name = QFile::encodeName(dir) + "/lib\xff\xfeoptions.so";
    const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    QVERIFY(fd >= 0);
    QCOMPARE(::write(fd, plugin.constData(), size_t(plugin.size())), ssize_t(plugin.size()));
    ::close(fd);
    // QDir cannot spell the name either, so QTemporaryDir could not remove the file.
    const auto removeFile = qScopeGuard([&name] { ::unlink(name.constData()); });

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, {});
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::manyNonPlugins()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(
        dir, { QStringLiteral("zt_core"), QStringLiteral("zt_notaplugin") }));
    // 5,000 shared objects that are not plugins, as hard links of one file: real ELF
    // files to read, at the cost of one directory entry each.
    const QByteArray original
        = QFile::encodeName(m_dir->filePath(QStringLiteral("libzt_notaplugin.so")));
    QStringList log { notAPlugin(m_dir->filePath(QStringLiteral("libzt_notaplugin.so"))) };
    for (int i = 1; i < 5000; ++i) {
        const QString path = m_dir->filePath(QStringLiteral("libother%1.so").arg(i));
        QVERIFY2(::link(original.constData(), QFile::encodeName(path).constData()) == 0,
                 qPrintable(path));
        log.append(notAPlugin(path));
    }

    verifyScan(scan(dir), { QStringLiteral("Core/Core") }, log);
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
}

void tst_RelDiscovery::hugeDescription()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(
        dir, { QStringLiteral("zt_core"), QStringLiteral("zt_rel_hugedescription") }));

    PluginLoader plugin;
    QVERIFY(plugin.scan(m_dir->filePath(QStringLiteral("libzt_rel_hugedescription.so"))));
    QCOMPARE(plugin.description(), QString(1048576, QLatin1Char('x')));

    verifyScan(scan(dir),
               { QStringLiteral("Core/Core"), QStringLiteral("Extension/HugeDescription") }, {});
    verifyLoad(dir, true, QString(),
               { QStringLiteral("initialize:Core"), QStringLiteral("initialize:HugeDescription") });
    Zelvane::PluginsModel* model = PluginController::instance()->pluginsModel();
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->index(1, 0).data(Zelvane::PluginsModel::DescriptionRole).toString(),
             QString(1048576, QLatin1Char('x')));
}

void tst_RelDiscovery::manyDependencies()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(
        dir, { QStringLiteral("zt_core"), QStringLiteral("zt_rel_manydependencies") }));

    PluginLoader plugin;
    QVERIFY(plugin.scan(m_dir->filePath(QStringLiteral("libzt_rel_manydependencies.so"))));
    QCOMPARE(plugin.dependencyCount(), 10000);
    QCOMPARE(plugin.dependencies().constFirst(), QStringLiteral("Dependency0"));
    QCOMPARE(plugin.dependencies().constLast(), QStringLiteral("Dependency9999"));

    verifyScan(scan(dir),
               { QStringLiteral("Core/Core"), QStringLiteral("Extension/ManyDependencies") }, {});
    // None of the 10,000 dependencies exists: the ordering drops the plugin.
    verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });

    // Clearing and ticking it in the model walks its dependency list against every row.
    Zelvane::PluginsModel* model = PluginController::instance()->pluginsModel();
    QCOMPARE(model->index(1, 0).data(Zelvane::PluginsModel::NameRole).toString(),
             QStringLiteral("ManyDependencies"));
    QVERIFY(model->setData(model->index(1, 0), false, Zelvane::PluginsModel::CheckedRole));
    QVERIFY(model->setData(model->index(1, 0), true, Zelvane::PluginsModel::CheckedRole));
    m_settings->sync();
    QCOMPARE(m_settings->value(QStringLiteral("plugin/ManyDependencies")), QVariant(true));
    QCOMPARE(m_settings->value(QStringLiteral("plugin/Core")), QVariant(true));
    m_savedSelection = readFile(m_settingsPath);
}

void tst_RelDiscovery::manyArguments()
{
    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(
        dir, { QStringLiteral("zt_core"), QStringLiteral("zt_rel_manyarguments") }));

    verifyScan(scan(dir),
               { QStringLiteral("Core/Core"), QStringLiteral("Extension/ManyArguments") }, {});
    const QList<QCommandLineOption> options
        = PluginController::instance()->pluginsOptions(QDir(dir));
    QCOMPARE(options.size(), 10000);
    for (int i = 0; i < 10000; ++i) {
        const QCommandLineOption& option = options.at(i);
        QCOMPARE(option.names(), QStringList { QStringLiteral("argument%1").arg(i) });
        QCOMPARE(option.valueName(), QStringLiteral("value%1").arg(i));
        QCOMPARE(option.description(), QStringLiteral("Argument %1").arg(i));
    }
    QStringList names;
    for (int i = 0; i < 10000; ++i)
        names.append(QStringLiteral("argument%1").arg(i));
    verifyLoad(dir, true, QString(),
               { QStringLiteral("initialize:Core"), QStringLiteral("initialize:ManyArguments") },
               names);
}

void tst_RelDiscovery::deepNesting_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("accepted");

    // As deep as the build accepts through the test harness (CMake reads the JSON), and
    // as deep as moc accepts.
    QTest::newRow("999 nested arrays")
        << QStringLiteral("zt_rel_nesting999") << QStringLiteral("Nesting999") << true;
    // Qt refuses to read it back: its metadata reader stops at 1024 levels, and the
    // metadata's own two objects come on top of the arrays.
    QTest::newRow("1023 nested arrays")
        << QStringLiteral("zt_rel_nesting1023") << QStringLiteral("Nesting1023") << false;
}

void tst_RelDiscovery::deepNesting()
{
    QFETCH(QString, target);
    QFETCH(QString, name);
    QFETCH(bool, accepted);

    const QString dir = m_dir->path();
    QVERIFY(ZelvaneTest::copyPlugins(dir, { QStringLiteral("zt_core"), target }));
    const QString path = m_dir->filePath(QStringLiteral("lib") + target + QStringLiteral(".so"));

    if (accepted) {
        verifyScan(scan(dir), { QStringLiteral("Core/Core"), QStringLiteral("Extension/") + name },
                   {});
        verifyLoad(dir, true, QString(),
                   { QStringLiteral("initialize:Core"), QStringLiteral("initialize:") + name });
    } else {
        verifyScan(scan(dir), { QStringLiteral("Core/Core") }, { notAPlugin(path) });
        verifyLoad(dir, true, QString(), { QStringLiteral("initialize:Core") });
    }
}

QTEST_MAIN(tst_RelDiscovery)
#include "tst_rel_discovery.moc"
