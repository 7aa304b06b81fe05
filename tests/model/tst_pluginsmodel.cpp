// The plugins model: its rows, what a view reads from them, and the tick/clear rules
// with their persistence. Every scenario runs with a model tester attached, spies on
// the reset and change signals, and a real INI file that is read back from disk.

#include "modeltestsupport.h"
#include "zelvanetest.h"

#include <zelvane/pluginloader.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QMetaEnum>
#include <QtCore/QRandomGenerator>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtGui/QFont>
#include <QtGui/QGuiApplication>
#include <QtGui/QStandardItemModel>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>

using Zelvane::PluginLoader;
using Zelvane::PluginsModel;
using ZelvaneTest::LogCapture;
using ZelvaneTest::LogRecord;

namespace {

using Plugins = QMultiMap<QString, PluginLoader>;

const QString core = QStringLiteral("Core");
const QString extension = QStringLiteral("Extension");

PluginLoader plugin(const QString& name, const QString& category,
                    const QStringList& dependencies = {}, bool loadByDefault = false)
{
    return ZelvaneTest::makePlugin(name, category, dependencies, loadByDefault,
                                   QStringLiteral("About ") + name);
}

// Inserts so that values(key) returns the plugins in the order given: a multimap puts
// the entry inserted last first.
void insertInOrder(Plugins& plugins, const QString& key, const QList<PluginLoader>& ordered)
{
    for (auto it = ordered.crbegin(); it != ordered.crend(); ++it)
        plugins.insert(key, *it);
}

// Indexes the model would never hand out: out-of-range rows and columns.
class TestModel : public PluginsModel
{
public:
    using PluginsModel::PluginsModel;
    QModelIndex makeIndex(int row, int column) const { return createIndex(row, column); }
};

QList<int> allRoles()
{
    QList<int> roles;
    for (int role = 0; role <= Qt::UserRole + 8; ++role) {
        if (role <= 40 || role >= Qt::UserRole)
            roles.append(role);
    }
    return roles;
}

} // namespace

class TestPluginsModel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Rows and what views read.
    void noCoreAndNoExtension();
    void rowsAreCoreThenExtension();
    void rowCountIgnoresItsParent();
    void dataOutsideTheRows();
    void firstColumn_data();
    void firstColumn();
    void fontFollowsTheApplicationFont();
    void secondColumnAnswersDisplayOnly();
    void columnsBeyondTheSecond();
    void headerData_data();
    void headerData();
    void roleNames();
    void flags();
    void metaObject();
    void modelHasNoParentAndDestructionSavesNothing();

    // Selection rules and persistence.
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
    void partiallyChecked();
    void rejectedEdits_data();
    void rejectedEdits();
    void indexIsOnlyReadForItsRow();
    void everyRowIsSavedAfterAnEdit();
    void resetComesAfterTheChangeAndBeforeSaving();
    void validateLeavesCoreKeyRowsAlone_data();
    void validateLeavesCoreKeyRowsAlone();
    void validateTrimsLowerCaseCoreRun_data();
    void validateTrimsLowerCaseCoreRun();
    void directCallsNeitherNotifyNorSave();
    void enabledOfAnInvalidHandle();
    void coreCycleIsRefused_data();
    void coreCycleIsRefused();
    void rulesOnRandomModels();

private:
    void build(const Plugins& plugins);
    void verifyLog();
    void inform(const QString& text);
    void store(const QByteArray& ini);
    QString settingsPath() const { return m_dir->filePath(QStringLiteral("settings.ini")); }
    QByteArray fileContent() const;
    QStringList stored() const;
    QStringList states() const;
    QModelIndex row(const QString& name) const;
    int resets() const;

    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<TestModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<QSignalSpy> m_aboutToBeReset;
    std::unique_ptr<QSignalSpy> m_modelReset;
    std::unique_ptr<QSignalSpy> m_dataChanged;
};

void TestPluginsModel::init()
{
    m_log = std::make_unique<LogCapture>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY2(m_dir->isValid(), qPrintable(m_dir->errorString()));
}

void TestPluginsModel::cleanup()
{
    m_dataChanged.reset();
    m_modelReset.reset();
    m_aboutToBeReset.reset();
    m_tester.reset();
    m_model.reset();
    m_settings.reset();
    m_dir.reset();

    verifyLog();
    m_log.reset();
}

