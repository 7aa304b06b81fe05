// The object that hands the two category keys to scripts: the keys themselves, and
// the meta-object facts a script engine relies on to reach them.

#include <zelvane/pluginscaterogies.h>

#include <QtCore/QMetaMethod>
#include <QtCore/QMetaObject>
#include <QtCore/QMetaType>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtTest/QTest>

#include <type_traits>

using Zelvane::PluginsCaterogies;

class tst_PluginsCaterogies : public QObject
{
    Q_OBJECT

private slots:
    void keys();
    void requiredParent();
    void metaObject();
    void methods_data();
    void methods();
    void invokeByName_data();
    void invokeByName();
    void invokeByIndex_data();
    void invokeByIndex();
    void otherMetaCallsAreIgnored();
    void unknownMethodIsRefused();
    void metaCast_data();
    void metaCast();
    void noDefaultConstructor();
};

void tst_PluginsCaterogies::keys()
{
    QObject owner;
    PluginsCaterogies categories(&owner);
    QCOMPARE(categories.corePluginCategoryKey(), QStringLiteral("Core"));
    QCOMPARE(categories.extensionPluginCategoryKey(), QStringLiteral("Extension"));
    // A new string on every call.
    QString first = categories.corePluginCategoryKey();
    first[0] = QLatin1Char('c');
    QCOMPARE(categories.corePluginCategoryKey(), QStringLiteral("Core"));
}

void tst_PluginsCaterogies::requiredParent()
{
    auto* owner = new QObject;
    QPointer<PluginsCaterogies> categories = new PluginsCaterogies(owner);
    QCOMPARE(categories->parent(), owner);
    QCOMPARE(owner->findChild<PluginsCaterogies*>(), categories.data());
    delete owner;
    QVERIFY(categories.isNull());

    PluginsCaterogies orphan(nullptr);
    QCOMPARE(orphan.parent(), nullptr);
}

void tst_PluginsCaterogies::metaObject()
{
    const QMetaObject& meta = PluginsCaterogies::staticMetaObject;
    QCOMPARE(QByteArray(meta.className()), QByteArrayLiteral("Zelvane::PluginsCaterogies"));
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    QCOMPARE(meta.classInfoCount(), meta.classInfoOffset());
    QCOMPARE(meta.constructorCount(), 0);

    QObject owner;
    PluginsCaterogies categories(&owner);
    QCOMPARE(categories.metaObject(), &meta);
    QCOMPARE(QByteArray(categories.metaObject()->className()),
             QByteArrayLiteral("Zelvane::PluginsCaterogies"));
    QVERIFY(categories.inherits("Zelvane::PluginsCaterogies"));
    QVERIFY(!categories.inherits("PluginsCaterogies"));
}

void tst_PluginsCaterogies::methods_data()
{
    QTest::addColumn<int>("relativeIndex");
    QTest::addColumn<QByteArray>("signature");
    QTest::newRow("index 0") << 0 << QByteArrayLiteral("corePluginCategoryKey()");
    QTest::newRow("index 1") << 1 << QByteArrayLiteral("extensionPluginCategoryKey()");
}

void tst_PluginsCaterogies::methods()
{
    QFETCH(int, relativeIndex);
    QFETCH(QByteArray, signature);

    const QMetaObject& meta = PluginsCaterogies::staticMetaObject;
    const QMetaMethod method = meta.method(meta.methodOffset() + relativeIndex);
    QCOMPARE(method.methodSignature(), signature);
    QCOMPARE(meta.indexOfMethod(signature.constData()), meta.methodOffset() + relativeIndex);
    QCOMPARE(method.methodType(), QMetaMethod::Method);
    QCOMPARE(method.access(), QMetaMethod::Public);
    QCOMPARE(method.returnMetaType(), QMetaType::fromType<QString>());
    QCOMPARE(method.parameterCount(), 0);
    QVERIFY(!method.isConst());
    QCOMPARE(method.revision(), 0);
}

void tst_PluginsCaterogies::invokeByName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("corePluginCategoryKey")
        << QByteArrayLiteral("corePluginCategoryKey") << QStringLiteral("Core");
    QTest::newRow("extensionPluginCategoryKey")
        << QByteArrayLiteral("extensionPluginCategoryKey") << QStringLiteral("Extension");
}

void tst_PluginsCaterogies::invokeByName()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, expected);

    QObject owner;
    PluginsCaterogies categories(&owner);
    QString result;
    QVERIFY(QMetaObject::invokeMethod(&categories, name.constData(), Qt::DirectConnection,
                                      Q_RETURN_ARG(QString, result)));
    QCOMPARE(result, expected);
}

void tst_PluginsCaterogies::invokeByIndex_data()
{
    QTest::addColumn<int>("relativeIndex");
    QTest::addColumn<QString>("expected");
    QTest::newRow("index 0") << 0 << QStringLiteral("Core");
    QTest::newRow("index 1") << 1 << QStringLiteral("Extension");
}

