#include <zelvane/widgets/pluginswidget.h>

#include "diagnostics/pluginpresentation_p.h"
#include "widgets/plugindetailsview_p.h"
#include "widgets/pluginskeyrouter_p.h"
#include "widgets/radiocheckstyle_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/pluginsfiltermodel.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginscaterogies.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

namespace Zelvane {

namespace {

// The role of a file row of the other files that holds its path, and of a group row
// that holds its key.
constexpr int pathRole = Qt::UserRole;
constexpr int groupRole = Qt::UserRole + 1;

} // namespace

// The layout of the screen and what ties its parts together. The details pane and the
// keyboard are classes of their own (PluginDetailsView, PluginsKeyRouter).
class PluginsWidgetPrivate
{
public:
    explicit PluginsWidgetPrivate(PluginsWidget* widget);

    QListView* makeList(PluginsFilterModel* model, const QString& accessibleName);
    void setModel(PluginsModel* model);
    void show(const PluginDiagnostic& plugin);
    void showRow(const QModelIndex& proxyIndex);
    void restoreCurrent();
    void updateOtherFiles();
    void showOtherFile(const QTreeWidgetItem* item);
    void updateNotice();
    PluginDiagnostic diagnosticOfRow(int sourceRow) const;

    PluginsWidget* q;
    QDir dir;
    bool hasDir = false;
    bool modelChosen = false;
    QPointer<PluginsModel> model;
    LoadDiagnostics diagnostics;
    PluginDiagnostic shown;
    bool restartNeeded = false;
    bool restartOffered = false;

    RadioCheckStyle* radioStyle;
    QLineEdit* filter;
    PluginsFilterModel* coreModel;
    PluginsFilterModel* extensionModel;
    QLabel* coreLabel;
    QListView* coreView;
    QLabel* extensionLabel;
    QListView* extensionView;
    QLabel* otherLabel;
    QTreeWidget* otherView;
    // The groups of other files that the user opened; they stay open across refreshes.
    QSet<QString> expandedGroups;
    PluginDetailsView* details;
    QWidget* notice;
    QLabel* noticeText;
    QPushButton* restartButton;
};

PluginsWidgetPrivate::PluginsWidgetPrivate(PluginsWidget* widget)
    : q(widget)
    , radioStyle(new RadioCheckStyle)
{
    PluginsCaterogies categories(nullptr);
    coreModel = new PluginsFilterModel(q);
    coreModel->setCategory(categories.corePluginCategoryKey());
    extensionModel = new PluginsFilterModel(q);
    extensionModel->setCategory(categories.extensionPluginCategoryKey());

    filter = new QLineEdit(q);
    filter->setObjectName(QStringLiteral("filter"));
    filter->setPlaceholderText(PluginsWidget::tr("Filter plugins"));
    filter->setAccessibleName(PluginsWidget::tr("Filter plugins"));
    filter->setClearButtonEnabled(true);

    coreLabel = new QLabel(PluginsWidget::tr("&Core"), q);
    coreView = makeList(coreModel, PluginsWidget::tr("Core plugins"));
    coreView->setObjectName(QStringLiteral("core"));
    coreView->setStyle(radioStyle);
    coreLabel->setBuddy(coreView);
    extensionLabel = new QLabel(PluginsWidget::tr("&Extensions"), q);
    extensionView = makeList(extensionModel, PluginsWidget::tr("Extension plugins"));
    extensionView->setObjectName(QStringLiteral("extensions"));
    extensionLabel->setBuddy(extensionView);
    otherLabel = new QLabel(PluginsWidget::tr("Other &files"), q);
    otherView = new QTreeWidget(q);
    otherView->setObjectName(QStringLiteral("otherFiles"));
    otherView->setAccessibleName(PluginsWidget::tr("Other files of the plugin folder"));
    otherView->setColumnCount(2);
    otherView->setHeaderLabels({ PluginsWidget::tr("File"), PluginsWidget::tr("Reason") });
    otherView->setUniformRowHeights(true);
    otherView->setAllColumnsShowFocus(true);
    otherView->setSelectionMode(QAbstractItemView::SingleSelection);
    // The reason takes what the name leaves; both are elided, the details pane has them
    // whole.
    otherView->header()->setStretchLastSection(true);
    otherView->header()->resizeSection(0, otherView->fontMetrics().averageCharWidth() * 24);
    otherLabel->setBuddy(otherView);
    auto* keys = new PluginsKeyRouter(
        filter, coreView, extensionView, [this](const QModelIndex& index) { showRow(index); }, q);
    keys->watch(otherView);

    details = new PluginDetailsView(q);

    notice = new QWidget(q);
    notice->setObjectName(QStringLiteral("notice"));
    noticeText = new QLabel(PluginsWidget::tr("Changes apply at the next start."), notice);
    noticeText->setAccessibleName(PluginsWidget::tr("Changes apply at the next start."));
    restartButton = new QPushButton(PluginsWidget::tr("&Restart now"), notice);
    restartButton->setObjectName(QStringLiteral("restart"));
    restartButton->setAccessibleName(PluginsWidget::tr("Restart now"));
    restartButton->setVisible(false);
    auto* noticeLayout = new QHBoxLayout(notice);
    noticeLayout->setContentsMargins(0, 0, 0, 0);
    noticeLayout->addWidget(noticeText, 1);
    noticeLayout->addWidget(restartButton);
    notice->setVisible(false);
    QObject::connect(restartButton, &QPushButton::clicked, q, &PluginsWidget::restartRequested);

    auto* lists = new QWidget(q);
    auto* listsLayout = new QVBoxLayout(lists);
    listsLayout->setContentsMargins(0, 0, 0, 0);
    listsLayout->addWidget(coreLabel);
    listsLayout->addWidget(coreView, 1);
    listsLayout->addWidget(extensionLabel);
    listsLayout->addWidget(extensionView, 3);
    listsLayout->addWidget(otherLabel);
    listsLayout->addWidget(otherView, 1);
    auto* splitter = new QSplitter(q);
    splitter->addWidget(lists);
    splitter->addWidget(details);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 3);
    splitter->setChildrenCollapsible(false);