void TestPluginsModel::verifyLog()
{
    const QList<LogRecord> records = m_log->records();
    for (const LogRecord& record : records) {
        QVERIFY2(ZelvaneTest::isExpectedModelTesterWarning(record),
                 qPrintable(ZelvaneModelTest::describe(record)));
    }
}

// Prints a line to the test log: the capture would swallow it.
void TestPluginsModel::inform(const QString& text)
{
    verifyLog();
    m_log.reset();
    qInfo("%s", qPrintable(text));
    m_log = std::make_unique<LogCapture>();
}

void TestPluginsModel::build(const Plugins& plugins)
{
    m_settings = std::make_unique<QSettings>(settingsPath(), QSettings::IniFormat);
    m_model = std::make_unique<TestModel>(plugins, m_settings.get());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::Warning);
    m_aboutToBeReset
        = std::make_unique<QSignalSpy>(m_model.get(), &QAbstractItemModel::modelAboutToBeReset);
    m_modelReset = std::make_unique<QSignalSpy>(m_model.get(), &QAbstractItemModel::modelReset);
    m_dataChanged = std::make_unique<QSignalSpy>(m_model.get(), &QAbstractItemModel::dataChanged);
}

void TestPluginsModel::store(const QByteArray& ini)
{
    QFile file(settingsPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(ini), ini.size());
}

QByteArray TestPluginsModel::fileContent() const
{
    QFile file(settingsPath());
    if (!file.open(QIODevice::ReadOnly))
        return QByteArrayLiteral("<no file>");
    return file.readAll();
}

// The selection as it is on disk: "Name=true" for every entry of the [plugin]
// section, sorted.
QStringList TestPluginsModel::stored() const
{
    QStringList result;
    bool inPlugin = false;
    const QList<QByteArray> lines = fileContent().split('\n');
    for (const QByteArray& line : lines) {
        const QString text = QString::fromUtf8(line).trimmed();
        if (text.startsWith(QLatin1Char('['))) {
            inPlugin = text == QLatin1String("[plugin]");
            continue;
        }
        if (inPlugin && !text.isEmpty())
            result.append(text);
    }
    result.sort();
    return result;
}

// The model's rows as "Name=true", in the form and order of stored().
QStringList TestPluginsModel::states() const
{
    QStringList result;
    for (int i = 0; i < m_model->rowCount(); ++i) {
        const QModelIndex index = m_model->index(i, 0);
        result.append(index.data(PluginsModel::NameRole).toString() + QLatin1Char('=')
                      + (index.data(PluginsModel::CheckedRole).toBool() ? QLatin1String("true")
                                                                        : QLatin1String("false")));
    }
    result.sort();
    return result;
}

QModelIndex TestPluginsModel::row(const QString& name) const
{
    const QModelIndexList found
        = m_model->match(m_model->index(0, 0), PluginsModel::NameRole, name, 1, Qt::MatchExactly);
    return found.isEmpty() ? QModelIndex() : found.first();
}

// The number of resets, checked to come in pairs and never with a dataChanged.
int TestPluginsModel::resets() const
{
    if (m_aboutToBeReset->count() != m_modelReset->count() || m_dataChanged->count() != 0)
        return -1;
    return int(m_modelReset->count());
}

void TestPluginsModel::noCoreAndNoExtension()
{
    Plugins plugins;
    plugins.insert(QString(), plugin(QStringLiteral("Loose"), QString()));
    plugins.insert(QStringLiteral("core"), plugin(QStringLiteral("Minor"), QStringLiteral("core")));
    plugins.insert(QStringLiteral("Tool"), plugin(QStringLiteral("Tool"), QStringLiteral("Tool")));
    build(plugins);

    QCOMPARE(m_model->rowCount(), 0);
    QCOMPARE(m_model->columnCount(), 2);
    QVERIFY(m_model->hasChildren());
    QVERIFY(m_model->hasChildren(QModelIndex()));
}

