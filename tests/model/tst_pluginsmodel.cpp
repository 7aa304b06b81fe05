// The plugins model as Qt's item views see it: its rows, the data and roles a view
// reads, flags, headers and fonts, how setData() reads its index and value, and the
// reset that follows every accepted edit, never a dataChanged. Every scenario runs
// with a model tester attached. The tick/clear rules themselves are tested in
// tst_pluginselectionrules.cpp.

#include "pluginsmodelfixture.h"

#include <zelvane/pluginloader.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QMetaEnum>
#include <QtGui/QFont>
#include <QtGui/QGuiApplication>
#include <QtGui/QStandardItemModel>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using Zelvane::PluginLoader;
using Zelvane::PluginsModel;
using namespace ZelvaneModelTest;

namespace {

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

class tst_PluginsModel : public PluginsModelFixture
{
    Q_OBJECT

private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

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
    void partiallyChecked();
    void rejectedEdits_data();
    void rejectedEdits();
    void indexIsOnlyReadForItsRow();
    void resetComesAfterTheChangeAndBeforeSaving();
};

void tst_PluginsModel::noCoreAndNoExtension()
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

void tst_PluginsModel::rowsAreCoreThenExtension()
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

void tst_PluginsModel::rowCountIgnoresItsParent()
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

void tst_PluginsModel::dataOutsideTheRows()
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

void tst_PluginsModel::firstColumn_data()
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

void tst_PluginsModel::firstColumn()
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

void tst_PluginsModel::fontFollowsTheApplicationFont()
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

void tst_PluginsModel::secondColumnAnswersDisplayOnly()
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

void tst_PluginsModel::columnsBeyondTheSecond()
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

void tst_PluginsModel::headerData_data()
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

void tst_PluginsModel::headerData()
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

void tst_PluginsModel::roleNames()
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

void tst_PluginsModel::flags()
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

void tst_PluginsModel::metaObject()
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

void tst_PluginsModel::modelHasNoParentAndDestructionSavesNothing()
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

void tst_PluginsModel::partiallyChecked()
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

void tst_PluginsModel::rejectedEdits_data()
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

void tst_PluginsModel::rejectedEdits()
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

void tst_PluginsModel::indexIsOnlyReadForItsRow()
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

void tst_PluginsModel::resetComesAfterTheChangeAndBeforeSaving()
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

QTEST_MAIN(tst_PluginsModel)

#include "tst_pluginsmodel.moc"
