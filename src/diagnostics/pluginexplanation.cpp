#include "diagnostics/pluginexplanation_p.h"

#include "diagnostics/diagnosticsdata_p.h"
#include "diagnostics/pluginpresentation_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QPluginLoader>
#include <QtCore/QSet>

#include <algorithm>

namespace Zelvane {

namespace {

const QLatin1String dependenciesKey("Dependencies");

// The plugin's own metadata as its author wrote it. QPluginLoader shares one record per
// file with the loader that discovery made, so the file is not read again.
QJsonObject authoredMetadata(const QString& path)
{
    return QPluginLoader(path).metaData().value(QLatin1String("MetaData")).toObject();
}

} // namespace

QJsonValue AuthoredDependencies::value(const QString& path)
{
    const QMutexLocker locker(&m_mutex);
    const auto known = m_values.constFind(path);
    if (known != m_values.cend())
        return known.value();
    const QJsonValue dependencies = authoredMetadata(path).value(dependenciesKey);
    m_values.insert(path, dependencies);
    return dependencies;
}

namespace {

// What a JSON value is, as the explanation names it.
QString typeName(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return PluginExplanation::tr("an object");
    case QJsonValue::Array:
        return PluginExplanation::tr("an array");
    case QJsonValue::Double:
        return PluginExplanation::tr("a number");
    case QJsonValue::Bool:
        return PluginExplanation::tr("a boolean");
    case QJsonValue::Null:
        return PluginExplanation::tr("null");
    case QJsonValue::String:
        return value.toString().isEmpty() ? PluginExplanation::tr("an empty string")
                                          : PluginExplanation::tr("a string");
    case QJsonValue::Undefined:
        break;
    }
    return PluginExplanation::tr("missing");
}

// An entry that its author meant as a plugin's name: a string "Name" inside an object,
// as the metadata of other hosts gives it.
QString meantName(const QJsonValue& value)
{
    const QJsonValue name = value.toObject().value(QLatin1String("Name"));
    return name.isString() ? name.toString() : QString();
}

// How the library counts a dependency entry whose converted text is name.
QString countsAs(const QString& name)
{
    return name.isEmpty()
        ? PluginExplanation::tr("it counts as a dependency on an empty name, which no plugin has")
        : PluginExplanation::tr("it counts as a dependency on the name \"%1\"").arg(name);
}

// The reason QCommandLineOption gives, in the order it checks, for a name that it
// refuses; an option so named has no name at all, so no command line can set it.
QString qtRefusal(const QString& name)
{
    if (name.isEmpty())
        return PluginExplanation::tr("option names cannot be empty");
    if (name.startsWith(QLatin1Char('-')))
        return PluginExplanation::tr("option names cannot start with a '-'");
    if (name.startsWith(QLatin1Char('/')))
        return PluginExplanation::tr("option names cannot start with a '/'");
    if (name.contains(QLatin1Char('=')))
        return PluginExplanation::tr("option names cannot contain a '='");
    return QString();
}

PluginExplanation::Part textPart(PluginExplanation::Part::Kind kind, const QString& label,
                                 const QString& text)
{
    return PluginExplanation::Part { kind, label, text, {} };
}

} // namespace

PluginExplanation::PluginExplanation(const PluginDiagnostic& plugin, const LoadDiagnostics& folder)
    : m_title(PluginPresentation::title(plugin))
{
    if (!plugin.isValid())
        return;
    using Kind = Part::Kind;
    if (!plugin.description().isEmpty())
        m_parts.append(textPart(Kind::Description, QString(), plugin.description()));
    m_parts.append(textPart(Kind::State, tr("State:"), plugin.stateText()));

    const bool refused = plugin.state() == PluginDiagnostic::State::Refused;
    if (!refused) {
        Part problems { Kind::Problems, QString(), QString(), {} };
        const QList<DependencyProblem> dependencyProblems = plugin.problems();
        for (const DependencyProblem& problem : dependencyProblems)
            problems.items.append(Item { QString(), problem.text(), QString(), true });
        if (!problems.items.isEmpty())
            m_parts.append(problems);

        addDependencyNotes(plugin, folder);
        if (!m_notes.isEmpty())
            m_parts.append(Part { Kind::Metadata, tr("In its metadata:"), QString(), m_notes });

        Part needs { Kind::Needs, tr("Needs:"), QString(), m_dependencies };
        if (needs.items.isEmpty())
            needs.text = tr("nothing");
        m_parts.append(needs);
        const QStringList dependants = plugin.dependants();
        m_parts.append(
            textPart(Kind::NeededBy, tr("Needed by:"),
                     dependants.isEmpty() ? tr("nothing") : dependants.join(QStringLiteral(", "))));
        addOptions(plugin, folder);
    }
    m_parts.append(textPart(Kind::File, tr("File:"), plugin.filePath()));
}

