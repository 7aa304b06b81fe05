// Prints the pool that the controller hands out, or, given a plugin file, that file's
// own metadata as Qt reads it (without loading the plugin).

#include <zelvane/ObjectPool>
#include <zelvane/PluginController>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);

    if (argc > 1) {
        const QPluginLoader plugin(QString::fromLocal8Bit(argv[1]));
        const QJsonObject metaData = plugin.metaData().value(QLatin1String("MetaData")).toObject();
        std::printf("%s\n", QJsonDocument(metaData).toJson(QJsonDocument::Compact).constData());
        return metaData.isEmpty() ? 1 : 0;
    }

    Zelvane::ObjectPool* pool = Zelvane::PluginController::instance()->pool();
    if (!pool)
        return 1;
    std::printf("%s owned by %s\n", pool->metaObject()->className(),
                pool->parent()->metaObject()->className());
    return 0;
}
