// The selection rules of the plugins model: the stored selection it starts from,
// ticking a plugin ticks what it depends on, clearing it clears what depends on it,
// core rows exclude each other, validate() on the leading core run, the guard against
// edits that would never end, and save() writing every row. Every scenario runs with a
// model tester attached, spies on the reset and change signals, and a real INI file
// that is read back from disk.

#include "pluginsmodelfixture.h"
#include "stepbysteptoggler.h"

#include <zelvane/pluginloader.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QRandomGenerator>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>

using Zelvane::PluginLoader;
using Zelvane::PluginsModel;
using namespace ZelvaneModelTest;

class tst_PluginSelectionRules : public PluginsModelFixture
{
    Q_OBJECT

private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void initialState_data();
    void initialState();
    void constructionWritesNothing();
    void tickingTicksDependencies_data();
    void tickingTicksDependencies();
    void clearingClearsDependents_data();
    void clearingClearsDependents();
    void extensionsDependingOnEachOther();
    void coreRowsExcludeEachOther_data();
    void coreRowsExcludeEachOther();
    void coreDependingOnCore_data();
    void coreDependingOnCore();
    void everyRowIsSavedAfterAnEdit();
    void validateLeavesCoreKeyRowsAlone_data();
    void validateLeavesCoreKeyRowsAlone();
    void validateTrimsLowerCaseCoreRun_data();
    void validateTrimsLowerCaseCoreRun();
    void directCallsNeitherNotifyNorSave();
    void enabledOfAnInvalidHandle();
    void coreCycleIsRefused_data();
    void coreCycleIsRefused();
    void rulesOnRandomModels();
    void sameAsStepByStep();
};

void tst_PluginSelectionRules::initialState_data()
{
    QTest::addColumn<bool>("loadByDefault");
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<bool>("checked");

    QTest::newRow("no key, default off") << false << QByteArray() << false;
    QTest::newRow("no key, default on") << true << QByteArray() << true;
    QTest::newRow("stored false overrides default on")
        << true << QByteArray("Subject=false\n") << false;
    QTest::newRow("stored true overrides default off")
        << false << QByteArray("Subject=true\n") << true;
    QTest::newRow("key of another plugin") << true << QByteArray("Subjects=false\n") << true;
    QTest::newRow("key in another letter case") << true << QByteArray("subject=false\n") << true;
}

void tst_PluginSelectionRules::initialState()
{
    QFETCH(bool, loadByDefault);
    QFETCH(QByteArray, ini);
    QFETCH(bool, checked);

    if (!ini.isEmpty())
        store(QByteArrayLiteral("[plugin]\n") + ini);
    Plugins plugins;
    plugins.insert(extension, plugin(QStringLiteral("Subject"), extension, {}, loadByDefault));
    build(plugins);

    QCOMPARE(m_model->index(0, 0).data(PluginsModel::CheckedRole), QVariant(checked));
    QCOMPARE(m_model->index(0, 0).data(Qt::CheckStateRole), QVariant(checked ? 2 : 0));
}

void tst_PluginSelectionRules::constructionWritesNothing()
{
    const QByteArray ini("[plugin]\nAlpha=false\n");
    store(ini);
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core, {}, true));
    plugins.insert(extension, plugin(QStringLiteral("Beta"), extension, {}, true));
    build(plugins);

    QCOMPARE(states(),
             (QStringList { QStringLiteral("Alpha=false"), QStringLiteral("Beta=true") }));
    QCOMPARE(fileContent(), ini);
    QCOMPARE(resets(), 0);
}

void tst_PluginSelectionRules::tickingTicksDependencies_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("checked role, true") << int(PluginsModel::CheckedRole) << QVariant(true);
    QTest::newRow("check state role, Qt::Checked")
        << int(Qt::CheckStateRole) << QVariant::fromValue(Qt::Checked);
    QTest::newRow("check state role, int 2") << int(Qt::CheckStateRole) << QVariant(2);
}

