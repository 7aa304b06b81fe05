// The plugins model in a QML scene: a delegate binds the six role names, compares
// each row's category with the keys of a categories object, and ticks a row with
// `model.checked = true`. The test leaves a picture of the scene in the build folder.

#include "modeltestsupport.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <zelvane/pluginscaterogies.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtGui/QFont>
#include <QtQml/QQmlContext>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickView>
#include <QtQuick/QQuickWindow>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>

using Zelvane::PluginLoader;
using Zelvane::PluginsCaterogies;
using Zelvane::PluginsModel;
using ZelvaneTest::LogCapture;
using ZelvaneTest::LogRecord;

namespace {

const QString core = QStringLiteral("Core");
const QString extension = QStringLiteral("Extension");

} // namespace

class tst_PluginsQml : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void delegatesBindAndTick();

private:
    QQuickItem* delegate(int row) const;
    int row(const QString& name) const;
    void verifyDelegates();
    QStringList stored() const
    {
        return ZelvaneTest::storedSelection(m_dir->filePath(QStringLiteral("settings.ini")));
    }
    QStringList states() const;

    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<PluginsModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<QQuickView> m_view;
};

void tst_PluginsQml::initTestCase()
{
    // Drawn without a GPU, so that the offscreen platform can render and grab it.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void tst_PluginsQml::init()
{
    m_log = std::make_unique<LogCapture>();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void tst_PluginsQml::cleanup()
{
    m_view.reset();
    m_tester.reset();
    m_model.reset();
    m_settings.reset();
    m_dir.reset();
    // The QML engine's warnings come through the same capture: there may be none.
    const QList<LogRecord> records = m_log->records();
    m_log.reset();
    for (const LogRecord& record : records) {
        QVERIFY2(ZelvaneTest::isExpectedModelTesterWarning(record),
                 qPrintable(ZelvaneModelTest::describe(record)));
    }
}

QQuickItem* tst_PluginsQml::delegate(int row) const
{
    auto* list = m_view->rootObject()->findChild<QQuickItem*>(QStringLiteral("list"));
    if (!list)
        return nullptr;
    QQuickItem* item = nullptr;
    QMetaObject::invokeMethod(list, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item),
                              Q_ARG(int, row));
    return item;
}

int tst_PluginsQml::row(const QString& name) const
{
    const QModelIndexList found
        = m_model->match(m_model->index(0, 0), PluginsModel::NameRole, name, 1, Qt::MatchExactly);
    return found.isEmpty() ? -1 : found.first().row();
}

// Every delegate shows what the model holds for its row.
void tst_PluginsQml::verifyDelegates()
{
    for (int i = 0; i < m_model->rowCount(); ++i) {
        const QModelIndex index = m_model->index(i, 0);
        QQuickItem* item = delegate(i);
        QVERIFY(item);
        const QString name = index.data(PluginsModel::NameRole).toString();
        QCOMPARE(item->property("pluginName").toString(), name);
        QCOMPARE(item->property("pluginDescription").toString(),
                 index.data(PluginsModel::DescriptionRole).toString());
        const bool checked = index.data(PluginsModel::CheckedRole).toBool();
        QCOMPARE(item->property("pluginChecked").toBool(), checked);
        QCOMPARE(item->property("pluginCheckedState").toInt(), checked ? 2 : 0);
        const QString category = index.data(PluginsModel::CategoryRole).toString();
        QCOMPARE(item->property("pluginCategory").toString(), category);
        QCOMPARE(item->property("isCore").toBool(), category == core);
        QCOMPARE(item->property("isExtension").toBool(), category == extension);
        const QFont font = item->property("pluginFont").value<QFont>();
        QCOMPARE(font.bold(), checked);
        QCOMPARE(font.italic(), category == core);
    }
}

QStringList tst_PluginsQml::states() const
{
    QStringList result;
    for (int i = 0; i < m_model->rowCount(); ++i) {
        QQuickItem* item = delegate(i);
        if (!item)
            return { QStringLiteral("no delegate for row %1").arg(i) };
        result.append(item->property("pluginName").toString()
                      + (item->property("pluginChecked").toBool() ? QLatin1String("=true")
                                                                  : QLatin1String("=false")));
    }
    result.sort();
    return result;
}

void tst_PluginsQml::delegatesBindAndTick()
{
    m_settings = std::make_unique<QSettings>(m_dir->filePath(QStringLiteral("settings.ini")),
                                             QSettings::IniFormat);
    const QMultiMap<QString, PluginLoader> plugins = ZelvaneModelTest::screenPlugins();
    m_model = std::make_unique<PluginsModel>(plugins, m_settings.get());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::Warning);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy changes(m_model.get(), &QAbstractItemModel::dataChanged);

    m_view = std::make_unique<QQuickView>();
    auto* categories = new PluginsCaterogies(m_view.get());
    m_view->rootContext()->setContextProperty(QStringLiteral("pluginsModel"), m_model.get());
    m_view->rootContext()->setContextProperty(QStringLiteral("categories"), categories);
    m_view->setResizeMode(QQuickView::SizeViewToRootObject);
    m_view->setSource(
        QUrl::fromLocalFile(QStringLiteral(ZELVANE_TEST_SOURCE_DIR "/pluginslist.qml")));
    QCOMPARE(m_view->status(), QQuickView::Ready);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));

    // The keys reach QML through the meta-object system unchanged.
    QCOMPARE(m_view->rootObject()->property("coreKey").toString(), QStringLiteral("Core"));
    QCOMPARE(m_view->rootObject()->property("extensionKey").toString(),
             QStringLiteral("Extension"));

    QCOMPARE(m_model->rowCount(), 5);
    QTRY_VERIFY(delegate(4));
    verifyDelegates();
    QCOMPARE(states(),
             (QStringList { QStringLiteral("Desktop=true"), QStringLiteral("Minimal=false"),
                            QStringLiteral("Spelling=true"), QStringLiteral("Storage=false"),
                            QStringLiteral("Viewer=false") }));

    // Ticking Viewer from QML ticks Storage too, and saves every row.
    QVERIFY(QMetaObject::invokeMethod(delegate(row(QStringLiteral("Viewer"))), "tick"));
    const QStringList afterViewer { QStringLiteral("Desktop=true"), QStringLiteral("Minimal=false"),
                                    QStringLiteral("Spelling=true"), QStringLiteral("Storage=true"),
                                    QStringLiteral("Viewer=true") };
    QTRY_COMPARE(states(), afterViewer);
    QCOMPARE(stored(), afterViewer);
    QCOMPARE(resets.count(), 1);
    verifyDelegates();

    // Ticking the ticked core again is refused: nothing changes, nothing is reset.
    QVERIFY(QMetaObject::invokeMethod(delegate(row(QStringLiteral("Desktop"))), "tick"));
    QCOMPARE(states(), afterViewer);
    QCOMPARE(stored(), afterViewer);
    QCOMPARE(resets.count(), 1);

    // Ticking the other core releases the first.
    QVERIFY(QMetaObject::invokeMethod(delegate(row(QStringLiteral("Minimal"))), "tick"));
    const QStringList finalStates { QStringLiteral("Desktop=false"), QStringLiteral("Minimal=true"),
                                    QStringLiteral("Spelling=true"), QStringLiteral("Storage=true"),
                                    QStringLiteral("Viewer=true") };
    QTRY_COMPARE(states(), finalStates);
    QCOMPARE(stored(), finalStates);
    QCOMPARE(resets.count(), 2);
    QCOMPARE(changes.count(), 0);
    verifyDelegates();

    const QImage image = m_view->grabWindow();
    QVERIFY(!image.isNull());
    const QString screenshot = QStringLiteral(ZELVANE_TEST_SCREENSHOT);
    QVERIFY(QDir().mkpath(QFileInfo(screenshot).absolutePath()));
    QVERIFY(image.save(screenshot));
}

QTEST_MAIN(tst_PluginsQml)

#include "tst_pluginsqml.moc"
