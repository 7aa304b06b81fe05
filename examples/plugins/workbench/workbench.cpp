// The editor's main window, reduced to what other plugins need of it: a title and a
// list of commands to which extensions add their own.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QStringList>
#include <QtCore/QtDebug>

class Workbench : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QStringList commands READ commands NOTIFY commandsChanged)

public:
    explicit Workbench(QObject* parent)
        : QObject(parent)
    {
        // Either core plugin publishes its workbench under this one name, so an
        // extension works with whichever the user chose.
        setObjectName(QStringLiteral("workbench"));
    }

    QString title() const { return tr("Document Editor"); }
    QStringList commands() const { return m_commands; }

    Q_INVOKABLE void addCommand(const QString& command)
    {
        m_commands.append(command);
        Q_EMIT commandsChanged();
    }

Q_SIGNALS:
    void commandsChanged();

private:
    QStringList m_commands;
};

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
        Editor::publish(new Workbench(this));
        qInfo("Workbench: initialised");
        return true;
    }
};

#include "workbench.moc"
