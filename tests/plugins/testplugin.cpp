// The one source of every test plugin. Each plugin is this file built with its own
// JSON metadata and compile definitions (see zelvane_add_test_plugin()):
//   ZELVANE_TEST_IID       the interface identifier in Q_PLUGIN_METADATA
//   ZELVANE_TEST_METADATA  the JSON file; when undefined, the plugin embeds no metadata
//   ZELVANE_TEST_NAME      the plugin's "Name", used in the trace it leaves
//   ZELVANE_TEST_NOT_IPLUGIN  the root class derives from QObject instead of IPlugin
//   ZELVANE_TEST_UNRESOLVED   the library references a symbol that nothing defines
//
// What a plugin does is driven by the argument map it receives, keyed by its name:
//   "<Name>/fail"   initialize() answers false with the value as its text
//   "<Name>/throw"  initialize() throws a std::runtime_error with the value
// Every plugin records "initialize:<Name>" and "destroy:<Name>" in the trace (see
// tests/common/zelvanetest.h), publishes itself into the pool, and keeps the
// arguments it received in its "arguments" property.

#include <zelvane/iplugin.h>
#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>

#include <QtCore/QVariant>

#include <stdexcept>

namespace {

const char* const pluginName = ZELVANE_TEST_NAME;

void trace(const char* event)
{
    // A dynamic property of the controller's pool: shared by the test and every
    // plugin, because they all link the same library.
    QObject* pool = Zelvane::PluginController::instance()->pool();
    QStringList events = pool->property("zelvaneTestEvents").toStringList();
    events.append(QString::fromLatin1(event) + QLatin1Char(':') + QString::fromUtf8(pluginName));
    pool->setProperty("zelvaneTestEvents", events);
}

// Runs when the library is loaded, before any plugin object exists: proves whether
// plugin code ran. An environment variable, so nothing of the library is touched.
struct StaticTrace
{
    StaticTrace()
    {
        QByteArray loaded = qgetenv("ZELVANE_TEST_STATIC_INIT");
        if (!loaded.isEmpty())
            loaded += ',';
        qputenv("ZELVANE_TEST_STATIC_INIT", loaded + pluginName);
    }
} staticTrace;

} // namespace

#ifdef ZELVANE_TEST_UNRESOLVED
extern "C" int zelvane_test_symbol_that_nothing_defines;
extern "C" Q_DECL_EXPORT int* zelvane_test_unresolved_reference()
{
    return &zelvane_test_symbol_that_nothing_defines;
}
#endif

#ifdef ZELVANE_TEST_NOT_IPLUGIN
class TestPlugin : public QObject
#else
class TestPlugin : public Zelvane::IPlugin
#endif
{
    Q_OBJECT
#ifdef ZELVANE_TEST_METADATA
    Q_PLUGIN_METADATA(IID ZELVANE_TEST_IID FILE ZELVANE_TEST_METADATA)
#else
    Q_PLUGIN_METADATA(IID ZELVANE_TEST_IID)
#endif

public:
    TestPlugin()
    {
        setObjectName(QString::fromUtf8(pluginName));
    }
    ~TestPlugin() override
    {
        trace("destroy");
    }

#ifdef ZELVANE_TEST_NOT_IPLUGIN
    bool initialize(const QMap<QString, QString>& arguments, QString* errorString)
#else
    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
#endif
    {
        trace("initialize");
        QVariantMap received;
        for (auto it = arguments.cbegin(); it != arguments.cend(); ++it)
            received.insert(it.key(), it.value());
        setProperty("arguments", received);
        Zelvane::PluginController::instance()->pool()->add(this);

        const QString name = QString::fromUtf8(pluginName);
        const QString fail = name + QLatin1String("/fail");
        if (arguments.contains(fail)) {
            *errorString = arguments.value(fail);
            return false;
        }
        const QString toThrow = name + QLatin1String("/throw");
        if (arguments.contains(toThrow))
            throw std::runtime_error(arguments.value(toThrow).toStdString());
        return true;
    }
};

#include "testplugin.moc"
