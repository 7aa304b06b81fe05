#pragma once

// Internal to the controller: included by its source file and by the tests, and
// never installed. The function has internal linkage in every file that includes it.

#include <zelvane/pluginloader.h>

#include "plugin/pluginlog_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QDir>
#include <QtCore/QList>
#include <QtCore/QMultiMap>

namespace Zelvane {

// One "*.so" file of a plugin folder, as discovery found it.
struct DiscoveredFile
{
    QString fileName; // bare name, as listed
    QString path; // dir.absoluteFilePath(fileName)
    bool accepted = false;
    PluginLoader plugin; // accepted files only: scanned, not loaded
    QString name; // what the metadata gave, also for a refused file (often empty)
    QString refusal; // the refusal text; empty for malformed "Arguments"
};

// Reads the metadata of every "*.so" file in dir, in the listing order, and loads
// none. Each refused file costs one debug line with its reason, and its handle is
// released at once; a directory that is shared with other libraries is normal, so
// this is not a warning.
//
// NoSort hands the order to the QDir: one made from a path sorts by name ignoring
// letter case, one the host set to QDir::Unsorted gives the file system's own order.
// Within a category plugins appear in the reverse of the listing (see scanPlugins()),
// and which of several Core plugins loads follows from it, so hosts see the choice
// change if this changes, for file names that differ in letter case and in digit
// runs, in either listing order; the order of pluginsOptions() follows from it too.
//
// visit(DiscoveredFile&) sees each file as soon as it is read, so a caller that keeps
// only part of each record (pluginsOptions() keeps the options) never holds every
// file's plugin loader, and its metadata, at once.
template<typename Visit>
[[maybe_unused]] static void forEachPluginFile(const QDir& dir, Visit visit)
{
    const QStringList names = dir.entryList(pluginFileNameFilters(), QDir::Files, QDir::NoSort);
    for (const QString& name : names) {
        DiscoveredFile file;
        file.fileName = name;
        file.path = dir.absoluteFilePath(name);
        file.accepted = file.plugin.scan(file.path);
        file.name = file.plugin.name();
        if (!file.accepted) {
            file.refusal = file.plugin.errorString();
            logDroppedPlugin(file.refusal);
            file.plugin = PluginLoader();
        }
        visit(file);
    }
}

[[maybe_unused]] static QList<DiscoveredFile> discoverPluginFiles(const QDir& dir)
{
    QList<DiscoveredFile> files;
    forEachPluginFile(dir, [&files](DiscoveredFile& file) { files.append(std::move(file)); });
    return files;
}

// The acceptable plugins of dir keyed by category. Within one category the most
// recently inserted plugin comes first (QMultiMap), so values(category) gives the
// reverse of the listing order.
[[maybe_unused]] static QMultiMap<QString, PluginLoader> scanPlugins(const QDir& dir)
{
    QMultiMap<QString, PluginLoader> plugins;
    const QList<DiscoveredFile> files = discoverPluginFiles(dir);
    for (const DiscoveredFile& file : files) {
        if (file.accepted)
            plugins.insert(file.plugin.category(), file.plugin);
    }
    return plugins;
}

} // namespace Zelvane
