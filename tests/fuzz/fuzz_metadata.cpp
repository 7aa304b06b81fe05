// Feeds arbitrary JSON through the library's metadata reading, in the order in which
// PluginData::scan() applies it to what QPluginLoader::metaData() returns: the
// top-level test, the plugin's own "MetaData" keys (read from the JSON and, as a
// cross-check, from the object converted to a map), then the strict "Arguments" array.
// The document is also read as a "MetaData" object itself, so that the fuzzer does not
// have to find the interface identifier before it reaches the later steps.

#include "plugin/plugindata_p.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void readMetaData(const QJsonObject& pluginMetaData)
{
    Zelvane::PluginData data(QStringLiteral("/fuzz/libfuzz.so"));
    const bool accepted = data.extractPluginMetadata(pluginMetaData);
    // The record read from the JSON object must be the one that the object converted
    // to a QVariantMap gives, whatever the input: a difference is a finding.
    Zelvane::PluginData converted(QStringLiteral("/fuzz/libfuzz.so"));
    if (converted.extractPluginMetadata(pluginMetaData.toVariantMap()) != accepted
        || converted.name != data.name || converted.category != data.category
        || converted.dependencies != data.dependencies
        || converted.loadByDefault != data.loadByDefault
        || converted.description != data.description || converted.errorString != data.errorString)
        std::abort();
    if (!accepted)
        return;
    const QJsonValue arguments = pluginMetaData.value(QLatin1String("Arguments"));
    if (arguments.isArray() && data.extractArguments(arguments.toArray())) {
        // What pluginsOptions() reads of an accepted plugin.
        for (const Zelvane::PluginArgumentDescription& argument : std::as_const(data.arguments))
            (void)(argument.name.size() + argument.parameter.size() + argument.description.size());
    }
}

} // namespace

// Qt reports unreadable metadata on its own log; at thousands of inputs a second that
// is only noise, and slows the run down.
static void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qInstallMessageHandler(dropMessage);
    static QCoreApplication application(*argc, *argv);
    Zelvane::PluginController::instance()->setPluginIID(QStringLiteral("org.zelvane.Test/1.0"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), qsizetype(size)));
    if (!document.isObject())
        return 0;
    const QJsonObject object = document.object();

    Zelvane::PluginData data(QStringLiteral("/fuzz/libfuzz.so"));
    if (data.validateMetadata(object))
        readMetaData(object.value(QLatin1String("MetaData")).toObject());
    readMetaData(object);
    return 0;
}
