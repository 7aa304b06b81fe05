#include "diagnostics/pluginpresentation_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <algorithm>

namespace Zelvane {

namespace PluginPresentation {

namespace {

// The translation context of every text of the presentation.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::PluginPresentation)
};

} // namespace

QString title(const PluginDiagnostic& plugin)
{
    return plugin.name().isEmpty() ? plugin.fileName() : plugin.name();
}

bool isOtherFile(const PluginDiagnostic& plugin)
{
    return plugin.isValid() && !plugin.isCore() && !plugin.isExtension();
}

bool matchesFilter(const PluginDiagnostic& plugin, const QString& text)
{
    const QString needle = text.trimmed();
    return needle.isEmpty() || title(plugin).contains(needle, Qt::CaseInsensitive)
        || plugin.description().contains(needle, Qt::CaseInsensitive);
}

QString optionSynopsis(const QCommandLineOption& option)
{
    const QStringList names = option.names();
    QString synopsis = QStringLiteral("--") + (names.isEmpty() ? QString() : names.constFirst());
    if (!option.valueName().isEmpty())
        synopsis += QStringLiteral(" <") + option.valueName() + QLatin1Char('>');
    return synopsis;
}

QString OtherGroup::key() const
{
    // A category may be any text, the empty one included: the prefix keeps it apart
    // from the refused files.
    return refused ? QStringLiteral("refused") : QStringLiteral("category:") + category;
}

QList<OtherGroup> otherGroups(const QList<PluginDiagnostic>& plugins, const QString& filterText)
{
    QList<OtherGroup> groups;
    OtherGroup refused;
    refused.refused = true;
    for (const PluginDiagnostic& plugin : plugins) {
        if (!isOtherFile(plugin) || !matchesFilter(plugin, filterText))
            continue;
        if (plugin.state() == PluginDiagnostic::State::Refused) {
            refused.files.append(plugin);
            continue;
        }
        // A folder holds a handful of categories: a linear search beats a map here.
        const QString category = plugin.category();
        auto group = std::find_if(groups.begin(), groups.end(), [&](const OtherGroup& candidate) {
            return candidate.category == category;
        });
        if (group == groups.end()) {
            groups.append(OtherGroup { false, category, {} });
            group = groups.end() - 1;
        }
        group->files.append(plugin);
    }
    if (!refused.files.isEmpty())
        groups.append(refused);
    return groups;
}

QString groupTitle(const OtherGroup& group)
{
    // Both forms spelled out: the component ships no English catalogue that would turn
    // a "%n file(s)" into the right one.
    const qsizetype count = group.files.size();
    if (group.refused)
        return count == 1 ? Texts::tr("Refused by the library: 1 file")
                          : Texts::tr("Refused by the library: %1 files").arg(count);
    if (group.category.isEmpty())
        return count == 1 ? Texts::tr("No category: 1 file")
                          : Texts::tr("No category: %1 files").arg(count);
    return count == 1
        ? Texts::tr("Category \"%1\": 1 file").arg(group.category)
        : Texts::tr("Category \"%1\": %2 files").arg(group.category, QString::number(count));
}

} // namespace PluginPresentation

} // namespace Zelvane
