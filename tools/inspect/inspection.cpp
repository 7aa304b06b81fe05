#include "inspection.h"

#include <zelvane/plugincontroller.h>

// The library's own ordering, compiled into this tool: the load order shown here is the
// one the library computes, not a second implementation of it.
#include "controller/dependencyordering_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QMultiMap>
#include <QtCore/QSet>
#include <QtCore/QSettings>

#include <algorithm>

namespace ZelvaneInspect {

namespace {

const QString coreKey = QStringLiteral("Core");
const QString extensionKey = QStringLiteral("Extension");

// A plugin handle that remembers its file, in the shape dependecySorting() expects.
struct Candidate
{
    Zelvane::PluginLoader plugin;
    int file = -1;

    QString name() const { return plugin.name(); }
    QStringList dependencies() const { return plugin.dependencies(); }
    bool operator==(const QString& pluginName) const { return plugin == pluginName; }
};

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// Why a plugin is not loaded although it was discovered.
QString skipReason(const Candidate& candidate, const Candidate* chosenCore,
                   const QList<PluginFile>& files)
{
    const QString category = candidate.plugin.category();
    if (!chosenCore && (category == coreKey || category == extensionKey))
        return QObject::tr("nothing is loaded without a Core plugin");
    if (category == coreKey)
        return QObject::tr("only one Core plugin is loaded, and %1 is chosen")
            .arg(quoted(chosenCore->name()));
    if (category == extensionKey) {
        const PluginFile& file = files.at(candidate.file);
        return file.enabledFromSettings
            ? QObject::tr("disabled in the settings (plugin/%1)").arg(candidate.name())
            : QObject::tr("disabled by its \"Default\"");
    }
    if (category.isEmpty())
        return QObject::tr(
            "it has no category; only \"Core\" and \"Extension\" plugins are loaded");
    return QObject::tr("its category %1 is never loaded; only \"Core\" and \"Extension\" are")
        .arg(quoted(category));
}

// What the ordering saw when it got stuck, for explaining each plugin it could not place.
struct StuckState
{
    QSet<QString> placed; // names in the placed prefix
    QList<Candidate> unplaced; // the plugins that could not be placed, the dropped one included
    QSet<QString> loadList; // names in the load list before ordering
    QSet<QString> accepted; // names of every accepted plugin
    QSet<QString> rejected; // names of rejected files that still carried a name
    QMultiMap<QString, Candidate> discovered;
};

// A path of unplaced plugins from `from` back to `target`, through their dependencies.
bool findCycle(const StuckState& state, const QString& from, const QString& target,
               QStringList& path, QSet<QString>& visited)
{
    if (visited.contains(from))
        return false;
    visited.insert(from);
    path.append(from);
    for (const Candidate& candidate : state.unplaced) {
        if (candidate.name() != from)
            continue;
        for (const QString& dependency : candidate.dependencies()) {
            if (dependency == target) {
                path.append(target);
                return true;
            }
            if (findCycle(state, dependency, target, path, visited))
                return true;
        }
    }
    path.removeLast();
    return false;
}

QString stuckReason(const Candidate& candidate, const StuckState& state)
{
    QStringList reasons;
    QStringList seen;
    for (const QString& dependency : candidate.dependencies()) {
        if (seen.contains(dependency))
            continue;
        seen.append(dependency);
        if (dependency == candidate.name()) {
            reasons.append(QObject::tr("it depends on itself"));
        } else if (state.placed.contains(dependency)) {
            continue;
        } else if (!state.accepted.contains(dependency)) {
            reasons.append(state.rejected.contains(dependency)
                               ? QObject::tr("missing dependency %1 (its file is rejected)")
                                     .arg(quoted(dependency))
                               : QObject::tr("missing dependency %1").arg(quoted(dependency)));
        } else if (!state.loadList.contains(dependency)) {
            // Discovered but left out by the selection: say why, as for the plugin itself.
            const auto it
                = std::find_if(state.discovered.cbegin(), state.discovered.cend(),
                               [&](const Candidate& other) { return other == dependency; });
            const QString category = it->plugin.category();
            if (category == extensionKey)
                reasons.append(QObject::tr("disabled dependency %1").arg(quoted(dependency)));
            else if (category == coreKey)
                reasons.append(QObject::tr("dependency %1 is a Core plugin that is not chosen")
                                   .arg(quoted(dependency)));
            else
                reasons.append(
                    QObject::tr("dependency %1 has the category %2, which is never loaded")
                        .arg(quoted(dependency), quoted(category)));
        } else {
            QStringList path { candidate.name() };
            QSet<QString> visited;
            if (findCycle(state, dependency, candidate.name(), path, visited)) {
                reasons.append(
                    QObject::tr("dependency cycle: %1").arg(path.join(QStringLiteral(" -> "))));
            } else {
                reasons.append(
                    QObject::tr("dependency %1 cannot be ordered either").arg(quoted(dependency)));
            }
        }
    }
    return reasons.join(QStringLiteral("; "));
}

bool dependenciesAmong(const Candidate& candidate, const QSet<QString>& names)
{
    const QStringList dependencies = candidate.dependencies();
    return std::all_of(dependencies.cbegin(), dependencies.cend(),
                       [&](const QString& dependency) { return names.contains(dependency); });
}

} // namespace

Inspection inspect(const QString& directory, const QString& iid, QSettings* settings,
                   const QString& settingsFile)
{
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(iid);
    controller->setSettings(settings);

    Inspection inspection;
    const QDir dir(directory);
    inspection.directory = dir.absolutePath();
    inspection.iid = iid;
    inspection.settingsFile = settingsFile;
    inspection.settingsFileExists = !settingsFile.isEmpty() && QFileInfo::exists(settingsFile);

    // The same listing as discovery: "*.so", regular files only, in the file system's
    // own order, because the order of plugins within a category follows it.
    const QStringList listed
        = dir.entryList(QStringList { QStringLiteral("*.so") }, QDir::Files, QDir::NoSort);
    QList<int> listingOrder;
    for (const QString& name : listed) {
        PluginFile file;
        file.fileName = name;
        file.path = dir.absoluteFilePath(name);
        file.accepted = file.plugin.scan(file.path);
        if (file.accepted) {
            file.enabled = controller->isEnabled(file.plugin);
            file.enabledFromSettings
                = settings->contains(QStringLiteral("plugin/") + file.plugin.name());
        } else {
            file.error = file.plugin.errorString();
        }
        inspection.files.append(file);
    }
    std::sort(inspection.files.begin(), inspection.files.end(),
              [](const PluginFile& a, const PluginFile& b) { return a.fileName < b.fileName; });
    for (const QString& name : listed) {
        const auto it = std::find_if(inspection.files.cbegin(), inspection.files.cend(),
                                     [&](const PluginFile& file) { return file.fileName == name; });
        listingOrder.append(int(it - inspection.files.cbegin()));
    }

    // Discovery's result: accepted plugins keyed by category, inserted in listing order.
    StuckState state;
    for (int index : listingOrder) {
        const PluginFile& file = inspection.files.at(index);
        if (file.accepted) {
            state.discovered.insert(file.plugin.category(), Candidate { file.plugin, index });
            state.accepted.insert(file.plugin.name());
        } else if (!file.plugin.name().isEmpty()) {
            state.rejected.insert(file.plugin.name());
        }
    }

    const auto entry = [&](const Candidate& candidate, const QString& reason = QString()) {
        return Entry { candidate.name(), inspection.files.at(candidate.file).fileName, reason };
    };

    // The selection: the first enabled Core plugin, or the first one if none is enabled,
    // then every enabled Extension plugin.
    // Listed by name: the discovery order within a category follows the file system.
    const auto sortedByName = [](QList<Entry>& entries) {
        std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
            return a.name != b.name ? a.name < b.name : a.fileName < b.fileName;
        });
    };
    const QList<Candidate> cores = state.discovered.values(coreKey);
    if (cores.isEmpty()) {
        inspection.error = QObject::tr("The Core plugin is not found");
        for (const Candidate& candidate : state.discovered)
            inspection.notLoaded.append(
                entry(candidate, skipReason(candidate, nullptr, inspection.files)));
        sortedByName(inspection.notLoaded);
        return inspection;
    }
    auto chosen = std::find_if(cores.cbegin(), cores.cend(), [&](const Candidate& candidate) {
        return controller->isEnabled(candidate.plugin);
    });
    if (chosen == cores.cend())
        chosen = cores.cbegin();
    QList<Candidate> loadList { *chosen };
    for (const Candidate& candidate : state.discovered.values(extensionKey)) {
        if (controller->isEnabled(candidate.plugin))
            loadList.append(candidate);
    }
    for (const Candidate& candidate : std::as_const(state.discovered)) {
        const bool selected
            = std::any_of(loadList.cbegin(), loadList.cend(),
                          [&](const Candidate& c) { return c.file == candidate.file; });
        if (!selected)
            inspection.notLoaded.append(
                entry(candidate, skipReason(candidate, &*chosen, inspection.files)));
    }
    sortedByName(inspection.notLoaded);

    const QList<Candidate> beforeOrdering = loadList;
    Zelvane::dependecySorting(loadList);

    // Every plugin of the placed prefix has its dependencies before it; the first one
    // that does not is where the ordering got stuck.
    QSet<QString> seen;
    int boundary = 0;
    while (boundary < loadList.size() && dependenciesAmong(loadList.at(boundary), seen)) {
        seen.insert(loadList.at(boundary).name());
        ++boundary;
    }
    state.placed = seen;
    for (const Candidate& candidate : beforeOrdering)
        state.loadList.insert(candidate.name());
    state.unplaced = loadList.mid(boundary);
    for (const Candidate& candidate : beforeOrdering) {
        const bool kept = std::any_of(loadList.cbegin(), loadList.cend(),
                                      [&](const Candidate& c) { return c.file == candidate.file; });
        if (!kept)
            state.unplaced.prepend(candidate);
    }

    for (int i = 0; i < loadList.size(); ++i) {
        const Candidate& candidate = loadList.at(i);
        inspection.loadOrder.append(entry(candidate));
        if (i >= boundary)
            inspection.unordered.append(entry(candidate, stuckReason(candidate, state)));
    }
    for (const Candidate& candidate : beforeOrdering) {
        const bool kept = std::any_of(loadList.cbegin(), loadList.cend(),
                                      [&](const Candidate& c) { return c.file == candidate.file; });
        if (!kept)
            inspection.dropped.append(entry(candidate, stuckReason(candidate, state)));
    }
    return inspection;
}

