// Keeps the documents' texts by name, and reads and writes them as UTF-8 text files.
// The other plugins never open a file themselves: what reaches the disk goes through
// the store that this plugin publishes.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QSaveFile>
#include <QtCore/QStringList>
#include <QtCore/QtDebug>

class DocumentStore : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString errorString READ errorString)

public:
    explicit DocumentStore(QObject* parent)
        : QObject(parent)
    {
        setObjectName(QStringLiteral("documentStore"));
    }

    Q_INVOKABLE void write(const QString& name, const QString& text) { m_texts.insert(name, text); }
    Q_INVOKABLE QString read(const QString& name) const { return m_texts.value(name); }
    Q_INVOKABLE QStringList names() const { return m_texts.keys(); }

    // Reads the file and keeps its text under its file name, for read(). False, with
    // errorString set, when the file cannot be read.
    Q_INVOKABLE bool load(const QString& fileName)
    {
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly)) {
            m_errorString = tr("Cannot read %1: %2").arg(fileName, file.errorString());
            return false;
        }
        write(fileName, QString::fromUtf8(file.readAll()));
        return true;
    }

    // Writes text to the file, whole or not at all, and keeps it under the file name.
    Q_INVOKABLE bool save(const QString& fileName, const QString& text)
    {
        QSaveFile file(fileName);
        if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit()) {
            m_errorString = tr("Cannot write %1: %2").arg(fileName, file.errorString());
            return false;
        }
        write(fileName, text);
        return true;
    }

    QString errorString() const { return m_errorString; }

private:
    QMap<QString, QString> m_texts;
    QString m_errorString;
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
