#include "report.h"

#include "inspection.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>

#include <algorithm>

namespace ZelvaneInspect {

namespace {

using Zelvane::LoadPlan;

// A plugin of the load list, or one that the selection or the ordering left out.
struct Entry
{
    QString name;
    QString fileName;
    QString reason; // empty for plugins that load in order
};

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

// Why a discovered plugin is not selected.
QString skipReason(const Inspection& inspection, int index)
{
    const LoadPlan::File file = inspection.plan.files().at(index);
    switch (file.fate) {
    case LoadPlan::Fate::NoCore:
        return QObject::tr("nothing is loaded without a Core plugin");
    case LoadPlan::Fate::NoSettings:
        return QObject::tr("nothing is loaded without a settings object");
    case LoadPlan::Fate::OtherCoreChosen:
        return QObject::tr("only one Core plugin is loaded, and %1 is chosen")
            .arg(quoted(inspection.plan.files().at(inspection.plan.chosenCore()).name));
    case LoadPlan::Fate::Disabled:
        return inspection.selection.at(index).fromSettings
            ? QObject::tr("disabled in the settings (%1)")
                  .arg(Zelvane::selectionSettingsKey(file.name))
            : QObject::tr("disabled by its \"Default\"");
    default:
        break;
    }
    const QString category = file.plugin.category();
    if (category.isEmpty())
        return QObject::tr(
            "it has no category; only \"Core\" and \"Extension\" plugins are loaded");
    return QObject::tr("its category %1 is never loaded; only \"Core\" and \"Extension\" are")
        .arg(quoted(category));
}

QString blockerText(const LoadPlan::Blocker& blocker)
{
    const QString dependency = quoted(blocker.dependency);
    switch (blocker.kind) {
    case LoadPlan::Blocker::Kind::NamesItself:
        return QObject::tr("it depends on itself");
    case LoadPlan::Blocker::Kind::Missing:
        return QObject::tr("missing dependency %1").arg(dependency);
    case LoadPlan::Blocker::Kind::Refused:
        return QObject::tr("missing dependency %1 (its file is rejected)").arg(dependency);
    case LoadPlan::Blocker::Kind::SwitchedOff:
        return QObject::tr("disabled dependency %1").arg(dependency);
    case LoadPlan::Blocker::Kind::OtherCoreChosen:
        return QObject::tr("dependency %1 is a Core plugin that is not chosen").arg(dependency);
    case LoadPlan::Blocker::Kind::NeverLoaded:
        return QObject::tr("dependency %1 has the category %2, which is never loaded")
            .arg(dependency, quoted(blocker.category));
    case LoadPlan::Blocker::Kind::Cycle:
        return QObject::tr("dependency cycle: %1").arg(blocker.cycle.join(QStringLiteral(" -> ")));
    case LoadPlan::Blocker::Kind::Unordered:
        break;
    }
    return QObject::tr("dependency %1 cannot be ordered either").arg(dependency);
}

// The plan's lists as the report shows them.
struct Sections
{
    QList<Entry> loadOrder;
    QList<Entry> notLoaded; // by name, then file: the discovery order follows the file system
    QList<Entry> dropped;
    QList<Entry> unordered; // loaded although their dependencies are not loaded first
};

Sections sections(const Inspection& inspection)
{
    const QList<LoadPlan::File> files = inspection.plan.files();
    Sections result;
    const QList<int> loadOrder = inspection.plan.loadOrderFiles();
    for (int index : loadOrder) {
        const LoadPlan::File& file = files.at(index);
        result.loadOrder.append(Entry { file.name, file.fileName, {} });
        if (!file.blockers.isEmpty())
            result.unordered.append(
                Entry { file.name, file.fileName, blockersText(file.blockers) });
    }
    for (int index = 0; index < files.size(); ++index) {
        const LoadPlan::File& file = files.at(index);
        switch (file.fate) {
        case LoadPlan::Fate::Refused:
        case LoadPlan::Fate::Discovered:
        case LoadPlan::Fate::Loads:
            break;
        case LoadPlan::Fate::Dropped:
            result.dropped.append(Entry { file.name, file.fileName, blockersText(file.blockers) });
            break;
        default:
            result.notLoaded.append(
                Entry { file.name, file.fileName, skipReason(inspection, index) });
        }
    }
    std::sort(result.notLoaded.begin(), result.notLoaded.end(), [](const Entry& a, const Entry& b) {
        return a.name != b.name ? a.name < b.name : a.fileName < b.fileName;
    });
    return result;
}

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

QString rejection(const LoadPlan::File& file)
{
    // The library refuses malformed "Arguments" without a text of its own.
    return file.refusal.isEmpty()
        ? QObject::tr("(the library gives no reason: its \"Arguments\" entry is malformed)")
        : file.refusal;
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

QStringList fileLines(const LoadPlan::File& file, const Selection& selection)
{
    if (file.fate == LoadPlan::Fate::Refused)
        return { QObject::tr("  %1: rejected: %2").arg(file.fileName, rejection(file)) };

    const Zelvane::PluginLoader& plugin = file.plugin;
    const QString enabled = selection.fromSettings
        ? QObject::tr("%1 (settings: %2)")
              .arg(boolText(selection.enabled), Zelvane::selectionSettingsKey(plugin.name()))
        : QObject::tr("%1 (Default)").arg(boolText(selection.enabled));
    QStringList lines;
    lines << QObject::tr("  %1: accepted").arg(file.fileName)
          << QObject::tr("    Name: %1").arg(plugin.name())
          << QObject::tr("    Category: %1").arg(orNone(plugin.category()))
          << QObject::tr("    Dependencies: %1")
                 .arg(orNone(plugin.dependencies().join(QStringLiteral(", "))))
          << QObject::tr("    Default: %1").arg(boolText(plugin.loadByDefault()))
          << QObject::tr("    Enabled: %1").arg(enabled)
          << QObject::tr("    Description: %1").arg(orNone(plugin.description()));
    const QList<Zelvane::PluginArgumentDescription> arguments = plugin.argumentDescriptions();
    if (arguments.isEmpty()) {
        lines << QObject::tr("    Arguments: (none)");
        return lines;
    }
    lines << QObject::tr("    Arguments:");
    for (const Zelvane::PluginArgumentDescription& argument : arguments) {
        QString option = QStringLiteral("      --") + argument.name;
        if (!argument.parameter.isEmpty())
            option += QStringLiteral(" <%1>").arg(argument.parameter);
        lines << option + QStringLiteral(": ") + orNone(argument.description);
    }
    return lines;
}

QJsonObject fileJson(const LoadPlan::File& file, const Selection& selection)
{
    QJsonObject object { { QStringLiteral("file"), file.fileName },
                         { QStringLiteral("path"), file.path },
                         { QStringLiteral("accepted"), file.fate != LoadPlan::Fate::Refused } };
    if (file.fate == LoadPlan::Fate::Refused) {
        object.insert(QStringLiteral("error"), file.refusal);
        return object;
    }
    const Zelvane::PluginLoader& plugin = file.plugin;
    QJsonArray arguments;
    const QList<Zelvane::PluginArgumentDescription> descriptions = plugin.argumentDescriptions();
    for (const Zelvane::PluginArgumentDescription& argument : descriptions) {
        arguments.append(QJsonObject { { QStringLiteral("name"), argument.name },
                                       { QStringLiteral("parameter"), argument.parameter },
                                       { QStringLiteral("description"), argument.description } });
    }
    object.insert(QStringLiteral("name"), plugin.name());
    object.insert(QStringLiteral("category"), plugin.category());
    object.insert(QStringLiteral("dependencies"),
                  QJsonArray::fromStringList(plugin.dependencies()));
    object.insert(QStringLiteral("default"), plugin.loadByDefault());
    object.insert(QStringLiteral("enabled"), selection.enabled);
    object.insert(QStringLiteral("enabledBy"),
                  selection.fromSettings ? QStringLiteral("settings") : QStringLiteral("default"));
    object.insert(QStringLiteral("description"), plugin.description());
    object.insert(QStringLiteral("arguments"), arguments);
    return object;
}

} // namespace

QString blockersText(const QList<LoadPlan::Blocker>& blockers)
{
    QStringList texts;
    for (const LoadPlan::Blocker& blocker : blockers)
        texts.append(blockerText(blocker));
    return texts.join(QStringLiteral("; "));
}

QString toText(const Inspection& inspection)
{
    QStringList lines;
    lines << QObject::tr("Directory: %1").arg(inspection.directory)
          << QObject::tr("IID: %1").arg(inspection.iid)
          << QObject::tr("Settings: %1").arg(settingsText(inspection)) << QString();

    lines << QObject::tr("Files:");
    const QList<LoadPlan::File> files = inspection.plan.files();
    if (files.isEmpty())
        lines << QObject::tr("  (no *.so file)");
    for (int index : inspection.filesByName)
        lines << fileLines(files.at(index), inspection.selection.at(index));
    lines << QString();

    const Sections report = sections(inspection);
    if (!inspection.plan.error().isEmpty()) {
        lines << QObject::tr("Load order: nothing is loaded: %1").arg(inspection.plan.error());
    } else {
        lines << QObject::tr("Load order:");
        for (int i = 0; i < report.loadOrder.size(); ++i) {
            const Entry& entry = report.loadOrder.at(i);
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
    section(QObject::tr("Not loaded:"), report.notLoaded);
    section(QObject::tr("Dropped by the dependency ordering (silently, at load time):"),
            report.dropped);
    section(QObject::tr("Loaded although their dependencies are not loaded before them:"),
            report.unordered);
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QJsonObject toJson(const Inspection& inspection)
{
    const QList<LoadPlan::File> planFiles = inspection.plan.files();
    QJsonArray files;
    for (int index : inspection.filesByName)
        files.append(fileJson(planFiles.at(index), inspection.selection.at(index)));

    const Sections report = sections(inspection);
    const QString error = inspection.plan.error();
    return QJsonObject {
        { QStringLiteral("directory"), inspection.directory },
        { QStringLiteral("iid"), inspection.iid },
        { QStringLiteral("settings"),
          inspection.settingsFile.isEmpty() ? QJsonValue() : QJsonValue(inspection.settingsFile) },
        { QStringLiteral("files"), files },
        { QStringLiteral("error"), error.isEmpty() ? QJsonValue() : QJsonValue(error) },
        { QStringLiteral("loadOrder"), entriesJson(report.loadOrder) },
        { QStringLiteral("notLoaded"), entriesJson(report.notLoaded) },
        { QStringLiteral("dropped"), entriesJson(report.dropped) },
        { QStringLiteral("unordered"), entriesJson(report.unordered) },
    };
}

} // namespace ZelvaneInspect