namespace {

QString orNone(const QString& text)
{
    return text.isEmpty() ? QObject::tr("(none)") : text;
}

QString entryLine(const Entry& entry)
{
    QString line = QStringLiteral("%1 (%2)").arg(entry.name, entry.fileName);
    if (!entry.reason.isEmpty())
        line += QStringLiteral(": ") + entry.reason;
    return line;
}

QJsonValue entryJson(const Entry& entry)
{
    QJsonObject object { { QStringLiteral("name"), entry.name },
                         { QStringLiteral("file"), entry.fileName } };
    if (!entry.reason.isEmpty())
        object.insert(QStringLiteral("reason"), entry.reason);
    return object;
}

QJsonArray entriesJson(const QList<Entry>& entries)
{
    QJsonArray array;
    for (const Entry& entry : entries)
        array.append(entryJson(entry));
    return array;
}

QString rejection(const PluginFile& file)
{
    // The library refuses malformed "Arguments" without a text of its own.
    return file.error.isEmpty()
        ? QObject::tr("(the library gives no reason: its \"Arguments\" entry is malformed)")
        : file.error;
}

QString settingsText(const Inspection& inspection)
{
    if (inspection.settingsFile.isEmpty())
        return QObject::tr("none (every plugin at its \"Default\")");
    if (!inspection.settingsFileExists)
        return QObject::tr("%1 (does not exist: every plugin at its \"Default\")")
            .arg(inspection.settingsFile);
    return inspection.settingsFile;
}

} // namespace