    auto* layout = new QVBoxLayout(q);
    layout->addWidget(filter);
    layout->addWidget(splitter, 1);
    layout->addWidget(notice);
    q->setTabOrder(filter, coreView);
    q->setTabOrder(coreView, extensionView);
    q->setTabOrder(extensionView, otherView);
    q->setTabOrder(otherView, details);
    q->setTabOrder(details, restartButton);

    QObject::connect(filter, &QLineEdit::textChanged, q, [this](const QString& text) {
        coreModel->setFilterText(text);
        extensionModel->setFilterText(text);
        updateOtherFiles();
        restoreCurrent();
    });
    QObject::connect(otherView, &QTreeWidget::currentItemChanged, q,
                     [this](QTreeWidgetItem* item) { showOtherFile(item); });
    QObject::connect(otherView, &QTreeWidget::itemExpanded, q, [this](QTreeWidgetItem* item) {
        expandedGroups.insert(item->data(0, groupRole).toString());
    });
    QObject::connect(otherView, &QTreeWidget::itemCollapsed, q, [this](QTreeWidgetItem* item) {
        expandedGroups.remove(item->data(0, groupRole).toString());
    });
    updateOtherFiles();
    show(PluginDiagnostic());
    // A child made after the views goes after them: no view outlives its style.
    radioStyle->setParent(q);
}

QListView* PluginsWidgetPrivate::makeList(PluginsFilterModel* model, const QString& accessibleName)
{
    auto* view = new QListView(q);
    view->setModel(model);
    view->setAccessibleName(accessibleName);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setUniformItemSizes(true);
    QObject::connect(view->selectionModel(), &QItemSelectionModel::currentChanged, q,
                     [this](const QModelIndex& current) {
                         if (current.isValid())
                             showRow(current);
                     });
    // Every tick resets the model; the plugin that had the keyboard keeps it.
    QObject::connect(model, &QAbstractItemModel::modelReset, q, [this] { restoreCurrent(); });
    return view;
}

