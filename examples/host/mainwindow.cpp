#include "mainwindow.h"

#include "loadtracker.h"
#include "pluginsdialog.h"
#ifdef ZELVANE_DEMO_QML
#include "pluginspage.h"
#endif

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

namespace ZelvaneDemo {

namespace {

QGroupBox* framed(const QString& title, QWidget* content)
{
    auto* box = new QGroupBox(title);
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(content);
    return box;
}

} // namespace

MainWindow::MainWindow(const LoadTracker* tracker, const QString& settingsFile, bool qmlPage,
                       QWidget* parent)
    : QMainWindow(parent)
    , m_tracker(tracker)
    , m_qmlPage(qmlPage)
    , m_plugins(new QListWidget)
    , m_objects(new QTreeWidget)
{
    setWindowTitle(tr("Zelvane demo"));

    int position = 0;
    for (const QString& name : tracker->loadOrder())
        m_plugins->addItem(tr("%1. %2").arg(++position).arg(name));

    m_objects->setHeaderLabels({ tr("Object"), tr("Class"), tr("Published by") });
    m_objects->setRootIsDecorated(false);
    m_objects->header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(framed(tr("Loaded plugins, in load order"), m_plugins));
    splitter->addWidget(framed(tr("Objects in the pool"), m_objects));
    setCentralWidget(splitter);

    auto* pluginsAction = new QAction(tr("&Plugins…"), this);
    connect(pluginsAction, &QAction::triggered, this, &MainWindow::showPluginsScreen);
    auto* quitAction = new QAction(tr("&Quit"), this);
    quitAction->setShortcut(QKeySequence::Quit);
    connect(quitAction, &QAction::triggered, qApp, &QApplication::quit);
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    menu->addAction(pluginsAction);
    menu->addSeparator();
    menu->addAction(quitAction);
    addToolBar(tr("Main"))->addAction(pluginsAction);
    statusBar()->showMessage(tr("Plugin selection: %1").arg(settingsFile));

    // The pool forgets a destroyed object without a signal; look again once it is gone.
    Zelvane::ObjectPool* pool = Zelvane::PluginController::instance()->pool();
    connect(pool, &Zelvane::ObjectPool::objectAdded, this, &MainWindow::refreshPool);
    connect(pool, &Zelvane::ObjectPool::objectRemoved, this, &MainWindow::refreshPool);
    refreshPool();
    resize(720, 480);
}

void MainWindow::refreshPool()
{
    m_objects->clear();
    const QList<QObject*> objects = Zelvane::PluginController::instance()->pool()->allObjects();
    for (QObject* obj : objects) {
        if (!obj)
            continue;
        new QTreeWidgetItem(m_objects,
                            { obj->objectName(),
                              QString::fromLatin1(obj->metaObject()->className()),
                              m_tracker->publisher(obj) });
        connect(obj, &QObject::destroyed, this, &MainWindow::scheduleRefresh, Qt::UniqueConnection);
    }
}

void MainWindow::scheduleRefresh()
{
    QTimer::singleShot(0, this, &MainWindow::refreshPool);
}

void MainWindow::showPluginsScreen()
{
    Zelvane::PluginsModel* model = Zelvane::PluginController::instance()->pluginsModel();
#ifdef ZELVANE_DEMO_QML
    if (m_qmlPage) {
        auto* page = new PluginsPage(model);
        page->setModality(Qt::ApplicationModal);
        connect(page, &QWindow::visibleChanged, page, [page](bool visible) {
            if (!visible)
                page->deleteLater();
        });
        page->show();
        return;
    }
#endif
    PluginsDialog dialog(model, this);
    dialog.exec();
}

} // namespace ZelvaneDemo