void tst_PluginSelectionRules::tickingTicksDependencies()
{
    QFETCH(int, role);
    QFETCH(QVariant, value);

    Plugins plugins;
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension, { QStringLiteral("Beta") }),
                    plugin(QStringLiteral("Beta"), extension, { QStringLiteral("Gamma") }),
                    plugin(QStringLiteral("Gamma"), extension) });
    build(plugins);
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Alpha=false"), QStringLiteral("Beta=false"),
                            QStringLiteral("Gamma=false") }));

    QVERIFY(m_model->setData(row(QStringLiteral("Alpha")), value, role));

    const QStringList expected { QStringLiteral("Alpha=true"), QStringLiteral("Beta=true"),
                                 QStringLiteral("Gamma=true") };
    QCOMPARE(states(), expected);
    QCOMPARE(stored(), expected);
    QCOMPARE(resets(), 1);
}

void tst_PluginSelectionRules::clearingClearsDependents_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("checked role, false") << int(PluginsModel::CheckedRole) << QVariant(false);
    QTest::newRow("check state role, Qt::Unchecked")
        << int(Qt::CheckStateRole) << QVariant::fromValue(Qt::Unchecked);
    QTest::newRow("check state role, int 0") << int(Qt::CheckStateRole) << QVariant(0);
    QTest::newRow("check state role, Qt::PartiallyChecked")
        << int(Qt::CheckStateRole) << QVariant::fromValue(Qt::PartiallyChecked);
}

void tst_PluginSelectionRules::clearingClearsDependents()
{
    QFETCH(int, role);
    QFETCH(QVariant, value);

    Plugins plugins;
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension, { QStringLiteral("Beta") }, true),
                    plugin(QStringLiteral("Beta"), extension, { QStringLiteral("Gamma") }, true),
                    plugin(QStringLiteral("Gamma"), extension, {}, true),
                    plugin(QStringLiteral("Delta"), extension, {}, true) });
    build(plugins);

    QVERIFY(m_model->setData(row(QStringLiteral("Gamma")), value, role));

    const QStringList expected { QStringLiteral("Alpha=false"), QStringLiteral("Beta=false"),
                                 QStringLiteral("Delta=true"), QStringLiteral("Gamma=false") };
    QCOMPARE(states(), expected);
    QCOMPARE(stored(), expected);
    QCOMPARE(resets(), 1);
}

void tst_PluginSelectionRules::extensionsDependingOnEachOther()
{
    Plugins plugins;
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension, { QStringLiteral("Beta") }),
                    plugin(QStringLiteral("Beta"), extension, { QStringLiteral("Alpha") }) });
    build(plugins);

    QVERIFY(m_model->setData(row(QStringLiteral("Alpha")), true, PluginsModel::CheckedRole));
    QCOMPARE(states(), (QStringList { QStringLiteral("Alpha=true"), QStringLiteral("Beta=true") }));
    QCOMPARE(stored(), states());
    QCOMPARE(resets(), 1);

    QVERIFY(m_model->setData(row(QStringLiteral("Alpha")), false, PluginsModel::CheckedRole));
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Alpha=false"), QStringLiteral("Beta=false") }));
    QCOMPARE(stored(), states());
    QCOMPARE(resets(), 2);
}

void tst_PluginSelectionRules::coreRowsExcludeEachOther_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("tick");
    QTest::addColumn<QVariant>("clear");
    QTest::newRow("checked role") << int(PluginsModel::CheckedRole) << QVariant(true)
                                  << QVariant(false);
    QTest::newRow("check state role") << int(Qt::CheckStateRole) << QVariant::fromValue(Qt::Checked)
                                      << QVariant::fromValue(Qt::Unchecked);
}

