#pragma once

#include <zelvane/diagnostics/plugindiagnostic.h>
#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QDir>
#include <QtCore/QList>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

class LoadDiagnosticsData;

/// What PluginController::loadPlugins() does with a plugin folder, file by file, and why:
/// the answer behind a settings screen that says why a plugin will not load.
///
/// It is the library's own decision, not a second reading of its rules: the controller
/// carries out the same load plan. Making one reads every file's metadata (a refused file
/// costs its one debug line, as in loadPlugins()) and the settings once per question;
/// it loads no plugin, runs no plugin code and writes nothing. Discovery compares each
/// file with the controller's IID, so the host sets that first. Use it on the thread
/// that uses the controller.
///
/// A value: copies are cheap and never change. After the user changed the selection,
/// reread() answers again over the same files.
class ZELVANE_DIAGNOSTICS_EXPORT LoadDiagnostics
{
public:
    /// No folder, no plugin.
    LoadDiagnostics();
    /// Reads dir and, if settings is not null, the selection saved in it. Without
    /// settings nothing loads, as loadPlugins() then refuses (error() says so).
    LoadDiagnostics(const QDir& dir, QSettings* settings);
    LoadDiagnostics(const LoadDiagnostics& other);
    LoadDiagnostics& operator=(const LoadDiagnostics& other);
    ~LoadDiagnostics();

    /// The same files with the selection read again from settings: lists nothing and
    /// reads no metadata again, but isLoaded() is asked anew.
    LoadDiagnostics reread(QSettings* settings) const;

    QDir directory() const;
    /// Every "*.so" file of the folder, in the order in which the QDir lists them.
    QList<PluginDiagnostic> plugins() const;
    /// The first accepted plugin of that name, else the first refused file whose metadata
    /// gave it; invalid when there is none.
    PluginDiagnostic plugin(const QString& name) const;
    /// The plugin shown in that row of a PluginsModel made from this folder (the
    /// controller's pluginsModel(), if the folder has not changed since): the model lists
    /// the Core plugins, then the Extensions, in discovery order. Invalid out of range.
    PluginDiagnostic modelRow(int row) const;
    /// The names of the plugins that load at the next start, front to back.
    QStringList loadOrder() const;
    /// What loadPlugins() would report when it loads nothing; empty otherwise.
    QString error() const;

    /// True when plugins of this folder are loaded in this process and the next start
    /// would load a different set of them: a change waits for a restart. False when none
    /// is loaded, for a screen shown before (or without) loading.
    bool differsFromRunning() const;

private:
    friend class PluginExplanation;
    QSharedDataPointer<LoadDiagnosticsData> d;
};

} // namespace Zelvane
