// zelvane-inspect --trial, --timeline and --graph as their users run them, over plugins
// that crash, abort, exit, hang or take their time at one step of their loading, and with
// --shutdown over one that crashes as shutdown() unloads it.

#include "processrunner.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtTest/QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString iid = QStringLiteral(ZELVANE_TEST_IID);

using Result = ZelvaneTest::ProcessResult;

Result inspect(const QStringList& arguments)
{
    return ZelvaneTest::runProcess(QStringLiteral(ZELVANE_INSPECT_EXECUTABLE), arguments);
}

// The trial's section of the text report, with every time replaced by "#": times
// differ from run to run, everything else is exact.
QStringList trialSection(const QString& out)
{
    const qsizetype start = out.indexOf(QStringLiteral("Trial load ("));
    if (start < 0)
        return { QStringLiteral("<no trial section in:>"), out };
    QString section = out.mid(start);
    section.replace(QRegularExpression(QStringLiteral("\\d+\\.\\d\\d ms")), QStringLiteral("# ms"));
    return section.split(QLatin1Char('\n'));
}

QString started(int position, const QString& name, const QString& file)
{
    return QStringLiteral("  %1. %2 (%3): started: library # ms, initialize # ms")
        .arg(position)
        .arg(name, file);
}

const QString notTried
    = QStringLiteral("not tried: loading stops at the first plugin that cannot start");

} // namespace

class tst_Trial : public QObject
{
    Q_OBJECT

private slots:
    void report_data();
    void report();
    void json();
    void jsonShutdown();
    void require_data();
    void require();
    void requireWithoutIid();
    void timeline();
    void svgTimeline();
    void shutdownTimeline();
    void graph();
    void renderedGraph();
    void permissions();
};

