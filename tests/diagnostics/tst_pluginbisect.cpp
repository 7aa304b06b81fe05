// Zelvane::PluginBisect: the search for the Extension behind a problem that only the
// user sees, across restarts of the host. Each restart is a fresh settings object and a
// fresh bisect over the same settings file, as a new process would have; the user's
// answer is whether the culprit loads in that start, by the library's own load plan.
//
// The folder: a Core plugin and seventeen Extensions, Bisect01 to Bisect17, all on by
// default, with these dependencies (CMakeLists.txt writes them):
//   02 → 01, 03 → 02, 05 → 04, 06 → 04, 07 → 06, 09 → 08 and 01, 10 → 09, 12 → 11,
//   14 → 13 and 12, 16 → 15, 17 → 16
// Bisect07 is pinned, so 07, 06 and 04 stay on and fourteen plugins are suspected.

#include "controller/loadplan_p.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <zelvane/diagnostics/PluginBisect>

#include <QtCore/QProcess>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <memory>

using Zelvane::PluginBisect;

Q_DECLARE_METATYPE(PluginBisect::State)

namespace {

QStringList allExtensions()
{
    QStringList names;
    for (int i = 1; i <= 17; ++i)
        names.append(QStringLiteral("Bisect%1").arg(i, 2, 10, QLatin1Char('0')));
    return names;
}

// The user's settings before the bisect, as the host's QSettings wrote them: a few
// choices of their own, a key for a plugin that is gone, and other groups.
void writeUserSettings(const QString& path)
{
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue("General/language", "en");
    settings.setValue("plugin/Bisect03", true);
    settings.setValue("plugin/Bisect11", "true");
    settings.setValue("plugin/Gone", false);
    settings.setValue("window/size", QSize(800, 600));
    settings.sync();
}

class World
{
public:
    bool create()
    {
        QStringList targets { "zt_core" };
        for (int i = 1; i <= 17; ++i)
            targets.append(QStringLiteral("zt_bisect_%1").arg(i, 2, 10, QLatin1Char('0')));
        if (!m_root.isValid() || !QDir(m_root.path()).mkpath("plugins"))
            return false;
        if (!ZelvaneTest::copyPlugins(pluginDir(), targets))
            return false;
        writeUserSettings(settingsFile());
        Zelvane::PluginController::instance()->setPluginIID(ZELVANE_TEST_IID);
        return true;
    }
    QString pluginDir() const { return m_root.filePath("plugins"); }
    QString settingsFile() const { return m_root.filePath("settings.ini"); }

private:
    QTemporaryDir m_root;
};

// One start of the host: its settings and its bisect, as a new process has them.
struct Start
{
    explicit Start(const QString& file)
        : settings(std::make_unique<QSettings>(file, QSettings::IniFormat))
        , bisect(std::make_unique<PluginBisect>(settings.get()))
    {
    }
    std::unique_ptr<QSettings> settings;
    std::unique_ptr<PluginBisect> bisect;
};

// Whether the user sees the problem in this start: whether one of the culprits loads.
bool problemIsThere(const World& world, QSettings* settings, const QStringList& culprits)
{
    Zelvane::LoadPlan plan { QDir(world.pluginDir()) };
    plan.decide(settings);
    const QList<Zelvane::LoadPlan::File> files = plan.files();
    for (const int index : plan.loadOrderFiles()) {
        if (culprits.contains(files.at(index).name))
            return true;
    }
    return false;
}

// Restarts and answers until the search ends; the restarts it took.
int runSearch(const World& world, const QStringList& culprits, PluginBisect::State* state)
{
    int restarts = 0;
    for (;;) {
        Start start(world.settingsFile());
        *state = start.bisect->beginStart();
        if (*state != PluginBisect::State::Testing)
            return restarts;
        ++restarts;
        start.bisect->started();
        start.bisect->answer(problemIsThere(world, start.settings.get(), culprits));
        if (start.bisect->state() != PluginBisect::State::Testing) {
            *state = start.bisect->state();
            return restarts;
        }
        if (restarts > 20)
            return restarts;
    }
}

} // namespace

