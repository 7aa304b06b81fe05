// The trial watcher that SafeStart and zelvane-inspect --trial share: it starts the
// trial helper over a plugin folder and names, for each plugin in load order, what
// became of it, the step it was in and why, over plugins that crash, abort, exit, hang
// or take their time at one step of their loading, and, with shutdown, over a plugin
// that crashes as it is unloaded.

#include "diagnostics/trialwatch_p.h"

#include "settingsfixture.h"
#include "zelvanetest.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <algorithm>
#include <csignal>

namespace {

using Zelvane::LoadStep;
using Zelvane::TrialPlugin;

QString stepName(const std::optional<LoadStep>& step)
{
    if (!step)
        return QStringLiteral("-");
    switch (*step) {
    case LoadStep::Library:
        return QStringLiteral("library");
    case LoadStep::RootObject:
        return QStringLiteral("root object");
    case LoadStep::Initialize:
        return QStringLiteral("initialize");
    case LoadStep::Finished:
        break;
    }
    return QStringLiteral("finished");
}

// "Name (file): step: outcome text", with every time replaced by "#".
QStringList describe(const Zelvane::TrialReport& report)
{
    QStringList lines;
    for (const TrialPlugin& plugin : report.plugins) {
        QString text = Zelvane::trialOutcomeText(plugin);
        static const QRegularExpression time(QStringLiteral("\\d+\\.\\d\\d ms"));
        text.replace(time, QStringLiteral("# ms"));
        lines.append(QStringLiteral("%1 (%2): %3: %4")
                         .arg(plugin.name, plugin.file, stepName(plugin.step), text));
    }
    return lines;
}

// "Name: what shutdown() did to it", with every time replaced by "#"; "-" when it was
// not reached.
QStringList describeUnloads(const Zelvane::TrialReport& report)
{
    QStringList lines;
    for (const TrialPlugin& plugin : report.plugins) {
        QString text = Zelvane::trialUnloadText(plugin);
        static const QRegularExpression time(QStringLiteral("\\d+\\.\\d\\d ms"));
        text.replace(time, QStringLiteral("# ms"));
        lines.append(plugin.name + QStringLiteral(": ")
                     + (text.isEmpty() ? QStringLiteral("-") : text));
    }
    return lines;
}

Zelvane::TrialWatch watchOver(const QString& folder)
{
    Zelvane::TrialWatch watch;
    watch.program
        = QDir(QStringLiteral(ZELVANE_TRIAL_DIR)).filePath(QStringLiteral("zelvane-trial"));
    watch.directory = folder;
    watch.iid = QStringLiteral(ZELVANE_TEST_IID);
    watch.timeoutSeconds = 2;
    return watch;
}

const QString started = QStringLiteral("started: library # ms, initialize # ms");
const QString notTried
    = QStringLiteral("not tried: loading stops at the first plugin that cannot start");

} // namespace

class tst_TrialWatch : public QObject
{
    Q_OBJECT

private slots:
    void outcomes_data();
    void outcomes();
    void isolateSwitchesOffEachCulpritInTurn();
    void settingsOfTheHostAreReadNotWritten();
    void shutdownNamesThePluginWhoseUnloadCrashes();
    void unloadThatExitsOrHangs_data();
    void unloadThatExitsOrHangs();
    void withoutShutdownTheUnloadsAreNotWatched();
    void deathBeforeTheFirstUnloadIsAShutdownCrash();
    void isolateSwitchesOffAPluginThatCrashesAtShutdown();
    void helperThatCannotStart();
    void signalNames();
};

void tst_TrialWatch::outcomes_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("culprits");
    QTest::addColumn<bool>("everyPluginStarted");

    QTest::newRow("every plugin starts, one of them slowly")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_slow") }
        << QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                         QStringLiteral("Slow (libzt_trial_slow.so): initialize: ") + started }
        << QStringList() << true;
    QTest::newRow("SIGSEGV in initialize() stops the loading")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                         QStringLiteral("zt_trial_segv") }
        << QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                         QStringLiteral("Segv (libzt_trial_segv.so): initialize: crashed in "
                                        "initialize(): signal SIGSEGV (Segmentation fault)"),
                         QStringLiteral("Storage (libzt_storage.so): -: ") + notTried }
        << QStringList { QStringLiteral("Segv") } << false;
    QTest::newRow("abort() while the root object is made")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_abort") }
        << QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                         QStringLiteral("Abort (libzt_trial_abort.so): root object: crashed "
                                        "while creating the root object: signal SIGABRT "
                                        "(Aborted)") }
        << QStringList { QStringLiteral("Abort") } << false;
    QTest::newRow("exit() in a static initialiser")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_exit") }
        << QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                         QStringLiteral("Exit (libzt_trial_exit.so): library: exited while "
                                        "loading the library: exit code 3") }
        << QStringList { QStringLiteral("Exit") } << false;
    QTest::newRow("a hang in initialize() is stopped at the timeout")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_trial_hang") }
        << QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                         QStringLiteral("Hang (libzt_trial_hang.so): initialize: hung in "
                                        "initialize(): no progress within the timeout, stopped") }
        << QStringList { QStringLiteral("Hang") } << false;
    // Not the trial's doing: Viewer's dependency is not in the folder.
    QTest::newRow("dropped by the ordering before anything is switched off")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_viewer") }
        << QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                         QStringLiteral("Viewer (libzt_viewer.so): -: not loaded: the dependency "
                                        "ordering drops it, as at every start") }
        << QStringList() << false;
}