void tst_PluginSelectionRules::coreRowsExcludeEachOther()
{
    QFETCH(int, role);
    QFETCH(QVariant, tick);
    QFETCH(QVariant, clear);

    // Z depends on X and V on Z: both go with X. W depends on nothing and stays.
    Plugins plugins;
    insertInOrder(
        plugins, core,
        { plugin(QStringLiteral("X"), core, {}, true), plugin(QStringLiteral("Y"), core) });
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("V"), extension, { QStringLiteral("Z") }, true),
                    plugin(QStringLiteral("W"), extension, {}, true),
                    plugin(QStringLiteral("Z"), extension, { QStringLiteral("X") }, true) });
    build(plugins);
    QCOMPARE(
        states(),
        (QStringList { QStringLiteral("V=true"), QStringLiteral("W=true"), QStringLiteral("X=true"),
                       QStringLiteral("Y=false"), QStringLiteral("Z=true") }));

    QVERIFY(m_model->setData(row(QStringLiteral("Y")), tick, role));
    const QStringList expected { QStringLiteral("V=false"), QStringLiteral("W=true"),
                                 QStringLiteral("X=false"), QStringLiteral("Y=true"),
                                 QStringLiteral("Z=false") };
    QCOMPARE(states(), expected);
    QCOMPARE(stored(), expected);
    QCOMPARE(resets(), 1);
    const QByteArray saved = fileContent();

    // A ticked core row can be neither cleared nor set again.
    QVERIFY(!m_model->setData(row(QStringLiteral("Y")), clear, role));
    QVERIFY(!m_model->setData(row(QStringLiteral("Y")), tick, role));
    QCOMPARE(states(), expected);
    QCOMPARE(fileContent(), saved);
    QCOMPARE(resets(), 1);

    // Ticking X again releases Y.
    QVERIFY(m_model->setData(row(QStringLiteral("X")), tick, role));
    QCOMPARE(states(),
             (QStringList { QStringLiteral("V=false"), QStringLiteral("W=true"),
                            QStringLiteral("X=true"), QStringLiteral("Y=false"),
                            QStringLiteral("Z=false") }));
    QCOMPARE(stored(), states());
    QCOMPARE(resets(), 2);
}

void tst_PluginSelectionRules::coreDependingOnCore_data()
{
    QTest::addColumn<bool>("dependentFirst");
    QTest::newRow("rows A, B") << true;
    QTest::newRow("rows B, A") << false;
}

void tst_PluginSelectionRules::coreDependingOnCore()
{
    QFETCH(bool, dependentFirst);

    const PluginLoader a = plugin(QStringLiteral("A"), core, { QStringLiteral("B") });
    const PluginLoader b = plugin(QStringLiteral("B"), core, {}, true);
    Plugins plugins;
    insertInOrder(plugins, core,
                  dependentFirst ? QList<PluginLoader> { a, b } : QList<PluginLoader> { b, a });
    build(plugins);
    QCOMPARE(m_model->index(0, 0).data().toString(),
             dependentFirst ? QStringLiteral("A") : QStringLiteral("B"));

    // Ticking A clears B, which clears A again as B's dependent; then B is ticked as
    // A's dependency. The edit is accepted although A ends clear.
    QVERIFY(m_model->setData(row(QStringLiteral("A")), true, PluginsModel::CheckedRole));
    const QStringList expected { QStringLiteral("A=false"), QStringLiteral("B=true") };
    QCOMPARE(states(), expected);
    QCOMPARE(stored(), expected);
    QCOMPARE(resets(), 1);
}

void tst_PluginSelectionRules::everyRowIsSavedAfterAnEdit()
{
    Plugins plugins;
    insertInOrder(plugins, core, { plugin(QStringLiteral("Main"), core, {}, true) });
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension, {}, true),
                    plugin(QStringLiteral("Beta"), extension),
                    plugin(QStringLiteral("Gamma"), extension, {}, true) });
    build(plugins);
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));

    QVERIFY(m_model->setData(row(QStringLiteral("Beta")), true, PluginsModel::CheckedRole));
    const QStringList expected { QStringLiteral("Alpha=true"), QStringLiteral("Beta=true"),
                                 QStringLiteral("Gamma=true"), QStringLiteral("Main=true") };
    QCOMPARE(stored(), expected);

    // A separate settings object on the same file agrees.
    QSettings fresh(settingsPath(), QSettings::IniFormat);
    fresh.beginGroup(QStringLiteral("plugin"));
    QCOMPARE(fresh.childKeys().size(), 4);
    for (const QString& key : fresh.childKeys())
        QCOMPARE(fresh.value(key).toBool(), true);
}