class tst_PluginBisect : public QObject
{
    Q_OBJECT

private slots:
    void findsTheCulprit_data();
    void findsTheCulprit();
    void notAnExtension_data();
    void notAnExtension();
    void twoCulprits();
    void firstStepSwitchesOffEverySuspect();
    void halvesAreClosedUnderDependencies();
    void cancelRestoresTheSelection();
    void startRefusesWhenEverythingIsPinned();
    void hostCrashesMidBisect();
    void texts();
};

void tst_PluginBisect::findsTheCulprit_data()
{
    QTest::addColumn<QString>("culprit");
    const QStringList pinnedAndNeeded { "Bisect04", "Bisect06", "Bisect07" };
    for (const QString& name : allExtensions()) {
        if (!pinnedAndNeeded.contains(name))
            QTest::newRow(qPrintable(name)) << name;
    }
}

void tst_PluginBisect::findsTheCulprit()
{
    QFETCH(QString, culprit);
    World world;
    QVERIFY(world.create());
    const QByteArray before = ZelvaneTest::fileContent(world.settingsFile());

    {
        Start first(world.settingsFile());
        QCOMPARE(first.bisect->beginStart(), PluginBisect::State::Idle);
        QVERIFY2(first.bisect->start(QDir(world.pluginDir()), { "Bisect07" }),
                 qPrintable(first.bisect->errorString()));
        QCOMPARE(first.bisect->pinned(), QStringList({ "Bisect04", "Bisect06", "Bisect07" }));
        QCOMPARE(first.bisect->suspects().size(), 14);
        QCOMPARE(first.bisect->maximumRestarts(), 5);
    }

    PluginBisect::State state = PluginBisect::State::Idle;
    const int restarts = runSearch(world, { culprit }, &state);
    QCOMPARE(state, PluginBisect::State::Found);
    QVERIFY2(restarts <= 6, qPrintable(QString::number(restarts)));

    Start last(world.settingsFile());
    QCOMPARE(last.bisect->state(), PluginBisect::State::Found);
    QCOMPARE(last.bisect->culprit(), culprit);
    QCOMPARE(last.bisect->restarts(), restarts);
    QVERIFY(restarts <= last.bisect->maximumRestarts());
    last.bisect->finish();
    QCOMPARE(last.bisect->state(), PluginBisect::State::Idle);
    last.settings.reset();
    QCOMPARE(ZelvaneTest::fileContent(world.settingsFile()), before);
}

void tst_PluginBisect::notAnExtension_data()
{
    QTest::addColumn<QString>("culprit");
    QTest::newRow("the core plugin") << "Core";
    QTest::newRow("a pinned plugin") << "Bisect07";
    QTest::newRow("a plugin the pinned one needs") << "Bisect04";
}

void tst_PluginBisect::notAnExtension()
{
    QFETCH(QString, culprit);
    World world;
    QVERIFY(world.create());
    const QByteArray before = ZelvaneTest::fileContent(world.settingsFile());
    {
        Start first(world.settingsFile());
        QVERIFY(first.bisect->start(QDir(world.pluginDir()), { "Bisect07" }));
    }
    PluginBisect::State state = PluginBisect::State::Idle;
    QCOMPARE(runSearch(world, { culprit }, &state), 1);
    QCOMPARE(state, PluginBisect::State::NotAnExtension);

    Start last(world.settingsFile());
    QCOMPARE(last.bisect->culprit(), QString());
    last.bisect->finish();
    last.settings.reset();
    QCOMPARE(ZelvaneTest::fileContent(world.settingsFile()), before);
}

