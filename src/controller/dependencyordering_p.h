#pragma once

// Internal to the controller: included by its source file and by the tests, and
// never installed. The function has internal linkage in every file that includes it.

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <algorithm>
#include <functional>
#include <queue>
#include <vector>

namespace Zelvane {

// Reorders plugins in place so that every plugin follows the plugins it names as
// dependencies. The spelling of the name is deliberate and must stay: code outside
// the controller's sources calls the function by this name.
//
// The result is that of a first-fit selection with swaps, not of a stable topological
// sort: step by step, the nearest ready plugin behind the placed prefix is swapped to
// the prefix's boundary, which can carry the plugin that stood there to the back. When
// no unplaced plugin is ready (missing dependency, cycle, self-dependency) the one
// plugin at the boundary is removed and the rest stay behind the prefix in their
// current order. Which plugin a host loses, and the load order of independent plugins,
// depend on exactly this, so keep it: any list, including one whose ordering gets
// stuck, must come out as the step-by-step form below would leave it.
//
// Done step by step, that selection searches the whole unplaced rest at every step
// and the placed prefix at every readiness test: cubic in the worst listing order,
// seconds for a few thousand plugins. This form gives the identical list in time that
// grows with plugins plus dependencies, from three observations:
// - readiness only grows: a plugin is ready once each name it needs has been placed,
//   so counting a plugin's still-missing names replaces the search of the prefix;
// - a ready plugin never moves until it is placed: the only plugin a swap moves is the
//   one at the boundary, and had that one been ready it would have been the nearest;
// - so the nearest ready plugin is the smallest position in a heap of the positions
//   of ready plugins, each pushed once, when its last missing name is placed.
//
// A template so that the tests can run it over plain records; the library uses it
// with PluginLoader. Plugin needs name() and dependencies().
template<typename Plugin>
[[maybe_unused]] static void dependecySorting(QList<Plugin>& plugins)
{
    const qsizetype count = plugins.size();

    // The common case first: a list that is already in order, which the selection
    // leaves as it is (every plugin is ready where it stands). One pass over a set of
    // the names seen tells it, without the bookkeeping below.
    {
        QSet<QString> seen;
        seen.reserve(count);
        qsizetype inOrder = 0;
        for (; inOrder < count; ++inOrder) {
            const QStringList dependencies = plugins.at(inOrder).dependencies();
            const bool ready
                = std::all_of(dependencies.cbegin(), dependencies.cend(),
                              [&seen](const QString& name) { return seen.contains(name); });
            if (!ready)
                break;
            seen.insert(plugins.at(inOrder).name());
        }
        if (inOrder == count)
            return;
    }

    // Plugins are known by their index in the input; `at` maps a position to the
    // plugin standing there, `position` the other way.
    std::vector<qsizetype> at(static_cast<size_t>(count));
    std::vector<qsizetype> position(static_cast<size_t>(count));
    std::vector<qsizetype> missing(static_cast<size_t>(count)); // names needed and not yet placed
    QList<QString> names;
    names.reserve(count);
    QHash<QString, QList<qsizetype>> waiting; // name -> plugins that need it
    std::priority_queue<qsizetype, std::vector<qsizetype>, std::greater<>> ready;

    for (qsizetype plugin = 0; plugin < count; ++plugin) {
        at[size_t(plugin)] = plugin;
        position[size_t(plugin)] = plugin;
        names.append(plugins.at(plugin).name());
        // A name listed twice is satisfied by one placed plugin of that name.
        const QStringList dependencies = plugins.at(plugin).dependencies();
        QSet<QString> needed;
        for (const QString& dependency : dependencies) {
            if (!needed.contains(dependency)) {
                needed.insert(dependency);
                waiting[dependency].append(plugin);
            }
        }
        missing[size_t(plugin)] = needed.size();
        if (needed.isEmpty())
            ready.push(plugin);
    }

    qsizetype boundary = 0;
    qsizetype removed = -1;
    while (boundary < count) {
        if (ready.empty()) {
            removed = boundary;
            break;
        }
        const qsizetype from = ready.top();
        ready.pop();
        const qsizetype plugin = at[size_t(from)];
        const qsizetype displaced = at[size_t(boundary)];
        at[size_t(from)] = displaced;
        position[size_t(displaced)] = from;
        at[size_t(boundary)] = plugin;
        position[size_t(plugin)] = boundary;
        ++boundary;

        // The first plugin placed under a name satisfies everyone waiting for it.
        const auto waiters = waiting.find(names.at(plugin));
        if (waiters != waiting.end()) {
            for (qsizetype waiter : std::as_const(*waiters)) {
                if (--missing[size_t(waiter)] == 0)
                    ready.push(position[size_t(waiter)]);
            }
            waiting.erase(waiters);
        }
    }

    QList<Plugin> result;
    result.reserve(removed < 0 ? count : count - 1);
    for (qsizetype i = 0; i < count; ++i) {
        if (i != removed)
            result.append(plugins.at(at[size_t(i)]));
    }
    plugins = std::move(result);
}

} // namespace Zelvane
