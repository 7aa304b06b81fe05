#pragma once

// How the example plugins find one another's objects: by the objectName under which
// a plugin published them in the controller's pool. The objects are used through
// Qt's meta-object system (properties and Q_INVOKABLE functions), so a plugin needs
// no header, and no link, of the plugin whose object it uses.

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace Editor {

inline void publish(QObject* object)
{
    Zelvane::PluginController::instance()->pool()->add(object);
}

// The published object with this objectName, or null when no loaded plugin
// published one.
inline QObject* findPublished(const QString& objectName)
{
    const QList<QObject*> objects = Zelvane::PluginController::instance()->pool()->allObjects();
    for (QObject* object : objects) {
        if (object && object->objectName() == objectName)
            return object;
    }
    return nullptr;
}

} // namespace Editor