void tst_Trial::report_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("exitCode");

    const QString title
        = QStringLiteral("Trial load (in a child process, timeout 5 s per plugin):");
    const QString shortTitle
        = QStringLiteral("Trial load (in a child process, timeout 1 s per plugin):");

    QTest::newRow("every plugin starts, one of them slowly")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_viewer"), QStringLiteral("zt_trial_slow") }
        << QStringList()
        << QStringList { title,
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         started(2, QStringLiteral("Slow"), QStringLiteral("libzt_trial_slow.so")),
                         started(3, QStringLiteral("Storage"), QStringLiteral("libzt_storage.so")),
                         started(4, QStringLiteral("Viewer"), QStringLiteral("libzt_viewer.so")),
                         QStringLiteral("Every plugin started."),
                         QString() }
        << 0;

    QTest::newRow("SIGSEGV in initialize() stops the loading")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_trial_segv") }
        << QStringList()
        << QStringList { title,
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         QStringLiteral(
                             "  2. Segv (libzt_trial_segv.so): crashed in initialize(): signal "
                             "SIGSEGV (Segmentation fault)"),
                         QStringLiteral("  3. Storage (libzt_storage.so): ") + notTried,
                         QStringLiteral("Cannot start: Segv"),
                         QString() }
        << 1;

    QTest::newRow("abort() in the root object's constructor")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_abort") }
        << QStringList()
        << QStringList { title, started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         QStringLiteral("  2. Abort (libzt_trial_abort.so): crashed while creating "
                                        "the root object: signal SIGABRT (Aborted)"),
                         QStringLiteral("Cannot start: Abort"), QString() }
        << 1;

    QTest::newRow("exit() while the library loads")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_exit") }
        << QStringList()
        << QStringList { title, started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         QStringLiteral("  2. Exit (libzt_trial_exit.so): exited while loading the "
                                        "library: exit code 3"),
                         QStringLiteral("Cannot start: Exit"), QString() }
        << 1;

    QTest::newRow("a plugin that never returns is stopped")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_hang") }
        << QStringList { QStringLiteral("--timeout"), QStringLiteral("1") }
        << QStringList { shortTitle,
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         QStringLiteral("  2. Hang (libzt_trial_hang.so): hung in initialize(): no "
                                        "progress within the timeout, stopped"),
                         QStringLiteral("Cannot start: Hang"), QString() }
        << 1;

    QTest::newRow("the arguments reach the plugins: one fails as told")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_viewer") }
        << QStringList { QStringLiteral("--arg"), QStringLiteral("Storage/fail=disk full") }
        << QStringList { title,
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         QStringLiteral("  2. Storage (libzt_storage.so): failed in initialize(): "
                                        "The plugin \"Storage\" failed to initialize. Error: "
                                        "\"disk full\""),
                         QStringLiteral("  3. Viewer (libzt_viewer.so): ") + notTried,
                         QStringLiteral("Cannot start: Storage"),
                         QString() }
        << 1;

    QTest::newRow("--isolate finds every plugin that cannot start in one run")
        << QStringList { QStringLiteral("zt_core"),       QStringLiteral("zt_storage"),
                         QStringLiteral("zt_trial_segv"), QStringLiteral("zt_trial_needsegv"),
                         QStringLiteral("zt_trial_hang"), QStringLiteral("zt_trial_exit") }
        << QStringList { QStringLiteral("--isolate"), QStringLiteral("--timeout"),
                         QStringLiteral("1") }
        << QStringList { QStringLiteral(
                             "Trial load (in a child process, timeout 1 s per plugin, each "
                             "plugin that cannot start switched off in turn: 4 runs):"),
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         QStringLiteral(
                             "  2. Segv (libzt_trial_segv.so): crashed in initialize(): signal "
                             "SIGSEGV (Segmentation fault)"),
                         QStringLiteral(
                             "  3. NeedsSegv (libzt_trial_needsegv.so): not loaded: the "
                             "dependency ordering drops it once the plugins that cannot start "
                             "are switched off"),
                         QStringLiteral("  4. Hang (libzt_trial_hang.so): hung in initialize(): no "
                                        "progress within the timeout, stopped"),
                         QStringLiteral("  5. Exit (libzt_trial_exit.so): exited while loading the "
                                        "library: exit code 3"),
                         started(6, QStringLiteral("Storage"), QStringLiteral("libzt_storage.so")),
                         QStringLiteral("Cannot start: Segv, Hang, Exit"),
                         QString() }
        << 1;

    QTest::newRow("a Core plugin that crashes cannot be left out")
        << QStringList { QStringLiteral("zt_trial_badcore"), QStringLiteral("zt_storage") }
        << QStringList { QStringLiteral("--isolate") }
        << QStringList { QStringLiteral(
                             "Trial load (in a child process, timeout 5 s per plugin, each "
                             "plugin that cannot start switched off in turn: 2 runs):"),
                         QStringLiteral(
                             "  1. BadCore (libzt_trial_badcore.so): crashed in initialize(): "
                             "signal SIGSEGV (Segmentation fault)"),
                         QStringLiteral("  2. Storage (libzt_storage.so): ") + notTried,
                         QStringLiteral(
                             "  The Core plugin loads even when it is switched off: nothing can "
                             "be tried without it."),
                         QStringLiteral("Cannot start: BadCore"),
                         QString() }
        << 1;

    QTest::newRow("no Core plugin")
        << QStringList { QStringLiteral("zt_storage") } << QStringList()
        << QStringList { title, QStringLiteral("  nothing is loaded: The Core plugin is not found"),
                         QStringLiteral("Not every plugin started."), QString() }
        << 1;

    const QString shutdownTitle = QStringLiteral(
        "Trial load (in a child process, timeout 5 s per plugin, shutdown() included):");
    QTest::newRow("--shutdown: every plugin unloads")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage") }
        << QStringList { QStringLiteral("--shutdown") }
        << QStringList { shutdownTitle,
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so"))
                             + QStringLiteral("; unloaded in # ms"),
                         started(2, QStringLiteral("Storage"), QStringLiteral("libzt_storage.so"))
                             + QStringLiteral("; unloaded in # ms"),
                         QStringLiteral("Every plugin started."), QString() }
        << 0;

    // shutdown() unloads in reverse load order: Storage, then SegvAtExit, which takes
    // the process down before Core is reached.
    QTest::newRow("--shutdown names the plugin whose unloading crashes")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_trial_segvatexit") }
        << QStringList { QStringLiteral("--shutdown") }
        << QStringList { shutdownTitle,
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so")),
                         started(2, QStringLiteral("SegvAtExit"),
                                 QStringLiteral("libzt_trial_segvatexit.so"))
                             + QStringLiteral("; crashed while unloading: signal SIGSEGV "
                                              "(Segmentation fault)"),
                         started(3, QStringLiteral("Storage"), QStringLiteral("libzt_storage.so"))
                             + QStringLiteral("; unloaded in # ms"),
                         QStringLiteral("Every plugin started."),
                         QStringLiteral("Cannot shut down: SegvAtExit"),
                         QString() }
        << 1;

    QTest::newRow("--shutdown --isolate loads again without the plugin that crashes")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_trial_segvatexit") }
        << QStringList { QStringLiteral("--shutdown"), QStringLiteral("--isolate") }
        << QStringList { QStringLiteral(
                             "Trial load (in a child process, timeout 5 s per plugin, shutdown() "
                             "included, each plugin that cannot start switched off in turn: 2 "
                             "runs):"),
                         started(1, QStringLiteral("Core"), QStringLiteral("libzt_core.so"))
                             + QStringLiteral("; unloaded in # ms"),
                         started(2, QStringLiteral("SegvAtExit"),
                                 QStringLiteral("libzt_trial_segvatexit.so"))
                             + QStringLiteral("; crashed while unloading: signal SIGSEGV "
                                              "(Segmentation fault)"),
                         started(3, QStringLiteral("Storage"), QStringLiteral("libzt_storage.so"))
                             + QStringLiteral("; unloaded in # ms"),
                         QStringLiteral("Every plugin started."),
                         QStringLiteral("Cannot shut down: SegvAtExit"),
                         QString() }
        << 1;
}

