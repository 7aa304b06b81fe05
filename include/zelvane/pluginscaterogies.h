#pragma once

#include <zelvane/zelvane_export.h>

#include <QtCore/QObject>
#include <QtCore/QString>

namespace Zelvane {

// Hands the two category keys, "Core" and "Extension", to code that only reaches the
// library through the meta-object system, typically a QML delegate of PluginsModel
// comparing its `category` role. The host creates an instance and exposes it, for
// example as a context property of its QML engine.
//
// The class name is spelled "Caterogies" on purpose: scripts and QML code know it by
// that name, and its meta-object reports it (tst_pluginscaterogies pins both).
class ZELVANE_EXPORT PluginsCaterogies : public QObject
{
    Q_OBJECT

public:
    // The parent is required, so the type has no default constructor.
    explicit PluginsCaterogies(QObject* parent);
    ~PluginsCaterogies() override;

    Q_INVOKABLE QString corePluginCategoryKey(); // "Core"
    Q_INVOKABLE QString extensionPluginCategoryKey(); // "Extension"
};

} // namespace Zelvane
