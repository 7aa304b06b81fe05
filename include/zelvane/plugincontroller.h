#pragma once

#include <zelvane/pluginloader.h>
#include <zelvane/zelvane_export.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QDir>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

class ObjectPool;
class PluginsModel;

// The process-wide entry point of the plugin framework.
//
// Start-up, in this order:
//   1. PluginController::instance()
//   2. setSettings(), setPluginIID() and, optionally, setArguments()
//      (pluginsOptions() gives the command-line options that plugins declare)
//   3. loadPlugins(dir)
// then pool() and pluginsModel() for the rest of the run, and shutdown() once before
// the application exits.
//
// The controller owns the pool and the model; it never owns the settings object.
// It starts no thread and takes no lock: use it from the host's main thread.
class ZELVANE_EXPORT PluginController : public QObject
{
    Q_OBJECT

public:
    // The one controller, created on first use and destroyed after main() returns.
    static PluginController* instance();
    ~PluginController() override;

    // Configuration, set by the host before loadPlugins().
    QString pluginIID() const;
    // Plugin files whose "IID" differs from this identifier, even in letter case,
    // are ignored.
    void setPluginIID(const QString& iid);
    QSettings* settings() const;
    // Where the user's plugin selection lives ("plugin/<Name>" → bool). Not owned;
    // must be set before loadPlugins() or isEnabled().
    void setSettings(QSettings* settings);
    // The map that every plugin's initialize() receives, whole. Takes effect at the
    // next loadPlugins().
    void setArguments(const QMap<QString, QString>& arguments);

    // Discovers the plugins in dir, loads one "Core" plugin (the first enabled one, or
    // the first one if none is enabled) and every enabled "Extension" plugin in
    // dependency order, and initialises them. Stops at the first failure and returns
    // false; errorString() then tells why, and the plugins loaded before the failure
    // stay loaded. On success builds a new pluginsModel(). Refuses to load anything
    // while no settings object is set.
    bool loadPlugins(const QDir& dir);
    // One option per argument that the plugins in dir declare, whether or not they
    // are enabled. Reads metadata only: never loads a plugin.
    QList<QCommandLineOption> pluginsOptions(const QDir& dir) const;
    // Unloads the loaded plugins in the reverse of their load order.
    void shutdown();

    // The pool that plugins share; never null, owned by the controller.
    ObjectPool* pool() const;
    // The model for a plugin settings screen: null until the first successful
    // loadPlugins(), replaced by each later one. Owned by the controller.
    PluginsModel* pluginsModel() const;
    // Whether the user's saved selection (or, if none is saved, the plugin's "Default")
    // switches the plugin on.
    bool isEnabled(const PluginLoader& plugin) const;
    // Why the last failed loadPlugins() failed; "Unknown error" when nothing failed.
    // A later successful call does not clear it.
    QString errorString() const;

private:
    PluginController();
    Q_DISABLE_COPY_MOVE(PluginController)

    ObjectPool* m_pool;
    QSettings* m_settings = nullptr;
    std::unique_ptr<PluginsModel> m_pluginsModel;
    QList<PluginLoader> m_loadedPlugins;
    QString m_errorString;
    QString m_pluginIID;
    QMap<QString, QString> m_arguments;
};

} // namespace Zelvane
