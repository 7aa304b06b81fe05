// zelvane-demo's safe start, as its users meet it: a plugin takes the demo down while
// it starts; the next start names the plugin, switches it off and comes up without it.

#include "processrunner.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

namespace {

// What the demo itself says on standard error; the plugins and Qt say things there too.
QStringList demoLines(const QString& err)
{
    QStringList lines;
    const QStringList all = err.split(QLatin1Char('\n'));
    for (const QString& line : all) {
        if (line.startsWith(QLatin1String("zelvane-demo: ")))
            lines.append(line);
    }
    return lines;
}

} // namespace

class tst_DemoSafeStart : public QObject
{
    Q_OBJECT

private slots:
    void crashThenStartWithoutIt();
    void crashAtExitOfTheProblemPlugin();
};

void tst_DemoSafeStart::crashThenStartWithoutIt()
{
    QTemporaryDir folder;
    const QDir examples(QStringLiteral(ZELVANE_EXAMPLE_PLUGIN_DIR));
    const QStringList examplePlugins = examples.entryList({ QStringLiteral("*.so") }, QDir::Files);
    QVERIFY(!examplePlugins.isEmpty());
    for (const QString& file : examplePlugins)
        QVERIFY(QFile::copy(examples.filePath(file), folder.filePath(file)));
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), { QStringLiteral("zt_demo_unstable") }));
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("demo.ini"));
    const QString mark = settingsFile + QStringLiteral(".starting");
    const QStringList arguments { QStringLiteral("--plugins"), folder.path(),
                                  QStringLiteral("--settings"), settingsFile,
                                  QStringLiteral("--list") };
    QProcessEnvironment crashing = QProcessEnvironment::systemEnvironment();
    crashing.insert(QStringLiteral("ZELVANE_DEMO_CRASH"), QStringLiteral("1"));
    const QString demo = QStringLiteral(ZELVANE_DEMO_EXECUTABLE);

    // The first start dies in Unstable's initialize(), and leaves its mark behind.
    ZelvaneTest::ProcessResult result = ZelvaneTest::runProcess(demo, arguments, crashing);
    QCOMPARE(result.exitCode, -1);
    QVERIFY(QFile::exists(mark));

    // The next start finds the mark, tries the plugins in a child process (where
    // Unstable dies again), switches Unstable off and starts without it.
    result = ZelvaneTest::runProcess(demo, arguments, crashing);
    QCOMPARE(demoLines(result.err),
             (QStringList { QStringLiteral("zelvane-demo: the last start did not finish; trying "
                                           "the plugins"),
                            QStringLiteral("zelvane-demo: Unstable (libzt_demo_unstable.so) cannot "
                                           "start: crashed in initialize(): signal SIGSEGV "
                                           "(Segmentation fault)"),
                            QStringLiteral("zelvane-demo: switched off: Unstable") }));
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(!result.out.section(QStringLiteral("Load order:"), 1)
                  .section(QStringLiteral("Disabled:"), 0, 0)
                  .contains(QStringLiteral("Unstable")),
             qPrintable(result.out));
    QVERIFY2(result.out.section(QStringLiteral("Disabled:"), 1)
                 .section(QStringLiteral("Skipped:"), 0, 0)
                 .contains(QStringLiteral("  Unstable\n")),
             qPrintable(result.out));
    QVERIFY(ZelvaneTest::storedSelection(settingsFile).contains(QStringLiteral("Unstable=false")));
    QVERIFY(!QFile::exists(mark));

    // A start that finished leaves nothing to report.
    result = ZelvaneTest::runProcess(demo, arguments, crashing);
    QCOMPARE(demoLines(result.err), QStringList());
    QCOMPARE(result.exitCode, 0);
}

void tst_DemoSafeStart::crashAtExitOfTheProblemPlugin()
{
    // The demo's own problem plugin, switched on as Help > Problem Plugin > Crash at Exit
    // leaves it: the demo starts, and dies as it shuts its plugins down.
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("demo.ini"));
    QVERIFY(ZelvaneTest::writeFile(settingsFile,
                                   "[plugin]\nTroublemaker=true\n"
                                   "[demo]\ntrouble=crash-at-exit\n"));
    const QString mark = settingsFile + QStringLiteral(".starting");
    const QStringList arguments { QStringLiteral("--settings"), settingsFile,
                                  QStringLiteral("--list") };
    const QString demo = QStringLiteral(ZELVANE_DEMO_EXECUTABLE);

    ZelvaneTest::ProcessResult result = ZelvaneTest::runProcess(demo, arguments);
    QVERIFY2(result.out.contains(QStringLiteral(". Troublemaker\n")), qPrintable(result.out));
    QCOMPARE(result.exitCode, -1);
    QVERIFY(QFile::exists(mark));

    // The next start's trial runs shutdown() too, and names the plugin.
    result = ZelvaneTest::runProcess(demo, arguments);
    QCOMPARE(demoLines(result.err),
             (QStringList { QStringLiteral("zelvane-demo: the last start did not finish; trying "
                                           "the plugins"),
                            QStringLiteral("zelvane-demo: Troublemaker (libeditor_troublemaker.so) "
                                           "cannot start: crashed while unloading: signal SIGABRT "
                                           "(Aborted)"),
                            QStringLiteral("zelvane-demo: switched off: Troublemaker") }));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(
        ZelvaneTest::storedSelection(settingsFile).contains(QStringLiteral("Troublemaker=false")));
    QVERIFY(!QFile::exists(mark));
}

QTEST_GUILESS_MAIN(tst_DemoSafeStart)
#include "tst_demosafestart.moc"
