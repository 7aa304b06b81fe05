#include "plugin/plugindata_p.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QJsonArray>
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
    return scanMetadata(loader.metaData());
}

bool PluginData::scanMetadata(const QJsonObject& metaData)
{
    if (!validateMetadata(metaData))
        return false;

    const QJsonObject pluginMetaData = metaData.value(QLatin1String("MetaData")).toObject();
    if (!extractPluginMetadata(pluginMetaData))
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

namespace {

// The five keys of the plugin's own metadata that the record keeps.
const QLatin1String nameKey("Name");
const QLatin1String categoryKey("Category");
const QLatin1String dependenciesKey("Dependencies");
const QLatin1String defaultKey("Default");
const QLatin1String descriptionKey("Description");

// The text that QVariant::toString() gives for a value held as QJsonValue::toVariant()
// holds it. An array or an object (a QVariantList, a QVariantMap) has no text, so it is
// not converted at all; a number, a boolean or null goes through its QVariant.
QString variantText(const QJsonValue& value)
{
    if (value.isString())
        return value.toString();
    if (value.isUndefined() || value.isArray() || value.isObject())
        return QString();
    return value.toVariant().toString();
}

// The keys as QJsonObject::toVariantMap() hands them over, read from the JSON object
// itself: whatever else the plugin's author put there (licence texts, URLs, objects
// of another host's format) is never converted, and neither are the parts of the five
// keys that the QVariant conversions would throw away.
struct JsonKeys
{
    const QJsonObject& object;

    bool isEmpty() const { return object.isEmpty(); }

    QString string(QLatin1String key) const { return variantText(object.value(key)); }

    // A QVariantList converts element by element with toString(); any other value
    // through its own QVariant, where an object gives no list.
    QStringList stringList(QLatin1String key) const
    {
        const QJsonValue value = object.value(key);
        if (value.isUndefined() || value.isObject())
            return QStringList();
        if (!value.isArray())
            return value.toVariant().toStringList();
        const QJsonArray array = value.toArray();
        QStringList list;
        list.reserve(array.size());
        for (const QJsonValue& element : array)
            list.append(variantText(element));
        return list;
    }

    bool boolean(QLatin1String key) const
    {
        const QJsonValue value = object.value(key);
        if (value.isBool())
            return value.toBool();
        return !value.isUndefined() && value.toVariant().toBool();
    }
};

// The converted map, read with the QVariant conversions themselves.
struct VariantKeys
{
    const QMap<QString, QVariant>& map;

    bool isEmpty() const { return map.isEmpty(); }
    QString string(QLatin1String key) const { return map.value(key).toString(); }
    QStringList stringList(QLatin1String key) const { return map.value(key).toStringList(); }
    bool boolean(QLatin1String key) const { return map.value(key).toBool(); }
};

// QVariant conversions on purpose: a number given as "Name" becomes its text, while an
// array, an object or null becomes empty and is refused. Plugins in the field were
// accepted under these rules, so a stricter reader would drop them from hosts. The
// JSON reading gives exactly the converted map's results, over every kind of value.
template<typename Keys>
bool fillRecord(PluginData& data, const Keys& metaData)
{
    if (metaData.isEmpty()) {
        data.errorString
            = QObject::tr("The file \"%1\" has no plugin metadata").arg(data.loader.fileName());
        return false;
    }

    data.name = metaData.string(nameKey);
    if (data.name.isEmpty()) {
        data.errorString = QObject::tr("The plugin \"%1\" has no name property in metadata")
                               .arg(data.loader.fileName());
        return false;
    }
    data.category = metaData.string(categoryKey);
    data.dependencies = metaData.stringList(dependenciesKey);
    data.loadByDefault = metaData.boolean(defaultKey);
    data.description = metaData.string(descriptionKey);
    return true;
}

} // namespace

bool PluginData::extractPluginMetadata(const QJsonObject& metaData)
{
    return fillRecord(*this, JsonKeys { metaData });
}

bool PluginData::extractPluginMetadata(const QMap<QString, QVariant>& metaData)
{
    return fillRecord(*this, VariantKeys { metaData });
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
