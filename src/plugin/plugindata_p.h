#pragma once

#include <zelvane/pluginargumentdescription.h>
#include <zelvane/pluginloader.h>
#include <zelvane/zelvane_export.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QPluginLoader>
#include <QtCore/QVariant>

#include <memory>

namespace Zelvane {

// The record behind every copy of one PluginLoader: the file's Qt plugin loader and
// the metadata read from it. Lives only inside a shared pointer.
class ZELVANE_AUTOTEST_EXPORT PluginData
{
public:
    explicit PluginData(const QString& fileName);
    // Unloads the plugin: destroying a QPluginLoader alone would leave it loaded.
    ~PluginData();

    // Reads and tests the file's metadata without loading it. False for a file that is
    // not an acceptable plugin; errorString says why, except for malformed
    // "Arguments", which are refused with an empty text.
    bool scan();
    // scan() over top-level metadata already read, e.g. built by a test without a file.
    bool scanMetadata(const QJsonObject& metaData);
    bool validateMetadata(const QJsonObject& metaData);
    // Reads the five keys of the plugin's own "MetaData" object straight from the JSON,
    // with the results that its QVariantMap form gives to the overload below.
    bool extractPluginMetadata(const QJsonObject& metaData);
    // The same from the object converted with QJsonObject::toVariantMap(), for callers
    // that build a record from a map.
    bool extractPluginMetadata(const QMap<QString, QVariant>& metaData);
    bool extractArguments(const QJsonArray& arguments);

    // The root object while the plugin is loaded, otherwise null. Never loads.
    QObject* instance();

    // A handle sharing this record; for the library's tests, which build records
    // from metadata without a plugin file.
    static PluginLoader handle(std::shared_ptr<PluginData> data)
    {
        return PluginLoader(std::move(data));
    }

    QPluginLoader loader;
    bool loadByDefault = false;
    QString name;
    QString category;
    QStringList dependencies;
    QString description;
    QString errorString;
    QList<PluginArgumentDescription> arguments;

private:
    Q_DISABLE_COPY_MOVE(PluginData)
};

} // namespace Zelvane
