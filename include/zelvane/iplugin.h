#pragma once

#include <zelvane/zelvane_export.h>

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace Zelvane {

// The interface of every plugin's root object.
//
// A plugin is a Qt plugin whose root class derives from IPlugin, declares
// Q_PLUGIN_METADATA(IID "<the host's IID>" FILE "<plugin>.json") and implements
// initialize(). The library recognises the root object with qobject_cast<IPlugin*>,
// so a class that merely has a function called initialize() is not a plugin.
//
// There is no shut-down call: a plugin releases what it holds in its destructor,
// which runs when the library is unloaded (PluginController::shutdown()).
class ZELVANE_EXPORT IPlugin : public QObject
{
    Q_OBJECT

public:
    explicit IPlugin(QObject* parent = nullptr)
        : QObject(parent)
    {
    }
    ~IPlugin() override = default;

    // Called once per load, on the thread that loads the plugins, after the plugins
    // that this one depends on have been initialised.
    //
    // arguments is the whole map that the host gave PluginController::setArguments():
    // pick out the names your metadata declares and ignore the rest. errorString is
    // never null and points to an empty string owned by the caller; on failure write
    // the reason there and return false. Do not keep the pointer.
    //
    // Exceptions: an exception that leaves initialize() is caught by the library and
    // treated like a false result, with the exception's what() text (or "unknown
    // exception") as the reason. Do not rely on it: report failures by returning false.
    virtual bool initialize(const QMap<QString, QString>& arguments, QString* errorString) = 0;
};

} // namespace Zelvane
