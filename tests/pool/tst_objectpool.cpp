// The object pool: what it lists, which signals it sends, and how it forgets an
// object that dies while published.

#include <zelvane/objectpool.h>

#include <QtCore/QList>
#include <QtCore/QMetaMethod>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>
#include <vector>

using Zelvane::ObjectPool;

using Objects = QList<QObject*>;

namespace {

// The objects carried by the spy's emissions, in emission order.
Objects emitted(const QSignalSpy& spy)
{
    Objects objects;
    for (const QList<QVariant>& arguments : spy)
        objects.append(arguments.at(0).value<QObject*>());
    return objects;
}

// Records every signal that a pool sends, whichever it is.
class AnySignal
{
public:
    explicit AnySignal(const QObject* object)
    {
        const QMetaObject* meta = object->metaObject();
        for (int i = 0; i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            if (method.methodType() == QMetaMethod::Signal)
                m_spies.emplace_back(std::make_unique<QSignalSpy>(object, method));
        }
    }

    // "<signature> <count>" for every signal that was sent.
    QStringList sent() const
    {
        QStringList result;
        for (const auto& spy : m_spies) {
            if (!spy->isEmpty())
                result.append(QString::fromLatin1(spy->signal()) + QLatin1Char(' ')
                              + QString::number(spy->count()));
        }
        return result;
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
};

} // namespace

class tst_ObjectPool : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void emptyPool();
    void addToEmptyPool();
    void addTwice();
    void insertionOrder();
    void removeThenDestroy();
    void removeUnknown();
    void destroyedWhilePublished();
    void destroyedAfterAddedAgain();
    void nullObject();
    void destroyingThePoolLeavesObjectsAlive();
    void destroyedInAnotherThread();

    void parent();
    void defaultConstructibleMetaType();
    void poolMetaObject();

private:
    std::unique_ptr<ObjectPool> m_pool;
    std::unique_ptr<QSignalSpy> m_added;
    std::unique_ptr<QSignalSpy> m_removed;
};

void tst_ObjectPool::init()
{
    m_pool = std::make_unique<ObjectPool>();
    m_added = std::make_unique<QSignalSpy>(m_pool.get(), &ObjectPool::objectAdded);
    m_removed = std::make_unique<QSignalSpy>(m_pool.get(), &ObjectPool::objectRemoved);
    QVERIFY(m_added->isValid());
    QVERIFY(m_removed->isValid());
}

void tst_ObjectPool::cleanup()
{
    m_added.reset();
    m_removed.reset();
    m_pool.reset();
}

void tst_ObjectPool::emptyPool()
{
    QCOMPARE(m_pool->allObjects(), Objects());
}

void tst_ObjectPool::addToEmptyPool()
{
    QObject a;
    m_pool->add(&a);
    QCOMPARE(m_pool->allObjects(), Objects { &a });
    QCOMPARE(emitted(*m_added), Objects { &a });
    QCOMPARE(emitted(*m_removed), Objects());
}

void tst_ObjectPool::addTwice()
{
    QObject a;
    m_pool->add(&a);
    m_pool->add(&a);
    QCOMPARE(m_pool->allObjects(), Objects { &a });
    QCOMPARE(emitted(*m_added), Objects { &a });
}

void tst_ObjectPool::insertionOrder()
{
    QObject a;
    QObject b;
    QObject c;
    m_pool->add(&c);
    m_pool->add(&a);
    m_pool->add(&b);
    QCOMPARE(m_pool->allObjects(), (Objects { &c, &a, &b }));

    // Withdrawn and published again: at the end.
    QVERIFY(m_pool->remove(&c));
    m_pool->add(&c);
    QCOMPARE(m_pool->allObjects(), (Objects { &a, &b, &c }));
    QCOMPARE(emitted(*m_added), (Objects { &c, &a, &b, &c }));
    QCOMPARE(emitted(*m_removed), Objects { &c });
}

