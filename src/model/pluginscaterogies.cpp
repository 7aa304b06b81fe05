#include <zelvane/pluginscaterogies.h>

#include "plugin/pluginnames_p.h"

namespace Zelvane {

PluginsCaterogies::PluginsCaterogies(QObject* parent)
    : QObject(parent)
{
}

PluginsCaterogies::~PluginsCaterogies() = default;

QString PluginsCaterogies::corePluginCategoryKey()
{
    return coreCategoryKey();
}

QString PluginsCaterogies::extensionPluginCategoryKey()
{
    return extensionCategoryKey();
}

} // namespace Zelvane
