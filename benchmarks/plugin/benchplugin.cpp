// The plugin behind every generated benchmark file: it does nothing in initialize(),
// so what a figure measures is the library's work and Qt's, not the plugin's.

#include <zelvane/iplugin.h>

class BenchPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Bench/1.0" FILE ZELVANE_BENCH_METADATA)

public:
    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(arguments)
        Q_UNUSED(errorString)
        return true;
    }
};

#include "benchplugin.moc"
