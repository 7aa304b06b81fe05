#pragma once

// The library's classes as QML types of the module Zelvane, declared from outside: the
// classes themselves stay as they are. Internal: never installed.

#include <zelvane/diagnostics/pluginsfiltermodel.h>
#include <zelvane/pluginscaterogies.h>
#include <zelvane/pluginsmodel.h>

#include <QtQml/qqml.h>

namespace Zelvane {

struct PluginsModelForeign
{
    Q_GADGET
    QML_FOREIGN(Zelvane::PluginsModel)
    QML_NAMED_ELEMENT(PluginsModel)
    QML_UNCREATABLE("The controller makes the model: use Plugins.model")
};

struct PluginsCaterogiesForeign
{
    Q_GADGET
    QML_FOREIGN(Zelvane::PluginsCaterogies)
    QML_NAMED_ELEMENT(PluginsCaterogies)
    QML_UNCREATABLE("Use Plugins.categories")
};

// The filter's base classes, for the QML tools: their properties, signals and invokable
// methods (index(), setData(), modelReset...) are what a page uses.
struct QAbstractProxyModelForeign
{
    Q_GADGET
    QML_FOREIGN(QAbstractProxyModel)
    QML_ANONYMOUS
};

struct QSortFilterProxyModelForeign
{
    Q_GADGET
    QML_FOREIGN(QSortFilterProxyModel)
    QML_ANONYMOUS
};

struct PluginsFilterModelForeign
{
    Q_GADGET
    QML_FOREIGN(Zelvane::PluginsFilterModel)
    QML_NAMED_ELEMENT(PluginsFilterModel)
};

} // namespace Zelvane
