#include <zelvane/widgets/pluginswidget.h>

#include "widgets/radiocheckstyle_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/pluginsfiltermodel.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginscaterogies.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QMetaMethod>
#include <QtCore/QPointer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QVBoxLayout>

namespace Zelvane {

namespace {

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

QString paragraph(const QString& label, const QString& html)
{
    return QStringLiteral("<p><b>%1</b> %2</p>").arg(escaped(label), html);
}

} // namespace

class PluginsWidgetPrivate : public QObject
{
public:
    explicit PluginsWidgetPrivate(PluginsWidget* widget);

    QListView* makeList(PluginsFilterModel* model, const QString& accessibleName);
    void setModel(PluginsModel* model);
    void show(const PluginDiagnostic& plugin);
    void showRow(const QModelIndex& proxyIndex);
    void restoreCurrent();
    void updateOtherFiles();
    void updateNotice();
    QString detailsHtml(const PluginDiagnostic& plugin) const;
    PluginDiagnostic diagnosticOfRow(int sourceRow) const;
    bool eventFilter(QObject* watched, QEvent* event) override;

    PluginsWidget* q;
    QDir dir;
    bool hasDir = false;
    bool modelChosen = false;
    QPointer<PluginsModel> model;
    LoadDiagnostics diagnostics;
    PluginDiagnostic shown;
    bool restartNeeded = false;
    int restartListeners = 0; // connections to restartRequested()