void PluginExplanation::addDependencyNotes(const PluginDiagnostic& plugin,
                                           const LoadDiagnostics& folder)
{
    const QStringList names = plugin.dependencies();
    // A set: a plugin may name thousands of dependencies, most of them missing.
    const QStringList missingList = plugin.missingDependencies();
    const QSet<QString> missing(missingList.cbegin(), missingList.cend());
    const auto nameItem = [&missing](const QString& name) {
        return missing.contains(name) ? Item { QString(), tr("%1 (missing)").arg(name), {}, true }
                                      : Item { QString(), name, {}, false };
    };

    const QJsonValue dependencies = folder.d->authoredDependencies
        ? folder.d->authoredDependencies->value(plugin.filePath())
        : authoredMetadata(plugin.filePath()).value(dependenciesKey);
    if (!dependencies.isArray()) {
        for (const QString& name : names)
            m_dependencies.append(nameItem(name));
        if (dependencies.isUndefined())
            return;
        // A lone string is one dependency, converted as the author no doubt meant it.
        if (dependencies.isString() && !names.isEmpty() && !names.constFirst().isEmpty())
            return;
        QString note = names.isEmpty()
            ? tr("Dependencies is %1, not a list of plugin names: it counts as no dependency "
                 "at all")
                  .arg(typeName(dependencies))
            : tr("Dependencies is %1, not a list of plugin names: %2")
                  .arg(typeName(dependencies), countsAs(names.constFirst()));
        const QString meant = meantName(dependencies);
        if (!meant.isEmpty())
            note += tr("; it names %1, but as an object; write [\"%1\"]").arg(meant);
        m_notes.append(Item { QString(), note + QLatin1Char('.'), {}, true });
        return;
    }

    // An array converts element by element, so entry i is names[i].
    const QJsonArray entries = dependencies.toArray();
    for (int i = 0; i < entries.size() && i < names.size(); ++i) {
        const QJsonValue entry = entries.at(i);
        const QString& name = names.at(i);
        if (entry.isString() && !name.isEmpty()) {
            m_dependencies.append(nameItem(name));
            continue;
        }
        const QString where = QStringLiteral("Dependencies[%1]").arg(i);
        m_dependencies.append(Item { QString(),
                                     name.isEmpty()
                                         ? tr("%1 (%2)").arg(where, typeName(entry))
                                         : tr("%1 (%2, %3)").arg(name, where, typeName(entry)),
                                     {},
                                     true });
        QString note
            = tr("%1 is %2, not a plugin name: %3").arg(where, typeName(entry), countsAs(name));
        const QString meant = meantName(entry);
        if (!meant.isEmpty())
            note += tr("; it names %1, but as an object; write \"%1\"").arg(meant);
        m_notes.append(Item { QString(), note + QLatin1Char('.'), {}, true });
    }
}

void PluginExplanation::addOptions(const PluginDiagnostic& plugin, const LoadDiagnostics& folder)
{
    // The host hands pluginsOptions() to its parser, which refuses a name it has already
    // been given: the options come in the order of discovery, so that order says which
    // plugin's option is refused.
    QList<PluginDiagnostic> inParserOrder;
    if (folder.d->discovered) {
        const QList<int> files = folder.d->discovered->discoveredFiles().values();
        for (int file : files)
            inParserOrder.append(folder.d->plugins.value(file));
    }
    const QList<Item> items = optionItems(plugin, inParserOrder);
    if (!items.isEmpty())
        m_parts.append(Part { Part::Kind::Options, tr("Command-line options:"), QString(), items });
}

QList<PluginExplanation::Item> PluginExplanation::optionItems(const PluginDiagnostic& plugin)
{
    return optionItems(plugin, {});
}

