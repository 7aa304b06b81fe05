#pragma once

// The names that the controller, the model, the tools and the tests must agree on,
// each spelled once. Internal: never installed.

#include <zelvane/pluginloader.h>

#include <QtCore/QSettings>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace Zelvane {

// The two categories that the library acts upon, compared exactly: "core" or
// "extension" in another letter case is a third category, discovered but never loaded
// and given no row in the model. PluginsCaterogies hands the same two texts to QML.
inline QString coreCategoryKey()
{
    return QStringLiteral("Core");
}

inline QString extensionCategoryKey()
{
    return QStringLiteral("Extension");
}

// Where the user's choice for one plugin is stored in the host's settings:
// "plugin/<Name>" → bool. Hosts' saved INI files use this key, so it never changes.
inline QString selectionSettingsKey(const QString& pluginName)
{
    return QStringLiteral("plugin/") + pluginName;
}

// The file names that discovery lists in a plugin folder: exactly one pattern, so
// "libx.so.1" and "x.so.bak" are not plugin files.
inline QStringList pluginFileNameFilters()
{
    return QStringList { QStringLiteral("*.so") };
}

// Whether the user's saved choice, or the plugin's "Default" when nothing is saved,
// switches the plugin on. One settings read per call, never cached: the controller
// asks it at every loadPlugins() and the model once per row when it is built.
inline bool isPluginEnabled(const QSettings& settings, const PluginLoader& plugin)
{
    return settings.value(selectionSettingsKey(plugin.name()), QVariant(plugin.loadByDefault()))
        .toBool();
}

} // namespace Zelvane
