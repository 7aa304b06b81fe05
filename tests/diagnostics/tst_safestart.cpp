// Zelvane::SafeStart: the mark of a start that never finished, and the plugins found to
// take the host down, switched off as the plugins model switches them off.

#include "settingsfixture.h"
#include "zelvanetest.h"

#include <zelvane/diagnostics/SafeStart>

#include <QtCore/QProcess>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <unistd.h>

namespace {

QStringList namesOf(const QList<Zelvane::SafeStart::Culprit>& culprits)
{
    QStringList names;
    for (const Zelvane::SafeStart::Culprit& culprit : culprits)
        names.append(culprit.name + QStringLiteral(" (") + culprit.fileName + QStringLiteral("): ")
                     + culprit.reason);
    return names;
}

} // namespace

class tst_SafeStart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void mark();
    void markInAFolderNotMadeYet();
    void markOfAProcessThatStillRuns();
    void findAndSwitchOff();
    void everyPluginStarts();
    void crashAtShutdown();
    void switchedOffWithTheirDependants();
    void noTrialProgram();
    void coreOnlyStartLeavesTheSelectionAlone();
};

void tst_SafeStart::initTestCase()
{
    Zelvane::PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_SafeStart::mark()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    QCOMPARE(safeStart.markFileName(), folder.filePath(QStringLiteral("host.ini.starting")));
    QCOMPARE(safeStart.previousStartFailed(), false);

    QVERIFY(safeStart.begin());
    QCOMPARE(ZelvaneTest::fileContent(safeStart.markFileName()),
             QByteArray::number(qint64(::getpid())) + '\n');
    // This process wrote it: to a later process with the same number it is a start
    // that never finished.
    QCOMPARE(Zelvane::SafeStart(&settings).previousStartFailed(), true);

    // A start whose process is gone.
    QProcess gone;
    gone.start(QStringLiteral("true"), QStringList());
    QVERIFY(gone.waitForFinished());
    QVERIFY(ZelvaneTest::writeFile(safeStart.markFileName(),
                                   QByteArray::number(gone.processId()) + '\n'));
    QCOMPARE(safeStart.previousStartFailed(), true);

    safeStart.finish();
    QCOMPARE(ZelvaneTest::fileContent(safeStart.markFileName()), QByteArray("<no file>"));
    QCOMPARE(safeStart.previousStartFailed(), false);
}

void tst_SafeStart::markInAFolderNotMadeYet()
{
    // At a host's first start, QSettings has not made its folder yet.
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("Org/host.ini")), QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    QVERIFY(safeStart.begin());
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("Org/host.ini.starting"))));
    safeStart.finish();
    QCOMPARE(safeStart.previousStartFailed(), false);
}

void tst_SafeStart::markOfAProcessThatStillRuns()
{
    // Another instance of the host is starting right now: its start has not failed.
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    QProcess starting;
    starting.start(QStringLiteral("sleep"), { QStringLiteral("30") });
    QVERIFY(starting.waitForStarted());
    QVERIFY(ZelvaneTest::writeFile(safeStart.markFileName(),
                                   QByteArray::number(starting.processId()) + '\n'));
    QCOMPARE(safeStart.previousStartFailed(), false);
    starting.kill();
    starting.waitForFinished();
    QCOMPARE(safeStart.previousStartFailed(), true);
}