void TestPluginsModel::rowsAreCoreThenExtension()
{
    Plugins plugins;
    plugins.insert(extension, plugin(QStringLiteral("Gamma"), extension));
    plugins.insert(core, plugin(QStringLiteral("Beta"), core));
    plugins.insert(QStringLiteral("core"), plugin(QStringLiteral("Lower"), QStringLiteral("core")));
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core));
    plugins.insert(QStringLiteral("Extensions"), plugin(QStringLiteral("Plural"), extension));
    build(plugins);

    QStringList expected;
    for (const PluginLoader& handle : plugins.values(core) + plugins.values(extension))
        expected.append(handle.name());
    QCOMPARE(
        expected,
        (QStringList { QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Gamma") }));

    QStringList names;
    QStringList shown;
    QStringList categories;
    for (int i = 0; i < m_model->rowCount(); ++i) {
        names.append(m_model->index(i, 0).data(PluginsModel::NameRole).toString());
        shown.append(m_model->index(i, 0).data().toString());
        categories.append(m_model->index(i, 0).data(PluginsModel::CategoryRole).toString());
    }
    QCOMPARE(names, expected);
    QCOMPARE(shown, expected);
    QCOMPARE(categories, (QStringList { core, core, extension }));
}

void TestPluginsModel::rowCountIgnoresItsParent()
{
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core));
    plugins.insert(extension, plugin(QStringLiteral("Beta"), extension));
    plugins.insert(extension, plugin(QStringLiteral("Gamma"), extension));
    build(plugins);

    const QModelIndex first = m_model->index(0, 0);
    QVERIFY(first.isValid());
    QCOMPARE(m_model->rowCount(first), 3);
    QCOMPARE(m_model->rowCount(m_model->index(2, 1)), 3);
    QCOMPARE(m_model->columnCount(first), 2);
    QVERIFY(!m_model->hasChildren(first));
    QVERIFY(!m_model->hasChildren(m_model->index(2, 1)));
    QVERIFY(m_model->hasChildren(QModelIndex()));
}

void TestPluginsModel::dataOutsideTheRows()
{
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core, {}, true));
    plugins.insert(extension, plugin(QStringLiteral("Beta"), extension, {}, true));
    build(plugins);
    QCOMPARE(m_model->rowCount(), 2);

    const QList<QModelIndex> outside { QModelIndex(), m_model->makeIndex(-1, 0),
                                       m_model->makeIndex(-1, 1), m_model->makeIndex(2, 0),
                                       m_model->makeIndex(2, 1) };
    for (const QModelIndex& index : outside) {
        for (int role : allRoles()) {
            QVERIFY2(!m_model->data(index, role).isValid(),
                     qPrintable(QStringLiteral("row %1, column %2, role %3")
                                    .arg(index.row())
                                    .arg(index.column())
                                    .arg(role)));
        }
    }
}

void TestPluginsModel::firstColumn_data()
{
    QTest::addColumn<QString>("category");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<int>("weight");
    QTest::addColumn<int>("style");

    QTest::newRow("checked core row: bold italic")
        << core << true << int(QFont::Bold) << int(QFont::StyleItalic);
    QTest::newRow("clear core row: normal italic")
        << core << false << int(QFont::Normal) << int(QFont::StyleItalic);
    QTest::newRow("checked extension row: bold upright")
        << extension << true << int(QFont::Bold) << int(QFont::StyleNormal);
    QTest::newRow("clear extension row: normal upright")
        << extension << false << int(QFont::Normal) << int(QFont::StyleNormal);
}

