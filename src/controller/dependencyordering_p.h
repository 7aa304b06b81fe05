#pragma once

// Internal to the controller: included by its source file and by the tests, and
// never installed. The function has internal linkage in every file that includes it.

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <algorithm>

namespace Zelvane {

// Reorders plugins in place so that every plugin follows the plugins it names as
// dependencies. The spelling of the name is deliberate and kept: the tests call it by
// this name (tst_dependencysorting).
//
// This is a first-fit selection with swaps, not a stable topological sort: the
// nearest ready plugin is swapped to the boundary of the placed prefix, which can
// carry the plugin that stood there to the back. When no unplaced plugin is ready
// (missing dependency, cycle, self-dependency) the one plugin at the boundary is
// removed and the rest stay behind the prefix in their current order. Which plugin a
// host loses, and the load order of independent plugins, depend on exactly this, so
// keep it: tst_dependencysorting's worked examples and its randomized lists, and
// tst_loadplugins' stuck-ordering scenario, pin it.
//
// A template so that the tests can run it over plain records; the library uses it
// with PluginLoader. Plugin needs name(), dependencies() and == with a QString.
template<typename Plugin>
[[maybe_unused]] static void dependecySorting(QList<Plugin>& plugins)
{
    const auto begin = plugins.begin(); // detaches the list once, before any move
    const auto end = plugins.end();
    auto placed = begin;

    // Captures the boundary by reference: each test sees the prefix as it is now.
    const auto isReady = [&begin, &placed](const Plugin& plugin) {
        const QStringList dependencies = plugin.dependencies();
        return std::all_of(dependencies.cbegin(), dependencies.cend(),
                           [&](const QString& dependency) {
                               return std::find(begin, placed, dependency) != placed;
                           });
    };

    while (placed != end) {
        const auto ready = std::find_if(placed, end, isReady);
        if (ready == end) {
            plugins.erase(placed);
            return;
        }
        std::iter_swap(ready, placed);
        ++placed;
    }
}

} // namespace Zelvane
