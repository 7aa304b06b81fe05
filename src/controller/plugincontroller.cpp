#include <zelvane/plugincontroller.h>

#include "controller/loadplan_p.h"
#include "controller/plugindiscovery_p.h"
#include "controller/pluginoptions_p.h"
#include "controller/startuprecorder_p.h"
#include "plugin/pluginnames_p.h"

#include <zelvane/objectpool.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QSettings>

namespace Zelvane {

/*!
 * \namespace Zelvane
 * \brief Everything of the Zelvane plugin framework.
 */

/*!
 * \class Zelvane::PluginController
 * \headerfile plugincontroller.h <zelvane/PluginController>
 * \brief The process-wide entry point of the plugin framework.
 *
 * Start-up, in this order:
 *   1. PluginController::instance()
 *   2. setSettings(), setPluginIID() and, optionally, setArguments()
 *      (pluginsOptions() gives the command-line options that plugins declare)
 *   3. loadPlugins(dir)
 *
 * then pool() and pluginsModel() for the rest of the run, and shutdown() once before
 * the application exits.
 *
 * The controller owns the pool and the model; it never owns the settings object.
 * It starts no thread and takes no lock: use it from the host's main thread.
 *
 * \sa \ref embedding_in_a_host "Embedding Zelvane in a host"
 */

/*!
 * \fn static PluginController* Zelvane::PluginController::instance()
 * \brief The one controller, created on first use and destroyed after main() returns.
 */
PluginController* PluginController::instance()
{
    static PluginController controller;
    return &controller;
}

PluginController::PluginController()
    : QObject(nullptr)
    , m_pool(new ObjectPool(this))
{
}

/*!
 * \fn Zelvane::PluginController::~PluginController()
 * \brief Destroys the controller, after main() returns.
 */
// Plugins are not unloaded here: this runs after main() has returned, and the host is
// expected to have called shutdown() while the application still existed. Dropping the
// handles unloads whatever is still loaded.
PluginController::~PluginController() = default;

/*!
 * \fn QString Zelvane::PluginController::pluginIID() const
 * \brief The interface identifier that plugin files must carry; set by setPluginIID().
 */
QString PluginController::pluginIID() const
{
    return m_pluginIID;
}

/*!
 * \fn void Zelvane::PluginController::setPluginIID(const QString& iid)
 * \brief Plugin files whose "IID" differs from this identifier, even in letter case,
 * are ignored.
 *
 * Configuration, set by the host before loadPlugins().
 */
void PluginController::setPluginIID(const QString& iid)
{
    m_pluginIID = iid;
}

/*!
 * \fn QSettings* Zelvane::PluginController::settings() const
 * \brief The settings object set by setSettings(), or null.
 */
QSettings* PluginController::settings() const
{
    return m_settings;
}

/*!
 * \fn void Zelvane::PluginController::setSettings(QSettings* settings)
 * \brief Where the user's plugin selection lives ("plugin/<Name>" → bool).
 *
 * Not owned; must be set before loadPlugins() or isEnabled().
 */
void PluginController::setSettings(QSettings* settings)
{
    m_settings = settings;
}

/*!
 * \fn void Zelvane::PluginController::setArguments(const QMap<QString, QString>& arguments)
 * \brief The map that every plugin's initialize() receives, whole.
 *
 * Takes effect at the next loadPlugins().
 */
void PluginController::setArguments(const QMap<QString, QString>& arguments)
{
    m_arguments = arguments;
}

/*!
 * \fn ObjectPool* Zelvane::PluginController::pool() const
 * \brief The pool that plugins share; never null, owned by the controller.
 */
ObjectPool* PluginController::pool() const
{
    return m_pool;
}

/*!
 * \fn QString Zelvane::PluginController::errorString() const
 * \brief Why the last failed loadPlugins() failed; "Unknown error" when nothing failed.
 *
 * A later successful call does not clear it.
 */
QString PluginController::errorString() const
{
    // QObject::tr rather than tr(): the texts are translated in the "QObject" context.
    return m_errorString.isEmpty() ? QObject::tr("Unknown error") : m_errorString;
}

/*!
 * \fn PluginsModel* Zelvane::PluginController::pluginsModel() const
 * \brief The model for a plugin settings screen.
 *
 * Null until the first successful loadPlugins(), replaced by each later one. Owned by
 * the controller.
 */
PluginsModel* PluginController::pluginsModel() const
{
    return m_pluginsModel.get();
}

/*!
 * \fn bool Zelvane::PluginController::isEnabled(const PluginLoader& plugin) const
 * \brief Whether the user's saved selection (or, if none is saved, the plugin's
 * "Default") switches the plugin on.
 */
bool PluginController::isEnabled(const PluginLoader& plugin) const
{
    return isPluginEnabled(*m_settings, plugin);
}

/*!
 * \fn bool Zelvane::PluginController::loadPlugins(const QDir& dir)
 * \brief Discovers the plugins in dir, loads one "Core" plugin and every enabled
 * "Extension" plugin in dependency order, and initialises them.
 *
 * The Core plugin is the first enabled one, or the first one if none is enabled.
 * Stops at the first failure and returns false; errorString() then tells why, and the
 * plugins loaded before the failure stay loaded. On success builds a new
 * pluginsModel(). Refuses to load anything while no settings object is set.
 */
bool PluginController::loadPlugins(const QDir& dir)
{
    // Times this very start for lastStartupRecord() and the "zelvane.startup" log; it
    // reads the clock and nothing else, so what the call does and says is unchanged.
    StartupRecorder recorder;
    // The order is all that is carried out here; explanations are for the screens.
    LoadPlan plan(dir, LoadPlan::Explanations::Omitted);
    recorder.discovered();
    plan.decide(m_settings);
    recorder.ordered();
    if (!plan.error().isEmpty()) {
        m_errorString = plan.error();
        return false;
    }

    const QList<PluginLoader> loadOrder = plan.loadOrder();
    const QList<LoadPlan::File> files = plan.files();
    const QList<int> loadOrderFiles = plan.loadOrderFiles();
    for (qsizetype i = 0; i < loadOrder.size(); ++i) {
        PluginLoader plugin = loadOrder.at(i);
        recorder.loading(plugin.name(), files.at(loadOrderFiles.at(i)).fileName);
        if (!plugin.load(m_arguments)) {
            recorder.loadFailed();
            // No roll-back: what loaded stays loaded and listed, for shutdown().
            m_errorString = plugin.errorString();
            return false;
        }
        m_loadedPlugins.append(plugin);
    }

    // reset() stores the new model before it deletes the old one.
    m_pluginsModel.reset(new PluginsModel(plan.discovered(), m_settings));
    recorder.modelBuilt();
    return true;
}

/*!
 * \fn QList<QCommandLineOption> Zelvane::PluginController::pluginsOptions(const QDir& dir) const
 * \brief One option per argument that the plugins in dir declare, whether or not they
 * are enabled.
 *
 * Reads metadata only: never loads a plugin.
 */
QList<QCommandLineOption> PluginController::pluginsOptions(const QDir& dir) const
{
    // Discovery only: the options of every accepted plugin, whatever its category and
    // whether or not it is enabled, and no settings read. The options come out in the
    // order of discovery's map by category (categories by name, each one's plugins in
    // the reverse of the listing); a map of each plugin's options, filled in the same
    // order, gives that order without keeping every plugin's loader and metadata alive
    // until the end of the scan.
    QMultiMap<QString, QList<QCommandLineOption>> byCategory;
    forEachPluginFile(dir, [&byCategory](DiscoveredFile& file) {
        if (!file.accepted)
            return;
        QList<QCommandLineOption> options;
        const QList<PluginArgumentDescription> arguments = file.plugin.argumentDescriptions();
        options.reserve(arguments.size());
        for (const PluginArgumentDescription& argument : arguments)
            options.append(pluginOption(argument));
        byCategory.insert(file.plugin.category(), options);
    });

    QList<QCommandLineOption> options;
    for (const QList<QCommandLineOption>& pluginOptions : std::as_const(byCategory))
        options.append(pluginOptions);
    return options;
}

/*!
 * \fn void Zelvane::PluginController::shutdown()
 * \brief Unloads the loaded plugins in the reverse of their load order.
 */
void PluginController::shutdown()
{
    ShutdownRecorder recorder;
    // By index, from the back: a plugin's destructor may call back into the controller.
    for (qsizetype i = m_loadedPlugins.size(); i-- > 0;) {
        PluginLoader plugin = m_loadedPlugins.at(i);
        recorder.unloading(plugin.name());
        plugin.unload();
        recorder.unloaded();
    }
}

} // namespace Zelvane