void PluginsWidgetPrivate::setModel(PluginsModel* newModel)
{
    if (model)
        QObject::disconnect(model, nullptr, q, nullptr);
    model = newModel;
    coreModel->setSourceModel(newModel);
    extensionModel->setSourceModel(newModel);
    if (newModel) {
        // After a tick the plan reads the selection again, once the model has saved it.
        // Queued: the model saves after its reset.
        QObject::connect(newModel, &QAbstractItemModel::modelReset, q, &PluginsWidget::refresh,
                         Qt::QueuedConnection);
        QObject::connect(newModel, &QObject::destroyed, q, [this] { setModel(nullptr); });
    }
    restoreCurrent();
}

PluginDiagnostic PluginsWidgetPrivate::diagnosticOfRow(int sourceRow) const
{
    if (!model)
        return PluginDiagnostic();
    const QString name = model->index(sourceRow, 0).data(PluginsModel::NameRole).toString();
    // The folder may have changed since the model was made: the name decides.
    const PluginDiagnostic plugin = diagnostics.modelRow(sourceRow);
    return plugin.isValid() && plugin.name() == name ? plugin : diagnostics.plugin(name);
}

void PluginsWidgetPrivate::showRow(const QModelIndex& proxyIndex)
{
    const auto* proxy = static_cast<const PluginsFilterModel*>(proxyIndex.model());
    show(diagnosticOfRow(proxy->mapToSource(proxyIndex).row()));
}

void PluginsWidgetPrivate::restoreCurrent()
{
    const QString name = shown.name();
    for (QListView* view : { coreView, extensionView }) {
        QAbstractItemModel* viewModel = view->model();
        for (int row = 0; row < viewModel->rowCount(); ++row) {
            const QModelIndex index = viewModel->index(row, 0);
            if (!name.isEmpty() && index.data(PluginsModel::NameRole).toString() == name) {
                const QSignalBlocker blocker(view->selectionModel());
                view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
                view->viewport()->update();
                return;
            }
        }
    }
}

void PluginsWidgetPrivate::updateOtherFiles()
{
    const QSignalBlocker blocker(otherView);
    const QString current = otherView->currentItem()
        ? otherView->currentItem()->data(0, pathRole).toString()
        : QString();
    otherView->clear();
    // While the user looks for something every group that holds it is open; otherwise
    // the groups are closed, but for those the user opened and the current file's.
    const bool filtering = !filter->text().trimmed().isEmpty();
    const QList<PluginPresentation::OtherGroup> groups
        = PluginPresentation::otherGroups(diagnostics.plugins(), filter->text());
    for (const PluginPresentation::OtherGroup& group : groups) {
        auto* groupItem = new QTreeWidgetItem(otherView, { PluginPresentation::groupTitle(group) });
        groupItem->setData(0, groupRole, group.key());
        groupItem->setToolTip(0, groupItem->text(0));
        groupItem->setFirstColumnSpanned(true);
        groupItem->setFlags(Qt::ItemIsEnabled);
        bool holdsCurrent = false;
        for (const PluginDiagnostic& plugin : group.files) {
            const QString title = PluginPresentation::title(plugin);
            const QString reason = plugin.stateText();
            auto* item = new QTreeWidgetItem(groupItem, { title, reason });
            item->setData(0, pathRole, plugin.filePath());
            item->setToolTip(0, title);
            item->setToolTip(1, reason);
            if (plugin.filePath() == current) {
                otherView->setCurrentItem(item);
                holdsCurrent = true;
            }
        }
        groupItem->setExpanded(filtering || holdsCurrent || expandedGroups.contains(group.key()));
    }
    otherLabel->setVisible(!groups.isEmpty());
    otherView->setVisible(!groups.isEmpty());
}

void PluginsWidgetPrivate::showOtherFile(const QTreeWidgetItem* item)
{
    // A group's row explains nothing: the pane keeps what it shows.
    const QString path = item ? item->data(0, pathRole).toString() : QString();
    if (path.isEmpty())
        return;
    const QList<PluginDiagnostic> plugins = diagnostics.plugins();
    for (const PluginDiagnostic& plugin : plugins) {
        if (plugin.filePath() == path) {
            show(plugin);
            return;
        }
    }
}

