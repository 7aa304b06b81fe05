#pragma once

#include <zelvane/pluginargumentdescription.h>
#include <zelvane/pluginloader.h>

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace ZelvaneInspect {

// One "*.so" file of the directory, as the library's metadata reader sees it.
struct PluginFile
{
    QString fileName; // bare name, e.g. "libviewer.so"
    QString path; // absolute path, as the library's messages show it
    bool accepted = false;
    QString error; // the library's own rejection text; empty for malformed "Arguments"
    Zelvane::PluginLoader plugin; // scanned, never loaded
    bool enabled = false;
    bool enabledFromSettings = false; // false: nothing stored, "Default" applies
};

// A plugin of the load list, or one that the selection or the ordering left out.
struct Entry
{
    QString name;
    QString fileName;
    QString reason; // empty for plugins that load in order
};

// What PluginController::loadPlugins() would do with a directory, an IID and a
// settings file, worked out from metadata alone.
struct Inspection
{
    QString directory;
    QString iid;
    QString settingsFile; // empty: no file, every plugin at its "Default"
    bool settingsFileExists = false;

    QList<PluginFile> files; // sorted by file name
    QString error; // what loadPlugins() would report, e.g. "The Core plugin is not found"
    QList<Entry> loadOrder; // the order in which the plugins would be loaded
    QList<Entry> notLoaded; // discovered plugins that the selection leaves out, with why
    QList<Entry> dropped; // removed by the dependency ordering, with why
    QList<Entry> unordered; // loaded although their dependencies are not loaded first

    // Any problem that makes the host start without a plugin it asked for.
    bool hasProblems() const { return !error.isEmpty() || !dropped.isEmpty(); }
};

// Reads every "*.so" file of directory with PluginLoader::scan (which never loads the
// file) and applies the selection and the dependency ordering of loadPlugins(). The
// controller's IID is set to iid; settings may be null (no stored selection).
Inspection inspect(const QString& directory, const QString& iid, QSettings* settings,
                   const QString& settingsFile);

QString toText(const Inspection& inspection);
QJsonObject toJson(const Inspection& inspection);

} // namespace ZelvaneInspect
