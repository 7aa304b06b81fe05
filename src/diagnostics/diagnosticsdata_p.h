#pragma once

// The records behind the Diagnostics component's values. Internal: never installed.

#include <zelvane/diagnostics/dependencyproblem.h>
#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/plugindiagnostic.h>

#include "controller/loadplan_p.h"
#include "diagnostics/dependencyrelations_p.h"

#include <QtCore/QHash>
#include <QtCore/QJsonValue>
#include <QtCore/QMutex>
#include <QtCore/QSharedData>

#include <memory>
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

// The "Dependencies" of each file's metadata as its author wrote them, by the file's path.
// Qt converts a plugin's whole metadata to JSON at every metaData() call, and a plugin
// with thousands of dependencies and a long description takes a while; the file's
// metadata does not change while its folder's discovery is in use. Shared by a reading
// of a folder and all its rereads, which may be explained on several threads.
class AuthoredDependencies
{
public:
    QJsonValue value(const QString& path);

private:
    QMutex m_mutex;
    QHash<QString, QJsonValue> m_values;
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
    std::shared_ptr<AuthoredDependencies> authoredDependencies;
    QList<PluginDiagnostic> plugins;
    QList<int> modelRows; // indices into plugins
    QStringList loadOrder;
    QString error;
};

} // namespace Zelvane
