#include <zelvane/IPlugin>
#include <zelvane/ObjectPool>
#include <zelvane/PluginController>

class GreeterPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.MyEditor/1.0" FILE "greeter.json")

public:
    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        // Every plugin gets the whole map; take the arguments declared in greeter.json.
        const QString greeting
            = arguments.value(QStringLiteral("greeting"), QStringLiteral("Hello"));
        if (greeting.isEmpty()) {
            *errorString = QStringLiteral("the greeting is empty");
            return false; // the host's loadPlugins() stops here and reports it
        }
        // Share an object with the other plugins; it lives as long as the plugin.
        auto* greeter = new QObject(this);
        greeter->setObjectName(greeting);
        Zelvane::PluginController::instance()->pool()->add(greeter);
        return true;
    }
};

#include "greeter.moc"