void tst_PluginBisect::twoCulprits()
{
    World world;
    QVERIFY(world.create());
    const QByteArray before = ZelvaneTest::fileContent(world.settingsFile());
    {
        Start first(world.settingsFile());
        QVERIFY(first.bisect->start(QDir(world.pluginDir()), { "Bisect07" }));
    }
    const QStringList culprits { "Bisect02", "Bisect15" };

    PluginBisect::State state = PluginBisect::State::Idle;
    QVERIFY(runSearch(world, culprits, &state) <= 6);
    QCOMPARE(state, PluginBisect::State::Found);
    QString found;
    {
        Start start(world.settingsFile());
        found = start.bisect->culprit();
        QVERIFY2(culprits.contains(found), qPrintable(found));
        start.bisect->goOn();
        QCOMPARE(start.bisect->state(), PluginBisect::State::Testing);
        QVERIFY(start.bisect->switchedOff().contains(found));
    }
    QVERIFY(runSearch(world, culprits, &state) <= 6);
    QCOMPARE(state, PluginBisect::State::Found);
    QStringList both;
    {
        Start start(world.settingsFile());
        both = start.bisect->culprits();
        start.bisect->goOn();
    }
    QStringList sorted = both;
    sorted.sort();
    QCOMPARE(sorted, culprits);
    QCOMPARE(both.constFirst(), found);

    QCOMPARE(runSearch(world, culprits, &state), 1);
    QCOMPARE(state, PluginBisect::State::NoOtherCulprit);
    Start last(world.settingsFile());
    QCOMPARE(last.bisect->statusText(),
             "The problem is gone with " + both.join(", ")
                 + " switched off: no other plugin causes it.");
    last.bisect->finish();
    last.settings.reset();
    QCOMPARE(ZelvaneTest::fileContent(world.settingsFile()), before);
}

void tst_PluginBisect::firstStepSwitchesOffEverySuspect()
{
    World world;
    QVERIFY(world.create());
    Start start(world.settingsFile());
    QVERIFY(start.bisect->start(QDir(world.pluginDir()), { "Bisect07" }));

    QCOMPARE(start.bisect->state(), PluginBisect::State::Testing);
    QCOMPARE(start.bisect->restarts(), 1);
    QStringList expected = allExtensions();
    expected.removeOne("Bisect04");
    expected.removeOne("Bisect06");
    expected.removeOne("Bisect07");
    QStringList off = start.bisect->switchedOff();
    off.sort();
    QCOMPARE(off, expected);
    QCOMPARE(ZelvaneTest::storedSelection(world.settingsFile()),
             QStringList({ "Bisect01=false", "Bisect02=false", "Bisect03=false", "Bisect05=false",
                           "Bisect08=false", "Bisect09=false", "Bisect10=false", "Bisect11=false",
                           "Bisect12=false", "Bisect13=false", "Bisect14=false", "Bisect15=false",
                           "Bisect16=false", "Bisect17=false", "Gone=false" }));
}

void tst_PluginBisect::halvesAreClosedUnderDependencies()
{
    World world;
    QVERIFY(world.create());
    {
        Start first(world.settingsFile());
        QVERIFY(first.bisect->start(QDir(world.pluginDir()), { "Bisect07" }));
        first.bisect->answer(false);
    }
    // Every step: no plugin that loads needs one that is switched off, and the step
    // switches off no more than half of the suspects (rounded up).
    for (int step = 0; step < 6; ++step) {
        Start start(world.settingsFile());
        if (start.bisect->state() != PluginBisect::State::Testing)
            break;
        const QStringList suspects = start.bisect->suspects();
        const QStringList off = start.bisect->switchedOff();
        qsizetype suspectsOff = 0;
        for (const QString& name : suspects)
            suspectsOff += off.contains(name) ? 1 : 0;
        QVERIFY(suspectsOff <= suspects.size() - suspects.size() / 2);
        QVERIFY(suspectsOff >= 1);
        Zelvane::LoadPlan plan { QDir(world.pluginDir()) };
        plan.decide(start.settings.get());
        for (const Zelvane::LoadPlan::File& file : plan.files()) {
            QVERIFY2(file.fate != Zelvane::LoadPlan::Fate::Dropped, qPrintable(file.name));
            if (file.fate == Zelvane::LoadPlan::Fate::Loads)
                QVERIFY2(file.blockers.isEmpty(), qPrintable(file.name));
        }
        start.bisect->answer(step % 2 == 0);
    }
}

