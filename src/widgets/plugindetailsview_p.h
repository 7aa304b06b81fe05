#pragma once

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/plugindiagnostic.h>

#include <QtWidgets/QTextBrowser>

namespace Zelvane {

// The details pane of PluginsWidget: one plugin of the folder as rich text, its
// description, its state now and at the next start, what it needs and what needs it,
// the options it declares and its file.
class PluginDetailsView : public QTextBrowser
{
    Q_OBJECT

public:
    explicit PluginDetailsView(QWidget* parent = nullptr);

    PluginDiagnostic plugin() const { return m_plugin; }
    // An invalid plugin shows that none is selected. folder is the one the plugin is
    // of: what other plugins of it declare is part of the explanation.
    void setPlugin(const PluginDiagnostic& plugin, const LoadDiagnostics& folder = {});

    static QString html(const PluginDiagnostic& plugin, const LoadDiagnostics& folder);

private:
    PluginDiagnostic m_plugin;
    QString m_html; // what the pane shows
};

} // namespace Zelvane
