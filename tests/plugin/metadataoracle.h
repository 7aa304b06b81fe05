#pragma once

// The reading of a plugin file's top-level metadata into its record in its literal
// form: the plugin's whole "MetaData" object converted with QJsonObject::toVariantMap(),
// its five keys read with the QVariant conversions, "Arguments" read as JSON. The
// library reads the five keys from the JSON object itself and converts nothing else;
// whatever it does, its record must equal the one made here, for every input.
//
// Kept apart from the library on purpose: it must not change when the library does.

#include <zelvane/plugincontroller.h>

#include "plugin/plugindata_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QVariantMap>

namespace MetadataOracle {

inline bool extractArguments(Zelvane::PluginData& data, const QJsonArray& arguments)
{
    for (const QJsonValue& element : arguments) {
        if (!element.isObject())
            return false;
        const QJsonObject argument = element.toObject();
        const QJsonValue name = argument.value(QLatin1String("Name"));
        if (!name.isString() || name.toString().isEmpty())
            return false;
        const QJsonValue description = argument.value(QLatin1String("Description"));
        if (!description.isUndefined() && !description.isString())
            return false;
        const QJsonValue parameter = argument.value(QLatin1String("Parameter"));
        if (!parameter.isUndefined() && !parameter.isString())
            return false;
        data.arguments.append(Zelvane::PluginArgumentDescription {
            name.toString(), parameter.toString(), description.toString() });
    }
    return true;
}

// What PluginData::scanMetadata(metaData) must do to data, and return.
inline bool scanMetadata(Zelvane::PluginData& data, const QJsonObject& metaData)
{
    const QJsonValue iid = metaData.value(QLatin1String("IID"));
    if (!iid.isString()) {
        data.errorString
            = QObject::tr("%1 is not a plugin (no string IID found)").arg(data.loader.fileName());
        return false;
    }
    if (iid.toString() != Zelvane::PluginController::instance()->pluginIID()) {
        data.errorString
            = QObject::tr("%1 plugin ignored (IID does not match)").arg(data.loader.fileName());
        return false;
    }

    const QJsonObject pluginMetaData = metaData.value(QLatin1String("MetaData")).toObject();
    const QVariantMap map = pluginMetaData.toVariantMap();
    if (map.isEmpty()) {
        data.errorString
            = QObject::tr("The file \"%1\" has no plugin metadata").arg(data.loader.fileName());
        return false;
    }
    data.name = map.value(QStringLiteral("Name")).toString();
    if (data.name.isEmpty()) {
        data.errorString = QObject::tr("The plugin \"%1\" has no name property in metadata")
                               .arg(data.loader.fileName());
        return false;
    }
    data.category = map.value(QStringLiteral("Category")).toString();
    data.dependencies = map.value(QStringLiteral("Dependencies")).toStringList();
    data.loadByDefault = map.value(QStringLiteral("Default")).toBool();
    data.description = map.value(QStringLiteral("Description")).toString();

    const QJsonValue arguments = pluginMetaData.value(QLatin1String("Arguments"));
    if (arguments.isUndefined())
        return true;
    if (!arguments.isArray())
        return false;
    return extractArguments(data, arguments.toArray());
}

} // namespace MetadataOracle