void tst_TrialWatch::outcomes()
{
    QFETCH(QStringList, plugins);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, culprits);
    QFETCH(bool, everyPluginStarted);

    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), plugins));
    const Zelvane::TrialReport report = watchOver(folder.path()).run();
    QCOMPARE(report.error, QString());
    QCOMPARE(describe(report), expected);
    QCOMPARE(report.culprits(), culprits);
    QCOMPARE(report.everyPluginStarted(), everyPluginStarted);
    QCOMPARE(report.runs, 1);
    // The plugins ran in another process: nothing was loaded here.
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_TrialWatch::isolateSwitchesOffEachCulpritInTurn()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_trial_segv"),
                                       QStringLiteral("zt_trial_needsegv"),
                                       QStringLiteral("zt_trial_abort") }));
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.isolate = true;
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error, QString());
    // NeedsSegv cannot load once Segv is switched off: the ordering drops it. Each
    // plugin keeps its place of the first run that reached it.
    QCOMPARE(describe(report),
             (QStringList {
                 QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                 QStringLiteral("Segv (libzt_trial_segv.so): initialize: crashed in initialize(): "
                                "signal SIGSEGV (Segmentation fault)"),
                 QStringLiteral("NeedsSegv (libzt_trial_needsegv.so): -: not loaded: the "
                                "dependency ordering drops it once the plugins that cannot "
                                "start are switched off"),
                 QStringLiteral("Abort (libzt_trial_abort.so): root object: crashed while "
                                "creating the root object: signal SIGABRT (Aborted)") }));
    QCOMPARE(report.culprits(), (QStringList { QStringLiteral("Segv"), QStringLiteral("Abort") }));
    // One run per culprit, then the run that gets through.
    QCOMPARE(report.runs, 3);
    QCOMPARE(report.isolated, true);
    QCOMPARE(report.coreCannotBeLeftOut, false);
    QCOMPARE(report.everyPluginStarted(), false);
}

void tst_TrialWatch::settingsOfTheHostAreReadNotWritten()
{
    QTemporaryDir folder;
    QVERIFY(
        ZelvaneTest::copyPlugins(folder.path(),
                                 { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                   QStringLiteral("zt_viewer"), QStringLiteral("zt_trial_segv") }));
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("host.ini"));
    {
        QSettings settings(settingsFile, QSettings::IniFormat);
        settings.setValue(QStringLiteral("plugin/Segv"), false);
    }
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.settingsFile = settingsFile;
    watch.arguments.insert(QStringLiteral("Viewer/fail"), QStringLiteral("no screen"));
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error, QString());
    QCOMPARE(describe(report),
             (QStringList { QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                            QStringLiteral("Storage (libzt_storage.so): initialize: ") + started,
                            QStringLiteral("Viewer (libzt_viewer.so): initialize: failed in "
                                           "initialize(): The plugin \"Viewer\" failed to "
                                           "initialize. Error: \"no screen\"") }));
    QCOMPARE(report.culprits(), QStringList { QStringLiteral("Viewer") });
    QCOMPARE(ZelvaneTest::storedSelection(settingsFile),
             QStringList { QStringLiteral("Segv=false") });
}

void tst_TrialWatch::shutdownNamesThePluginWhoseUnloadCrashes()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_segvatexit") }));
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.shutdown = true;
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error, QString());
    QCOMPARE(report.shutdown, true);
    QCOMPARE(describe(report),
             (QStringList {
                 QStringLiteral("Core (libzt_core.so): initialize: ") + started,
                 QStringLiteral("SegvAtExit (libzt_trial_segvatexit.so): initialize: ") + started,
                 QStringLiteral("Storage (libzt_storage.so): initialize: ") + started }));
    // shutdown() unloads in reverse load order: Storage goes, SegvAtExit takes the
    // process down, Core is never reached.
    QCOMPARE(describeUnloads(report),
             (QStringList { QStringLiteral("Core: -"),
                            QStringLiteral("SegvAtExit: crashed while unloading: signal SIGSEGV "
                                           "(Segmentation fault)"),
                            QStringLiteral("Storage: unloaded in # ms") }));
    QCOMPARE(report.culprits(), QStringList());
    QCOMPARE(report.shutdownCulprits(), QStringList { QStringLiteral("SegvAtExit") });
    QCOMPARE(report.everyPluginStarted(), true);
    QCOMPARE(report.runs, 1);
}

