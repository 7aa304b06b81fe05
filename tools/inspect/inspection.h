#pragma once

#include "controller/loadplan_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>

#include <QtCore/QList>
#include <QtCore/QString>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace ZelvaneInspect {

// How the settings decide whether one accepted plugin is switched on. Shown for every
// accepted file, also for those the controller never asks about (a Core plugin behind
// the chosen one), so these are reads of the inspector's own.
struct Selection
{
    bool enabled = false;
    bool fromSettings = false; // false: nothing stored, "Default" applies
};

// What PluginController::loadPlugins() would do with a directory, an IID and a
// settings file: the library's own load plan, plus what a report needs around it.
struct Inspection
{
    Inspection(const QString& directory, const QString& iid, QSettings* settings,
               const QString& settingsFile);

    QString directory;
    QString iid;
    QString settingsFile; // empty: no file, every plugin at its "Default"
    bool settingsFileExists = false;

    Zelvane::LoadPlan plan;
    QList<Selection> selection; // one per plan.files() entry; accepted files only
    QList<int> filesByName; // indices into plan.files(), sorted by file name
    // The same folder as the Diagnostics component explains it to the plugin screens:
    // the report prints its sentences, so that the inspector and the screens agree.
    Zelvane::LoadDiagnostics diagnostics;
    QList<int> diagnosticOfFile; // per plan.files() entry, an index into diagnostics.plugins()

    // The Diagnostics component's view of plan.files().at(file).
    Zelvane::PluginDiagnostic diagnostic(int file) const;

    // Any problem that makes the host start without a plugin it asked for.
    bool hasProblems() const;
};

// Sets the controller's IID to iid (discovery compares every file with it), then
// makes the plan from metadata alone: no plugin is loaded, no plugin code runs.
// settings must not be null; it is only read.
Inspection inspect(const QString& directory, const QString& iid, QSettings* settings,
                   const QString& settingsFile);

} // namespace ZelvaneInspect
