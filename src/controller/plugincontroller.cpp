#include <zelvane/plugincontroller.h>

#include "controller/dependencyordering_p.h"
#include "controller/plugindiscovery_p.h"

#include <zelvane/objectpool.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QSettings>

#include <algorithm>

namespace Zelvane {

namespace {

const QString coreCategory = QStringLiteral("Core");
const QString extensionCategory = QStringLiteral("Extension");

} // namespace

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

// Plugins are not unloaded here: this runs after main() has returned, and the host is
// expected to have called shutdown() while the application still existed. Dropping the
// handles unloads whatever is still loaded.
PluginController::~PluginController() = default;

QString PluginController::pluginIID() const
{
    return m_pluginIID;
}

void PluginController::setPluginIID(const QString& iid)
{
    m_pluginIID = iid;
}

QSettings* PluginController::settings() const
{
    return m_settings;
}

void PluginController::setSettings(QSettings* settings)
{
    m_settings = settings;
}

void PluginController::setArguments(const QMap<QString, QString>& arguments)
{
    m_arguments = arguments;
}

ObjectPool* PluginController::pool() const
{
    return m_pool;
}

QString PluginController::errorString() const
{
    // QObject::tr rather than tr(): the texts are translated in the "QObject" context.
    return m_errorString.isEmpty() ? QObject::tr("Unknown error") : m_errorString;
}

PluginsModel* PluginController::pluginsModel() const
{
    return m_pluginsModel.get();
}

bool PluginController::isEnabled(const PluginLoader& plugin) const
{
    return m_settings
        ->value(QStringLiteral("plugin/") + plugin.name(), QVariant(plugin.loadByDefault()))
        .toBool();
}

bool PluginController::loadPlugins(const QDir& dir)
{
    const QMultiMap<QString, PluginLoader> plugins = scanPlugins(dir);

    const QList<PluginLoader> cores = plugins.values(coreCategory);
    if (cores.isEmpty()) {
        m_errorString = QObject::tr("The Core plugin is not found");
        return false;
    }

    // Everything from here on reads the user's selection. Without a settings object
    // that would crash the host, so the call is refused instead.
    if (!m_settings) {
        m_errorString = QObject::tr("No settings object is set: call "
                                    "PluginController::setSettings() before loadPlugins()");
        return false;
    }

    const auto enabled = [this](PluginLoader plugin) {
        return isEnabled(plugin);
    };

    // Exactly one core plugin runs. If the user switched all of them off, the first
    // one runs anyway: a host cannot start without its core.
    const auto core = std::find_if(cores.cbegin(), cores.cend(), enabled);
    QList<PluginLoader> loadList { core != cores.cend() ? *core : cores.first() };

    QList<PluginLoader> extensions = plugins.values(extensionCategory);
    extensions.erase(
        std::remove_if(extensions.begin(), extensions.end(),
                       [&enabled](const PluginLoader& plugin) { return !enabled(plugin); }),
        extensions.end());
    loadList += extensions;

    // May drop one plugin whose dependencies cannot be met, silently.
    dependecySorting(loadList);

    for (PluginLoader plugin : std::as_const(loadList)) {
        if (!plugin.load(m_arguments)) {
            // No roll-back: what loaded stays loaded and listed, for shutdown().
            m_errorString = plugin.errorString();
            return false;
        }
        m_loadedPlugins.append(plugin);
    }

    // reset() stores the new model before it deletes the old one.
    m_pluginsModel.reset(new PluginsModel(plugins, m_settings));
    return true;
}

QList<QCommandLineOption> PluginController::pluginsOptions(const QDir& dir) const
{
    QList<QCommandLineOption> options;
    const QMultiMap<QString, PluginLoader> plugins = scanPlugins(dir);
    for (const PluginLoader& plugin : plugins) {
        const QList<PluginArgumentDescription> arguments = plugin.argumentDescriptions();
        for (const PluginArgumentDescription& argument : arguments)
            options.append(QCommandLineOption(argument.name, argument.description,
                                              argument.parameter, QString()));
    }
    return options;
}

void PluginController::shutdown()
{
    // By index, from the back: a plugin's destructor may call back into the controller.
    for (qsizetype i = m_loadedPlugins.size(); i-- > 0;) {
        PluginLoader plugin = m_loadedPlugins.at(i);
        plugin.unload();
    }
}

} // namespace Zelvane
