#include "widgets/plugindetailsview_p.h"

#include "diagnostics/pluginpresentation_p.h"

#include <zelvane/widgets/pluginswidget.h>

namespace Zelvane {

// The texts are the widget's own: a translation has them in the PluginsWidget context.

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

PluginDetailsView::PluginDetailsView(QWidget* parent)
    : QTextBrowser(parent)
{
    setObjectName(QStringLiteral("details"));
    setAccessibleName(PluginsWidget::tr("Plugin details"));
    setOpenLinks(false);
    setPlugin(PluginDiagnostic());
}

void PluginDetailsView::setPlugin(const PluginDiagnostic& plugin)
{
    m_plugin = plugin;
    setHtml(html(plugin));
}

QString PluginDetailsView::html(const PluginDiagnostic& plugin)
{
    if (!plugin.isValid())
        return QStringLiteral("<p>%1</p>")
            .arg(escaped(PluginsWidget::tr("No plugin is selected.")));

    QString html = QStringLiteral("<h3>%1</h3>").arg(escaped(PluginPresentation::title(plugin)));
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
        for (const QString& dependency : dependencies)
            needs.append(missing.contains(dependency)
                             ? PluginsWidget::tr("%1 (missing)").arg(dependency)
                             : dependency);
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
            for (const QCommandLineOption& option : options)
                html += QStringLiteral("<li><code>%1</code> %2</li>")
                            .arg(escaped(PluginPresentation::optionSynopsis(option)),
                                 escaped(option.description()));
            html += QStringLiteral("</ul>");
        }
    }
    html += paragraph(PluginsWidget::tr("File:"), escaped(plugin.filePath()));
    return html;
}

} // namespace Zelvane