void tst_Trial::report()
{
    QFETCH(QStringList, plugins);
    QFETCH(QStringList, options);
    QFETCH(QStringList, expected);
    QFETCH(int, exitCode);

    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), plugins));
    const Result result = inspect(
        QStringList { folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--trial") }
        + options);
    QCOMPARE(trialSection(result.out), expected);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, exitCode);
}

void tst_Trial::require_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("it starts") << QStringList { QStringLiteral("zt_core"),
                                                QStringLiteral("zt_storage") }
                               << QStringLiteral("libzt_storage.so") << QString() << 0;
    QTest::newRow("it crashes in initialize()")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_segv") }
        << QStringLiteral("libzt_trial_segv.so")
        << QStringLiteral("zelvane-inspect: libzt_trial_segv.so (Segv) did not start: crashed in "
                          "initialize(): signal SIGSEGV (Segmentation fault)\n")
        << 1;
    QTest::newRow("the plugin before it crashes")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_trial_segv") }
        << QStringLiteral("libzt_storage.so")
        << QStringLiteral("zelvane-inspect: libzt_storage.so (Storage) did not start: ") + notTried
            + QLatin1Char('\n')
        << 1;
    // Every plugin that the trial loads starts: only --require tells that one is missing.
    QTest::newRow("its dependency is missing")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_viewer") }
        << QStringLiteral("libzt_viewer.so")
        << QStringLiteral("zelvane-inspect: libzt_viewer.so (Viewer) was not loaded: Will not "
                          "load: its dependencies cannot be met. Needs Storage, which is not in "
                          "the plugin folder.\n")
        << 1;
    QTest::newRow("the folder has no Core plugin")
        << QStringList { QStringLiteral("zt_storage") } << QStringLiteral("libzt_storage.so")
        << QStringLiteral("zelvane-inspect: libzt_storage.so (Storage) was not loaded: Will not "
                          "load: the plugin folder has no Core plugin.\n")
        << 1;
    QTest::newRow("not in the folder")
        << QStringList { QStringLiteral("zt_core") } << QStringLiteral("libzt_storage.so")
        << QStringLiteral("zelvane-inspect: libzt_storage.so is not in @DIR@\n") << 1;
}

void tst_Trial::require()
{
    QFETCH(QStringList, plugins);
    QFETCH(QString, file);
    QFETCH(QString, error);
    QFETCH(int, exitCode);

    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), plugins));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--trial"),
                    QStringLiteral("--shutdown"), QStringLiteral("--require"), file });
    QCOMPARE(result.err, QString(error).replace(QStringLiteral("@DIR@"), folder.path()));
    QCOMPARE(result.exitCode, exitCode);
}

