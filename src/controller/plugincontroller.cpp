#include <zelvane/plugincontroller.h>

#include "controller/loadplan_p.h"
#include "controller/plugindiscovery_p.h"
#include "controller/pluginoptions_p.h"
#include "plugin/pluginnames_p.h"

#include <zelvane/objectpool.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QSettings>

namespace Zelvane {

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
    return isPluginEnabled(*m_settings, plugin);
}

bool PluginController::loadPlugins(const QDir& dir)
{
    // The order is all that is carried out here; explanations are for the screens.
    LoadPlan plan(dir, LoadPlan::Explanations::Omitted);
    plan.decide(m_settings);
    if (!plan.error().isEmpty()) {
        m_errorString = plan.error();
        return false;
    }

    const QList<PluginLoader> loadOrder = plan.loadOrder();
    for (PluginLoader plugin : loadOrder) {
        if (!plugin.load(m_arguments)) {
            // No roll-back: what loaded stays loaded and listed, for shutdown().
            m_errorString = plugin.errorString();
            return false;
        }
        m_loadedPlugins.append(plugin);
    }

    // reset() stores the new model before it deletes the old one.
    m_pluginsModel.reset(new PluginsModel(plan.discovered(), m_settings));
    return true;
}

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

void PluginController::shutdown()
{
    // By index, from the back: a plugin's destructor may call back into the controller.
    for (qsizetype i = m_loadedPlugins.size(); i-- > 0;) {
        PluginLoader plugin = m_loadedPlugins.at(i);
        plugin.unload();
    }
}

} // namespace Zelvane