void tst_PluginBisect::cancelRestoresTheSelection()
{
    World world;
    QVERIFY(world.create());
    const QByteArray before = ZelvaneTest::fileContent(world.settingsFile());
    {
        Start first(world.settingsFile());
        QVERIFY(first.bisect->start(QDir(world.pluginDir())));
        QCOMPARE(first.bisect->suspects().size(), 17);
        QCOMPARE(first.bisect->maximumRestarts(), 6);
    }
    {
        Start second(world.settingsFile());
        second.bisect->beginStart();
        second.bisect->started();
        second.bisect->answer(false);
    }
    QVERIFY(ZelvaneTest::fileContent(world.settingsFile()) != before);
    {
        Start third(world.settingsFile());
        QCOMPARE(third.bisect->state(), PluginBisect::State::Testing);
        third.bisect->cancel();
        QCOMPARE(third.bisect->state(), PluginBisect::State::Idle);
    }
    QCOMPARE(ZelvaneTest::fileContent(world.settingsFile()), before);
}

void tst_PluginBisect::startRefusesWhenEverythingIsPinned()
{
    World world;
    QVERIFY(world.create());
    const QByteArray before = ZelvaneTest::fileContent(world.settingsFile());
    Start start(world.settingsFile());
    QVERIFY(!start.bisect->start(QDir(world.pluginDir()), allExtensions()));
    QCOMPARE(start.bisect->errorString(),
             QStringLiteral("No plugin to test: every Extension that loads is pinned."));
    QCOMPARE(start.bisect->state(), PluginBisect::State::Idle);
    start.settings->sync();
    QCOMPARE(ZelvaneTest::fileContent(world.settingsFile()), before);
}

void tst_PluginBisect::hostCrashesMidBisect()
{
    World world;
    QVERIFY(world.create());
    const QByteArray before = ZelvaneTest::fileContent(world.settingsFile());
    {
        Start first(world.settingsFile());
        QVERIFY(first.bisect->start(QDir(world.pluginDir()), { "Bisect07" }));
    }
    {
        Start second(world.settingsFile());
        QCOMPARE(second.bisect->beginStart(), PluginBisect::State::Testing);
        second.bisect->started();
        second.bisect->answer(false);
    }

    QProcess host;
    host.start(ZELVANE_BISECT_HOST, { world.settingsFile() });
    QVERIFY(host.waitForFinished(60000));
    QCOMPARE(host.exitStatus(), QProcess::CrashExit);

    Start next(world.settingsFile());
    QCOMPARE(next.bisect->beginStart(), PluginBisect::State::Interrupted);
    QCOMPARE(next.bisect->state(), PluginBisect::State::Interrupted);
    QCOMPARE(next.bisect->statusText(),
             QStringLiteral("The application did not start during the plugin bisect. Your "
                            "plugin selection is back as it was."));
    next.settings.reset();
    QCOMPARE(ZelvaneTest::fileContent(world.settingsFile()), before);

    // The start after that is an ordinary one.
    Start after(world.settingsFile());
    QCOMPARE(after.bisect->beginStart(), PluginBisect::State::Idle);
}

void tst_PluginBisect::texts()
{
    World world;
    QVERIFY(world.create());
    Start start(world.settingsFile());
    QCOMPARE(start.bisect->statusText(), QStringLiteral("No plugin bisect is under way."));
    QVERIFY(start.bisect->start(QDir(world.pluginDir()), { "Bisect07" }));
    QCOMPARE(start.bisect->statusText(),
             QStringLiteral("Restart the application, then tell whether the problem is still "
                            "there. 14 plugins are switched off for this test."));
    QVERIFY(!start.bisect->start(QDir(world.pluginDir())));
    QCOMPARE(start.bisect->errorString(), QStringLiteral("A plugin bisect is already under way."));
    start.bisect->answer(true);
    QCOMPARE(start.bisect->state(), PluginBisect::State::NotAnExtension);
    QCOMPARE(start.bisect->statusText(),
             QStringLiteral("The problem is still there with every plugin that was tested "
                            "switched off: it comes from the core plugin, a pinned plugin or "
                            "the application itself."));
}

QTEST_GUILESS_MAIN(tst_PluginBisect)
#include "tst_pluginbisect.moc"