void tst_ObjectPool::removeThenDestroy()
{
    auto a = std::make_unique<QObject>();
    QObject b;
    m_pool->add(a.get());
    m_pool->add(&b);

    QCOMPARE(m_pool->remove(a.get()), true);
    QCOMPARE(m_pool->allObjects(), Objects { &b });
    QCOMPARE(emitted(*m_removed), Objects { a.get() });

    AnySignal poolSignals(m_pool.get());
    a.reset();
    QCOMPARE(m_pool->allObjects(), Objects { &b });
    QCOMPARE(poolSignals.sent(), QStringList());
}

void tst_ObjectPool::removeUnknown()
{
    QObject a;
    QObject c;
    m_pool->add(&a);

    AnySignal poolSignals(m_pool.get());
    QCOMPARE(m_pool->remove(&c), false);
    QCOMPARE(m_pool->allObjects(), Objects { &a });
    QCOMPARE(poolSignals.sent(), QStringList());

    // A removed object is unknown again.
    QVERIFY(m_pool->remove(&a));
    QCOMPARE(m_pool->remove(&a), false);
    QCOMPARE(emitted(*m_removed), Objects { &a });
}

void tst_ObjectPool::destroyedWhilePublished()
{
    QObject a;
    auto b = std::make_unique<QObject>();
    QObject c;
    m_pool->add(&a);
    m_pool->add(b.get());
    m_pool->add(&c);

    AnySignal poolSignals(m_pool.get());
    b.reset();
    QCOMPARE(m_pool->allObjects(), (Objects { &a, &c }));
    // Silently: no objectRemoved, and no other signal either.
    QCOMPARE(poolSignals.sent(), QStringList());
    QCOMPARE(emitted(*m_removed), Objects());
}

void tst_ObjectPool::destroyedAfterAddedAgain()
{
    // Withdrawn and published again, then destroyed: forgotten once, silently.
    auto a = std::make_unique<QObject>();
    QObject b;
    m_pool->add(a.get());
    QVERIFY(m_pool->remove(a.get()));
    m_pool->add(&b);
    m_pool->add(a.get());
    QCOMPARE(m_pool->allObjects(), (Objects { &b, a.get() }));

    a.reset();
    QCOMPARE(m_pool->allObjects(), Objects { &b });
    QCOMPARE(m_removed->count(), 1);
}

void tst_ObjectPool::nullObject()
{
    // A null pointer is published like any other value; Qt refuses to watch it for
    // destruction and says so.
    QTest::ignoreMessage(
        QtWarningMsg, "QObject::connect(QObject, Zelvane::ObjectPool): invalid nullptr parameter");
    m_pool->add(nullptr);
    QCOMPARE(m_pool->allObjects(), Objects { nullptr });
    QCOMPARE(emitted(*m_added), Objects { nullptr });

    QTest::ignoreMessage(QtWarningMsg, "QObject::disconnect: Unexpected nullptr parameter");
    QCOMPARE(m_pool->remove(nullptr), true);
    QCOMPARE(m_pool->allObjects(), Objects());
    QCOMPARE(emitted(*m_removed), Objects { nullptr });
}

void tst_ObjectPool::destroyingThePoolLeavesObjectsAlive()
{
    QPointer<QObject> a = new QObject;
    QPointer<QObject> b = new QObject;
    int removals = 0;
    connect(m_pool.get(), &ObjectPool::objectRemoved, this, [&removals] { ++removals; });
    m_pool->add(a);
    m_pool->add(b);

    cleanup();
    QVERIFY(a);
    QVERIFY(b);
    QCOMPARE(removals, 0);

    // Their destruction no longer reaches the pool.
    delete a.data();
    delete b.data();
    QVERIFY(a.isNull());
    QVERIFY(b.isNull());
}