QList<PluginExplanation::Item>
PluginExplanation::optionItems(const PluginDiagnostic& plugin,
                               const QList<PluginDiagnostic>& inParserOrder)
{
    QList<Item> items;
    const PluginLoader& loader = PluginDiagnosticData::of(plugin).file.plugin;
    if (!loader.isValid()) // a refused file declares nothing
        return items;
    const QList<PluginArgumentDescription> arguments = loader.argumentDescriptions();
    for (const PluginArgumentDescription& argument : arguments) {
        Item item;
        item.text = argument.description;
        const QString refusal = qtRefusal(argument.name);
        if (!refusal.isEmpty()) {
            // Never "--name": no such option exists. The name as its author declared it.
            item.code = QLatin1Char('"') + argument.name + QLatin1Char('"');
            if (!argument.parameter.isEmpty())
                item.code += QStringLiteral(" <%1>").arg(argument.parameter);
            item.note = tr("The host's parser can never accept it: %1.").arg(refusal);
            item.warning = true;
            items.append(item);
            continue;
        }
        item.code = PluginPresentation::optionSynopsis(
            QCommandLineOption(argument.name, argument.description, argument.parameter));
        QStringList declaring;
        for (const PluginDiagnostic& other : inParserOrder) {
            const QList<PluginArgumentDescription> others
                = PluginDiagnosticData::of(other).file.plugin.argumentDescriptions();
            const bool declares = std::any_of(others.cbegin(), others.cend(),
                                              [&](const PluginArgumentDescription& otherArgument) {
                                                  return otherArgument.name == argument.name;
                                              });
            if (declares)
                declaring.append(other.name());
        }
        if (declaring.size() > 1) {
            item.note = tr("%1 and %2 both declare --%3: the host's parser refuses the second.")
                            .arg(declaring.at(0), declaring.at(1), argument.name);
            item.warning = true;
        }
        items.append(item);
    }
    return items;
}

PluginExplanation::Part PluginExplanation::part(Part::Kind kind) const
{
    for (const Part& part : m_parts) {
        if (part.kind == kind)
            return part;
    }
    return Part { kind, QString(), QString(), {} };
}

QString PluginExplanation::stateName(PluginDiagnostic::State state)
{
    using State = PluginDiagnostic::State;
    switch (state) {
    case State::Invalid:
        return QStringLiteral("Invalid");
    case State::Loads:
        return QStringLiteral("Loads");
    case State::LoadsUnordered:
        return QStringLiteral("LoadsUnordered");
    case State::Disabled:
        return QStringLiteral("Disabled");
    case State::OtherCoreChosen:
        return QStringLiteral("OtherCoreChosen");
    case State::Dropped:
        return QStringLiteral("Dropped");
    case State::Refused:
        return QStringLiteral("Refused");
    case State::OtherCategory:
        return QStringLiteral("OtherCategory");
    case State::NoCore:
        return QStringLiteral("NoCore");
    case State::NoSettings:
        break;
    }
    return QStringLiteral("NoSettings");
}

QString PluginExplanation::problemKindName(DependencyProblem::Kind kind)
{
    using Kind = DependencyProblem::Kind;
    switch (kind) {
    case Kind::NamesItself:
        return QStringLiteral("NamesItself");
    case Kind::Missing:
        return QStringLiteral("Missing");
    case Kind::Refused:
        return QStringLiteral("Refused");
    case Kind::SwitchedOff:
        return QStringLiteral("SwitchedOff");
    case Kind::OtherCoreChosen:
        return QStringLiteral("OtherCoreChosen");
    case Kind::NeverLoaded:
        return QStringLiteral("NeverLoaded");
    case Kind::Cycle:
        return QStringLiteral("Cycle");
    case Kind::Unordered:
        break;
    }
    return QStringLiteral("Unordered");
}

QString PluginExplanation::kindName(Part::Kind kind)
{
    switch (kind) {
    case Part::Kind::Description:
        return QStringLiteral("description");
    case Part::Kind::State:
        return QStringLiteral("state");
    case Part::Kind::Problems:
        return QStringLiteral("problems");
    case Part::Kind::Metadata:
        return QStringLiteral("metadata");
    case Part::Kind::Needs:
        return QStringLiteral("needs");
    case Part::Kind::NeededBy:
        return QStringLiteral("neededBy");
    case Part::Kind::Options:
        return QStringLiteral("options");
    case Part::Kind::File:
        break;
    }
    return QStringLiteral("file");
}

QStringList PluginExplanation::dependencyTitles() const
{
    QStringList titles;
    for (const Item& item : m_dependencies)
        titles.append(item.text);
    return titles;
}

QString PluginExplanation::itemText(const Item& item)
{
    QStringList pieces { item.code, item.text };
    pieces.removeAll(QString());
    QString text = pieces.join(QLatin1Char(' '));
    if (!item.note.isEmpty())
        text += (text.isEmpty() ? QString() : QStringLiteral(" — ")) + item.note;
    return text;
}

QStringList PluginExplanation::sentences() const
{
    QStringList sentences;
    for (const Part& part : m_parts) {
        QStringList line { part.label, part.text };
        line.removeAll(QString());
        if (!line.isEmpty())
            sentences.append(line.join(QLatin1Char(' ')));
        for (const Item& item : part.items) {
            sentences.append(itemText(item));
        }
    }
    return sentences;
}

} // namespace Zelvane