    RadioCheckStyle* radioStyle;
    QLineEdit* filter;
    PluginsFilterModel* coreModel;
    PluginsFilterModel* extensionModel;
    QLabel* coreLabel;
    QListView* coreView;
    QLabel* extensionLabel;
    QListView* extensionView;
    QLabel* otherLabel;
    QListWidget* otherView;
    QTextBrowser* details;
    QWidget* notice;
    QLabel* noticeText;
    QPushButton* restartButton;
};

PluginsWidgetPrivate::PluginsWidgetPrivate(PluginsWidget* widget)
    : QObject(widget)
    , q(widget)
    , radioStyle(new RadioCheckStyle)
{
    PluginsCaterogies categories(this);
    coreModel = new PluginsFilterModel(this);
    coreModel->setCategory(categories.corePluginCategoryKey());
    extensionModel = new PluginsFilterModel(this);
    extensionModel->setCategory(categories.extensionPluginCategoryKey());

    filter = new QLineEdit(q);
    filter->setObjectName(QStringLiteral("filter"));
    filter->setPlaceholderText(PluginsWidget::tr("Filter plugins"));
    filter->setAccessibleName(PluginsWidget::tr("Filter plugins"));
    filter->setClearButtonEnabled(true);
    filter->installEventFilter(this);

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
    otherView = new QListWidget(q);
    otherView->setObjectName(QStringLiteral("otherFiles"));
    otherView->setAccessibleName(PluginsWidget::tr("Other files of the plugin folder"));
    otherView->installEventFilter(this);
    otherLabel->setBuddy(otherView);

    details = new QTextBrowser(q);
    details->setObjectName(QStringLiteral("details"));
    details->setAccessibleName(PluginsWidget::tr("Plugin details"));
    details->setOpenLinks(false);

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

    QObject::connect(filter, &QLineEdit::textChanged, this, [this](const QString& text) {
        coreModel->setFilterText(text);
        extensionModel->setFilterText(text);
        updateOtherFiles();
        restoreCurrent();
    });
    QObject::connect(otherView, &QListWidget::currentItemChanged, this,
                     [this](QListWidgetItem* item) {
                         if (!item)
                             return;
                         const QString path = item->data(Qt::UserRole).toString();
                         const QList<PluginDiagnostic> plugins = diagnostics.plugins();
                         for (const PluginDiagnostic& plugin : plugins) {
                             if (plugin.filePath() == path)
                                 show(plugin);
                         }
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
    view->installEventFilter(this);
    QObject::connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
                     [this](const QModelIndex& current) {
                         if (current.isValid())
                             showRow(current);
                     });
    // Every tick resets the model; the plugin that had the keyboard keeps it.
    QObject::connect(model, &QAbstractItemModel::modelReset, this, [this] { restoreCurrent(); });
    return view;
}

void PluginsWidgetPrivate::setModel(PluginsModel* newModel)
{
    if (model)
        QObject::disconnect(model, nullptr, this, nullptr);
    model = newModel;
    coreModel->setSourceModel(newModel);
    extensionModel->setSourceModel(newModel);
    if (newModel) {
        // After a tick the plan reads the selection again, once the model has saved it.
        // Queued: the model saves after its reset.
        QObject::connect(newModel, &QAbstractItemModel::modelReset, q, &PluginsWidget::refresh,
                         Qt::QueuedConnection);
        QObject::connect(newModel, &QObject::destroyed, this, [this] { setModel(nullptr); });
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
        ? otherView->currentItem()->data(Qt::UserRole).toString()
        : QString();
    otherView->clear();
    const QString text = filter->text().trimmed();
    const QList<PluginDiagnostic> plugins = diagnostics.plugins();
    for (const PluginDiagnostic& plugin : plugins) {
        if (plugin.isCore() || plugin.isExtension())
            continue;
        const QString label = plugin.name().isEmpty() ? plugin.fileName() : plugin.name();
        if (!text.isEmpty() && !label.contains(text, Qt::CaseInsensitive)
            && !plugin.description().contains(text, Qt::CaseInsensitive))
            continue;
        auto* item = new QListWidgetItem(label, otherView);
        item->setData(Qt::UserRole, plugin.filePath());
        item->setToolTip(plugin.stateText());
        if (plugin.filePath() == current)
            otherView->setCurrentItem(item);
    }
    otherLabel->setVisible(otherView->count() > 0);
    otherView->setVisible(otherView->count() > 0);
}

void PluginsWidgetPrivate::updateNotice()
{
    const bool needed = diagnostics.differsFromRunning();
    notice->setVisible(needed);
    restartButton->setVisible(restartListeners > 0);
    if (needed == restartNeeded)
        return;
    restartNeeded = needed;
    Q_EMIT q->restartNeededChanged(needed);
}

void PluginsWidgetPrivate::show(const PluginDiagnostic& plugin)
{
    const QString before = shown.name();
    shown = plugin;
    details->setHtml(detailsHtml(plugin));
    if (plugin.name() != before)
        Q_EMIT q->currentPluginChanged(plugin.name());
}

QString PluginsWidgetPrivate::detailsHtml(const PluginDiagnostic& plugin) const
{
    if (!plugin.isValid())
        return QStringLiteral("<p>%1</p>")
            .arg(escaped(PluginsWidget::tr("No plugin is selected.")));

    QString html = QStringLiteral("<h3>%1</h3>")
                       .arg(escaped(plugin.name().isEmpty() ? plugin.fileName() : plugin.name()));
    if (!plugin.description().isEmpty())
        html += QStringLiteral("<p>%1</p>").arg(escaped(plugin.description()));
    html += paragraph(PluginsWidget::tr("State:"), escaped(plugin.stateText()));
    const QList<DependencyProblem> problems = plugin.problems();
    if (!problems.isEmpty()) {
        html += QStringLiteral("<ul>");
        for (const DependencyProblem& problem : problems)
            html += QStringLiteral("<li>%1</li>").arg(escaped(problem.text()));
        html += QStringLiteral("</ul>");
    }
    if (plugin.state() != PluginDiagnostic::State::Refused) {
        QStringList needs;
        const QStringList dependencies = plugin.dependencies();
        const QStringList missing = plugin.missingDependencies();
        for (const QString& dependency : dependencies) {
            needs.append(missing.contains(dependency)
                             ? PluginsWidget::tr("%1 (missing)").arg(dependency)
                             : dependency);
        }
        const QString none = PluginsWidget::tr("nothing");
        html += paragraph(PluginsWidget::tr("Needs:"),
                          escaped(needs.isEmpty() ? none : needs.join(QStringLiteral(", "))));
        const QStringList dependants = plugin.dependants();
        html += paragraph(
            PluginsWidget::tr("Needed by:"),
            escaped(dependants.isEmpty() ? none : dependants.join(QStringLiteral(", "))));
        const QList<QCommandLineOption> options = plugin.options();
        if (!options.isEmpty()) {
            html += QStringLiteral("<p><b>%1</b></p>")
                        .arg(escaped(PluginsWidget::tr("Command-line options:")));
            html += QStringLiteral("<ul>");
            for (const QCommandLineOption& option : options) {
                QString synopsis = QStringLiteral("--") + option.names().constFirst();
                if (!option.valueName().isEmpty())
                    synopsis += QStringLiteral(" <") + option.valueName() + QLatin1Char('>');
                html += QStringLiteral("<li><code>%1</code> %2</li>")
                            .arg(escaped(synopsis), escaped(option.description()));
            }
            html += QStringLiteral("</ul>");
        }
    }
    html += paragraph(PluginsWidget::tr("File:"), escaped(plugin.filePath()));
    return html;
}

bool PluginsWidgetPrivate::eventFilter(QObject* watched, QEvent* event)
{
    // A list that gets the keyboard shows its current plugin.
    if (event->type() == QEvent::FocusIn && (watched == coreView || watched == extensionView)) {
        const QModelIndex current = static_cast<QListView*>(watched)->currentIndex();
        if (current.isValid())
            showRow(current);
        return false;
    }
    if (event->type() != QEvent::KeyPress)
        return false;
    auto* key = static_cast<QKeyEvent*>(event);
    if (watched == filter) {
        // Down leaves the filter for the first plugin shown.
        if (key->key() != Qt::Key_Down)
            return false;
        QListView* target = coreModel->rowCount() > 0 ? coreView : extensionView;
        target->setFocus(Qt::TabFocusReason);
        if (!target->currentIndex().isValid() && target->model()->rowCount() > 0)
            target->setCurrentIndex(target->model()->index(0, 0));
        return true;
    }

    // Arrows go on from one list to the next.
    auto* view = qobject_cast<QAbstractItemView*>(watched);
    if (view && key->modifiers() == Qt::NoModifier) {
        const int row = view->currentIndex().row();
        const int last = view->model()->rowCount() - 1;
        QAbstractItemView* next = nullptr;
        if (key->key() == Qt::Key_Down && row == last && view == coreView)
            next = extensionModel->rowCount() > 0 ? extensionView : nullptr;
        else if (key->key() == Qt::Key_Up && row == 0 && view == extensionView)
            next = coreModel->rowCount() > 0 ? coreView : nullptr;
        else if (key->key() == Qt::Key_Up && row == 0 && view == coreView)
            next = nullptr;
        if (next) {
            next->setFocus(Qt::TabFocusReason);
            const int target = key->key() == Qt::Key_Down ? 0 : next->model()->rowCount() - 1;
            next->setCurrentIndex(next->model()->index(target, 0));
            // The row may have been current there already: show it all the same.
            showRow(next->currentIndex());
            return true;
        }
    }

    // Typing a letter in a list filters: the text goes to the filter field.
    const QString text = key->text();
    if (text.isEmpty() || !text.at(0).isPrint() || text == QStringLiteral(" ")
        || (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    filter->setFocus(Qt::OtherFocusReason);
    filter->end(false);
    QCoreApplication::sendEvent(filter, event);
    return true;
}

PluginsWidget::PluginsWidget(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<PluginsWidgetPrivate>(this))
{
    setAccessibleName(tr("Plugins"));
}

// The private object is a child as well; it goes first, with its connections.
PluginsWidget::~PluginsWidget()
{
    d->setModel(nullptr);
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

// The "Restart now" button is offered while someone listens to restartRequested().
void PluginsWidget::connectNotify(const QMetaMethod& signal)
{
    if (signal != QMetaMethod::fromSignal(&PluginsWidget::restartRequested))
        return;
    ++d->restartListeners;
    d->updateNotice();
}

void PluginsWidget::disconnectNotify(const QMetaMethod& signal)
{
    // An invalid signal: everything was disconnected at once, e.g. while destroyed.
    if (!d
        || (signal.isValid()
            && signal != QMetaMethod::fromSignal(&PluginsWidget::restartRequested)))
        return;
    d->restartListeners = signal.isValid() ? qMax(0, d->restartListeners - 1) : 0;
    d->updateNotice();
}

} // namespace Zelvane
