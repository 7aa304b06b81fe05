// A second core plugin that can replace the workbench: a distraction-free window
// with one document and no panels. It publishes the same object under the same name,
// so the extensions do not notice which core plugin runs.

#include "../published.h"
#include "../workbench.h"

#include <zelvane/iplugin.h>

#include <QtCore/QtDebug>

class FocusPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "focus.json")

public:
    ~FocusPlugin() override { qInfo("Focus: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(arguments)
        Q_UNUSED(errorString)
        Editor::publish(new Workbench(QObject::tr("Document Editor (focus mode)"), this));
        qInfo("Focus: initialised");
        return true;
    }
};

#include "focus.moc"
