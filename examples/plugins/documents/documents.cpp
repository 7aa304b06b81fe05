// Documents as the rest of the editor sees them: created and read by title, kept by
// the Storage plugin's document store.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtCore/QtDebug>

class DocumentManager : public QObject
{
    Q_OBJECT

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

private:
    // Storage is unloaded after this plugin, but a pointer that notices is cheap.
    QPointer<QObject> m_store;
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
        Editor::publish(new DocumentManager(store, this));
        if (QObject* workbench = Editor::findPublished(QStringLiteral("workbench")))
            QMetaObject::invokeMethod(workbench, "addCommand", Q_ARG(QString, tr("New document")));
        qInfo("Documents: initialised");
        return true;
    }
};

#include "documents.moc"
