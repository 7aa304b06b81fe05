#pragma once

// How the example plugins find one another's objects: by the objectName under which
// a plugin published them in the controller's pool, or by type for the editors that
// the core plugin publishes. Services are used through Qt's meta-object system
// (properties and Q_INVOKABLE functions), so a plugin needs no header, and no link, of
// the plugin whose object it uses.

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

// Calls use(object) for every published object of type T, those in the pool now and
// those published later, for as long as context lives. Plugins load in dependency
// order, so an extension meets the objects of the plugins before it at once and
// those of later ones (a document opened after start-up) as they come. The context
// must belong to the calling plugin: its connection then ends before the plugin's
// code is unloaded.
template<typename T, typename Function>
void forEachPublished(QObject* context, Function use)
{
    Zelvane::ObjectPool* pool = Zelvane::PluginController::instance()->pool();
    const QList<QObject*> objects = pool->allObjects();
    for (QObject* object : objects) {
        if (T* typed = qobject_cast<T*>(object))
            use(typed);
    }
    QObject::connect(pool, &Zelvane::ObjectPool::objectAdded, context, [use](QObject* object) {
        if (T* typed = qobject_cast<T*>(object))
            use(typed);
    });
}

} // namespace Editor