void tst_SafeStart::findAndSwitchOff()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(
        folder.path(),
        { QStringLiteral("zt_core"), QStringLiteral("zt_storage"), QStringLiteral("zt_trial_segv"),
          QStringLiteral("zt_trial_hang"), QStringLiteral("zt_viewer") }));
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("host.ini"));
    QVERIFY(ZelvaneTest::writeFile(settingsFile, "[plugin]\nStorage=true\n"));
    QSettings settings(settingsFile, QSettings::IniFormat);

    Zelvane::SafeStart safeStart(&settings);
    safeStart.setTimeout(1);
    const QList<Zelvane::SafeStart::Culprit> culprits = safeStart.findCulprits(
        QDir(folder.path()), { { QStringLiteral("Viewer/fail"), QStringLiteral("no screen") } });
    QCOMPARE(safeStart.errorString(), QString());
    QCOMPARE(namesOf(culprits),
             (QStringList { QStringLiteral("Segv (libzt_trial_segv.so): crashed in initialize(): "
                                           "signal SIGSEGV (Segmentation fault)"),
                            QStringLiteral("Hang (libzt_trial_hang.so): hung in initialize(): no "
                                           "progress within the timeout, stopped"),
                            QStringLiteral("Viewer (libzt_viewer.so): failed in initialize(): The "
                                           "plugin \"Viewer\" failed to initialize. Error: \"no "
                                           "screen\"") }));
    // Finding them writes nothing.
    QCOMPARE(ZelvaneTest::storedSelection(settingsFile),
             QStringList { QStringLiteral("Storage=true") });

    safeStart.switchOff(culprits);
    QCOMPARE(ZelvaneTest::storedSelection(settingsFile),
             (QStringList { QStringLiteral("Hang=false"), QStringLiteral("Segv=false"),
                            QStringLiteral("Storage=true"), QStringLiteral("Viewer=false") }));
    QCOMPARE(namesOf(safeStart.findCulprits(QDir(folder.path()))), QStringList());
}

void tst_SafeStart::everyPluginStarts()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage") }));
    QTemporaryDir settingsFolder;
    QSettings settings(settingsFolder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    QCOMPARE(namesOf(safeStart.findCulprits(QDir(folder.path()))), QStringList());
    QCOMPARE(safeStart.errorString(), QString());
    // The trial ran in another process: nothing was loaded here.
    QCOMPARE(ZelvaneTest::events(), QStringList());
}

void tst_SafeStart::crashAtShutdown()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_storage"),
                                       QStringLiteral("zt_trial_segvatexit") }));
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("host.ini"));
    QSettings settings(settingsFile, QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    const QList<Zelvane::SafeStart::Culprit> culprits = safeStart.findCulprits(QDir(folder.path()));
    QCOMPARE(safeStart.errorString(), QString());
    // Every plugin starts; the one whose destructor crashes as shutdown() unloads it
    // takes the host down all the same.
    QCOMPARE(namesOf(culprits),
             QStringList { QStringLiteral("SegvAtExit (libzt_trial_segvatexit.so): crashed "
                                          "while unloading: signal SIGSEGV (Segmentation "
                                          "fault)") });
    safeStart.switchOff(culprits);
    QCOMPARE(ZelvaneTest::storedSelection(settingsFile),
             QStringList { QStringLiteral("SegvAtExit=false") });
    QCOMPARE(namesOf(safeStart.findCulprits(QDir(folder.path()))), QStringList());
}