void PluginsWidgetPrivate::updateNotice()
{
    const bool needed = diagnostics.differsFromRunning();
    notice->setVisible(needed);
    restartButton->setVisible(restartOffered);
    if (needed == restartNeeded)
        return;
    restartNeeded = needed;
    Q_EMIT q->restartNeededChanged(needed);
}

void PluginsWidgetPrivate::show(const PluginDiagnostic& plugin)
{
    const QString before = shown.name();
    shown = plugin;
    details->setPlugin(plugin, diagnostics);
    if (plugin.name() != before)
        Q_EMIT q->currentPluginChanged(plugin.name());
}

PluginsWidget::PluginsWidget(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<PluginsWidgetPrivate>(this))
{
    setAccessibleName(tr("Plugins"));
}

// Every connection of the screen's parts has this widget as its context; they go
// before the private object, so that no part destroyed after it can reach it.
PluginsWidget::~PluginsWidget()
{
    d->setModel(nullptr);
    const QList<QObject*> parts = findChildren<QObject*>();
    for (QObject* part : parts)
        disconnect(part, nullptr, this, nullptr);
}

QDir PluginsWidget::pluginDirectory() const
{
    return d->dir;
}

void PluginsWidget::setPluginDirectory(const QDir& dir)
{
    d->dir = dir;
    d->hasDir = true;
    d->diagnostics = LoadDiagnostics(dir, PluginController::instance()->settings());
    if (!d->modelChosen)
        d->setModel(PluginController::instance()->pluginsModel());
    refresh();
}

PluginsModel* PluginsWidget::model() const
{
    return d->model;
}

void PluginsWidget::setModel(PluginsModel* model)
{
    d->modelChosen = true;
    d->setModel(model);
    refresh();
}

QString PluginsWidget::currentPlugin() const
{
    return d->shown.name();
}

void PluginsWidget::setCurrentPlugin(const QString& name)
{
    if (name == d->shown.name())
        return;
    d->show(d->diagnostics.plugin(name));
    d->restoreCurrent();
}

QString PluginsWidget::filterText() const
{
    return d->filter->text();
}

void PluginsWidget::setFilterText(const QString& text)
{
    d->filter->setText(text);
}

bool PluginsWidget::isRestartNeeded() const
{
    return d->restartNeeded;
}

LoadDiagnostics PluginsWidget::diagnostics() const
{
    return d->diagnostics;
}

void PluginsWidget::refresh()
{
    if (d->hasDir)
        d->diagnostics = d->diagnostics.reread(PluginController::instance()->settings());
    d->updateOtherFiles();
    d->updateNotice();
    // The same plugin, as read now.
    const QString name = d->shown.name();
    const QString path = d->shown.filePath();
    PluginDiagnostic again = d->diagnostics.plugin(name);
    if (name.isEmpty() || again.filePath() != path) {
        const QList<PluginDiagnostic> plugins = d->diagnostics.plugins();
        for (const PluginDiagnostic& plugin : plugins) {
            if (plugin.filePath() == path)
                again = plugin;
        }
    }
    d->show(again);
    d->restoreCurrent();
}

bool PluginsWidget::isRestartOffered() const
{
    return d->restartOffered;
}

void PluginsWidget::setRestartOffered(bool offered)
{
    if (offered == d->restartOffered)
        return;
    d->restartOffered = offered;
    d->updateNotice();
    Q_EMIT restartOfferedChanged(offered);
}

// Kept for hosts built against 1.0, whose code may call these: the "Restart now" button
// no longer depends on who is connected, the host asks for it (restartOffered).
void PluginsWidget::connectNotify(const QMetaMethod& signal)
{
    QWidget::connectNotify(signal);
}

void PluginsWidget::disconnectNotify(const QMetaMethod& signal)
{
    QWidget::disconnectNotify(signal);
}

} // namespace Zelvane
