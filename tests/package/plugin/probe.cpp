// The smallest plugin a plugin author writes.

#include <zelvane/IPlugin>

class Probe : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Package/1.0" FILE "probe.json")

public:
    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(arguments)
        Q_UNUSED(errorString)
        return true;
    }
};

#include "probe.moc"
