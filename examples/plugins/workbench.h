#pragma once

// The editor's main window, reduced to what other plugins need of it: a title and a
// list of commands to which extensions add their own. Either core plugin publishes its
// workbench under the one name "workbench", so an extension works with whichever the
// user chose.

#include <QtCore/QObject>
#include <QtCore/QStringList>

class Workbench : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QStringList commands READ commands NOTIFY commandsChanged)

public:
    Workbench(const QString& title, QObject* parent)
        : QObject(parent)
        , m_title(title)
    {
        setObjectName(QStringLiteral("workbench"));
    }

    QString title() const { return m_title; }
    QStringList commands() const { return m_commands; }

    Q_INVOKABLE void addCommand(const QString& command)
    {
        m_commands.append(command);
        Q_EMIT commandsChanged();
    }

Q_SIGNALS:
    void commandsChanged();

private:
    QString m_title;
    QStringList m_commands;
};
