#include <zelvane/objectpool.h>

namespace Zelvane {

/*!
 * \class Zelvane::ObjectPool
 * \headerfile objectpool.h <zelvane/ObjectPool>
 * \brief The registry through which plugins and the host share objects.
 *
 * The pool lists plain QObject pointers in the order they were added and knows
 * nothing of their types. It does not own them: an object that is destroyed while
 * published is forgotten silently (no objectRemoved()), so the pool never hands out a
 * dangling pointer. Use it from the thread it lives in; the controller's pool lives
 * in the host's main thread.
 */

/*!
 * \fn Zelvane::ObjectPool::ObjectPool(QObject* parent = nullptr)
 * \brief An empty pool. Hosts and plugins use the controller's,
 * PluginController::pool().
 */
ObjectPool::ObjectPool(QObject* parent)
    : QObject(parent)
{
}

/*!
 * \fn Zelvane::ObjectPool::~ObjectPool()
 * \brief Forgets the published objects without destroying them.
 */
ObjectPool::~ObjectPool() = default;

/*!
 * \fn void Zelvane::ObjectPool::add(QObject* obj)
 * \brief Publishes obj and emits objectAdded(obj).
 *
 * Adding an object that is already published does nothing.
 */
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

/*!
 * \fn bool Zelvane::ObjectPool::remove(QObject* obj)
 * \brief Withdraws obj and emits objectRemoved(obj); false, and no signal, when obj
 * was not published.
 */
bool ObjectPool::remove(QObject* obj)
{
    if (!m_objects.removeOne(obj))
        return false;
    disconnect(obj, nullptr, this, nullptr);
    Q_EMIT objectRemoved(obj);
    return true;
}

/*!
 * \fn QList<QObject*> Zelvane::ObjectPool::allObjects() const
 * \brief The published objects, in the order in which they were added.
 */
QList<QObject*> ObjectPool::allObjects() const
{
    return m_objects;
}

/*!
 * \fn void Zelvane::ObjectPool::objectAdded(QObject* obj)
 * \brief Emitted by add() when obj is published.
 */

/*!
 * \fn void Zelvane::ObjectPool::objectRemoved(QObject* obj)
 * \brief Emitted by remove() when obj is withdrawn; not when a published object is
 * destroyed.
 */

} // namespace Zelvane
