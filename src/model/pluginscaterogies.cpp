#include <zelvane/pluginscaterogies.h>

namespace Zelvane {

PluginsCaterogies::PluginsCaterogies(QObject* parent)
    : QObject(parent)
{
}

PluginsCaterogies::~PluginsCaterogies() = default;

QString PluginsCaterogies::corePluginCategoryKey()
{
    return QStringLiteral("Core");
}

QString PluginsCaterogies::extensionPluginCategoryKey()
{
    return QStringLiteral("Extension");
}

} // namespace Zelvane
