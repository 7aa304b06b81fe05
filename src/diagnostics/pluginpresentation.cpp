#include "diagnostics/pluginpresentation_p.h"

#include <QtCore/QStringList>

namespace Zelvane {

namespace PluginPresentation {

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

} // namespace PluginPresentation

} // namespace Zelvane
