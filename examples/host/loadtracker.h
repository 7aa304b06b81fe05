#pragma once

#include <QtCore/QDir>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QPluginLoader>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

namespace Zelvane {
class ObjectPool;
}

namespace ZelvaneDemo {

// Watches PluginController::loadPlugins() from the outside to tell the user which
// plugins were loaded, in which order, and who published which object.
//
// The controller keeps its list of loaded plugins to itself, so the tracker looks at
// what a host can see: before loading it reads every plugin file's metadata (never
// loading a file); while loading, each object that arrives in the pool was published by
// the plugin being initialised, and Qt's shared library state tells which plugin
// libraries have been loaded since the last look.
class LoadTracker : public QObject
{
    Q_OBJECT

public:
    LoadTracker(const QDir& dir, const QString& iid, Zelvane::ObjectPool* pool,
                QObject* parent = nullptr);
    ~LoadTracker() override;

    // Call after loadPlugins(): picks up plugins that published nothing.
    void finish();

    QStringList loadOrder() const { return m_loadOrder; }
    bool isLoaded(const QString& pluginName) const { return m_loadOrder.contains(pluginName); }
    // The plugin that published obj while it was initialised, or an empty string for
    // objects from elsewhere or published after the start-up (documents opened later).
    QString publisher(QObject* obj) const { return m_publishers.value(obj); }

private:
    struct PluginFile
    {
        QString name;
        std::unique_ptr<QPluginLoader> loader; // shares Qt's state for the file; never loads
        bool seen = false;
    };

    QStringList collectNewlyLoaded();

    std::vector<PluginFile> m_files;
    QStringList m_loadOrder;
    QHash<QObject*, QString> m_publishers;
    bool m_finished = false;
};

} // namespace ZelvaneDemo
