#pragma once

// The records behind the Diagnostics component's values. Internal: never installed.

#include <zelvane/diagnostics/dependencyproblem.h>
#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/plugindiagnostic.h>

#include "controller/loadplan_p.h"
#include "diagnostics/dependencyrelations_p.h"

#include <QtCore/QSharedData>

#include <optional>

namespace Zelvane {

class DependencyProblemData : public QSharedData
{
public:
    static DependencyProblem make(const LoadPlan::Blocker& blocker);

    DependencyProblem::Kind kind = DependencyProblem::Kind::Missing;
    QString dependency;
    QString category;
    QStringList cycle;
};

class PluginDiagnosticData : public QSharedData
{
public:
    // The record of a value that LoadDiagnostics is filling in.
    static PluginDiagnosticData& of(PluginDiagnostic& plugin) { return *plugin.d; }
    static const PluginDiagnosticData& of(const PluginDiagnostic& plugin) { return *plugin.d; }

    LoadPlan::File file;
    QString category;
    QStringList missingDependencies;
    QStringList dependants;
    QString chosenCore; // the Core plugin that loads instead, for the state's text
    bool selected = false;
    bool loaded = false;
    PluginDiagnostic::State state = PluginDiagnostic::State::Invalid;
};

class LoadDiagnosticsData : public QSharedData
{
public:
    QDir dir;
    // Discovered only: every reread() decides again over a copy of it, so the folder is
    // listed and its metadata read once.
    std::optional<LoadPlan> discovered;
    // The relations of the discovered files by their names, which a reread does not
    // change: made at the first reread and kept by the ones after it.
    std::optional<DependencyRelations> relations;
    QList<PluginDiagnostic> plugins;
    QList<int> modelRows; // indices into plugins
    QStringList loadOrder;
    QString error;
};

} // namespace Zelvane
