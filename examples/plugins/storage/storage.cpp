// Keeps the documents' texts by name. In memory here; a real editor would write files.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QtDebug>

class DocumentStore : public QObject
{
    Q_OBJECT

public:
    explicit DocumentStore(QObject* parent)
        : QObject(parent)
    {
        setObjectName(QStringLiteral("documentStore"));
    }

    Q_INVOKABLE void write(const QString& name, const QString& text) { m_texts.insert(name, text); }
    Q_INVOKABLE QString read(const QString& name) const { return m_texts.value(name); }
    Q_INVOKABLE QStringList names() const { return m_texts.keys(); }

private:
    QMap<QString, QString> m_texts;
};

class StoragePlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "storage.json")

public:
    ~StoragePlugin() override { qInfo("Storage: unloaded"); }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        Q_UNUSED(arguments)
        Q_UNUSED(errorString)
        Editor::publish(new DocumentStore(this));
        qInfo("Storage: initialised");
        return true;
    }
};

#include "storage.moc"
