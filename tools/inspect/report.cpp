#include "report.h"

#include "diagnostics/pluginexplanation_p.h"
#include "inspection.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>

#include <algorithm>

namespace ZelvaneInspect {

namespace {

using Zelvane::LoadDiagnostics;
using Zelvane::LoadPlan;

// A plugin of the load list, or one that the selection or the ordering left out.
struct Entry
{
    QString name;
    QString fileName;
    QString reason; // empty for plugins that load in order
};

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

using Zelvane::PluginDiagnostic;
using Zelvane::PluginExplanation;

// Why the ordering drops a plugin or loads it ahead of its dependencies: the sentences
// of its dependency problems.
QString problemsText(const PluginDiagnostic& plugin)
{
    QStringList texts;
    const QList<Zelvane::DependencyProblem> problems = plugin.problems();
    for (const Zelvane::DependencyProblem& problem : problems)
        texts.append(problem.text());
    return texts.join(QLatin1Char(' '));
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
                Entry { file.name, file.fileName, problemsText(inspection.diagnostic(index)) });
    }
    for (int index = 0; index < files.size(); ++index) {
        const LoadPlan::File& file = files.at(index);
        switch (file.fate) {
        case LoadPlan::Fate::Refused:
        case LoadPlan::Fate::Discovered:
        case LoadPlan::Fate::Loads:
            break;
        case LoadPlan::Fate::Dropped:
            result.dropped.append(
                Entry { file.name, file.fileName, problemsText(inspection.diagnostic(index)) });
            break;
        default:
            result.notLoaded.append(
                Entry { file.name, file.fileName, inspection.diagnostic(index).stateText() });
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

QString settingsText(const Inspection& inspection)
{
    if (inspection.settingsFile.isEmpty())
        return QObject::tr("none (every plugin at its \"Default\")");
    if (!inspection.settingsFileExists)
        return QObject::tr("%1 (does not exist: every plugin at its \"Default\")")
            .arg(inspection.settingsFile);
    return inspection.settingsFile;
}

// The explanation's sentences below a file's facts, indented under it.
QStringList explanationLines(const PluginExplanation& explanation)
{
    using Kind = PluginExplanation::Part::Kind;
    QStringList lines;
    for (const Kind kind : { Kind::State, Kind::Problems, Kind::Metadata }) {
        const PluginExplanation::Part part = explanation.part(kind);
        if (!part.label.isEmpty())
            lines << QStringLiteral("    ")
                    + (part.text.isEmpty() ? part.label
                                           : part.label + QLatin1Char(' ') + part.text);
        for (const PluginExplanation::Item& item : part.items)
            lines << QStringLiteral("      ") + item.text;
    }
    return lines;
}

QString optionLine(const PluginExplanation::Item& item)
{
    QString line = QStringLiteral("      ") + item.code + QStringLiteral(": ") + orNone(item.text);
    if (!item.note.isEmpty())
        line += QStringLiteral(" — ") + item.note;
    return line;
}

QStringList fileLines(const LoadPlan::File& file, const Selection& selection,
                      const PluginDiagnostic& diagnostic, const LoadDiagnostics& folder)
{
    const PluginExplanation explanation(diagnostic, folder);
    if (file.fate == LoadPlan::Fate::Refused)
        return QStringList { QObject::tr("  %1: rejected").arg(file.fileName) }
        + explanationLines(explanation);

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
                 .arg(orNone(explanation.dependencyTitles().join(QStringLiteral(", "))))
          << QObject::tr("    Default: %1").arg(boolText(plugin.loadByDefault()))
          << QObject::tr("    Enabled: %1").arg(enabled)
          << QObject::tr("    Description: %1").arg(orNone(plugin.description()));
    const QList<PluginExplanation::Item> options
        = explanation.part(PluginExplanation::Part::Kind::Options).items;
    if (options.isEmpty()) {
        lines << QObject::tr("    Arguments: (none)");
    } else {
        lines << QObject::tr("    Arguments:");
        for (const PluginExplanation::Item& option : options)
            lines << optionLine(option);
    }
    return lines + explanationLines(explanation);
}

QJsonArray itemsJson(const QList<PluginExplanation::Item>& items)
{
    QJsonArray array;
    for (const PluginExplanation::Item& item : items)
        array.append(QJsonObject { { QStringLiteral("code"), item.code },
                                   { QStringLiteral("text"), item.text },
                                   { QStringLiteral("note"), item.note },
                                   { QStringLiteral("warning"), item.warning } });
    return array;
}

// What the screens say, in the same words and the same enum names.
void insertExplanation(QJsonObject& object, const PluginDiagnostic& diagnostic,
                       const PluginExplanation& explanation)
{
    object.insert(QStringLiteral("state"), PluginExplanation::stateName(diagnostic.state()));
    object.insert(QStringLiteral("stateText"), diagnostic.stateText());
    QJsonArray problems;
    const QList<Zelvane::DependencyProblem> found = diagnostic.problems();
    for (const Zelvane::DependencyProblem& problem : found)
        problems.append(QJsonObject {
            { QStringLiteral("kind"), PluginExplanation::problemKindName(problem.kind()) },
            { QStringLiteral("dependency"), problem.dependency() },
            { QStringLiteral("text"), problem.text() } });
    object.insert(QStringLiteral("problems"), problems);
    QJsonArray parts;
    const QList<PluginExplanation::Part> explained = explanation.parts();
    for (const PluginExplanation::Part& part : explained)
        parts.append(
            QJsonObject { { QStringLiteral("kind"), PluginExplanation::kindName(part.kind) },
                          { QStringLiteral("label"), part.label },
                          { QStringLiteral("text"), part.text },
                          { QStringLiteral("items"), itemsJson(part.items) } });
    object.insert(QStringLiteral("explanation"), parts);
}

QJsonObject fileJson(const LoadPlan::File& file, const Selection& selection,
                     const PluginDiagnostic& diagnostic, const LoadDiagnostics& folder)
{
    const PluginExplanation explanation(diagnostic, folder);
    QJsonObject object { { QStringLiteral("file"), file.fileName },
                         { QStringLiteral("path"), file.path },
                         { QStringLiteral("accepted"), file.fate != LoadPlan::Fate::Refused } };
    if (file.fate == LoadPlan::Fate::Refused) {
        object.insert(QStringLiteral("error"), file.refusal);
        insertExplanation(object, diagnostic, explanation);
        return object;
    }
    const Zelvane::PluginLoader& plugin = file.plugin;
    QJsonArray arguments;
    const QList<Zelvane::PluginArgumentDescription> descriptions = plugin.argumentDescriptions();
    const QList<PluginExplanation::Item> options
        = explanation.part(PluginExplanation::Part::Kind::Options).items;
    for (int i = 0; i < descriptions.size(); ++i) {
        const Zelvane::PluginArgumentDescription& argument = descriptions.at(i);
        const PluginExplanation::Item option = options.value(i);
        arguments.append(QJsonObject { { QStringLiteral("name"), argument.name },
                                       { QStringLiteral("parameter"), argument.parameter },
                                       { QStringLiteral("description"), argument.description },
                                       { QStringLiteral("synopsis"), option.code },
                                       { QStringLiteral("note"), option.note } });
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
    insertExplanation(object, diagnostic, explanation);
    return object;
}

} // namespace

QString dependencyProblemsText(const Inspection& inspection, int file)
{
    return problemsText(inspection.diagnostic(file));
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
        lines << fileLines(files.at(index), inspection.selection.at(index),
                           inspection.diagnostic(index), inspection.diagnostics);
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
        files.append(fileJson(planFiles.at(index), inspection.selection.at(index),
                              inspection.diagnostic(index), inspection.diagnostics));

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
