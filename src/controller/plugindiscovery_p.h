#pragma once

// Internal to the controller: included by its source file and by the tests, and
// never installed. The function has internal linkage in every file that includes it.

#include <zelvane/pluginloader.h>

#include "plugin/pluginlog_p.h"

#include <QtCore/QDir>
#include <QtCore/QMultiMap>

namespace Zelvane {

// Reads the metadata of every "*.so" file in dir and returns the acceptable plugins
// keyed by category. No plugin is loaded. Each refused file costs one debug line with
// its reason; a directory that is shared with other libraries is normal, so this is
// not a warning.
//
// Within one category the most recently inserted plugin comes first (QMultiMap), so
// values(category) gives the reverse of the listing order, and the listing order is
// whatever the file system gives: NoSort.
[[maybe_unused]] static QMultiMap<QString, PluginLoader> scanPlugins(const QDir& dir)
{
    QMultiMap<QString, PluginLoader> plugins;
    const QStringList names
        = dir.entryList(QStringList { QStringLiteral("*.so") }, QDir::Files, QDir::NoSort);
    for (const QString& name : names) {
        PluginLoader plugin;
        if (!plugin.scan(dir.absoluteFilePath(name))) {
            logDroppedPlugin(plugin.errorString());
            continue;
        }
        plugins.insert(plugin.category(), plugin);
    }
    return plugins;
}

} // namespace Zelvane
