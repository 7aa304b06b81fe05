#pragma once

// The editor's workbench: what the other plugins, and the host, use of whichever core
// plugin the user chose. Both core plugins publish one under the name "workbench";
// Workbench gives it a window with document tabs, Focus a single editor.
//
// Every open document is a QPlainTextEdit that the core plugin publishes in the pool
// too, so an extension that works on documents (the spell checker) finds the open
// ones there and hears of new ones through the pool's objectAdded signal. A closed
// document's editor is destroyed, and the pool forgets it.
//
// In a host without widgets (a console program) the workbench has no window: it then
// only keeps its title and the names of the commands that the extensions offer.

#include <QtCore/QObject>
#include <QtCore/QStringList>

QT_BEGIN_NAMESPACE
class QAction;
class QMainWindow;
class QPlainTextEdit;
class QWidget;
QT_END_NAMESPACE

namespace Editor {

enum class Menu { File, Tools, Help };

// Reached through qobject_cast on the published "workbench" object. The interface has
// no meta-object of its own, so it casts across plugin libraries, each of which
// compiles this header itself.
class IWorkbench
{
public:
    virtual ~IWorkbench() = default;

    // The editor's window; null in a host without widgets.
    virtual QMainWindow* window() const = 0;
    // Puts an extension's command into one of the window's menus; File commands go
    // before Quit. The action stays the extension's: deleting it takes it out again.
    virtual void addAction(Menu menu, QAction* action) = 0;
    // Shows a widget in the status bar; false when there is none (Focus has no
    // panels), and the widget stays the caller's.
    virtual bool addStatusWidget(QWidget* widget) = 0;

    // The document being edited; null when none is open.
    virtual QPlainTextEdit* currentEditor() const = 0;
    // Shows a document and returns its editor: a new tab in the workbench (a text
    // replaces the untouched empty document that it starts with), the one editor's
    // text in focus mode. Null without a window.
    virtual QPlainTextEdit* openDocument(const QString& title, const QString& text) = 0;
    // Renames the document shown in editor (its tab or its window title).
    virtual void setDocumentTitle(QPlainTextEdit* editor, const QString& title) = 0;
};

} // namespace Editor

Q_DECLARE_INTERFACE(Editor::IWorkbench, "org.zelvane.DocumentEditor.IWorkbench/1.0")

namespace Editor {

// What both core plugins publish as "workbench": the title and command names that a
// host without widgets prints, and the IWorkbench of the core plugin's window.
class Workbench : public QObject, public IWorkbench
{
    Q_OBJECT
    Q_INTERFACES(Editor::IWorkbench)
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

} // namespace Editor
