#include <zelvane/diagnostics/loaddiagnostics.h>

#include "diagnostics/dependencyrelations_p.h"
#include "diagnostics/diagnosticsdata_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QSettings>

#include <algorithm>

namespace Zelvane {

namespace {

PluginDiagnostic::State stateOf(const LoadPlan::File& file)
{
    using Fate = LoadPlan::Fate;
    using State = PluginDiagnostic::State;
    switch (file.fate) {
    case Fate::Refused:
        return State::Refused;
    case Fate::Discovered: // decide() leaves no file so; listed for the compiler
    case Fate::OtherCategory:
        return State::OtherCategory;
    case Fate::NoCore:
        return State::NoCore;
    case Fate::NoSettings:
        return State::NoSettings;
    case Fate::OtherCoreChosen:
        return State::OtherCoreChosen;
    case Fate::Disabled:
        return State::Disabled;
    case Fate::Dropped:
        return State::Dropped;
    case Fate::Loads:
        break;
    }
    return file.blockers.isEmpty() ? State::Loads : State::LoadsUnordered;
}

// The relations between plugins: the names that their metadata gives, among the accepted
// plugins of the folder. Only discovery sets these, so deciding again leaves them as
// they were.
DependencyRelations relationsOf(const QList<LoadPlan::File>& files)
{
    QList<DependencyRelations::File> named;
    named.reserve(files.size());
    for (const LoadPlan::File& file : files) {
        const bool accepted = file.plugin.isValid();
        named.append(
            { file.name, accepted, accepted ? file.plugin.dependencies() : QStringList() });
    }
    return dependencyRelations(named);
}

// Answers every file of a decided plan.
void fill(LoadDiagnosticsData& data, const LoadPlan& plan, QSettings* settings)
{
    const QList<LoadPlan::File> files = plan.files();
    if (!data.relations)
        data.relations = relationsOf(files);
    const DependencyRelations& relations = *data.relations;
    const QString chosenCore
        = plan.chosenCore() >= 0 ? files.at(plan.chosenCore()).name : QString();

    data.plugins.clear();
    data.plugins.reserve(files.size());
    for (qsizetype index = 0; index < files.size(); ++index) {
        const LoadPlan::File& file = files.at(index);
        PluginDiagnostic plugin;
        PluginDiagnosticData& record = PluginDiagnosticData::of(plugin);
        record.file = file;
        record.state = stateOf(file);
        record.chosenCore = chosenCore;
        if (file.plugin.isValid()) {
            record.selected = settings && isPluginEnabled(*settings, file.plugin);
            record.loaded = file.plugin.loaded();
            record.missingDependencies = relations.missing.at(index);
            record.dependants = relations.dependants.at(index);
        }
        data.plugins.append(plugin);
    }

    // The model's rows: its Core plugins, then its Extensions, each in the order in which
    // discovery hands them over.
    const QMultiMap<QString, int> discoveredFiles = plan.discoveredFiles();
    data.modelRows = discoveredFiles.values(coreCategoryKey())
        + discoveredFiles.values(extensionCategoryKey());
}

} // namespace

LoadDiagnostics::LoadDiagnostics()
    : d(new LoadDiagnosticsData)
{
}

LoadDiagnostics::LoadDiagnostics(const QDir& dir, QSettings* settings)
    : d(new LoadDiagnosticsData)
{
    d->dir = dir;
    d->discovered.emplace(dir);
    d->authoredDependencies = std::make_shared<AuthoredDependencies>();
    *this = reread(settings);
}

LoadDiagnostics::LoadDiagnostics(const LoadDiagnostics& other) = default;
LoadDiagnostics& LoadDiagnostics::operator=(const LoadDiagnostics& other) = default;
LoadDiagnostics::~LoadDiagnostics() = default;

LoadDiagnostics LoadDiagnostics::reread(QSettings* settings) const
{
    LoadDiagnostics result(*this);
    if (!d->discovered)
        return result;
    // A plan is decided once; a copy of the discovered one shares its handles, so the
    // files are not read again.
    LoadPlan plan = *d->discovered;
    plan.decide(settings);
    LoadDiagnosticsData& data = *result.d;
    fill(data, plan, settings);
    data.loadOrder.clear();
    const QList<int> loadOrder = plan.loadOrderFiles();
    for (int file : loadOrder)
        data.loadOrder.append(data.plugins.at(file).name());
    data.error = plan.error();
    return result;
}

QDir LoadDiagnostics::directory() const
{
    return d->dir;
}

QList<PluginDiagnostic> LoadDiagnostics::plugins() const
{
    return d->plugins;
}

PluginDiagnostic LoadDiagnostics::plugin(const QString& name) const
{
    const auto accepted
        = std::find_if(d->plugins.cbegin(), d->plugins.cend(), [&](const PluginDiagnostic& plugin) {
              return plugin.state() != PluginDiagnostic::State::Refused && plugin.name() == name;
          });
    if (accepted != d->plugins.cend())
        return *accepted;
    const auto refused
        = std::find_if(d->plugins.cbegin(), d->plugins.cend(),
                       [&](const PluginDiagnostic& plugin) { return plugin.name() == name; });
    return refused != d->plugins.cend() && !name.isEmpty() ? *refused : PluginDiagnostic();
}

PluginDiagnostic LoadDiagnostics::modelRow(int row) const
{
    if (row < 0 || row >= d->modelRows.size())
        return PluginDiagnostic();
    return d->plugins.at(d->modelRows.at(row));
}

QStringList LoadDiagnostics::loadOrder() const
{
    return d->loadOrder;
}

QString LoadDiagnostics::error() const
{
    return d->error;
}

bool LoadDiagnostics::differsFromRunning() const
{
    const auto loaded = [](const PluginDiagnostic& plugin) {
        return plugin.isLoaded();
    };
    if (std::none_of(d->plugins.cbegin(), d->plugins.cend(), loaded))
        return false;
    return std::any_of(d->plugins.cbegin(), d->plugins.cend(), [](const PluginDiagnostic& plugin) {
        return plugin.isLoaded() != plugin.willLoad();
    });
}

} // namespace Zelvane
