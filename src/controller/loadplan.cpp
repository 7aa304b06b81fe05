#include "controller/loadplan_p.h"

#include "controller/dependencyordering_p.h"
#include "controller/plugindiscovery_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QSettings>

#include <algorithm>

namespace Zelvane {

namespace {

// A plugin of the load list that remembers its file, in the shape dependecySorting()
// expects: the ordering sees names and dependencies exactly as it sees handles, and
// the plan can tell afterwards which file went where and which one was dropped.
struct Candidate
{
    PluginLoader plugin;
    int file = -1;

    QString name() const { return plugin.name(); }
    QStringList dependencies() const { return plugin.dependencies(); }
    bool operator==(const QString& pluginName) const { return plugin == pluginName; }
};

} // namespace

LoadPlan::LoadPlan(const QDir& dir, Explanations explanations)
    : m_explanations(explanations)
{
    // Each file becomes its record as soon as it is read, without a list of discovery
    // records in between.
    forEachPluginFile(dir, [this](DiscoveredFile& found) {
        File file;
        file.fileName = found.fileName;
        file.path = found.path;
        file.name = found.name;
        if (found.accepted) {
            const QString category = found.plugin.category();
            file.plugin = found.plugin;
            file.fate = category == coreCategoryKey() || category == extensionCategoryKey()
                ? Fate::Discovered
                : Fate::OtherCategory;
            m_discovered.insert(category, found.plugin);
            m_discoveredFiles.insert(category, int(m_files.size()));
        } else {
            file.refusal = found.refusal;
        }
        m_files.append(file);
    });
}

QList<PluginLoader> LoadPlan::loadOrder() const
{
    QList<PluginLoader> plugins;
    plugins.reserve(m_loadOrder.size());
    for (int file : m_loadOrder)
        plugins.append(m_files.at(file).plugin);
    return plugins;
}

void LoadPlan::decide(QSettings* settings)
{
    const auto failAll = [this](Fate fate) {
        for (File& file : m_files) {
            if (file.fate == Fate::Discovered)
                file.fate = fate;
        }
    };

    const QList<int> cores = m_discoveredFiles.values(coreCategoryKey());
    if (cores.isEmpty()) {
        m_error = QObject::tr("The Core plugin is not found");
        failAll(Fate::NoCore);
        return;
    }
    // Everything from here on reads the user's selection. Without a settings object
    // loadPlugins() would crash the host, so it refuses instead, with a text that tells
    // the host author which call is missing.
    if (!settings) {
        m_error = QObject::tr("No settings object is set: call "
                              "PluginController::setSettings() before loadPlugins()");
        failAll(Fate::NoSettings);
        return;
    }

    // Exactly one core plugin runs. If the user switched all of them off, the first
    // one runs anyway: a host cannot start without its core. The search stops at the
    // first enabled one, so the settings are not asked about the ones behind it.
    const auto enabled = [&](int file) {
        return isPluginEnabled(*settings, m_files.at(file).plugin);
    };
    const auto core = std::find_if(cores.cbegin(), cores.cend(), enabled);
    m_chosenCore = core != cores.cend() ? *core : cores.first();
    for (int file : cores)
        m_files[file].fate = file == m_chosenCore ? Fate::Loads : Fate::OtherCoreChosen;

    // Every Extension is asked once, front to back; the enabled ones keep their order.
    QList<int> selected { m_chosenCore };
    const QList<int> extensions = m_discoveredFiles.values(extensionCategoryKey());
    for (int file : extensions) {
        if (enabled(file)) {
            selected.append(file);
            m_files[file].fate = Fate::Loads;
        } else {
            m_files[file].fate = Fate::Disabled;
        }
    }
    order(selected);
}

void LoadPlan::order(const QList<int>& selected)
{
    QList<Candidate> loadList;
    loadList.reserve(selected.size());
    for (int file : selected)
        loadList.append(Candidate { m_files.at(file).plugin, file });

    // May drop one plugin whose dependencies cannot be met; loadPlugins() reports
    // nothing about it, the plan records it.
    dependecySorting(loadList);

    m_loadOrder.reserve(loadList.size());
    for (const Candidate& candidate : std::as_const(loadList)) {
        m_files[candidate.file].position = int(m_loadOrder.size());
        m_loadOrder.append(candidate.file);
    }
    for (int file : selected) {
        if (m_files.at(file).position < 0)
            m_files[file].fate = Fate::Dropped;
    }
    // Everything below only explains: which plugins could not be ordered, and why.
    if (m_explanations == Explanations::Omitted)
        return;

    // Every plugin of the placed prefix has its dependencies before it; the first one
    // that does not is where the ordering got stuck, since a plugin whose dependencies
    // were all placed would have been ready there.
    QSet<QString> seen;
    qsizetype boundary = 0;
    while (boundary < loadList.size()) {
        const QStringList dependencies = loadList.at(boundary).dependencies();
        const bool ready = std::all_of(dependencies.cbegin(), dependencies.cend(),
                                       [&](const QString& name) { return seen.contains(name); });
        if (!ready)
            break;
        seen.insert(loadList.at(boundary).name());
        ++boundary;
    }

    QList<int> placed;
    for (qsizetype i = 0; i < boundary; ++i)
        placed.append(loadList.at(i).file);
    QList<int> unplaced;
    for (int file : selected) {
        if (m_files.at(file).fate == Fate::Dropped)
            unplaced.append(file);
    }
    for (qsizetype i = boundary; i < loadList.size(); ++i)
        unplaced.append(loadList.at(i).file);

    // The name sets are made once: every unplaced plugin is explained against them.
    const auto namesOf = [this](const QList<int>& files) {
        QSet<QString> names;
        for (int index : files)
            names.insert(m_files.at(index).name);
        return names;
    };
    const QSet<QString> placedNames = namesOf(placed);
    const QSet<QString> selectedNames = namesOf(selected);
    for (int file : std::as_const(unplaced))
        m_files[file].blockers = blockers(file, placedNames, unplaced, selectedNames);
}

namespace {

// The plugins that the ordering left unplaced, by name, in their order in the list.
using UnplacedByName = QHash<QString, QList<int>>;

// A path of unplaced plugins from `from` back to `target`, through their dependencies.
// Each name is visited once, so one search costs at most the unplaced plugins and their
// dependencies, not the unplaced plugins once per name on the path.
bool findCycle(const QList<LoadPlan::File>& files, const UnplacedByName& unplaced,
               const QString& from, const QString& target, QStringList& path,
               QSet<QString>& visited)
{
    if (visited.contains(from))
        return false;
    visited.insert(from);
    path.append(from);
    const QList<int> named = unplaced.value(from);
    for (int file : named) {
        const QStringList dependencies = files.at(file).plugin.dependencies();
        for (const QString& dependency : dependencies) {
            if (dependency == target) {
                path.append(target);
                return true;
            }
            if (findCycle(files, unplaced, dependency, target, path, visited))
                return true;
        }
    }
    path.removeLast();
    return false;
}

} // namespace

QList<LoadPlan::Blocker> LoadPlan::blockers(int file, const QSet<QString>& placedNames,
                                            const QList<int>& unplaced,
                                            const QSet<QString>& selectedNames) const
{
    const PluginLoader& plugin = m_files.at(file).plugin;
    const QString name = plugin.name();
    QList<Blocker> result;
    QStringList seen;
    UnplacedByName unplacedByName; // made when the first cycle is looked for

    const QStringList dependencies = plugin.dependencies();
    for (const QString& dependency : dependencies) {
        if (seen.contains(dependency))
            continue;
        seen.append(dependency);
        if (dependency == name) {
            result.append(Blocker { Blocker::Kind::NamesItself, dependency, {}, {} });
            continue;
        }
        if (placedNames.contains(dependency))
            continue;

        // The first discovered plugin of that name, in the discovered map's order.
        const auto discovered
            = std::find_if(m_discoveredFiles.cbegin(), m_discoveredFiles.cend(),
                           [&](int index) { return m_files.at(index).name == dependency; });
        if (discovered == m_discoveredFiles.cend()) {
            const bool refused = std::any_of(m_files.cbegin(), m_files.cend(), [&](const File& f) {
                return f.fate == Fate::Refused && !f.name.isEmpty() && f.name == dependency;
            });
            result.append(Blocker {
                refused ? Blocker::Kind::Refused : Blocker::Kind::Missing, dependency, {}, {} });
            continue;
        }
        if (!selectedNames.contains(dependency)) {
            const QString category = discovered.key();
            const Blocker::Kind kind = category == extensionCategoryKey()
                ? Blocker::Kind::SwitchedOff
                : category == coreCategoryKey() ? Blocker::Kind::OtherCoreChosen
                                                : Blocker::Kind::NeverLoaded;
            result.append(Blocker { kind, dependency, category, {} });
            continue;
        }
        if (unplacedByName.isEmpty()) {
            for (int index : unplaced)
                unplacedByName[m_files.at(index).plugin.name()].append(index);
        }
        QStringList path { name };
        QSet<QString> visited;
        if (findCycle(m_files, unplacedByName, dependency, name, path, visited))
            result.append(Blocker { Blocker::Kind::Cycle, dependency, {}, path });
        else
            result.append(Blocker { Blocker::Kind::Unordered, dependency, {}, {} });
    }
    return result;
}

} // namespace Zelvane
