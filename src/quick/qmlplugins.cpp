#include <zelvane/quick/qmlplugins.h>

#include "qmlplugins_p.h"

#include "diagnostics/pluginexplanation_p.h"
#include "diagnostics/pluginpresentation_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginscaterogies.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QSet>
#include <QtQml/QQmlEngine>

#include <algorithm>
#include <optional>
#include <utility>

namespace Zelvane {

namespace {

// The folder of every singleton made from now on; one process loads one folder.
QString& defaultPluginDirectory()
{
    static QString path;
    return path;
}

QVariantMap detailsMap(const PluginDiagnostic& plugin)
{
    QVariantList dependencies;
    // A set: a plugin may list thousands of dependencies, most of them missing, and a
    // search of the list for each would take time square in their number.
    const QStringList missingList = plugin.missingDependencies();
    const QSet<QString> missing(missingList.cbegin(), missingList.cend());
    const QStringList names = plugin.dependencies();
    dependencies.reserve(names.size());
    for (const QString& name : names)
        dependencies.append(QVariantMap { { QStringLiteral("name"), name },
                                          { QStringLiteral("missing"), missing.contains(name) } });
    QVariantList options;
    const QList<PluginExplanation::Item> declared = PluginExplanation::optionItems(plugin);
    for (const PluginExplanation::Item& option : declared)
        options.append(QVariantMap { { QStringLiteral("synopsis"), option.code },
                                     { QStringLiteral("description"), option.text } });
    QStringList problems;
    const QList<DependencyProblem> found = plugin.problems();
    for (const DependencyProblem& problem : found)
        problems.append(problem.text());
    return QVariantMap {
        { QStringLiteral("name"), plugin.name() },
        { QStringLiteral("title"), PluginPresentation::title(plugin) },
        { QStringLiteral("fileName"), plugin.fileName() },
        { QStringLiteral("filePath"), plugin.filePath() },
        { QStringLiteral("category"), plugin.category() },
        { QStringLiteral("description"), plugin.description() },
        { QStringLiteral("isCore"), plugin.isCore() },
        { QStringLiteral("dependencies"), dependencies },
        { QStringLiteral("dependants"), plugin.dependants() },
        { QStringLiteral("options"), options },
        { QStringLiteral("stateText"), plugin.stateText() },
        { QStringLiteral("problems"), problems },
        { QStringLiteral("loaded"), plugin.isLoaded() },
        { QStringLiteral("willLoad"), plugin.willLoad() },
        { QStringLiteral("refusal"), plugin.refusal() },
    };
}

QVariantMap itemOf(const PluginExplanation::Item& item)
{
    return QVariantMap { { QStringLiteral("code"), item.code },
                         { QStringLiteral("text"), item.text },
                         { QStringLiteral("note"), item.note },
                         { QStringLiteral("warning"), item.warning } };
}

} // namespace

QList<PluginExplanation::Part> QmlPluginsPrivate::explanation(const QString& filePath) const
{
    const auto cached = explanations.constFind(filePath);
    if (cached != explanations.cend())
        return cached.value();
    const PluginDiagnostic file = plugin(filePath);
    const QList<PluginExplanation::Part> parts = file.isValid()
        ? PluginExplanation(file, diagnostics).parts()
        : QList<PluginExplanation::Part>();
    explanations.insert(filePath, parts);
    return parts;
}

QmlPlugins::QmlPlugins(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<QmlPluginsPrivate>())
{
    d->categories = new PluginsCaterogies(this);
    d->directory = defaultPluginDirectory();
    if (!d->directory.isEmpty())
        d->diagnostics
            = LoadDiagnostics(QDir(d->directory), PluginController::instance()->settings());
    refresh();
}

QmlPlugins::~QmlPlugins() = default;

void QmlPlugins::setDefaultPluginDirectory(const QDir& dir)
{
    defaultPluginDirectory() = dir.absolutePath();
}

QmlPlugins* QmlPlugins::instance(QQmlEngine* engine)
{
    const int type = qmlTypeId("Zelvane", 1, 0, "Plugins");
    return type < 0 ? nullptr : engine->singletonInstance<QmlPlugins*>(type);
}

PluginsModel* QmlPlugins::model() const
{
    return d->model;
}

PluginsCaterogies* QmlPlugins::categories() const
{
    return d->categories;
}

QString QmlPlugins::pluginDirectory() const
{
    return d->directory;
}

void QmlPlugins::setPluginDirectory(const QString& path)
{
    if (path == d->directory)
        return;
    d->directory = path;
    d->diagnostics = path.isEmpty()
        ? LoadDiagnostics()
        : LoadDiagnostics(QDir(path), PluginController::instance()->settings());
    Q_EMIT pluginDirectoryChanged();
    refresh();
}

QVariantMap QmlPlugins::details() const
{
    if (!d->details) {
        QVariantMap details;
        for (auto plugin = d->byName.cbegin(); plugin != d->byName.cend(); ++plugin)
            details.insert(plugin.key(), detailsMap(plugin.value()));
        d->details = details;
    }
    return *d->details;
}

QVariantMap QmlPlugins::detailsOf(const QString& name) const
{
    if (d->details)
        return d->details->value(name).toMap();
    const auto made = d->detailsByName.constFind(name);
    if (made != d->detailsByName.cend())
        return made.value();
    const auto plugin = d->byName.constFind(name);
    if (plugin == d->byName.cend())
        return QVariantMap();
    const QVariantMap details = detailsMap(plugin.value());
    d->detailsByName.insert(name, details);
    return details;
}

QVariantList QmlPlugins::otherFiles() const
{
    if (!d->otherFiles) {
        QVariantList files;
        for (const PluginDiagnostic& plugin : std::as_const(d->others))
            files.append(detailsMap(plugin));
        d->otherFiles = files;
    }
    return *d->otherFiles;
}

QStringList QmlPlugins::loadOrder() const
{
    return d->diagnostics.loadOrder();
}

bool QmlPlugins::isRestartNeeded() const
{
    return d->diagnostics.differsFromRunning();
}

void QmlPlugins::refresh()
{
    PluginsModel* model = PluginController::instance()->pluginsModel();
    if (model != d->model) {
        if (d->model)
            disconnect(d->model, nullptr, this, nullptr);
        d->model = model;
        // After a tick the selection is read again, once the model has saved it: it
        // saves after its reset, hence queued.
        if (model)
            connect(model, &QAbstractItemModel::modelReset, this, &QmlPlugins::refresh,
                    Qt::QueuedConnection);
        Q_EMIT modelChanged();
    }
    d->diagnostics = d->diagnostics.reread(PluginController::instance()->settings());
    d->details.reset();
    d->otherFiles.reset();
    d->detailsByName.clear();
    d->explanations.clear();
    d->byName.clear();
    d->byPath.clear();
    d->others.clear();
    const QList<PluginDiagnostic> plugins = d->diagnostics.plugins();
    // Backwards: the first plugin of a name is the one that a name stands for.
    for (auto plugin = plugins.crbegin(); plugin != plugins.crend(); ++plugin) {
        if (!plugin->name().isEmpty() && plugin->state() != PluginDiagnostic::State::Refused)
            d->byName.insert(plugin->name(), *plugin);
    }
    for (const PluginDiagnostic& plugin : plugins) {
        d->byPath.insert(plugin.filePath(), plugin);
        if (PluginPresentation::isOtherFile(plugin))
            d->others.append(plugin);
    }
    Q_EMIT detailsChanged();
}

void QmlPlugins::requestRestart()
{
    Q_EMIT restartRequested();
}

bool QmlPlugins::isRestartOffered() const
{
    return d->restartOffered;
}

void QmlPlugins::setRestartOffered(bool offered)
{
    if (offered == d->restartOffered)
        return;
    d->restartOffered = offered;
    Q_EMIT restartOfferedChanged();
}

bool QmlPlugins::canRestart() const
{
    return d->restartOffered;
}

QVariantList QmlPlugins::otherGroups(const QString& filterText) const
{
    QVariantList list;
    // The groups and their titles are the Widgets screen's: both ask PluginPresentation.
    const QList<PluginPresentation::OtherGroup> groups
        = PluginPresentation::otherGroups(d->others, filterText);
    for (const PluginPresentation::OtherGroup& group : groups) {
        QVariantList files;
        for (const PluginDiagnostic& plugin : group.files)
            files.append(detailsMap(plugin));
        list.append(
            QVariantMap { { QStringLiteral("key"), group.key() },
                          { QStringLiteral("title"), PluginPresentation::groupTitle(group) },
                          { QStringLiteral("refused"), group.refused },
                          { QStringLiteral("category"), group.category },
                          { QStringLiteral("files"), files } });
    }
    return list;
}

bool QmlPlugins::matchesFilter(const QString& filePath, const QString& text) const
{
    const PluginDiagnostic plugin = d->plugin(filePath);
    return plugin.isValid() && PluginPresentation::matchesFilter(plugin, text);
}

QVariantList QmlPlugins::explanation(const QString& filePath) const
{
    QVariantList parts;
    const QList<PluginExplanation::Part> explained = d->explanation(filePath);
    for (const PluginExplanation::Part& part : explained) {
        QVariantList items;
        for (const PluginExplanation::Item& item : part.items)
            items.append(itemOf(item));
        parts.append(
            QVariantMap { { QStringLiteral("kind"), PluginExplanation::kindName(part.kind) },
                          { QStringLiteral("label"), part.label },
                          { QStringLiteral("text"), part.text },
                          { QStringLiteral("items"), items } });
    }
    return parts;
}

} // namespace Zelvane
