#include "widgets/plugindetailsview_p.h"

#include "diagnostics/pluginexplanation_p.h"

#include <zelvane/widgets/pluginswidget.h>

namespace Zelvane {

namespace {

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

QString paragraph(const QString& label, const QString& html)
{
    if (label.isEmpty())
        return QStringLiteral("<p>%1</p>").arg(html);
    if (html.isEmpty()) // the heading of a list
        return QStringLiteral("<p><b>%1</b></p>").arg(escaped(label));
    return QStringLiteral("<p><b>%1</b> %2</p>").arg(escaped(label), html);
}

// A warning in bold, so that what the user has to act on stands out of a long list.
QString itemHtml(const PluginExplanation::Item& item)
{
    QStringList pieces;
    if (!item.code.isEmpty())
        pieces.append(QStringLiteral("<code>%1</code>").arg(escaped(item.code)));
    if (!item.text.isEmpty())
        pieces.append(item.warning && item.note.isEmpty()
                          ? QStringLiteral("<b>%1</b>").arg(escaped(item.text))
                          : escaped(item.text));
    QString html = pieces.join(QLatin1Char(' '));
    if (!item.note.isEmpty())
        html += (html.isEmpty() ? QString() : QStringLiteral(" — "))
            + QStringLiteral("<b>%1</b>").arg(escaped(item.note));
    return html;
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

void PluginDetailsView::setPlugin(const PluginDiagnostic& plugin, const LoadDiagnostics& folder)
{
    m_plugin = plugin;
    setHtml(html(plugin, folder));
}

QString PluginDetailsView::html(const PluginDiagnostic& plugin, const LoadDiagnostics& folder)
{
    if (!plugin.isValid())
        return QStringLiteral("<p>%1</p>")
            .arg(escaped(PluginsWidget::tr("No plugin is selected.")));

    // The sentences are the Diagnostics component's; this only lays them out.
    const PluginExplanation explanation(plugin, folder);
    QString html = QStringLiteral("<h3>%1</h3>").arg(escaped(explanation.title()));
    const QList<PluginExplanation::Part> parts = explanation.parts();
    for (const PluginExplanation::Part& part : parts) {
        if (!part.label.isEmpty() || !part.text.isEmpty())
            html += paragraph(part.label, escaped(part.text));
        if (part.items.isEmpty())
            continue;
        html += QStringLiteral("<ul>");
        for (const PluginExplanation::Item& item : part.items)
            html += QStringLiteral("<li>%1</li>").arg(itemHtml(item));
        html += QStringLiteral("</ul>");
    }
    return html;
}

} // namespace Zelvane