void TestPluginsModel::firstColumn()
{
    QFETCH(QString, category);
    QFETCH(bool, checked);
    QFETCH(int, weight);
    QFETCH(int, style);

    Plugins plugins;
    plugins.insert(category, plugin(QStringLiteral("Subject"), category, {}, checked));
    // A second core row that is checked, so that the subject may be a clear core row.
    plugins.insert(core, plugin(QStringLiteral("Other"), core, {}, true));
    build(plugins);
    const QModelIndex index = row(QStringLiteral("Subject"));
    QVERIFY(index.isValid());
    QCOMPARE(index.column(), 0);

    QCOMPARE(index.data(Qt::DisplayRole), QVariant(QStringLiteral("Subject")));
    QCOMPARE(index.data(PluginsModel::NameRole), QVariant(QStringLiteral("Subject")));
    QCOMPARE(index.data(PluginsModel::DescriptionRole), QVariant(QStringLiteral("About Subject")));
    QCOMPARE(index.data(PluginsModel::CategoryRole), QVariant(category));
    QCOMPARE(index.data(PluginsModel::CheckedRole), QVariant(checked));
    QCOMPARE(index.data(PluginsModel::CheckedRole).typeId(), int(QMetaType::Bool));
    // A plain int, not a Qt::CheckState.
    QCOMPARE(index.data(Qt::CheckStateRole), QVariant(checked ? 2 : 0));
    QCOMPARE(index.data(Qt::CheckStateRole).typeId(), int(QMetaType::Int));

    const QVariant fontValue = index.data(Qt::FontRole);
    QCOMPARE(fontValue.typeId(), int(QMetaType::QFont));
    const QFont font = fontValue.value<QFont>();
    QCOMPARE(int(font.weight()), weight);
    QCOMPARE(int(font.style()), style);
    QFont expected = QGuiApplication::font();
    expected.setWeight(QFont::Weight(weight));
    expected.setStyle(QFont::Style(style));
    QCOMPARE(font, expected);

    for (int role : { int(Qt::DecorationRole), int(Qt::EditRole), int(Qt::ToolTipRole),
                      int(Qt::BackgroundRole), int(Qt::ForegroundRole), int(Qt::UserRole),
                      int(Qt::UserRole) + 5 })
        QVERIFY2(!index.data(role).isValid(), qPrintable(QString::number(role)));
}

void TestPluginsModel::fontFollowsTheApplicationFont()
{
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core, {}, true));
    build(plugins);

    const QFont original = QGuiApplication::font();
    QFont larger = original;
    larger.setPointSize(original.pointSize() + 11);
    QGuiApplication::setFont(larger);
    const QFont font = m_model->index(0, 0).data(Qt::FontRole).value<QFont>();
    QGuiApplication::setFont(original);

    QCOMPARE(font.pointSize(), original.pointSize() + 11);
    QCOMPARE(font.weight(), QFont::Bold);
    QCOMPARE(font.style(), QFont::StyleItalic);
}

void TestPluginsModel::secondColumnAnswersDisplayOnly()
{
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core, {}, true));
    plugins.insert(extension, plugin(QStringLiteral("Beta"), extension));
    build(plugins);

    for (int i = 0; i < 2; ++i) {
        const QModelIndex index = m_model->index(i, 1);
        QCOMPARE(index.data(Qt::DisplayRole),
                 QVariant(QStringLiteral("About ") + m_model->index(i, 0).data().toString()));
        for (int role : allRoles()) {
            if (role != Qt::DisplayRole)
                QVERIFY2(!index.data(role).isValid(), qPrintable(QString::number(role)));
        }
    }
}

void TestPluginsModel::columnsBeyondTheSecond()
{
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core, {}, true));
    build(plugins);

    for (int column : { 2, 7 }) {
        const QModelIndex index = m_model->makeIndex(0, column);
        QCOMPARE(index.data(Qt::DisplayRole), QVariant(QStringLiteral("About Alpha")));
        QVERIFY(!index.data(Qt::FontRole).isValid());
        QCOMPARE(index.data(Qt::CheckStateRole), QVariant(2));
        QCOMPARE(index.data(PluginsModel::NameRole), QVariant(QStringLiteral("Alpha")));
        QCOMPARE(index.data(PluginsModel::DescriptionRole),
                 QVariant(QStringLiteral("About Alpha")));
        QCOMPARE(index.data(PluginsModel::CheckedRole), QVariant(true));
        QCOMPARE(index.data(PluginsModel::CategoryRole), QVariant(core));
    }
}

void TestPluginsModel::headerData_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<Qt::Orientation>("orientation");
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("expected");

    const QVariant name(QStringLiteral("Name"));
    const QVariant description(QStringLiteral("Description"));
    QTest::newRow("section 0") << 0 << Qt::Horizontal << int(Qt::DisplayRole) << name;
    QTest::newRow("section 1") << 1 << Qt::Horizontal << int(Qt::DisplayRole) << description;
    QTest::newRow("section 2") << 2 << Qt::Horizontal << int(Qt::DisplayRole) << description;
    QTest::newRow("section 3") << 3 << Qt::Horizontal << int(Qt::DisplayRole) << description;
    QTest::newRow("section 7") << 7 << Qt::Horizontal << int(Qt::DisplayRole) << description;
    QTest::newRow("section -1") << -1 << Qt::Horizontal << int(Qt::DisplayRole) << description;
    QTest::newRow("vertical") << 0 << Qt::Vertical << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("vertical section 1") << 1 << Qt::Vertical << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("tool tip") << 0 << Qt::Horizontal << int(Qt::ToolTipRole) << QVariant();
    QTest::newRow("edit role") << 0 << Qt::Horizontal << int(Qt::EditRole) << QVariant();
    QTest::newRow("font role") << 1 << Qt::Horizontal << int(Qt::FontRole) << QVariant();
    QTest::newRow("name role") << 0 << Qt::Horizontal << int(PluginsModel::NameRole) << QVariant();
}

