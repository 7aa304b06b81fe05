// A second core plugin that can replace the workbench: a distraction-free window
// with one document and no panels. It publishes the same object under the same name,
// so the extensions do not notice which core plugin runs.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QStringList>
#include <QtCore/QtDebug>

class FocusWorkbench : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QStringList commands READ commands NOTIFY commandsChanged)

public:
    explicit FocusWorkbench(QObject* parent)
        : QObject(parent)
    {
        setObjectName(QStringLiteral("workbench"));
    }

    QString title() const { return tr("Document Editor (focus mode)"); }
    QStringList commands() const { return m_commands; }

    // Commands are kept, for the shortcut keys, but focus mode shows no menu.
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
        Editor::publish(new FocusWorkbench(this));
        qInfo("Focus: initialised");
        return true;
    }
};

#include "focus.moc"
