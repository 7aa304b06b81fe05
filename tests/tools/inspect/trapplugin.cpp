// A plugin that leaves a file behind as soon as any of its code runs: its static
// initialiser creates the file named by ZELVANE_INSPECT_TRAP. Reading its metadata must
// not create the file.

#include <zelvane/iplugin.h>

#include <QtCore/QFile>

namespace {

struct Trap
{
    Trap()
    {
        const QByteArray path = qgetenv("ZELVANE_INSPECT_TRAP");
        if (path.isEmpty())
            return;
        QFile file(QString::fromLocal8Bit(path));
        if (file.open(QIODevice::WriteOnly))
            file.write("plugin code ran\n");
    }
} trap;

} // namespace

class TrapPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.zelvane.Test/1.0" FILE "plugins/trap.json")

public:
    bool initialize(const QMap<QString, QString>&, QString*) override { return true; }
};

#include "trapplugin.moc"