void TestPluginsModel::headerData()
{
    QFETCH(int, section);
    QFETCH(Qt::Orientation, orientation);
    QFETCH(int, role);
    QFETCH(QVariant, expected);

    build(Plugins());
    const QVariant actual = m_model->headerData(section, orientation, role);
    QCOMPARE(actual.isValid(), expected.isValid());
    QCOMPARE(actual, expected);
}

void TestPluginsModel::roleNames()
{
    build(Plugins());
    const QHash<int, QByteArray> expected {
        { PluginsModel::NameRole, QByteArrayLiteral("name") },
        { PluginsModel::DescriptionRole, QByteArrayLiteral("description") },
        { PluginsModel::CheckedRole, QByteArrayLiteral("checked") },
        { PluginsModel::CategoryRole, QByteArrayLiteral("category") },
        { Qt::CheckStateRole, QByteArrayLiteral("checkedState") },
        { Qt::FontRole, QByteArrayLiteral("font") },
    };
    const QHash<int, QByteArray> names = m_model->roleNames();
    QCOMPARE(names, expected);
    QCOMPARE(names.size(), 6);
    QVERIFY(!names.contains(Qt::DisplayRole));
    QCOMPARE(int(PluginsModel::NameRole), 257);
    QCOMPARE(int(PluginsModel::DescriptionRole), 258);
    QCOMPARE(int(PluginsModel::CheckedRole), 259);
    QCOMPARE(int(PluginsModel::CategoryRole), 260);
}

void TestPluginsModel::flags()
{
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Alpha"), core, {}, true));
    plugins.insert(extension, plugin(QStringLiteral("Beta"), extension));
    build(plugins);

    const Qt::ItemFlags rowFlags
        = Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
    QCOMPARE(int(rowFlags), 49);
    for (int i = 0; i < 2; ++i) {
        for (int column = 0; column < 2; ++column)
            QCOMPARE(m_model->flags(m_model->index(i, column)), rowFlags);
    }
    // Outside the rows the base class answers: nothing for an invalid index, and for
    // an index of this model with a row past the end the plain item flags, without
    // the table model's ItemNeverHasChildren.
    QCOMPARE(m_model->flags(QModelIndex()), Qt::ItemFlags());
    QCOMPARE(m_model->flags(m_model->makeIndex(2, 0)), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    QCOMPARE(m_model->flags(m_model->makeIndex(-1, 0)), Qt::ItemFlags());
}

void TestPluginsModel::metaObject()
{
    const QMetaObject& meta = PluginsModel::staticMetaObject;
    QCOMPARE(QByteArray(meta.className()), QByteArrayLiteral("Zelvane::PluginsModel"));
    QCOMPARE(meta.superClass(), &QAbstractTableModel::staticMetaObject);
    QCOMPARE(meta.methodCount(), meta.methodOffset());
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount() - meta.enumeratorOffset(), 1);

    const QMetaEnum roles = QMetaEnum::fromType<PluginsModel::Roles>();
    QCOMPARE(QByteArray(roles.name()), QByteArrayLiteral("Roles"));
    QCOMPARE(roles.keyCount(), 4);
    QCOMPARE(roles.keyToValue("NameRole"), 257);
    QCOMPARE(roles.keyToValue("DescriptionRole"), 258);
    QCOMPARE(roles.keyToValue("CheckedRole"), 259);
    QCOMPARE(roles.keyToValue("CategoryRole"), 260);
    QCOMPARE(QByteArray(QMetaType::fromType<PluginsModel::Roles>().name()),
             QByteArrayLiteral("Zelvane::PluginsModel::Roles"));
}