void tst_PluginSelectionRules::validateLeavesCoreKeyRowsAlone_data()
{
    QTest::addColumn<bool>("ticked");
    QTest::newRow("several core rows ticked") << true;
    QTest::newRow("no core row ticked") << false;
}

void tst_PluginSelectionRules::validateLeavesCoreKeyRowsAlone()
{
    QFETCH(bool, ticked);
    Plugins plugins;
    insertInOrder(plugins, core,
                  { plugin(QStringLiteral("One"), core, {}, ticked),
                    plugin(QStringLiteral("Two"), core, {}, ticked),
                    plugin(QStringLiteral("Three"), core, {}, ticked) });
    build(plugins);
    const QString state = ticked ? QStringLiteral("true") : QStringLiteral("false");
    const QStringList expected { QStringLiteral("One=") + state, QStringLiteral("Three=") + state,
                                 QStringLiteral("Two=") + state };
    QCOMPARE(states(), expected);

    m_model->validate();
    QCOMPARE(states(), expected);
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
    QCOMPARE(resets(), 0);
}

void tst_PluginSelectionRules::validateTrimsLowerCaseCoreRun_data()
{
    // Rows in order, as "name:category:ticked at start", and the expected states.
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("second and third ticked: only the second stays")
        << QStringList { "C1:core:0", "C2:core:1", "C3:core:1", "C4:Core:1", "C5:core:1" }
        << QStringList { "C1=false", "C2=true", "C3=false", "C4=true", "C5=true" };
    QTest::newRow("none ticked: row 0 is ticked")
        << QStringList { "C1:core:0", "C2:core:0", "C3:Core:0" }
        << QStringList { "C1=true", "C2=false", "C3=false" };
    QTest::newRow("run ends at the first other category")
        << QStringList { "C1:core:1", "C2:Core:1", "C3:core:1" }
        << QStringList { "C1=true", "C2=true", "C3=true" };
    QTest::newRow("first row not core: nothing changes")
        << QStringList { "C1:Core:0", "C2:core:0", "C3:core:1", "C4:core:1" }
        << QStringList { "C1=false", "C2=false", "C3=true", "C4=true" };
}

void tst_PluginSelectionRules::validateTrimsLowerCaseCoreRun()
{
    QFETCH(QStringList, rows);
    QFETCH(QStringList, expected);

    // Rows come from the key "Core" whatever category the plugin itself declares.
    QList<PluginLoader> ordered;
    for (const QString& text : rows) {
        const QStringList parts = text.split(QLatin1Char(':'));
        ordered.append(plugin(parts.at(0), parts.at(1), {}, parts.at(2) == QLatin1String("1")));
    }
    Plugins plugins;
    insertInOrder(plugins, core, ordered);
    plugins.insert(extension, plugin(QStringLiteral("Ext"), extension, {}, true));
    build(plugins);

    QStringList withExtension = expected + QStringList { QStringLiteral("Ext=true") };
    withExtension.sort();
    QCOMPARE(states(), withExtension);
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
}

void tst_PluginSelectionRules::directCallsNeitherNotifyNorSave()
{
    Plugins plugins;
    insertInOrder(
        plugins, core,
        { plugin(QStringLiteral("C1"), core), plugin(QStringLiteral("C2"), core, {}, true) });
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension, { QStringLiteral("Beta") }),
                    plugin(QStringLiteral("Beta"), extension) });
    build(plugins);

    m_model->toggle(row(QStringLiteral("Alpha")).row(), true);
    m_model->toggle(row(QStringLiteral("C1")).row(), true);
    const QStringList expected { QStringLiteral("Alpha=true"), QStringLiteral("Beta=true"),
                                 QStringLiteral("C1=true"), QStringLiteral("C2=false") };
    QCOMPARE(states(), expected);
    m_model->validate();
    QCOMPARE(states(), expected);
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
    QCOMPARE(resets(), 0);

    // toggle() on a ticked core row is not refused: only setData() guards it.
    m_model->toggle(row(QStringLiteral("C1")).row(), false);
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Alpha=true"), QStringLiteral("Beta=true"),
                            QStringLiteral("C1=false"), QStringLiteral("C2=false") }));

    m_model->save();
    QCOMPARE(stored(), states());
    QCOMPARE(resets(), 0);
}