void tst_Trial::requireWithoutIid()
{
    // The IID that the required plugin declares: it loads as a host of that IID would
    // load it, and a plugin of another IID beside it is refused.
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage") }));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--trial"), QStringLiteral("--require"),
                    QStringLiteral("libzt_storage.so") });
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains(QStringLiteral("IID: ") + iid), qPrintable(result.out));
}

void tst_Trial::json()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_trial_abort"),
                                       QStringLiteral("zt_trial_slow") }));
    const Result result = inspect({ folder.path(), QStringLiteral("--iid"), iid,
                                    QStringLiteral("--trial"), QStringLiteral("--json") });
    QCOMPARE(result.exitCode, 1);
    const QJsonObject trial = QJsonDocument::fromJson(result.out.toUtf8())
                                  .object()
                                  .value(QStringLiteral("trial"))
                                  .toObject();
    QJsonArray plugins = trial.value(QStringLiteral("plugins")).toArray();
    QCOMPARE(plugins.size(), 3);

    // The times are positive numbers where a step was timed, null where it was not.
    const QStringList timeKeys { QStringLiteral("libraryMs"), QStringLiteral("initializeMs"),
                                 QStringLiteral("startMs"), QStringLiteral("endMs") };
    for (qsizetype i = 0; i < plugins.size(); ++i) {
        QJsonObject plugin = plugins.at(i).toObject();
        for (const QString& key : timeKeys) {
            const QJsonValue value = plugin.value(key);
            if (value.isDouble()) {
                QVERIFY2(value.toDouble() >= 0, qPrintable(key));
                plugin.insert(key, QStringLiteral("#"));
            }
        }
        QString text = plugin.value(QStringLiteral("text")).toString();
        text.replace(QRegularExpression(QStringLiteral("\\d+\\.\\d\\d ms")),
                     QStringLiteral("# ms"));
        plugin.insert(QStringLiteral("text"), text);
        plugins.replace(i, plugin);
    }
    const QJsonArray expected {
        QJsonObject {
            { QStringLiteral("name"), QStringLiteral("Core") },
            { QStringLiteral("file"), QStringLiteral("libzt_core.so") },
            { QStringLiteral("result"), QStringLiteral("started") },
            { QStringLiteral("text"), QStringLiteral("started: library # ms, initialize # ms") },
            { QStringLiteral("run"), 0 },
            { QStringLiteral("step"), QStringLiteral("initialize") },
            { QStringLiteral("libraryMs"), QStringLiteral("#") },
            { QStringLiteral("initializeMs"), QStringLiteral("#") },
            { QStringLiteral("startMs"), QStringLiteral("#") },
            { QStringLiteral("endMs"), QStringLiteral("#") } },
        QJsonObject {
            { QStringLiteral("name"), QStringLiteral("Slow") },
            { QStringLiteral("file"), QStringLiteral("libzt_trial_slow.so") },
            { QStringLiteral("result"), QStringLiteral("started") },
            { QStringLiteral("text"), QStringLiteral("started: library # ms, initialize # ms") },
            { QStringLiteral("run"), 0 },
            { QStringLiteral("step"), QStringLiteral("initialize") },
            { QStringLiteral("libraryMs"), QStringLiteral("#") },
            { QStringLiteral("initializeMs"), QStringLiteral("#") },
            { QStringLiteral("startMs"), QStringLiteral("#") },
            { QStringLiteral("endMs"), QStringLiteral("#") } },
        QJsonObject { { QStringLiteral("name"), QStringLiteral("Abort") },
                      { QStringLiteral("file"), QStringLiteral("libzt_trial_abort.so") },
                      { QStringLiteral("result"), QStringLiteral("crashed") },
                      { QStringLiteral("text"),
                        QStringLiteral("crashed while creating the root object: signal SIGABRT "
                                       "(Aborted)") },
                      { QStringLiteral("signal"), QStringLiteral("SIGABRT (Aborted)") },
                      { QStringLiteral("run"), 0 },
                      { QStringLiteral("step"), QStringLiteral("rootObject") },
                      { QStringLiteral("libraryMs"), QStringLiteral("#") },
                      { QStringLiteral("initializeMs"), QJsonValue() },
                      { QStringLiteral("startMs"), QStringLiteral("#") },
                      { QStringLiteral("endMs"), QStringLiteral("#") } },
    };
    QCOMPARE(QJsonDocument(plugins).toJson(), QJsonDocument(expected).toJson());
    QCOMPARE(trial.value(QStringLiteral("cannotStart")).toArray(),
             QJsonArray { QStringLiteral("Abort") });
    QCOMPARE(trial.value(QStringLiteral("everyPluginStarted")), QJsonValue(false));
    QCOMPARE(trial.value(QStringLiteral("runs")), QJsonValue(1));
    QCOMPARE(trial.value(QStringLiteral("error")), QJsonValue());
    // The slow plugin's initialize() sleeps 300 ms: the trial times the plugin, not
    // itself.
    QVERIFY(QJsonDocument::fromJson(result.out.toUtf8())
                .object()
                .value(QStringLiteral("trial"))
                .toObject()
                .value(QStringLiteral("plugins"))
                .toArray()
                .at(1)
                .toObject()
                .value(QStringLiteral("initializeMs"))
                .toDouble()
            >= 300.0);
}

