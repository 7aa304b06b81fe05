// A second core plugin that can replace the workbench: a distraction-free window
// with one document and no panels (no tabs, no tool or status bar), the text in a
// narrow column. It publishes the same kind of object under the same name, so the
// extensions do not notice which core plugin runs.

#include "../menus.h"
#include "../published.h"
#include "../workbench.h"

#include <zelvane/iplugin.h>

#include <QtCore/QtDebug>
#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPlainTextEdit>

#include <memory>

class FocusWorkbench : public Editor::Workbench
{
    Q_OBJECT

public:
    explicit FocusWorkbench(QObject* parent)
        : Editor::Workbench(QObject::tr("Document Editor (focus mode)"), parent)
    {
        if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
            return;
        m_window = std::make_unique<QMainWindow>();
        m_window->setObjectName(QStringLiteral("focusWindow"));
        m_menus = std::make_unique<Editor::Menus>(m_window.get());

        m_editor = new QPlainTextEdit;
        m_editor->setObjectName(QStringLiteral("editor"));
        m_editor->setFrameShape(QFrame::NoFrame);
        m_editor->setMaximumWidth(600);
        m_editor->document()->setDocumentMargin(20);
        QFont font = m_editor->font();
        font.setPointSizeF(font.pointSizeF() * 1.3);
        m_editor->setFont(font);

        // The page: a column of text on a quiet background.
        auto* page = new QWidget;
        page->setObjectName(QStringLiteral("focusPage"));
        page->setAutoFillBackground(true);
        QPalette palette = page->palette();
        palette.setColor(QPalette::Window, QColor(0xee, 0xea, 0xe0));
        page->setPalette(palette);
        auto* layout = new QHBoxLayout(page);
        layout->setContentsMargins(24, 24, 24, 24);
        layout->addWidget(m_editor);
        m_window->setCentralWidget(page);

        auto* quit = new QAction(tr("&Quit"), this);
        quit->setShortcut(QKeySequence::Quit);
        connect(quit, &QAction::triggered, m_window.get(), &QWidget::close);
        QMenu* file = m_menus->menu(Editor::Menu::File);
        m_quitSeparator = file->addSeparator();
        file->addAction(quit);
        connect(m_editor->document(), &QTextDocument::modificationChanged, this,
                &FocusWorkbench::updateWindowTitle);
        m_window->resize(760, 480);
    }

    ~FocusWorkbench() override { m_window.reset(); }

    // The one editor, for the plugin to publish once the workbench is in the pool.
    QPlainTextEdit* editor() const { return m_editor; }

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
        Q_UNUSED(widget)
        return false;
    }

    QPlainTextEdit* currentEditor() const override { return m_editor; }

    QPlainTextEdit* openDocument(const QString& title, const QString& text) override
    {
        if (!m_editor)
            return nullptr;
        // One document at a time: opening another replaces it in the same editor.
        m_editor->setPlainText(text);
        setDocumentTitle(m_editor, title);
        return m_editor;
    }

    void setDocumentTitle(QPlainTextEdit* editor, const QString& title) override
    {
        editor->setDocumentTitle(title);
        updateWindowTitle();
    }

private:
    void updateWindowTitle()
    {
        QString document = m_editor->documentTitle();
        if (m_editor->document()->isModified())
            document += QLatin1Char('*');
        m_window->setWindowTitle(tr("%1 - %2").arg(document, title()));
    }

    std::unique_ptr<QMainWindow> m_window;
    QPlainTextEdit* m_editor = nullptr;
    QAction* m_quitSeparator = nullptr;
    std::unique_ptr<Editor::Menus> m_menus;
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
        auto* workbench = new FocusWorkbench(this);
        Editor::publish(workbench);
        if (QPlainTextEdit* editor = workbench->editor()) {
            Editor::publish(editor);
            workbench->openDocument(tr("Untitled"), QString());
        }
        qInfo("Focus: initialised");
        return true;
    }
};

#include "focus.moc"