void tst_PluginSelectionRules::enabledOfAnInvalidHandle()
{
    build(Plugins());
    QVERIFY(!m_model->enabled(PluginLoader()));
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
}

void tst_PluginSelectionRules::coreCycleIsRefused_data()
{
    QTest::addColumn<bool>("aTicked");
    QTest::addColumn<QString>("target");
    QTest::newRow("A ticked, tick B") << true << QStringLiteral("B");
    QTest::newRow("neither ticked, tick A") << false << QStringLiteral("A");
    QTest::newRow("neither ticked, tick B") << false << QStringLiteral("B");
}

void tst_PluginSelectionRules::coreCycleIsRefused()
{
    QFETCH(bool, aTicked);
    QFETCH(QString, target);

    // Ticking would recurse without end: the edit is refused as a whole.
    Plugins plugins;
    insertInOrder(plugins, core,
                  { plugin(QStringLiteral("A"), core, { QStringLiteral("B") }, aTicked),
                    plugin(QStringLiteral("B"), core, { QStringLiteral("A") }) });
    plugins.insert(extension, plugin(QStringLiteral("E"), extension));
    build(plugins);
    const QStringList before = states();

    QVERIFY(!m_model->setData(row(target), true, PluginsModel::CheckedRole));
    QVERIFY(!m_model->setData(row(target), QVariant::fromValue(Qt::Checked), Qt::CheckStateRole));
    QCOMPARE(states(), before);
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
    QCOMPARE(resets(), 0);

    m_model->toggle(row(target).row(), true);
    QCOMPARE(states(), before);
    QCOMPARE(resets(), 0);
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));

    // The model stays usable.
    QVERIFY(m_model->setData(row(QStringLiteral("E")), true, PluginsModel::CheckedRole));
    QStringList after = before;
    after.replace(after.indexOf(QStringLiteral("E=false")), QStringLiteral("E=true"));
    QCOMPARE(states(), after);
    QCOMPARE(stored(), after);
    QCOMPARE(resets(), 1);
}

namespace {

// The tick/clear rules followed literally, with nothing to stop them. A chain of calls
// deeper than the number of distinct (row, state, all check states) triples must have
// repeated one of them, and then it never ends: that is how this tells an edit that
// would run forever.
struct Rules
{
    QList<bool> checked;
    QList<bool> core;
    QList<QList<bool>> dependsOn; // dependsOn[a][b]: a names b
    int depth = 0;
    int limit = 0;
    bool endless = false;

    void toggle(int row, bool value)
    {
        if (endless)
            return;
        if (++depth > limit) {
            endless = true;
            return;
        }
        checked[row] = value;
        const int count = int(checked.size());
        for (int i = 0; i < count && !endless; ++i) {
            if (i == row)
                continue;
            if (value) {
                if (core.at(row) && core.at(i) && checked.at(i))
                    toggle(i, false);
                if (!endless && !checked.at(i) && dependsOn.at(row).at(i))
                    toggle(i, true);
            } else if (checked.at(i) && dependsOn.at(i).at(row)) {
                toggle(i, false);
            }
        }
        --depth;
    }
};

} // namespace

