// The plugins model in a real table view: a mouse click on a row's check box goes
// through the model's rules, the view shows the result, and the settings file holds
// it. The test leaves a picture of the view in the build folder.

#include "modeltestsupport.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <zelvane/pluginsmodel.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QTableView>

#include <memory>

using Zelvane::PluginLoader;
using Zelvane::PluginsModel;
using ZelvaneTest::LogCapture;
using ZelvaneTest::LogRecord;

namespace {

// The view and the delegate expose how they lay out an item, so that the test can
// find the check box exactly where the view draws it and looks for clicks.
class TableView : public QTableView
{
public:
    using QTableView::initViewItemOption;
};

class Delegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::initStyleOption;
};

} // namespace

class tst_PluginsView : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void clicksOnCheckBoxes();

private:
    QRect checkBox(const QModelIndex& index) const;
    QImage checkBoxImage(const QModelIndex& index) const;
    QModelIndex row(const QString& name) const;
    QStringList stored() const
    {
        return ZelvaneTest::storedSelection(m_dir->filePath(QStringLiteral("settings.ini")));
    }
    // The rows as the view reads them: ticked when the check state role says so.
    QStringList states() const
    {
        return ZelvaneTest::checkStates(m_model.get(), Qt::CheckStateRole);
    }
    void click(const QString& name);

    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<PluginsModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<TableView> m_view;
    std::unique_ptr<Delegate> m_delegate;
};

void tst_PluginsView::init()
{
    m_log = std::make_unique<LogCapture>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void tst_PluginsView::cleanup()
{
    m_view.reset();
    m_delegate.reset();
    m_tester.reset();
    m_model.reset();
    m_settings.reset();
    m_dir.reset();
    const QList<LogRecord> records = m_log->records();
    m_log.reset();
    for (const LogRecord& record : records) {
        QVERIFY2(ZelvaneTest::isExpectedModelTesterWarning(record),
                 qPrintable(ZelvaneModelTest::describe(record)));
    }
}

QRect tst_PluginsView::checkBox(const QModelIndex& index) const
{
    QStyleOptionViewItem option;
    m_view->initViewItemOption(&option);
    option.rect = m_view->visualRect(index);
    m_delegate->initStyleOption(&option, index);
    return m_view->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option,
                                           m_view.get());
}

// What the view shows of one row's check box, taken from the screen.
QImage tst_PluginsView::checkBoxImage(const QModelIndex& index) const
{
    return m_view->viewport()->grab(checkBox(index)).toImage();
}

QModelIndex tst_PluginsView::row(const QString& name) const
{
    const QModelIndexList found
        = m_model->match(m_model->index(0, 0), PluginsModel::NameRole, name, 1, Qt::MatchExactly);
    return found.isEmpty() ? QModelIndex() : found.first();
}

void tst_PluginsView::click(const QString& name)
{
    const QRect box = checkBox(row(name));
    QVERIFY(!box.isEmpty());
    QVERIFY(m_view->viewport()->rect().contains(box));
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, Qt::NoModifier, box.center());
    // Away from the rows, so that no hover effect is in the pictures.
    QTest::mouseMove(m_view->viewport(),
                     QPoint(m_view->viewport()->width() - 2, m_view->viewport()->height() - 2));
}

void tst_PluginsView::clicksOnCheckBoxes()
{
    m_settings = std::make_unique<QSettings>(m_dir->filePath(QStringLiteral("settings.ini")),
                                             QSettings::IniFormat);
    const QMultiMap<QString, PluginLoader> plugins = ZelvaneModelTest::screenPlugins();
    m_model = std::make_unique<PluginsModel>(plugins, m_settings.get());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::Warning);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);

    m_view = std::make_unique<TableView>();
    m_delegate = std::make_unique<Delegate>();
    m_view->setItemDelegate(m_delegate.get());
    m_view->setModel(m_model.get());
    // No selection and no focus frame: the pictures of two check boxes in the same
    // state are then the same.
    m_view->setSelectionMode(QAbstractItemView::NoSelection);
    m_view->setFocusPolicy(Qt::NoFocus);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->resize(460, 200);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_view->resizeColumnToContents(0);
    QCOMPARE(m_model->rowCount(), 5);
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Desktop=true"), QStringLiteral("Minimal=false"),
                            QStringLiteral("Spelling=true"), QStringLiteral("Storage=false"),
                            QStringLiteral("Viewer=false") }));

    const QImage ticked = checkBoxImage(row(QStringLiteral("Spelling")));
    const QImage clear = checkBoxImage(row(QStringLiteral("Storage")));
    QVERIFY(!ticked.isNull());
    QVERIFY(ticked != clear);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Viewer"))), clear);

    // Ticking Viewer ticks Storage, which it depends on.
    click(QStringLiteral("Viewer"));
    const QStringList afterViewer { QStringLiteral("Desktop=true"), QStringLiteral("Minimal=false"),
                                    QStringLiteral("Spelling=true"), QStringLiteral("Storage=true"),
                                    QStringLiteral("Viewer=true") };
    QCOMPARE(states(), afterViewer);
    QCOMPARE(stored(), afterViewer);
    QCOMPARE(resets.count(), 1);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Viewer"))), ticked);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Storage"))), ticked);

    // A ticked core plugin is not cleared by a click.
    click(QStringLiteral("Desktop"));
    QCOMPARE(states(), afterViewer);
    QCOMPARE(stored(), afterViewer);
    QCOMPARE(resets.count(), 1);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Desktop"))),
             checkBoxImage(row(QStringLiteral("Spelling"))));

    // Clearing Storage clears Viewer; ticking the other core releases the first.
    click(QStringLiteral("Storage"));
    click(QStringLiteral("Minimal"));
    const QStringList finalStates { QStringLiteral("Desktop=false"), QStringLiteral("Minimal=true"),
                                    QStringLiteral("Spelling=true"),
                                    QStringLiteral("Storage=false"),
                                    QStringLiteral("Viewer=false") };
    QCOMPARE(states(), finalStates);
    QCOMPARE(stored(), finalStates);
    QCOMPARE(resets.count(), 3);
    QCOMPARE(changes.count(), 0);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Viewer"))), clear);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Desktop"))), clear);
    QCOMPARE(checkBoxImage(row(QStringLiteral("Minimal"))), ticked);

    const QString screenshot = QStringLiteral(ZELVANE_TEST_SCREENSHOT);
    QVERIFY(QDir().mkpath(QFileInfo(screenshot).absolutePath()));
    QVERIFY(m_view->grab().save(screenshot));
}

QTEST_MAIN(tst_PluginsView)

#include "tst_pluginsview.moc"
