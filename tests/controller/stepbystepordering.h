#pragma once

// The ordering of the load list written out step by step, exactly as its comment in
// src/controller/dependencyordering_p.h describes it: the library's faster form must
// give the identical list, element by element, and tst_dependencysorting compares the
// two on random lists. Keep this one simple and literal; it is the reference.

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <algorithm>

namespace ZelvaneTest {

template<typename Plugin>
void stepByStepDependencySorting(QList<Plugin>& plugins)
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

    // Search the unplaced part for the first ready plugin and swap it to the boundary;
    // when none is ready, remove the one at the boundary and stop.
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

} // namespace ZelvaneTest
