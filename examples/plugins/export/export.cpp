// Exports a document as HTML or Markdown. Off unless the user switches it on.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QtDebug>

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

    Q_INVOKABLE QString exportDocument(const QString& title) const
    {
        QString text;
        if (m_documents)
            QMetaObject::invokeMethod(m_documents, "text", Q_RETURN_ARG(QString, text),
                                      Q_ARG(QString, title));
        if (m_format == QLatin1String("markdown"))
            return QStringLiteral("# %1\n\n%2\n").arg(title, text);
        return QStringLiteral("<h1>%1</h1>\n<p>%2</p>\n")
            .arg(title.toHtmlEscaped(), text.toHtmlEscaped());
    }

private:
    QPointer<QObject> m_documents;
    QString m_format;
};

class ExportPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "export.json")

public:
    ~ExportPlugin() override { qInfo("Export: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        const QString format
            = arguments.value(QStringLiteral("export-format"), QStringLiteral("html"));
        if (format != QLatin1String("html") && format != QLatin1String("markdown")) {
            *errorString
                = tr("unknown export format \"%1\" (there are html and markdown)").arg(format);
            return false;
        }
        QObject* documents = Editor::findPublished(QStringLiteral("documents"));
        if (!documents) {
            *errorString = tr("the document manager was not published");
            return false;
        }
        Editor::publish(new Exporter(documents, format, this));
        if (QObject* workbench = Editor::findPublished(QStringLiteral("workbench")))
            QMetaObject::invokeMethod(workbench, "addCommand", Q_ARG(QString, tr("Export")));
        qInfo("Export: initialised");
        return true;
    }
};

#include "export.moc"
