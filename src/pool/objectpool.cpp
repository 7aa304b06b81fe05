#include <zelvane/objectpool.h>

namespace Zelvane {

ObjectPool::ObjectPool(QObject* parent)
    : QObject(parent)
{
}

ObjectPool::~ObjectPool() = default;

void ObjectPool::add(QObject* obj)
{
    if (m_objects.contains(obj))
        return;
    m_objects.append(obj);
    // An object that dies while published leaves without objectRemoved: the signal
    // would hand listeners a pointer to an object that is half destroyed.
    connect(obj, &QObject::destroyed, this,
            [this](QObject* destroyed) { m_objects.removeOne(destroyed); });
    Q_EMIT objectAdded(obj);
}

bool ObjectPool::remove(QObject* obj)
{
    if (!m_objects.removeOne(obj))
        return false;
    disconnect(obj, nullptr, this, nullptr);
    Q_EMIT objectRemoved(obj);
    return true;
}

QList<QObject*> ObjectPool::allObjects() const
{
    return m_objects;
}

} // namespace Zelvane
