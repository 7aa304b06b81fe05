// The editor's default core plugin: the main window, with a tab per document, the
// menus that the extensions fill and a status bar. It publishes the workbench and
// every document's editor in the pool.

#include "../workbench.h"
#include "../menus.h"
#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QPointer>
#include <QtCore/QtDebug>
#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTabWidget>

#include <memory>

class TabbedWorkbench : public Editor::Workbench
{
    Q_OBJECT

public:
    explicit TabbedWorkbench(QObject* parent)
        : Editor::Workbench(QObject::tr("Document Editor"), parent)
    {
        // A console host has no QApplication: no window, only the title and commands.
        if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
            return;
        m_window = std::make_unique<QMainWindow>();
        m_window->setObjectName(QStringLiteral("workbenchWindow"));
        m_menus = std::make_unique<Editor::Menus>(m_window.get());
        m_tabs = new QTabWidget;
        m_tabs->setObjectName(QStringLiteral("documentTabs"));
        m_tabs->setDocumentMode(true);
        m_tabs->setTabsClosable(true);
        m_tabs->setMovable(true);
        m_window->setCentralWidget(m_tabs);
        connect(m_tabs, &QTabWidget::tabCloseRequested, this,
                [this](int index) { delete m_tabs->widget(index); });
        connect(m_tabs, &QTabWidget::currentChanged, this, &TabbedWorkbench::updateWindowTitle);

        auto* quit = new QAction(tr("&Quit"), this);
        quit->setShortcut(QKeySequence::Quit);
        connect(quit, &QAction::triggered, m_window.get(), &QWidget::close);
        QMenu* file = m_menus->menu(Editor::Menu::File);
        m_quitSeparator = file->addSeparator();
        file->addAction(quit);
        m_window->statusBar()->showMessage(tr("Ready"));
        m_window->resize(760, 480);
    }

    ~TabbedWorkbench() override
    {
        // The window's editors go before this plugin's code does.
        m_window.reset();
    }

    QMainWindow* window() const override { return m_window.get(); }

    void addAction(Editor::Menu which, QAction* action) override
    {
        if (!m_window)
            return;
        QMenu* target = m_menus->menu(which);
        if (which == Editor::Menu::File)
            target->insertAction(m_quitSeparator, action);
        else
            target->addAction(action);
    }

    bool addStatusWidget(QWidget* widget) override
    {
        if (!m_window)
            return false;
        m_window->statusBar()->addPermanentWidget(widget);
        return true;
    }

    QPlainTextEdit* currentEditor() const override
    {
        return m_tabs ? qobject_cast<QPlainTextEdit*>(m_tabs->currentWidget()) : nullptr;
    }

    QPlainTextEdit* openDocument(const QString& title, const QString& text) override
    {
        if (!m_window)
            return nullptr;
        // A document with text replaces the untouched empty one that the window
        // starts with; New always gets a tab of its own.
        QPlainTextEdit* editor = text.isEmpty() ? nullptr : currentEditor();
        if (!editor || !isUntouched(editor)) {
            editor = new QPlainTextEdit;
            editor->setObjectName(QStringLiteral("editor"));
            editor->setFrameShape(QFrame::NoFrame);
            m_tabs->addTab(editor, title);
            connect(editor->document(), &QTextDocument::modificationChanged, this,
                    [this, editor] { updateTab(editor); });
            Editor::publish(editor);
        }
        editor->setPlainText(text);
        setDocumentTitle(editor, title);
        m_tabs->setCurrentWidget(editor);
        return editor;
    }

    void setDocumentTitle(QPlainTextEdit* editor, const QString& title) override
    {
        editor->setDocumentTitle(title);
        updateTab(editor);
    }

private:
    // An empty document that nobody has typed into or saved.
    static bool isUntouched(QPlainTextEdit* editor)
    {
        return editor->document()->isEmpty() && !editor->document()->isModified()
            && editor->property("fileName").toString().isEmpty();
    }

    void updateTab(QPlainTextEdit* editor)
    {
        const int index = m_tabs->indexOf(editor);
        if (index < 0)
            return;
        QString text = editor->documentTitle();
        if (editor->document()->isModified())
            text += QLatin1Char('*');
        m_tabs->setTabText(index, text);
        updateWindowTitle();
    }

    void updateWindowTitle()
    {
        const QPlainTextEdit* editor = currentEditor();
        m_window->setWindowTitle(
            editor ? tr("%1 - %2").arg(m_tabs->tabText(m_tabs->currentIndex()), title()) : title());
    }

    std::unique_ptr<QMainWindow> m_window;
    QTabWidget* m_tabs = nullptr;
    QAction* m_quitSeparator = nullptr;
    std::unique_ptr<Editor::Menus> m_menus;
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
        auto* workbench = new TabbedWorkbench(this);
        Editor::publish(workbench);
        // Something to type into from the start; the first document opened replaces it
        // while it is still empty.
        workbench->openDocument(tr("Untitled"), QString());
        qInfo("Workbench: initialised");
        return true;
    }
};

#include "workbench.moc"