void tst_Trial::jsonShutdown()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_segvatexit") }));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--trial"),
                    QStringLiteral("--shutdown"), QStringLiteral("--json") });
    QCOMPARE(result.exitCode, 1);
    const QJsonObject trial = QJsonDocument::fromJson(result.out.toUtf8())
                                  .object()
                                  .value(QStringLiteral("trial"))
                                  .toObject();
    QCOMPARE(trial.value(QStringLiteral("shutdown")), QJsonValue(true));
    QCOMPARE(trial.value(QStringLiteral("cannotShutDown")).toArray(),
             QJsonArray { QStringLiteral("SegvAtExit") });
    QCOMPARE(trial.value(QStringLiteral("cannotStart")).toArray(), QJsonArray());
    QCOMPARE(trial.value(QStringLiteral("everyPluginStarted")), QJsonValue(true));

    // Per plugin: what shutdown() did to it, its text, and the time where one was taken.
    QStringList unloads;
    const QJsonArray plugins = trial.value(QStringLiteral("plugins")).toArray();
    for (const QJsonValue& value : plugins) {
        const QJsonObject plugin = value.toObject();
        const QJsonValue ms = plugin.value(QStringLiteral("unloadMs"));
        QString text = plugin.value(QStringLiteral("unloadText")).toString();
        text.replace(QRegularExpression(QStringLiteral("\\d+\\.\\d\\d ms")),
                     QStringLiteral("# ms"));
        unloads.append(
            QStringLiteral("%1 %2 %3 [%4] %5")
                .arg(plugin.value(QStringLiteral("name")).toString(),
                     plugin.value(QStringLiteral("unload")).toString(QStringLiteral("null")),
                     ms.isDouble() ? QStringLiteral("#") : QStringLiteral("null"), text,
                     plugin.value(QStringLiteral("signal")).toString()));
    }
    QCOMPARE(unloads,
             (QStringList { QStringLiteral("Core null null [] "),
                            QStringLiteral("SegvAtExit crashed # [crashed while unloading: signal "
                                           "SIGSEGV (Segmentation fault)] SIGSEGV (Segmentation "
                                           "fault)"),
                            QStringLiteral("Storage unloaded # [unloaded in # ms] ") }));
}

void tst_Trial::timeline()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_trial_slow"),
                                       QStringLiteral("zt_trial_segv") }));
    const QString picture = folder.filePath(QStringLiteral("start-up.png"));
    const Result result = inspect(
        { folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--timeline"), picture });
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, 1);

    QImage image(picture);
    QVERIFY2(!image.isNull(), "no picture written");
    // Three rows (Core, Segv, Slow) of 30 pixels below a title and above the axis.
    QCOMPARE(image.size(), QSize(960, 44 + 3 * 30 + 56 + 16));
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 2) {
        for (int x = 0; x < image.width(); x += 2)
            colours.insert(image.pixel(x, y) & 0xffffff);
    }
    QVERIFY2(colours.size() > 10, qPrintable(QString::number(colours.size())));
    QVERIFY(colours.contains(0xffffff)); // the background
    QVERIFY(colours.contains(0x1f5fa8)); // loading a library
    QVERIFY(colours.contains(0x8cb8e8)); // initialize(): the slow plugin's 300 ms
    QVERIFY(colours.contains(0xc62828)); // the plugin that crashed
}

