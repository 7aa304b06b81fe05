// Exports a document as HTML or Markdown: "Export as HTML…" and "Export as
// Markdown…" in the File menu, written through the Storage plugin's document store.
// The --export-format argument picks the format that Ctrl+E exports to. Off unless the
// user switches it on.

#include "../published.h"
#include "../workbench.h"

#include <zelvane/iplugin.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QtDebug>
#include <QtGui/QAction>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>

namespace {

const QString html = QStringLiteral("html");
const QString markdown = QStringLiteral("markdown");

// A page with the title as its heading and a paragraph per run of non-empty lines.
QString toHtml(const QString& title, const QString& text)
{
    static const QRegularExpression blankLines(QStringLiteral("\\n\\s*\\n"));
    QString body;
    const QStringList paragraphs = text.split(blankLines, Qt::SkipEmptyParts);
    for (const QString& paragraph : paragraphs)
        body += QStringLiteral("<p>%1</p>\n").arg(paragraph.trimmed().toHtmlEscaped());
    return QStringLiteral("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
                          "<title>%1</title>\n</head>\n<body>\n<h1>%1</h1>\n%2</body>\n</html>\n")
        .arg(title.toHtmlEscaped(), body);
}

QString toMarkdown(const QString& title, const QString& text)
{
    return QStringLiteral("# %1\n\n%2\n").arg(title, text.trimmed());
}

} // namespace

class Exporter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString format READ format CONSTANT)

public:
    Exporter(QObject* documents, const QString& format, QObject* parent)
        : QObject(parent)
        , m_documents(documents)
        , m_format(format)
    {
        setObjectName(QStringLiteral("exporter"));
    }

    QString format() const { return m_format; }

    // A stored document in the format of --export-format.
    Q_INVOKABLE QString exportDocument(const QString& title) const
    {
        QString text;
        if (m_documents)
            QMetaObject::invokeMethod(m_documents, "text", Q_RETURN_ARG(QString, text),
                                      Q_ARG(QString, title));
        return convert(m_format, title, text);
    }

    static QString convert(const QString& format, const QString& title, const QString& text)
    {
        return format == markdown ? toMarkdown(title, text) : toHtml(title, text);
    }

    void addToWorkbench(Editor::IWorkbench* workbench)
    {
        if (!workbench->window())
            return;
        m_workbench = workbench;
        auto* asHtml = new QAction(tr("Export as &HTML…"), this);
        asHtml->setObjectName(QStringLiteral("exportHtml"));
        connect(asHtml, &QAction::triggered, this, [this] { exportCurrent(html); });
        auto* asMarkdown = new QAction(tr("Export as &Markdown…"), this);
        asMarkdown->setObjectName(QStringLiteral("exportMarkdown"));
        connect(asMarkdown, &QAction::triggered, this, [this] { exportCurrent(markdown); });
        (m_format == markdown ? asMarkdown : asHtml)->setShortcut(tr("Ctrl+E"));
        workbench->addAction(Editor::Menu::File, asHtml);
        workbench->addAction(Editor::Menu::File, asMarkdown);
    }

private:
    void exportCurrent(const QString& format)
    {
        QPlainTextEdit* editor = m_workbench->currentEditor();
        if (!editor)
            return;
        const QString title = QFileInfo(editor->documentTitle()).completeBaseName();
        const QString suffix = format == markdown ? QStringLiteral(".md") : QStringLiteral(".html");
        const QString fileName = editor->property("fileName").toString();
        const QString suggested = fileName.isEmpty()
            ? title + suffix
            : QFileInfo(fileName).dir().filePath(title + suffix);
        const QString target = QFileDialog::getSaveFileName(
            m_workbench->window(),
            format == markdown ? tr("Export as Markdown") : tr("Export as HTML"), suggested,
            format == markdown ? tr("Markdown (*.md)") : tr("HTML (*.html *.htm)"));
        if (target.isEmpty())
            return;
        QObject* store = Editor::findPublished(QStringLiteral("documentStore"));
        bool saved = false;
        if (store)
            QMetaObject::invokeMethod(
                store, "save", Q_RETURN_ARG(bool, saved), Q_ARG(QString, target),
                Q_ARG(QString, convert(format, title, editor->toPlainText())));
        if (!saved)
            QMessageBox::warning(m_workbench->window(), tr("Export"),
                                 store ? store->property("errorString").toString()
                                       : tr("No document store was published."));
    }

    QPointer<QObject> m_documents;
    QString m_format;
    Editor::IWorkbench* m_workbench = nullptr;
};

class ExportPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "export.json")

public:
    ~ExportPlugin() override { qInfo("Export: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        const QString format = arguments.value(QStringLiteral("export-format"), html);
        if (format != html && format != markdown) {
            *errorString
                = tr("unknown export format \"%1\" (there are html and markdown)").arg(format);
            return false;
        }
        QObject* documents = Editor::findPublished(QStringLiteral("documents"));
        if (!documents) {
            *errorString = tr("the document manager was not published");
            return false;
        }
        auto* exporter = new Exporter(documents, format, this);
        Editor::publish(exporter);
        QObject* workbench = Editor::findPublished(QStringLiteral("workbench"));
        if (workbench)
            QMetaObject::invokeMethod(workbench, "addCommand", Q_ARG(QString, tr("Export")));
        if (auto* bench = qobject_cast<Editor::IWorkbench*>(workbench))
            exporter->addToWorkbench(bench);
        qInfo("Export: initialised");
        return true;
    }
};

#include "export.moc"