void tst_SafeStart::switchedOffWithTheirDependants()
{
    // NeedsSegv needs Segv, Viewer needs Storage: switching Segv off switches NeedsSegv
    // off, as clearing Segv's tick on the plugins screen would.
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(
        folder.path(),
        { QStringLiteral("zt_core"), QStringLiteral("zt_storage"), QStringLiteral("zt_trial_segv"),
          QStringLiteral("zt_trial_needsegv"), QStringLiteral("zt_viewer") }));
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("host.ini"));
    QVERIFY(ZelvaneTest::writeFile(settingsFile, "[plugin]\nStorage=true\n"));
    QSettings settings(settingsFile, QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    const Zelvane::SafeStart::Culprit storage { QStringLiteral("Storage"),
                                                QStringLiteral("libzt_storage.so"), QString() };
    // Without a folder there are no plugins to name.
    QCOMPARE(safeStart.switchedOffWith(storage), QStringList());

    const QList<Zelvane::SafeStart::Culprit> culprits = safeStart.findCulprits(QDir(folder.path()));
    QCOMPARE(safeStart.errorString(), QString());
    // NeedsSegv never got to start: it is not a culprit of its own.
    QCOMPARE(namesOf(culprits),
             QStringList { QStringLiteral("Segv (libzt_trial_segv.so): crashed in initialize(): "
                                          "signal SIGSEGV (Segmentation fault)") });
    QCOMPARE(safeStart.switchedOffWith(culprits.constFirst()),
             QStringList { QStringLiteral("NeedsSegv") });
    QCOMPARE(safeStart.switchedOffWith(storage), QStringList { QStringLiteral("Viewer") });
    // Naming them writes nothing.
    QCOMPARE(ZelvaneTest::storedSelection(settingsFile),
             QStringList { QStringLiteral("Storage=true") });

    safeStart.switchOff(culprits);
    QCOMPARE(ZelvaneTest::storedSelection(settingsFile),
             (QStringList { QStringLiteral("NeedsSegv=false"), QStringLiteral("Segv=false"),
                            QStringLiteral("Storage=true") }));
    // Once they are off, nothing more goes with Segv.
    QCOMPARE(safeStart.switchedOffWith(culprits.constFirst()), QStringList());
}

void tst_SafeStart::noTrialProgram()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    Zelvane::SafeStart safeStart(&settings);
    QVERIFY2(QFileInfo(safeStart.trialProgram()).isExecutable(),
             qPrintable(safeStart.trialProgram()));
    safeStart.setTrialProgram(folder.filePath(QStringLiteral("none")));
    QCOMPARE(namesOf(safeStart.findCulprits(QDir(folder.path()))), QStringList());
    QCOMPARE(safeStart.errorString(),
             QStringLiteral("cannot start %1: execvp: No such file or directory")
                 .arg(folder.filePath(QStringLiteral("none"))));
}

void tst_SafeStart::coreOnlyStartLeavesTheSelectionAlone()
{
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkpath(QStringLiteral("plugins")));
    const QString plugins = root.filePath(QStringLiteral("plugins"));
    QVERIFY(ZelvaneTest::copyPlugins(
        plugins,
        { QStringLiteral("zt_core"), QStringLiteral("zt_storage"), QStringLiteral("zt_viewer") }));
    const QString file = root.filePath(QStringLiteral("settings.ini"));
    QVERIFY(ZelvaneTest::writeFile(file, "[General]\nwindow=wide\n\n[plugin]\nStorage=true\n"));
    const QByteArray before = ZelvaneTest::fileContent(file);
    QSettings settings(file, QSettings::IniFormat);

    Zelvane::SafeStart safeStart(&settings);
    QCOMPARE(safeStart.coreOnlyFileName(), file + QStringLiteral(".coreonly"));
    const std::unique_ptr<QSettings> coreOnly = safeStart.coreOnlySettings(QDir(plugins));
    QVERIFY(coreOnly);
    QCOMPARE(coreOnly->fileName(), file + QStringLiteral(".coreonly"));
    QCOMPARE(ZelvaneTest::storedSelection(coreOnly->fileName()),
             QStringList({ QStringLiteral("Storage=false"), QStringLiteral("Viewer=false") }));
    QCOMPARE(coreOnly->value(QStringLiteral("window")).toString(), QStringLiteral("wide"));

    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setSettings(coreOnly.get());
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    ZelvaneTest::clearEvents();
    QVERIFY(controller->loadPlugins(QDir(plugins)));
    QCOMPARE(ZelvaneTest::events(), QStringList({ QStringLiteral("initialize:Core") }));
    controller->shutdown();
    controller->setSettings(&settings);

    settings.sync();
    QCOMPARE(ZelvaneTest::fileContent(file), before);
}

QTEST_GUILESS_MAIN(tst_SafeStart)
#include "tst_safestart.moc"