void tst_Trial::svgTimeline()
{
#ifndef ZELVANE_HAVE_SVG
    QSKIP("zelvane-inspect is built without Qt SVG");
#else
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), { QStringLiteral("zt_core") }));
    const QString picture = folder.filePath(QStringLiteral("start-up.svg"));
    const Result result = inspect(
        { folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--timeline"), picture });
    QCOMPARE(result.exitCode, 0);
    const QByteArray svg = ZelvaneTest::readFile(picture);
    QVERIFY2(svg.contains("<svg") && svg.contains("Plugin start-up: every plugin started"),
             svg.left(400).constData());
#endif
}

void tst_Trial::shutdownTimeline()
{
    // With --shutdown each row also has its unload: Storage's in the unload colour,
    // SegvAtExit's in red where it took the process down; Core is never reached.
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_segvatexit") }));
    const QString picture = folder.filePath(QStringLiteral("shutdown.png"));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--shutdown"),
                    QStringLiteral("--timeline"), picture });
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, 1);

    QImage image(picture);
    QVERIFY2(!image.isNull(), "no picture written");
    QCOMPARE(image.size(), QSize(960, 44 + 3 * 30 + 56 + 16));
    // The colours of one row, sampled along its middle.
    const auto rowColours = [&image](int row) {
        QSet<QRgb> colours;
        const int y = 44 + row * 30 + 15;
        for (int x = 276; x < image.width(); ++x)
            colours.insert(image.pixel(x, y) & 0xffffff);
        return colours;
    };
    // Rows in load order: Core, SegvAtExit, Storage.
    QVERIFY(!rowColours(0).contains(0x7e57c2));
    QVERIFY(!rowColours(0).contains(0xc62828));
    QVERIFY(rowColours(1).contains(0xc62828)); // its unload went down
    QVERIFY(!rowColours(1).contains(0x7e57c2));
    QVERIFY(rowColours(2).contains(0x7e57c2)); // unloaded first, and fine
    QVERIFY(!rowColours(2).contains(0xc62828));
}

void tst_Trial::graph()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(
        folder.path(),
        { QStringLiteral("zt_core"), QStringLiteral("zt_inspect_altcore"),
          QStringLiteral("zt_storage"), QStringLiteral("zt_viewer"),
          QStringLiteral("zt_trial_needsegv"), QStringLiteral("zt_inspect_tool"),
          QStringLiteral("zt_notaplugin") }));
    const QString settings = folder.filePath(QStringLiteral("host.ini"));
    QVERIFY(ZelvaneTest::writeFile(settings, "[plugin]\nStorage=false\n"));
    const QString dot = folder.filePath(QStringLiteral("plugins.dot"));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--settings"),
                    settings, QStringLiteral("--graph"), dot });
    QCOMPARE(result.exitCode, 1); // Viewer is dropped

    // Viewer and NeedsSegv are both stuck; the ordering drops the one it meets first
    // and loads the other one without its dependency.
    const QStringList expected {
        QStringLiteral("digraph plugins {"),
        QStringLiteral("    rankdir=BT;"),
        QStringLiteral("    node [shape=box, style=\"rounded,filled\", fontname=\"DejaVu Sans\", "
                       "fontsize=11];"),
        QStringLiteral("    edge [color=\"#555555\"];"),
        QStringLiteral("    \"libzt_core.so\" [label=\"Core\\nlibzt_core.so\\nloads #1\", "
                       "fillcolor=\"#c8e6c9\", peripheries=2];"),
        QStringLiteral("    \"libzt_inspect_altcore.so\" [label=\"AltCore\\n"
                       "libzt_inspect_altcore.so\\nnot the chosen Core\", fillcolor=\"#fff3c4\", "
                       "peripheries=2];"),
        QStringLiteral("    \"libzt_inspect_tool.so\" [label=\"Tool\\nlibzt_inspect_tool.so\\n"
                       "category \\\"Tool\\\": never loaded\", fillcolor=\"#eeeeee\", "
                       "fontcolor=\"#666666\"];"),
        QStringLiteral("    \"libzt_notaplugin.so\" [label=\"libzt_notaplugin.so\\nrefused file\", "
                       "fillcolor=\"#ffffff\", shape=note, color=\"#c62828\", "
                       "fontcolor=\"#c62828\"];"),
        QStringLiteral("    \"libzt_storage.so\" [label=\"Storage\\nlibzt_storage.so\\ndisabled\", "
                       "fillcolor=\"#eeeeee\", fontcolor=\"#666666\"];"),
        QStringLiteral("    \"libzt_trial_needsegv.so\" [label=\"NeedsSegv\\n"
                       "libzt_trial_needsegv.so\\nloads #2\", fillcolor=\"#c8e6c9\"];"),
        QStringLiteral("    \"libzt_viewer.so\" [label=\"Viewer\\nlibzt_viewer.so\\ndropped: "
                       "Needs Storage, which is switched off.\", fillcolor=\"#ffcdd2\", "
                       "color=\"#c62828\"];"),
        QStringLiteral("    \"missing: Segv\" [label=\"Segv\\nmissing\", style=\"dashed\", "
                       "color=\"#c62828\", fontcolor=\"#c62828\"];"),
        QStringLiteral("    \"libzt_trial_needsegv.so\" -> \"missing: Segv\" [color=\"#c62828\", "
                       "penwidth=1.5];"),
        QStringLiteral("    \"libzt_viewer.so\" -> \"libzt_storage.so\" [color=\"#c62828\", "
                       "penwidth=1.5];"),
        QStringLiteral("}"),
        QString(),
    };
    QCOMPARE(QString::fromUtf8(ZelvaneTest::readFile(dot)).split(QLatin1Char('\n')), expected);
}

