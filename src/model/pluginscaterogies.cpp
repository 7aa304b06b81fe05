#include <zelvane/pluginscaterogies.h>

#include "plugin/pluginnames_p.h"

namespace Zelvane {

/*!
 * \class Zelvane::PluginsCaterogies
 * \headerfile pluginscaterogies.h <zelvane/PluginsCaterogies>
 * \brief Hands the two category keys, "Core" and "Extension", to code that only
 * reaches the library through the meta-object system.
 *
 * Typically a QML delegate of PluginsModel comparing its `category` role. The host
 * creates an instance and exposes it, for example as a context property of its QML
 * engine.
 *
 * The class name is spelled "Caterogies" on purpose: scripts and QML code know it by
 * that name, and its meta-object reports it.
 */

/*!
 * \fn Zelvane::PluginsCaterogies::PluginsCaterogies(QObject* parent)
 * \brief The parent is required, so the type has no default constructor.
 */
PluginsCaterogies::PluginsCaterogies(QObject* parent)
    : QObject(parent)
{
}

/*!
 * \fn Zelvane::PluginsCaterogies::~PluginsCaterogies()
 * \brief Destroys the object, with its parent.
 */
PluginsCaterogies::~PluginsCaterogies() = default;

/*!
 * \fn QString Zelvane::PluginsCaterogies::corePluginCategoryKey()
 * \brief "Core".
 */
QString PluginsCaterogies::corePluginCategoryKey()
{
    return coreCategoryKey();
}

/*!
 * \fn QString Zelvane::PluginsCaterogies::extensionPluginCategoryKey()
 * \brief "Extension".
 */
QString PluginsCaterogies::extensionPluginCategoryKey()
{
    return extensionCategoryKey();
}

} // namespace Zelvane