void TestPluginsModel::modelHasNoParentAndDestructionSavesNothing()
{
    Plugins plugins;
    plugins.insert(extension, plugin(QStringLiteral("Alpha"), extension));
    build(plugins);

    QCOMPARE(static_cast<QObject*>(m_model.get())->parent(), nullptr);
    m_model->toggle(0, true);
    QCOMPARE(states(), QStringList { QStringLiteral("Alpha=true") });
    m_tester.reset();
    m_model.reset();
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
}

void TestPluginsModel::initialState_data()
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

void TestPluginsModel::initialState()
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

void TestPluginsModel::constructionWritesNothing()
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

void TestPluginsModel::tickingTicksDependencies_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("checked role, true") << int(PluginsModel::CheckedRole) << QVariant(true);
    QTest::newRow("check state role, Qt::Checked")
        << int(Qt::CheckStateRole) << QVariant::fromValue(Qt::Checked);
    QTest::newRow("check state role, int 2") << int(Qt::CheckStateRole) << QVariant(2);
}

void TestPluginsModel::tickingTicksDependencies()
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

void TestPluginsModel::clearingClearsDependents_data()
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

void TestPluginsModel::clearingClearsDependents()
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

void TestPluginsModel::extensionsDependingOnEachOther()
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

void TestPluginsModel::coreRowsExcludeEachOther_data()
{
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("tick");
    QTest::addColumn<QVariant>("clear");
    QTest::newRow("checked role") << int(PluginsModel::CheckedRole) << QVariant(true)
                                  << QVariant(false);
    QTest::newRow("check state role") << int(Qt::CheckStateRole) << QVariant::fromValue(Qt::Checked)
                                      << QVariant::fromValue(Qt::Unchecked);
}

void TestPluginsModel::coreRowsExcludeEachOther()
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

void TestPluginsModel::coreDependingOnCore_data()
{
    QTest::addColumn<bool>("dependentFirst");
    QTest::newRow("rows A, B") << true;
    QTest::newRow("rows B, A") << false;
}

void TestPluginsModel::coreDependingOnCore()
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

void TestPluginsModel::partiallyChecked()
{
    Plugins plugins;
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Ticked"), extension, {}, true),
                    plugin(QStringLiteral("Clear"), extension) });
    build(plugins);

    QVERIFY(!m_model->setData(row(QStringLiteral("Clear")),
                              QVariant::fromValue(Qt::PartiallyChecked), Qt::CheckStateRole));
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
    QCOMPARE(resets(), 0);

    QVERIFY(m_model->setData(row(QStringLiteral("Ticked")),
                             QVariant::fromValue(Qt::PartiallyChecked), Qt::CheckStateRole));
    const QStringList expected { QStringLiteral("Clear=false"), QStringLiteral("Ticked=false") };
    QCOMPARE(states(), expected);
    QCOMPARE(stored(), expected);
    QCOMPARE(resets(), 1);
}

void TestPluginsModel::rejectedEdits_data()
{
    QTest::addColumn<int>("rowNumber"); // -1: an invalid index; 3: one past the last row
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("value");

    QTest::newRow("display role") << 2 << int(Qt::DisplayRole) << QVariant(true);
    QTest::newRow("edit role") << 2 << int(Qt::EditRole) << QVariant(true);
    QTest::newRow("name role") << 2 << int(PluginsModel::NameRole) << QVariant(true);
    QTest::newRow("category role") << 2 << int(PluginsModel::CategoryRole) << QVariant(true);
    QTest::newRow("row -1") << -1 << int(PluginsModel::CheckedRole) << QVariant(true);
    QTest::newRow("row past the end") << 3 << int(PluginsModel::CheckedRole) << QVariant(true);
    QTest::newRow("ticked core row cleared")
        << 0 << int(PluginsModel::CheckedRole) << QVariant(false);
    QTest::newRow("ticked core row ticked") << 0 << int(Qt::CheckStateRole) << QVariant(2);
    QTest::newRow("ticked extension row ticked")
        << 1 << int(PluginsModel::CheckedRole) << QVariant(true);
    QTest::newRow("clear extension row cleared") << 2 << int(Qt::CheckStateRole) << QVariant(0);
}

