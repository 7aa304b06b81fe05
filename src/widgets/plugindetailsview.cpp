#include "widgets/plugindetailsview_p.h"

#include "diagnostics/pluginexplanation_p.h"

#include <zelvane/widgets/pluginswidget.h>

namespace Zelvane {

namespace {

// Qt's line breaking looks for the end of a word before it breaks inside it, which takes
// time in the square of the word's length: a description of one word of 1 MiB held the
// screen for minutes. A zero-width space now and then in such a word gives the layout
// places to break; the words of any sentence, paths and names are far shorter and stay as
// they are.
QString breakable(const QString& text)
{
    constexpr qsizetype longestWord = 1000;
    qsizetype run = 0;
    QString result;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text.at(at);
        if (c.isSpace()) {
            run = 0;
        } else if (++run > longestWord && !c.isLowSurrogate() && !c.isMark()) {
            // Built only once a word is that long: most texts are returned as they came.
            if (result.isEmpty())
                result = text.left(at);
            result += QChar(0x200B);
            run = 1;
        }
        if (!result.isEmpty())
            result += c;
    }
    return result.isEmpty() ? text : result;
}

QString escaped(const QString& text)
{
    return breakable(text).toHtmlEscaped();
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

// A list of that many items or fewer is a bulleted list; a longer one is a column of
// indented paragraphs. Qt's text document files each item of a list among the others by
// position, which takes time in the square of the list's length: at 5,000 dependencies a
// plugin's details took over half a second for that alone.
constexpr qsizetype longList = 200;

QString listHtml(const QList<PluginExplanation::Item>& items)
{
    QString html;
    if (items.size() <= longList) {
        html += QStringLiteral("<ul>");
        for (const PluginExplanation::Item& item : items)
            html += QStringLiteral("<li>%1</li>").arg(itemHtml(item));
        return html + QStringLiteral("</ul>");
    }
    for (const PluginExplanation::Item& item : items)
        html += QStringLiteral("<p class=\"item\">%1</p>").arg(itemHtml(item));
    return html;
}

} // namespace

PluginDetailsView::PluginDetailsView(QWidget* parent)
    : QTextBrowser(parent)
{
    setObjectName(QStringLiteral("details"));
    setAccessibleName(PluginsWidget::tr("Plugin details"));
    setOpenLinks(false);
    // A long explanation would otherwise be laid out twice: once to find that it needs
    // the scroll bar, once more in the width that the bar leaves.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // The items of a long list; a style given with each would be parsed once per item.
    document()->setDefaultStyleSheet(
        QStringLiteral("p.item { margin-left: 2em; margin-top: 0; margin-bottom: 0; }"));
    setPlugin(PluginDiagnostic());
}

void PluginDetailsView::setPlugin(const PluginDiagnostic& plugin, const LoadDiagnostics& folder)
{
    m_plugin = plugin;
    // Every tick shows the current plugin again, most often in the same words: setting
    // them again would lay a long explanation out anew and send the reader back to its
    // top.
    const QString text = html(plugin, folder);
    if (text == m_html && !m_html.isEmpty())
        return;
    m_html = text;
    setHtml(text);
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
        if (!part.items.isEmpty())
            html += listHtml(part.items);
    }
    return html;
}

} // namespace Zelvane