void tst_Trial::renderedGraph()
{
    if (QStandardPaths::findExecutable(QStringLiteral("dot")).isEmpty())
        QSKIP("Graphviz's dot is not installed");
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_viewer") }));
    const QString svg = folder.filePath(QStringLiteral("plugins.svg"));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--graph"), svg });
    QCOMPARE(result.err, QString());
    const QByteArray content = ZelvaneTest::readFile(svg);
    QVERIFY2(content.contains("<svg") && content.contains("libzt_viewer.so")
                 && content.contains("missing"),
             content.left(400).constData());
}

void tst_Trial::permissions()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage") }));
    const QString dir = QDir(folder.path()).absolutePath();
    const QString core = dir + QStringLiteral("/libzt_core.so");
    const QString storage = dir + QStringLiteral("/libzt_storage.so");

    // A private folder of the user's own files: nothing to say.
    QVERIFY(::chmod(QFile::encodeName(dir).constData(), 0700) == 0);
    QVERIFY(::chmod(QFile::encodeName(core).constData(), 0755) == 0);
    QVERIFY(::chmod(QFile::encodeName(storage).constData(), 0644) == 0);
    Result result = inspect({ folder.path(), QStringLiteral("--iid"), iid });
    QCOMPARE(result.err, QString());

    QVERIFY(::chmod(QFile::encodeName(dir).constData(), 0777) == 0);
    QVERIFY(::chmod(QFile::encodeName(storage).constData(), 0666) == 0);
    QStringList expected {
        QStringLiteral("zelvane-inspect: warning: %1 can be written by every user").arg(dir),
        QStringLiteral("zelvane-inspect: warning: %1 can be written by every user").arg(storage),
    };
    // Root can give a plugin to another user; anyone else cannot, and skips that part.
    if (::geteuid() == 0) {
        QVERIFY(::chown(QFile::encodeName(core).constData(), 65534, uid_t(-1)) == 0);
        expected.insert(1,
                        QStringLiteral("zelvane-inspect: warning: %1 belongs to the user %2, "
                                       "not to root or to the host's user")
                            .arg(core, QFileInfo(core).owner()));
    }
    result = inspect({ folder.path(), QStringLiteral("--iid"), iid });
    QCOMPARE(result.err.split(QLatin1Char('\n')), expected + QStringList { QString() });
    QCOMPARE(result.exitCode, 0);

    result = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--json") });
    QJsonArray warnings;
    for (const QString& line : std::as_const(expected))
        warnings.append(line.mid(QStringLiteral("zelvane-inspect: warning: ").size()));
    QCOMPARE(
        QJsonDocument::fromJson(result.out.toUtf8()).object().value(QStringLiteral("warnings")),
        QJsonValue(warnings));
    QCOMPARE(result.err, QString());
}

QTEST_GUILESS_MAIN(tst_Trial)
#include "tst_trial.moc"