void TestPluginsModel::rejectedEdits()
{
    QFETCH(int, rowNumber);
    QFETCH(int, role);
    QFETCH(QVariant, value);

    const QByteArray ini("[plugin]\nCore=true\n");
    store(ini);
    Plugins plugins;
    plugins.insert(core, plugin(QStringLiteral("Core"), core));
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Ticked"), extension, {}, true),
                    plugin(QStringLiteral("Clear"), extension) });
    build(plugins);
    const QStringList before = states();
    QCOMPARE(before,
             (QStringList { QStringLiteral("Clear=false"), QStringLiteral("Core=true"),
                            QStringLiteral("Ticked=true") }));

    const QModelIndex index = rowNumber < 0 ? QModelIndex() : m_model->makeIndex(rowNumber, 0);
    QVERIFY(!m_model->setData(index, value, role));

    QCOMPARE(states(), before);
    QCOMPARE(fileContent(), ini);
    QCOMPARE(resets(), 0);
}

void TestPluginsModel::indexIsOnlyReadForItsRow()
{
    Plugins plugins;
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension),
                    plugin(QStringLiteral("Beta"), extension),
                    plugin(QStringLiteral("Gamma"), extension) });
    build(plugins);

    // The second column and an index of another model both address their row.
    QVERIFY(m_model->setData(m_model->index(1, 1), true, PluginsModel::CheckedRole));
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Alpha=false"), QStringLiteral("Beta=true"),
                            QStringLiteral("Gamma=false") }));
    QStandardItemModel other(4, 6);
    QVERIFY(m_model->setData(other.index(2, 5), true, PluginsModel::CheckedRole));
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Alpha=false"), QStringLiteral("Beta=true"),
                            QStringLiteral("Gamma=true") }));
    QCOMPARE(stored(), states());
    QCOMPARE(resets(), 2);
}

void TestPluginsModel::everyRowIsSavedAfterAnEdit()
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

void TestPluginsModel::resetComesAfterTheChangeAndBeforeSaving()
{
    Plugins plugins;
    insertInOrder(plugins, extension,
                  { plugin(QStringLiteral("Alpha"), extension, { QStringLiteral("Beta") }),
                    plugin(QStringLiteral("Beta"), extension) });
    build(plugins);

    QStringList seenAtReset;
    QByteArray fileAtReset;
    connect(m_model.get(), &QAbstractItemModel::modelAboutToBeReset, this, [&] {
        seenAtReset = states();
        fileAtReset = fileContent();
    });
    QVERIFY(m_model->setData(row(QStringLiteral("Alpha")), true, PluginsModel::CheckedRole));
    QCOMPARE(seenAtReset,
             (QStringList { QStringLiteral("Alpha=true"), QStringLiteral("Beta=true") }));
    QCOMPARE(fileAtReset, QByteArrayLiteral("<no file>"));
    QCOMPARE(stored(), seenAtReset);
    QCOMPARE(resets(), 1);
}

void TestPluginsModel::validateLeavesCoreKeyRowsAlone_data()
{
    QTest::addColumn<bool>("ticked");
    QTest::newRow("several core rows ticked") << true;
    QTest::newRow("no core row ticked") << false;
}

void TestPluginsModel::validateLeavesCoreKeyRowsAlone()
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

void TestPluginsModel::validateTrimsLowerCaseCoreRun_data()
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

void TestPluginsModel::validateTrimsLowerCaseCoreRun()
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

void TestPluginsModel::directCallsNeitherNotifyNorSave()
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

void TestPluginsModel::enabledOfAnInvalidHandle()
{
    build(Plugins());
    QVERIFY(!m_model->enabled(PluginLoader()));
    QCOMPARE(fileContent(), QByteArrayLiteral("<no file>"));
}

void TestPluginsModel::coreCycleIsRefused_data()
{
    QTest::addColumn<bool>("aTicked");
    QTest::addColumn<QString>("target");
    QTest::newRow("A ticked, tick B") << true << QStringLiteral("B");
    QTest::newRow("neither ticked, tick A") << false << QStringLiteral("A");
    QTest::newRow("neither ticked, tick B") << false << QStringLiteral("B");
}

void TestPluginsModel::coreCycleIsRefused()
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

void TestPluginsModel::rulesOnRandomModels()
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
                    m_dataChanged.reset();
                    m_modelReset.reset();
                    m_aboutToBeReset.reset();
                    m_tester.reset();
                    m_model.reset();
                    m_settings.reset();
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

QTEST_MAIN(TestPluginsModel)

#include "tst_pluginsmodel.moc"