void tst_ObjectPool::destroyedInAnotherThread()
{
    // The pool hears of the destruction through a queued call in its own thread.
    QThread thread;
    auto* object = new QObject;
    QObject* const address = object;
    m_pool->add(object);
    object->moveToThread(&thread);
    connect(&thread, &QThread::started, object, &QObject::deleteLater);
    connect(object, &QObject::destroyed, &thread, &QThread::quit, Qt::DirectConnection);
    thread.start();
    QVERIFY(thread.wait(10000));

    // Gone, but the pool's thread has not run yet.
    QCOMPARE(m_pool->allObjects(), Objects { address });
    QTRY_COMPARE(m_pool->allObjects(), Objects());
    QCOMPARE(m_removed->count(), 0);
}

void tst_ObjectPool::parent()
{
    QCOMPARE(m_pool->parent(), nullptr);

    QObject owner;
    QPointer<ObjectPool> child = new ObjectPool(&owner);
    QCOMPARE(child->parent(), &owner);
    QCOMPARE(owner.children(), Objects { child.data() });

    QObject published;
    child->add(&published);
    delete child.data();
    QVERIFY(child.isNull());
    QCOMPARE(published.parent(), nullptr);
}

void tst_ObjectPool::defaultConstructibleMetaType()
{
    const QMetaType type = QMetaType::fromType<ObjectPool>();
    QVERIFY(type.isValid());
    QCOMPARE(QByteArray(type.name()), QByteArrayLiteral("Zelvane::ObjectPool"));
    QCOMPARE(QMetaType::fromType<ObjectPool*>().metaObject(), &ObjectPool::staticMetaObject);

    void* created = type.create();
    QVERIFY(created);
    auto* pool = static_cast<ObjectPool*>(created);
    QCOMPARE(pool->parent(), nullptr);
    QCOMPARE(pool->allObjects(), Objects());
    QCOMPARE(QByteArray(pool->metaObject()->className()), QByteArrayLiteral("Zelvane::ObjectPool"));
    type.destroy(created);
}

void tst_ObjectPool::poolMetaObject()
{
    const QMetaObject& meta = ObjectPool::staticMetaObject;
    const QMetaObject& base = QObject::staticMetaObject;
    QCOMPARE(QByteArray(meta.className()), QByteArrayLiteral("Zelvane::ObjectPool"));
    QCOMPARE(meta.superClass(), &base);

    // Two signals of its own, first objectAdded, then objectRemoved; nothing else.
    QCOMPARE(meta.methodOffset(), base.methodCount());
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    const QList<QByteArray> signatures { QByteArrayLiteral("objectAdded(QObject*)"),
                                         QByteArrayLiteral("objectRemoved(QObject*)") };
    for (int i = 0; i < 2; ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        QCOMPARE(method.methodSignature(), signatures.at(i));
        QCOMPARE(method.methodType(), QMetaMethod::Signal);
        QCOMPARE(method.access(), QMetaMethod::Public);
        QCOMPARE(method.parameterNames(), QList<QByteArray> { QByteArrayLiteral("obj") });
        QCOMPARE(method.parameterMetaType(0), QMetaType::fromType<QObject*>());
        QCOMPARE(method.returnMetaType(), QMetaType::fromType<void>());
    }
    QCOMPARE(meta.indexOfSignal("objectAdded(QObject*)"), meta.methodOffset());
    QCOMPARE(meta.indexOfSignal("objectRemoved(QObject*)"), meta.methodOffset() + 1);
    QCOMPARE(QMetaMethod::fromSignal(&ObjectPool::objectAdded).methodIndex(), meta.methodOffset());
    QCOMPARE(QMetaMethod::fromSignal(&ObjectPool::objectRemoved).methodIndex(),
             meta.methodOffset() + 1);

    QCOMPARE(meta.propertyCount(), base.propertyCount());
    QCOMPARE(meta.enumeratorCount(), base.enumeratorCount());
    QCOMPARE(meta.classInfoCount(), base.classInfoCount());
    QCOMPARE(meta.constructorCount(), 0);
}

QTEST_GUILESS_MAIN(tst_ObjectPool)

#include "tst_objectpool.moc"