void tst_TrialWatch::unloadThatExitsOrHangs_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("exit() in the destructor")
        << QStringLiteral("zt_trial_exitatexit")
        << QStringList { QStringLiteral("Core: -"),
                         QStringLiteral("ExitAtExit: exited while unloading: exit code 3") };
    QTest::newRow("a destructor that never returns is stopped at the timeout")
        << QStringLiteral("zt_trial_hangatexit")
        << QStringList { QStringLiteral("Core: -"),
                         QStringLiteral("HangAtExit: hung while unloading: no progress within "
                                        "the timeout, stopped") };
}

void tst_TrialWatch::unloadThatExitsOrHangs()
{
    QFETCH(QString, plugin);
    QFETCH(QStringList, expected);

    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), { QStringLiteral("zt_core"), plugin }));
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.shutdown = true;
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error, QString());
    QCOMPARE(describeUnloads(report), expected);
    QCOMPARE(report.shutdownCulprits(),
             QStringList { expected.constLast().section(QLatin1Char(':'), 0, 0) });
    QCOMPARE(report.everyPluginStarted(), true);
}

void tst_TrialWatch::withoutShutdownTheUnloadsAreNotWatched()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_segvatexit") }));
    const Zelvane::TrialReport report = watchOver(folder.path()).run();
    QCOMPARE(report.error, QString());
    QCOMPARE(report.shutdown, false);
    QCOMPARE(describeUnloads(report),
             (QStringList { QStringLiteral("Core: -"), QStringLiteral("SegvAtExit: -"),
                            QStringLiteral("Storage: -") }));
    QCOMPARE(report.shutdownCulprits(), QStringList());
    QCOMPARE(report.everyPluginStarted(), true);
}

void tst_TrialWatch::deathBeforeTheFirstUnloadIsAShutdownCrash()
{
    // A helper that goes down after loadPlugins() returned, before shutdown() announced
    // its first unload: the real helper loads the plugins and leaves without unloading,
    // then the process that the watcher follows dies of SIGSEGV.
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_slow") }));
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.shutdown = true;
    QTemporaryDir helperFolder;
    const QString helper = helperFolder.filePath(QStringLiteral("zelvane-trial"));
    QFile script(helper);
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\n"
                 "for argument do\n"
                 "    shift\n"
                 "    [ \"$argument\" = --shutdown ] || set -- \"$@\" \"$argument\"\n"
                 "done\n\""
                 + watch.program.toUtf8()
                 + "\" \"$@\"\n"
                   "kill -SEGV $$\n");
    script.close();
    QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    watch.program = helper;
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error, QString());
    QCOMPARE(report.everyPluginStarted(), true);
    // shutdown() would have unloaded the last plugin loaded first: that is the one named,
    // and the others were never reached.
    QCOMPARE(describeUnloads(report),
             (QStringList { QStringLiteral("Core: -"), QStringLiteral("Slow: -"),
                            QStringLiteral("Storage: crashed while unloading: signal SIGSEGV "
                                           "(Segmentation fault)") }));
    QCOMPARE(report.shutdownCulprits(), QStringList { QStringLiteral("Storage") });
}

void tst_TrialWatch::isolateSwitchesOffAPluginThatCrashesAtShutdown()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_segvatexit") }));
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.shutdown = true;
    watch.isolate = true;
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error, QString());
    // The second run, without SegvAtExit, unloads every plugin; SegvAtExit keeps what
    // the first run found.
    QCOMPARE(describeUnloads(report),
             (QStringList { QStringLiteral("Core: unloaded in # ms"),
                            QStringLiteral("SegvAtExit: crashed while unloading: signal SIGSEGV "
                                           "(Segmentation fault)"),
                            QStringLiteral("Storage: unloaded in # ms") }));
    QCOMPARE(report.plugins.at(1).run, 0);
    QCOMPARE(report.shutdownCulprits(), QStringList { QStringLiteral("SegvAtExit") });
    QCOMPARE(report.runs, 2);
}

void tst_TrialWatch::helperThatCannotStart()
{
    QTemporaryDir folder;
    Zelvane::TrialWatch watch = watchOver(folder.path());
    watch.program = folder.filePath(QStringLiteral("none"));
    const Zelvane::TrialReport report = watch.run();
    QCOMPARE(report.error,
             QStringLiteral("cannot start %1: execvp: No such file or directory")
                 .arg(folder.filePath(QStringLiteral("none"))));
    QCOMPARE(report.plugins.size(), 0);
    QCOMPARE(report.everyPluginStarted(), false);
}

void tst_TrialWatch::signalNames()
{
    QCOMPARE(Zelvane::signalText(SIGSEGV), QStringLiteral("SIGSEGV (Segmentation fault)"));
    QCOMPARE(Zelvane::signalText(SIGKILL), QStringLiteral("SIGKILL (Killed)"));
}

QTEST_GUILESS_MAIN(tst_TrialWatch)
#include "tst_trialwatch.moc"