QString toText(const Inspection& inspection)
{
    QStringList lines;
    lines << QObject::tr("Directory: %1").arg(inspection.directory)
          << QObject::tr("IID: %1").arg(inspection.iid)
          << QObject::tr("Settings: %1").arg(settingsText(inspection)) << QString();

    lines << QObject::tr("Files:");
    if (inspection.files.isEmpty())
        lines << QObject::tr("  (no *.so file)");
    for (const PluginFile& file : inspection.files) {
        if (!file.accepted) {
            lines << QObject::tr("  %1: rejected: %2").arg(file.fileName, rejection(file));
            continue;
        }
        const Zelvane::PluginLoader& plugin = file.plugin;
        const QString enabled = file.enabledFromSettings
            ? QObject::tr("%1 (settings: plugin/%2)")
                  .arg(file.enabled ? QStringLiteral("true") : QStringLiteral("false"),
                       plugin.name())
            : QObject::tr("%1 (Default)")
                  .arg(file.enabled ? QStringLiteral("true") : QStringLiteral("false"));
        lines << QObject::tr("  %1: accepted").arg(file.fileName)
              << QObject::tr("    Name: %1").arg(plugin.name())
              << QObject::tr("    Category: %1").arg(orNone(plugin.category()))
              << QObject::tr("    Dependencies: %1")
                     .arg(orNone(plugin.dependencies().join(QStringLiteral(", "))))
              << QObject::tr("    Default: %1")
                     .arg(plugin.loadByDefault() ? QStringLiteral("true") : QStringLiteral("false"))
              << QObject::tr("    Enabled: %1").arg(enabled)
              << QObject::tr("    Description: %1").arg(orNone(plugin.description()));
        const QList<Zelvane::PluginArgumentDescription> arguments = plugin.argumentDescriptions();
        if (arguments.isEmpty()) {
            lines << QObject::tr("    Arguments: (none)");
            continue;
        }
        lines << QObject::tr("    Arguments:");
        for (const Zelvane::PluginArgumentDescription& argument : arguments) {
            QString option = QStringLiteral("      --") + argument.name;
            if (!argument.parameter.isEmpty())
                option += QStringLiteral(" <%1>").arg(argument.parameter);
            lines << option + QStringLiteral(": ") + orNone(argument.description);
        }
    }
    lines << QString();

    if (!inspection.error.isEmpty()) {
        lines << QObject::tr("Load order: nothing is loaded: %1").arg(inspection.error);
    } else {
        lines << QObject::tr("Load order:");
        for (int i = 0; i < inspection.loadOrder.size(); ++i) {
            const Entry& entry = inspection.loadOrder.at(i);
            lines << QStringLiteral("  %1. %2 (%3)").arg(i + 1).arg(entry.name, entry.fileName);
        }
    }
    const auto section = [&lines](const QString& title, const QList<Entry>& entries) {
        if (entries.isEmpty())
            return;
        lines << title;
        for (const Entry& entry : entries)
            lines << QStringLiteral("  ") + entryLine(entry);
    };
    section(QObject::tr("Not loaded:"), inspection.notLoaded);
    section(QObject::tr("Dropped by the dependency ordering (silently, at load time):"),
            inspection.dropped);
    section(QObject::tr("Loaded although their dependencies are not loaded before them:"),
            inspection.unordered);
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QJsonObject toJson(const Inspection& inspection)
{
    QJsonArray files;
    for (const PluginFile& file : inspection.files) {
        QJsonObject object { { QStringLiteral("file"), file.fileName },
                             { QStringLiteral("path"), file.path },
                             { QStringLiteral("accepted"), file.accepted } };
        if (!file.accepted) {
            object.insert(QStringLiteral("error"), file.error);
            files.append(object);
            continue;
        }
        const Zelvane::PluginLoader& plugin = file.plugin;
        QJsonArray arguments;
        for (const Zelvane::PluginArgumentDescription& argument : plugin.argumentDescriptions()) {
            arguments.append(
                QJsonObject { { QStringLiteral("name"), argument.name },
                              { QStringLiteral("parameter"), argument.parameter },
                              { QStringLiteral("description"), argument.description } });
        }
        object.insert(QStringLiteral("name"), plugin.name());
        object.insert(QStringLiteral("category"), plugin.category());
        object.insert(QStringLiteral("dependencies"),
                      QJsonArray::fromStringList(plugin.dependencies()));
        object.insert(QStringLiteral("default"), plugin.loadByDefault());
        object.insert(QStringLiteral("enabled"), file.enabled);
        object.insert(QStringLiteral("enabledBy"),
                      file.enabledFromSettings ? QStringLiteral("settings")
                                               : QStringLiteral("default"));
        object.insert(QStringLiteral("description"), plugin.description());
        object.insert(QStringLiteral("arguments"), arguments);
        files.append(object);
    }

    QJsonObject object {
        { QStringLiteral("directory"), inspection.directory },
        { QStringLiteral("iid"), inspection.iid },
        { QStringLiteral("settings"),
          inspection.settingsFile.isEmpty() ? QJsonValue() : QJsonValue(inspection.settingsFile) },
        { QStringLiteral("files"), files },
        { QStringLiteral("error"),
          inspection.error.isEmpty() ? QJsonValue() : QJsonValue(inspection.error) },
        { QStringLiteral("loadOrder"), entriesJson(inspection.loadOrder) },
        { QStringLiteral("notLoaded"), entriesJson(inspection.notLoaded) },
        { QStringLiteral("dropped"), entriesJson(inspection.dropped) },
        { QStringLiteral("unordered"), entriesJson(inspection.unordered) },
    };
    return object;
}

} // namespace ZelvaneInspect
