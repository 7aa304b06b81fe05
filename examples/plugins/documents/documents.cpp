// Documents as the rest of the editor sees them: created and read by title, opened
// from and saved to files through the Storage plugin's document store, and shown in
// the workbench. Adds New, Open and Save to the File menu and the number of open
// documents to the status bar.

#include "../published.h"
#include "../workbench.h"

#include <zelvane/iplugin.h>

#include <QtCore/QFileInfo>
#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QtDebug>
#include <QtGui/QAction>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>

namespace {

// The editor keeps the file it was opened from or saved to, for Save and for Export.
const char fileNameProperty[] = "fileName";

} // namespace

class DocumentManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString errorString READ errorString)

public:
    DocumentManager(QObject* store, QObject* parent)
        : QObject(parent)
        , m_store(store)
    {
        setObjectName(QStringLiteral("documents"));
    }

    Q_INVOKABLE void create(const QString& title, const QString& text)
    {
        if (m_store)
            QMetaObject::invokeMethod(m_store, "write", Q_ARG(QString, title),
                                      Q_ARG(QString, text));
    }

    Q_INVOKABLE QString text(const QString& title) const
    {
        QString text;
        if (m_store)
            QMetaObject::invokeMethod(m_store, "read", Q_RETURN_ARG(QString, text),
                                      Q_ARG(QString, title));
        return text;
    }

    Q_INVOKABLE QStringList titles() const
    {
        QStringList titles;
        if (m_store)
            QMetaObject::invokeMethod(m_store, "names", Q_RETURN_ARG(QStringList, titles));
        return titles;
    }

    // The words of a document: runs of letters.
    Q_INVOKABLE QStringList words(const QString& title) const
    {
        static const QRegularExpression separators(QStringLiteral("[^\\p{L}]+"));
        return text(title).split(separators, Qt::SkipEmptyParts);
    }

    // Opens the file in the workbench; false, with errorString set, when it cannot be
    // read or there is no window to show it in.
    Q_INVOKABLE bool open(const QString& fileName)
    {
        Editor::IWorkbench* bench = workbench();
        if (!bench || !bench->window()) {
            m_errorString = tr("Cannot open %1: there is no window to show it in").arg(fileName);
            return false;
        }
        bool loaded = false;
        QMetaObject::invokeMethod(m_store, "load", Q_RETURN_ARG(bool, loaded),
                                  Q_ARG(QString, fileName));
        if (!loaded) {
            m_errorString = storeError();
            return false;
        }
        QPlainTextEdit* editor
            = bench->openDocument(QFileInfo(fileName).fileName(), text(fileName));
        editor->setProperty(fileNameProperty, QFileInfo(fileName).absoluteFilePath());
        return true;
    }

    QString errorString() const { return m_errorString; }

    int count() const { return int(m_editors.size()); }

    // Puts the commands and the count on screen, when the workbench has a window.
    void addToWorkbench()
    {
        Editor::IWorkbench* bench = workbench();
        if (!bench || !bench->window())
            return;
        auto* newAction = new QAction(tr("&New"), this);
        newAction->setObjectName(QStringLiteral("newDocument"));
        newAction->setShortcut(QKeySequence::New);
        connect(newAction, &QAction::triggered, this, [this] {
            if (Editor::IWorkbench* bench = workbench())
                bench->openDocument(tr("Untitled %1").arg(++m_untitled), QString());
        });
        auto* openAction = new QAction(tr("&Open…"), this);
        openAction->setObjectName(QStringLiteral("openDocument"));
        openAction->setShortcut(QKeySequence::Open);
        connect(openAction, &QAction::triggered, this, &DocumentManager::askOpen);
        auto* saveAction = new QAction(tr("&Save"), this);
        saveAction->setObjectName(QStringLiteral("saveDocument"));
        saveAction->setShortcut(QKeySequence::Save);
        connect(saveAction, &QAction::triggered, this, &DocumentManager::saveCurrent);
        for (QAction* action : { newAction, openAction, saveAction })
            bench->addAction(Editor::Menu::File, action);

        // The label is this plugin's: deleting it takes it out of the status bar.
        m_countLabel = new QLabel;
        m_countLabel->setObjectName(QStringLiteral("documentCount"));
        if (!bench->addStatusWidget(m_countLabel))
            delete m_countLabel;
        Editor::forEachPublished<QPlainTextEdit>(this, [this](QPlainTextEdit* editor) {
            m_editors.insert(editor);
            connect(editor, &QObject::destroyed, this, [this, editor] {
                m_editors.remove(editor);
                updateCount();
            });
            updateCount();
        });
        updateCount();
    }

    ~DocumentManager() override { delete m_countLabel; }

Q_SIGNALS:
    void countChanged();

private:
    Editor::IWorkbench* workbench() const
    {
        return qobject_cast<Editor::IWorkbench*>(
            Editor::findPublished(QStringLiteral("workbench")));
    }

    QString storeError() const
    {
        return m_store ? m_store->property("errorString").toString() : QString();
    }

    void askOpen()
    {
        Editor::IWorkbench* bench = workbench();
        const QString fileName = QFileDialog::getOpenFileName(
            bench->window(), tr("Open"), QString(), tr("Text files (*.txt);;All files (*)"));
        if (!fileName.isEmpty() && !open(fileName))
            QMessageBox::warning(bench->window(), tr("Open"), m_errorString);
    }

    void saveCurrent()
    {
        Editor::IWorkbench* bench = workbench();
        QPlainTextEdit* editor = bench->currentEditor();
        if (!editor)
            return;
        QString fileName = editor->property(fileNameProperty).toString();
        if (fileName.isEmpty()) {
            fileName = QFileDialog::getSaveFileName(
                bench->window(), tr("Save"), editor->documentTitle() + QStringLiteral(".txt"),
                tr("Text files (*.txt);;All files (*)"));
            if (fileName.isEmpty())
                return;
        }
        bool saved = false;
        QMetaObject::invokeMethod(m_store, "save", Q_RETURN_ARG(bool, saved),
                                  Q_ARG(QString, fileName), Q_ARG(QString, editor->toPlainText()));
        if (!saved) {
            QMessageBox::warning(bench->window(), tr("Save"), storeError());
            return;
        }
        editor->setProperty(fileNameProperty, fileName);
        editor->document()->setModified(false);
        bench->setDocumentTitle(editor, QFileInfo(fileName).fileName());
    }

    void updateCount()
    {
        if (m_countLabel)
            m_countLabel->setText(count() == 1 ? tr("1 document")
                                               : tr("%1 documents").arg(count()));
        Q_EMIT countChanged();
    }

    // Storage is unloaded after this plugin, but a pointer that notices is cheap.
    QPointer<QObject> m_store;
    QPointer<QLabel> m_countLabel;
    QSet<QPlainTextEdit*> m_editors;
    QString m_errorString;
    int m_untitled = 1;
};

class DocumentsPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "documents.json")

public:
    ~DocumentsPlugin() override { qInfo("Documents: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(arguments)
        // Storage is a declared dependency, so it has been initialised already.
        QObject* store = Editor::findPublished(QStringLiteral("documentStore"));
        if (!store) {
            *errorString = tr("no document store was published");
            return false;
        }
        auto* documents = new DocumentManager(store, this);
        Editor::publish(documents);
        documents->addToWorkbench();
        if (QObject* workbench = Editor::findPublished(QStringLiteral("workbench")))
            QMetaObject::invokeMethod(workbench, "addCommand", Q_ARG(QString, tr("New document")));
        qInfo("Documents: initialised");
        return true;
    }
};

#include "documents.moc"
