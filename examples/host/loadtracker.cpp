#include "loadtracker.h"

#include <zelvane/objectpool.h>

#include <QtCore/QJsonObject>

namespace ZelvaneDemo {

LoadTracker::LoadTracker(const QDir& dir, const QString& iid, Zelvane::ObjectPool* pool,
                         QObject* parent)
    : QObject(parent)
{
    const QStringList names
        = dir.entryList(QStringList { QStringLiteral("*.so") }, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        auto loader = std::make_unique<QPluginLoader>(dir.absoluteFilePath(name));
        // metaData() reads the file's metadata section; it does not load the library.
        const QJsonObject metaData = loader->metaData();
        if (metaData.value(QLatin1String("IID")).toString() != iid)
            continue;
        const QString pluginName = metaData.value(QLatin1String("MetaData"))
                                       .toObject()
                                       .value(QLatin1String("Name"))
                                       .toVariant()
                                       .toString();
        if (pluginName.isEmpty())
            continue;
        m_files.push_back(PluginFile { pluginName, std::move(loader), false });
    }

    connect(pool, &Zelvane::ObjectPool::objectAdded, this, [this](QObject* obj) {
        if (m_finished)
            return;
        collectNewlyLoaded();
        // Plugins publish from initialize(), which runs right after their library is
        // loaded: the object belongs to the plugin loaded last.
        if (!m_loadOrder.isEmpty())
            m_publishers.insert(obj, m_loadOrder.constLast());
    });
}

LoadTracker::~LoadTracker() = default;

void LoadTracker::finish()
{
    collectNewlyLoaded();
    m_finished = true;
}

QStringList LoadTracker::collectNewlyLoaded()
{
    // A QPluginLoader for a file that the controller has loaded shares Qt's state for
    // that library, so isLoaded() answers for the controller's loader too. Two plugins
    // found at one look (the first published nothing) keep their file order.
    QStringList found;
    for (PluginFile& file : m_files) {
        if (file.seen || !file.loader->isLoaded())
            continue;
        file.seen = true;
        found.append(file.name);
    }
    m_loadOrder.append(found);
    return found;
}

} // namespace ZelvaneDemo