void tst_PluginSelectionRules::rulesOnRandomModels()
{
    quint32 seed = QRandomGenerator::global()->generate();
    const QByteArray fixed = qgetenv("ZELVANE_TEST_SEED");
    if (!fixed.isEmpty())
        seed = fixed.toUInt();
    inform(
        QStringLiteral("rulesOnRandomModels seed: %1 (set ZELVANE_TEST_SEED to repeat)").arg(seed));
    QRandomGenerator random(seed);

    // Every save flushes the file (and its lock file) to disk; thousands of them are
    // cheap only in memory, so use a memory file system where there is one.
    const QString memory = QStringLiteral("/dev/shm");
    if (QFileInfo(memory).isDir() && QFileInfo(memory).isWritable()) {
        m_dir = std::make_unique<QTemporaryDir>(memory + QStringLiteral("/zt_model-XXXXXX"));
        QVERIFY2(m_dir->isValid(), qPrintable(m_dir->errorString()));
    }

    int accepted = 0;
    int endless = 0;
    int refusedByRule = 0;
    const int models = 150;
    for (int round = 0; round < models; ++round) {
        const int size = 1 + random.bounded(5);
        QStringList names;
        for (int i = 0; i < size; ++i)
            names.append(QStringLiteral("P%1").arg(i));
        QList<PluginLoader> cores;
        QList<PluginLoader> extensions;
        QHash<QString, bool> initial;
        for (const QString& name : std::as_const(names)) {
            QStringList dependencies;
            for (const QString& other : std::as_const(names)) {
                if (random.bounded(100) < 35)
                    dependencies.append(other);
            }
            if (random.bounded(100) < 10)
                dependencies.append(QStringLiteral("Missing"));
            const bool isCore = random.bounded(100) < 55;
            (isCore ? cores : extensions)
                .append(plugin(name, isCore ? core : extension, dependencies));
            initial.insert(name, random.bounded(2) == 1);
        }
        Plugins plugins;
        insertInOrder(plugins, core, cores);
        insertInOrder(plugins, extension, extensions);

        for (int target = 0; target < size; ++target) {
            for (bool value : { false, true }) {
                for (bool throughSetData : { false, true }) {
                    releaseModel();
                    QVERIFY(QFile::remove(settingsPath()) || !QFile::exists(settingsPath()));
                    {
                        QSettings settings(settingsPath(), QSettings::IniFormat);
                        for (auto it = initial.cbegin(); it != initial.cend(); ++it)
                            settings.setValue(QStringLiteral("plugin/") + it.key(), it.value());
                    }
                    build(plugins);

                    const QByteArray fileBefore = fileContent();
                    Rules rules;
                    const QList<PluginLoader> rows = cores + extensions;
                    for (int i = 0; i < size; ++i) {
                        const QModelIndex index = m_model->index(i, 0);
                        QCOMPARE(index.data(PluginsModel::NameRole).toString(), rows.at(i).name());
                        rules.checked.append(index.data(PluginsModel::CheckedRole).toBool());
                        rules.core.append(index.data(PluginsModel::CategoryRole).toString()
                                          == core);
                    }
                    for (int a = 0; a < size; ++a) {
                        QList<bool> line;
                        for (int b = 0; b < size; ++b)
                            line.append(rows.at(a).dependencies().contains(rows.at(b).name()));
                        rules.dependsOn.append(line);
                    }
                    rules.limit = 2 * size * (1 << size) + 1;
                    const QList<bool> before = rules.checked;
                    const bool refused = throughSetData
                        && ((rules.core.at(target) && before.at(target))
                            || before.at(target) == value);
                    if (!refused)
                        rules.toggle(target, value);
                    const QList<bool> expected = rules.endless || refused ? before : rules.checked;

                    const QString context
                        = QStringLiteral("seed %1, model %2, row %3 -> %4%5")
                              .arg(seed)
                              .arg(round)
                              .arg(target)
                              .arg(value)
                              .arg(throughSetData ? QStringLiteral(" by setData") : QString());
                    if (throughSetData) {
                        const bool result = m_model->setData(m_model->index(target, 0), value,
                                                             PluginsModel::CheckedRole);
                        QVERIFY2(result == !(refused || rules.endless), qPrintable(context));
                        QVERIFY2(resets() == (result ? 1 : 0), qPrintable(context));
                        if (result)
                            QVERIFY2(stored() == states(), qPrintable(context));
                        else
                            QVERIFY2(fileContent() == fileBefore, qPrintable(context));
                    } else {
                        m_model->toggle(target, value);
                        QVERIFY2(resets() == 0, qPrintable(context));
                    }
                    QList<bool> actual;
                    for (int i = 0; i < size; ++i)
                        actual.append(
                            m_model->index(i, 0).data(PluginsModel::CheckedRole).toBool());
                    QVERIFY2(actual == expected, qPrintable(context));
                    (rules.endless ? endless : refused ? refusedByRule : accepted) += 1;
                }
            }
        }
    }
    inform(QStringLiteral("rulesOnRandomModels: %1 edits run to the end, %2 endless, %3 refused "
                          "by the rules")
               .arg(accepted)
               .arg(endless)
               .arg(refusedByRule));
    QVERIFY(accepted > 0);
    QVERIFY(endless > 0);
    QVERIFY(refusedByRule > 0);
}

