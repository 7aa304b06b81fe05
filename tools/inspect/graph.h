#pragma once

#include <QtCore/QString>

namespace ZelvaneInspect {

struct Inspection;

// The dependency graph in Graphviz's DOT language: one node per "*.so" file of the
// folder (an accepted plugin by its name, a refused file by its file name) and one per
// dependency that no file provides, an edge from each plugin to every plugin it needs.
// A node's colour says what loadPlugins() does with it; a red edge is a dependency that
// keeps its plugin from being ordered.
QString dependencyGraph(const Inspection& inspection);

// Writes the graph to fileName: DOT text for ".dot" (or any other suffix), rendered by
// Graphviz's dot for ".svg" and ".png". False, with errorString set, on failure,
// including when dot is needed and not installed.
bool writeDependencyGraph(const Inspection& inspection, const QString& fileName,
                          QString* errorString);

} // namespace ZelvaneInspect
