#pragma once

#include <zelvane/pluginargumentdescription.h>
#include <zelvane/zelvane_export.h>

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QObject;
QT_END_NAMESPACE

namespace Zelvane {

class PluginData;

// A handle to one plugin file. Copies are cheap and share one record: the file's
// metadata, its load state and its last error text, so loading through one copy is
// seen by every other copy. Dropping the last copy of a loaded plugin unloads it.
//
// Hosts meet this type in PluginController::isEnabled() and in PluginsModel's rows;
// they never create or load one themselves: the controller does. Its member
// functions are not exported from the library.
class ZELVANE_AUTOTEST_EXPORT PluginLoader
{
public:
    // An invalid handle: no record, no file.
    PluginLoader() = default;

    // Points the handle at a new record for fileName and reads its metadata without
    // loading the file. True when the file is an acceptable plugin; the handle is
    // valid afterwards either way, and errorString() tells why a file was refused.
    bool scan(const QString& fileName);
    bool isValid() const;

    // Loads the library, checks that its root object is an IPlugin and initialises
    // it with the arguments. Requires a valid handle. A failure leaves the library
    // loaded; unload() or dropping the last handle releases it.
    bool load(const QMap<QString, QString>& arguments);
    void unload();
    QObject* instance() const; // the root object while loaded, otherwise null; never loads
    bool loaded() const;

    // Metadata, read when the handle was scanned. An invalid handle answers with
    // empty values.
    QString name() const;
    QString category() const;
    QStringList dependencies() const;
    int dependencyCount() const;
    bool loadByDefault() const;
    QString description() const;
    // Requires a valid handle (it is only asked of plugins that discovery accepted).
    QList<PluginArgumentDescription> argumentDescriptions() const;

    // The last failure's text, empty when nothing has failed; "Unknown error" for an
    // invalid handle.
    QString errorString() const;

    // True when this plugin names other's name among its direct dependencies.
    bool dependsOn(const PluginLoader& other) const;
    // Not implemented: always false, and says so in a warning.
    bool conflictsWith(const PluginLoader& other) const;

    // Exact, case-sensitive comparison of name() with a plugin name, so that a list of
    // handles can be searched by name with std::find.
    bool operator==(const QString& pluginName) const;
    bool operator!=(const QString& pluginName) const { return !(*this == pluginName); }

private:
    friend class PluginData;
    explicit PluginLoader(std::shared_ptr<PluginData> data)
        : d(std::move(data))
    {
    }

    std::shared_ptr<PluginData> d;
};

} // namespace Zelvane