// The library's rules look rows up through indices of names; the step-by-step form
// scans every row at every step. On random models of up to 40 rows (names shared by
// several rows, self-dependencies, cycles through core rows, missing names) a series of
// edits must leave the same rows ticked, endless edits refused alike.
void tst_PluginSelectionRules::sameAsStepByStep()
{
    quint32 seed = QRandomGenerator::global()->generate();
    const QByteArray fixed = qgetenv("ZELVANE_TEST_SEED");
    if (!fixed.isEmpty())
        seed = fixed.toUInt();
    inform(QStringLiteral("sameAsStepByStep seed: %1 (set ZELVANE_TEST_SEED to repeat)").arg(seed));
    QRandomGenerator random(seed);

    int changed = 0;
    int refused = 0;
    for (int round = 0; round < 300; ++round) {
        const int size = 1 + random.bounded(40);
        const int names = 1 + size / (1 + random.bounded(3));
        QList<PluginLoader> cores;
        QList<PluginLoader> extensions;
        const int coreShare = random.bounded(60);
        for (int i = 0; i < size; ++i) {
            QStringList dependencies;
            for (int slot = random.bounded(4); slot > 0; --slot) {
                dependencies.append(random.bounded(20) == 0
                                        ? QStringLiteral("Missing")
                                        : QStringLiteral("P%1").arg(random.bounded(names)));
            }
            const bool isCore = random.bounded(100) < coreShare;
            (isCore ? cores : extensions)
                .append(plugin(QStringLiteral("P%1").arg(random.bounded(names)),
                               isCore ? core : extension, dependencies, random.bounded(2) == 1));
        }
        Plugins plugins;
        insertInOrder(plugins, core, cores);
        insertInOrder(plugins, extension, extensions);
        releaseModel();
        build(plugins);
        const QList<PluginLoader> rows = cores + extensions;

        for (int edit = 0; edit < 8; ++edit) {
            QList<PluginsModel::Record> records;
            for (int i = 0; i < size; ++i) {
                const bool checked = m_model->index(i, 0).data(PluginsModel::CheckedRole).toBool();
                records.append(PluginsModel::Record { checked, i < cores.size(), rows.at(i) });
            }
            const int target = random.bounded(size);
            const bool value = random.bounded(2) == 1;
            QList<bool> expected;
            QList<PluginsModel::Record> edited = records;
            const bool finished = StepByStepToggler(edited).run(target, value);
            for (const PluginsModel::Record& record : std::as_const(finished ? edited : records))
                expected.append(record.checked);

            m_model->toggle(target, value);

            QList<bool> actual;
            for (int i = 0; i < size; ++i)
                actual.append(m_model->index(i, 0).data(PluginsModel::CheckedRole).toBool());
            QVERIFY2(actual == expected,
                     qPrintable(QStringLiteral("seed %1, model %2, edit %3: row %4 -> %5")
                                    .arg(seed)
                                    .arg(round)
                                    .arg(edit)
                                    .arg(target)
                                    .arg(value)));
            (finished ? changed : refused) += 1;
        }
    }
    inform(QStringLiteral("sameAsStepByStep: %1 edits run to the end, %2 refused as endless")
               .arg(changed)
               .arg(refused));
    QVERIFY(changed > 0);
    QVERIFY(refused > 0);
}

QTEST_MAIN(tst_PluginSelectionRules)

#include "tst_pluginselectionrules.moc"
