#include "aboutplugins.h"

#include "loadtracker.h"

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/widgets/startupprofileview.h>

#include <QtCore/QTimer>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
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

AboutPlugins::AboutPlugins(const LoadTracker* tracker, const QString& settingsFile, QWidget* parent)
    : QDialog(parent)
    , m_tracker(tracker)
    , m_plugins(new QListWidget)
    , m_objects(new QTreeWidget)
{
    setWindowTitle(tr("About plugins"));

    int position = 0;
    for (const QString& name : tracker->loadOrder())
        m_plugins->addItem(tr("%1. %2").arg(++position).arg(name));

    m_objects->setHeaderLabels({ tr("Object"), tr("Class"), tr("Published by") });
    m_objects->setRootIsDecorated(false);
    m_objects->header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(framed(tr("Loaded plugins, in load order"), m_plugins));
    splitter->addWidget(framed(tr("Objects in the pool"), m_objects));

    auto* settings = new QLabel(tr("Plugin selection: %1").arg(settingsFile));
    settings->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    // How long each plugin took in this very start, from the library's own profile.
    QPushButton* startup = buttons->addButton(tr("Start-up..."), QDialogButtonBox::ActionRole);
    startup->setObjectName(QStringLiteral("startupButton"));
    connect(startup, &QPushButton::clicked, this, [this] {
        auto* view = new Zelvane::StartupProfileView(this);
        view->setWindowFlag(Qt::Window);
        view->setAttribute(Qt::WA_DeleteOnClose);
        view->resize(520, 320);
        view->show();
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addWidget(settings);
    layout->addWidget(buttons);

    // The pool forgets a destroyed object without a signal; look again once it is gone.
    Zelvane::ObjectPool* pool = Zelvane::PluginController::instance()->pool();
    connect(pool, &Zelvane::ObjectPool::objectAdded, this, &AboutPlugins::refreshPool);
    connect(pool, &Zelvane::ObjectPool::objectRemoved, this, &AboutPlugins::refreshPool);
    refreshPool();
    resize(640, 480);
}

void AboutPlugins::refreshPool()
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
        connect(obj, &QObject::destroyed, this, &AboutPlugins::scheduleRefresh,
                Qt::UniqueConnection);
    }
}

void AboutPlugins::scheduleRefresh()
{
    QTimer::singleShot(0, this, &AboutPlugins::refreshPool);
}

} // namespace ZelvaneDemo
