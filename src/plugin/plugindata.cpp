#include "plugin/plugindata_p.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QJsonValue>

namespace Zelvane {

PluginData::PluginData(const QString& fileName)
    : loader(fileName)
{
}

PluginData::~PluginData()
{
    loader.unload();
}

bool PluginData::scan()
{
    // metaData() reads the metadata section of the file; no plugin code runs.
    const QJsonObject metaData = loader.metaData();
    if (!validateMetadata(metaData))
        return false;

    const QJsonObject pluginMetaData = metaData.value(QLatin1String("MetaData")).toObject();
    if (!extractPluginMetadata(pluginMetaData.toVariantMap()))
        return false;

    const QJsonValue arguments = pluginMetaData.value(QLatin1String("Arguments"));
    if (arguments.isUndefined())
        return true;
    // Refused without a text; discovery logs the empty text, and the build-time
    // metadata check of zelvane_add_plugin() is what tells authors about it.
    if (!arguments.isArray())
        return false;
    return extractArguments(arguments.toArray());
}

bool PluginData::validateMetadata(const QJsonObject& metaData)
{
    const QJsonValue iid = metaData.value(QLatin1String("IID"));
    if (!iid.isString()) {
        errorString
            = QObject::tr("%1 is not a plugin (no string IID found)").arg(loader.fileName());
        return false;
    }
    // Asked anew for every file: the host may change the identifier between scans.
    if (iid.toString() != PluginController::instance()->pluginIID()) {
        errorString = QObject::tr("%1 plugin ignored (IID does not match)").arg(loader.fileName());
        return false;
    }
    return true;
}

bool PluginData::extractPluginMetadata(const QMap<QString, QVariant>& metaData)
{
    if (metaData.isEmpty()) {
        errorString = QObject::tr("The file \"%1\" has no plugin metadata").arg(loader.fileName());
        return false;
    }

    // QVariant conversions on purpose: a number given as "Name" becomes its text, while
    // an array, an object or null becomes empty and is refused. Plugins in the field
    // were accepted under these rules, so a stricter reader would drop them from hosts.
    name = metaData.value(QStringLiteral("Name")).toString();
    if (name.isEmpty()) {
        errorString = QObject::tr("The plugin \"%1\" has no name property in metadata")
                          .arg(loader.fileName());
        return false;
    }
    category = metaData.value(QStringLiteral("Category")).toString();
    dependencies = metaData.value(QStringLiteral("Dependencies")).toStringList();
    loadByDefault = metaData.value(QStringLiteral("Default")).toBool();
    description = metaData.value(QStringLiteral("Description")).toString();
    return true;
}

bool PluginData::extractArguments(const QJsonArray& arguments)
{
    // Strict JSON types here, unlike the keys above. Elements read before a bad one
    // stay appended: the refused record is thrown away by discovery anyway.
    for (const QJsonValue& element : arguments) {
        if (!element.isObject())
            return false;
        const QJsonObject argument = element.toObject();

        const QJsonValue argumentName = argument.value(QLatin1String("Name"));
        if (!argumentName.isString() || argumentName.toString().isEmpty())
            return false;
        const QJsonValue argumentDescription = argument.value(QLatin1String("Description"));
        if (!argumentDescription.isUndefined() && !argumentDescription.isString())
            return false;
        const QJsonValue parameter = argument.value(QLatin1String("Parameter"));
        if (!parameter.isUndefined() && !parameter.isString())
            return false;

        this->arguments.append(PluginArgumentDescription {
            argumentName.toString(), parameter.toString(), argumentDescription.toString() });
    }
    return true;
}

QObject* PluginData::instance()
{
    return loader.isLoaded() ? loader.instance() : nullptr;
}

} // namespace Zelvane