void tst_PluginsCaterogies::invokeByIndex()
{
    QFETCH(int, relativeIndex);
    QFETCH(QString, expected);

    QObject owner;
    PluginsCaterogies categories(&owner);
    const int index = categories.metaObject()->methodOffset() + relativeIndex;

    QString invoked;
    QVERIFY(categories.metaObject()->method(index).invoke(&categories, Qt::DirectConnection,
                                                          Q_RETURN_ARG(QString, invoked)));
    QCOMPARE(invoked, expected);

    // Straight through the dispatcher, as a script engine calls it.
    QString dispatched;
    void* arguments[] = { &dispatched };
    const int rest = categories.qt_metacall(QMetaObject::InvokeMetaMethod, index, arguments);
    QCOMPARE(dispatched, expected);
    QVERIFY(rest < 0);
}

void tst_PluginsCaterogies::otherMetaCallsAreIgnored()
{
    QObject owner;
    PluginsCaterogies categories(&owner);
    const QMetaObject* meta = categories.metaObject();

    for (QMetaObject::Call call : { QMetaObject::ReadProperty, QMetaObject::WriteProperty,
                                    QMetaObject::ResetProperty, QMetaObject::CreateInstance,
                                    QMetaObject::IndexOfMethod, QMetaObject::BindableProperty }) {
        for (int relative : { 0, 1 }) {
            QString untouched = QStringLiteral("untouched");
            void* arguments[] = { &untouched, nullptr, nullptr };
            categories.qt_metacall(call, meta->propertyOffset() + relative, arguments);
            QCOMPARE(untouched, QStringLiteral("untouched"));
        }
    }
}

void tst_PluginsCaterogies::unknownMethodIsRefused()
{
    QObject owner;
    PluginsCaterogies categories(&owner);
    QString result = QStringLiteral("untouched");
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(QStringLiteral("^QMetaObject::invokeMethod: No such method "
                                          "Zelvane::PluginsCaterogies::pluginCategoryKey\\(\\)")));
    QVERIFY(!QMetaObject::invokeMethod(&categories, "pluginCategoryKey", Qt::DirectConnection,
                                       Q_RETURN_ARG(QString, result)));
    QCOMPARE(result, QStringLiteral("untouched"));
}

void tst_PluginsCaterogies::metaCast_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("self");
    QTest::newRow("its own class name") << QByteArrayLiteral("Zelvane::PluginsCaterogies") << true;
    QTest::newRow("QObject") << QByteArrayLiteral("QObject") << true;
    QTest::newRow("without the namespace") << QByteArrayLiteral("PluginsCaterogies") << false;
    QTest::newRow("spelled correctly") << QByteArrayLiteral("Zelvane::PluginsCategories") << false;
    QTest::newRow("another library class") << QByteArrayLiteral("Zelvane::PluginsModel") << false;
    QTest::newRow("empty") << QByteArrayLiteral("") << false;
}

void tst_PluginsCaterogies::metaCast()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, self);

    QObject owner;
    PluginsCaterogies categories(&owner);
    void* const expected = self ? static_cast<void*>(&categories) : nullptr;
    QCOMPARE(categories.qt_metacast(name.constData()), expected);
    QCOMPARE(categories.qt_metacast(nullptr), nullptr);

    QObject* object = &categories;
    QCOMPARE(qobject_cast<PluginsCaterogies*>(object), &categories);
    QCOMPARE(qobject_cast<PluginsCaterogies*>(&owner), nullptr);
}

void tst_PluginsCaterogies::noDefaultConstructor()
{
    QVERIFY(!std::is_default_constructible_v<PluginsCaterogies>);
    QVERIFY((std::is_constructible_v<PluginsCaterogies, QObject*>));

    const QMetaType type = QMetaType::fromType<PluginsCaterogies>();
    QVERIFY(type.isValid());
    QCOMPARE(QByteArray(type.name()), QByteArrayLiteral("Zelvane::PluginsCaterogies"));
    const QMetaType pointer = QMetaType::fromType<PluginsCaterogies*>();
    QCOMPARE(pointer.metaObject(), &PluginsCaterogies::staticMetaObject);
    QVERIFY(pointer.flags().testFlag(QMetaType::PointerToQObject));
    QVERIFY(type.iface()->defaultCtr == nullptr);
    QVERIFY(type.iface()->copyCtr == nullptr);
    QCOMPARE(type.create(), nullptr);

    // Nor can the meta-object make one: it declares no invokable constructor.
    QCOMPARE(PluginsCaterogies::staticMetaObject.newInstance(), nullptr);
}

QTEST_GUILESS_MAIN(tst_PluginsCaterogies)

#include "tst_pluginscaterogies.moc"
