// The editor's default core plugin: it publishes the workbench, the editor's main
// window as far as other plugins see it.

#include "../workbench.h"
#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QtDebug>

class WorkbenchPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "workbench.json")

public:
    ~WorkbenchPlugin() override { qInfo("Workbench: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(arguments)
        Q_UNUSED(errorString)
        // A child of the plugin: it goes when the plugin is unloaded, and the pool
        // forgets it then.
        Editor::publish(new Workbench(QObject::tr("Document Editor"), this));
        qInfo("Workbench: initialised");
        return true;
    }
};

#include "workbench.moc"
