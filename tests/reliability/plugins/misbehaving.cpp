// A plugin that does what plugins should not, each when its argument asks for it:
//   "Misbehaving/callback" = <dir>  initialize() calls back into the controller while
//                                   the controller is loading it: pool(), pluginsModel(),
//                                   isEnabled(), settings(), pluginIID(), errorString()
//                                   and pluginsOptions(<dir>); what it saw is kept in
//                                   the root object's properties
//   "Misbehaving/throw"             initialize() throws an int, not a std::exception
//   "Misbehaving/sweep"             the destructor deletes every other object in the
//                                   pool, whoever published it
// Like the shared test plugin it records "initialize:Misbehaving" and
// "destroy:Misbehaving" in the trace of tests/common/zelvanetest.h.

#include <zelvane/iplugin.h>
#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QDir>
#include <QtCore/QVariant>

namespace {

void trace(const char* event)
{
    QObject* pool = Zelvane::PluginController::instance()->pool();
    QStringList events = pool->property("zelvaneTestEvents").toStringList();
    events.append(QString::fromLatin1(event) + QLatin1String(":Misbehaving"));
    pool->setProperty("zelvaneTestEvents", events);
}

} // namespace

class MisbehavingPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Test/1.0" FILE "misbehaving.json")

public:
    MisbehavingPlugin() { setObjectName(QStringLiteral("Misbehaving")); }

    ~MisbehavingPlugin() override
    {
        trace("destroy");
        if (!m_sweep)
            return;
        Zelvane::ObjectPool* pool = Zelvane::PluginController::instance()->pool();
        const QList<QObject*> objects = pool->allObjects();
        for (QObject* object : objects) {
            // Each deletion may take others with it (children): ask the pool again.
            if (object != this && pool->allObjects().contains(object))
                delete object;
        }
    }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(errorString)
        trace("initialize");
        Zelvane::PluginController* controller = Zelvane::PluginController::instance();
        controller->pool()->add(this);
        m_sweep = arguments.contains(QStringLiteral("Misbehaving/sweep"));

        const QString callback = QStringLiteral("Misbehaving/callback");
        if (arguments.contains(callback)) {
            setProperty("modelWasNull", controller->pluginsModel() == nullptr);
            setProperty("invalidHandleEnabled", controller->isEnabled(Zelvane::PluginLoader()));
            setProperty("hasSettings", controller->settings() != nullptr);
            setProperty("iid", controller->pluginIID());
            setProperty("errorString", controller->errorString());
            QStringList pooled;
            const QList<QObject*> objects = controller->pool()->allObjects();
            for (const QObject* object : objects)
                pooled.append(object->objectName());
            setProperty("pooled", pooled);
            QStringList options;
            const QList<QCommandLineOption> found
                = controller->pluginsOptions(QDir(arguments.value(callback)));
            for (const QCommandLineOption& option : found)
                options.append(option.names());
            setProperty("options", options);
        }
        if (arguments.contains(QStringLiteral("Misbehaving/throw")))
            throw 42;
        return true;
    }

private:
    bool m_sweep = false;
};

#include "misbehaving.moc"
