#pragma once

#include <zelvane/zelvane_export.h>

#include <QtCore/QList>
#include <QtCore/QObject>

namespace Zelvane {

// The registry through which plugins and the host share objects.
//
// The pool lists plain QObject pointers in the order they were added and knows
// nothing of their types. It does not own them: an object that is destroyed while
// published is forgotten silently (no objectRemoved), so the pool never hands out a
// dangling pointer. Use it from the thread it lives in; the controller's pool lives
// in the host's main thread.
class ZELVANE_EXPORT ObjectPool : public QObject
{
    Q_OBJECT

public:
    explicit ObjectPool(QObject* parent = nullptr);
    ~ObjectPool() override;

    // Publishes obj and emits objectAdded(obj). Adding an object that is already
    // published does nothing.
    void add(QObject* obj);
    // Withdraws obj and emits objectRemoved(obj); false, and no signal, when obj was
    // not published.
    bool remove(QObject* obj);
    // The published objects, in the order in which they were added.
    QList<QObject*> allObjects() const;

Q_SIGNALS:
    void objectAdded(QObject* obj);
    void objectRemoved(QObject* obj);

private:
    QList<QObject*> m_objects;
};

} // namespace Zelvane
