#pragma once

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Zelvane API. It is private API of the Diagnostics
// component, exported for zelvane-inspect only, never installed, and may change from
// version to version without notice, or even be removed.
//

#include "plugin/loadsteps_p.h"

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace Zelvane {

// What one plugin did when zelvane-trial loaded it as a host would.
struct ZELVANE_DIAGNOSTICS_EXPORT TrialPlugin
{
    enum class Outcome {
        NotTried, // loading stopped at an earlier plugin
        Started, // load() succeeded
        Failed, // load() answered false: error holds the library's text
        Crashed, // its process died of a signal
        Exited, // its process exited from inside the plugin
        TimedOut, // it made no progress within the timeout and was stopped
        Dropped, // left out by the dependency ordering once the culprits were switched off
    };
    QString name;
    QString file;
    Outcome outcome = Outcome::NotTried;
    std::optional<LoadStep> step; // the last step it entered; none before the first
    int signal = 0; // Crashed
    int exitCode = 0; // Exited
    QString error; // Failed
    int run = 0; // the run (from 0) whose figures these are

    // Microseconds from the start of loadPlugins() in its run; -1 for a step never
    // entered. end is when load() returned or the process died or was stopped.
    qint64 libraryStart = -1;
    qint64 rootObjectStart = -1;
    qint64 initializeStart = -1;
    qint64 end = -1;

    // With TrialWatch::shutdown: what became of it when shutdown() unloaded it. signal
    // and exitCode tell the cause as for loading (a plugin that failed to unload had
    // started). Times as above; unloadEnd is when the next unload began, shutdown()
    // returned, or the process died or was stopped.
    enum class Unload {
        NotReached, // not asked for, or shutdown() stopped at an earlier plugin
        Unloaded,
        Crashed,
        Exited,
        TimedOut,
    };
    Unload unload = Unload::NotReached;
    qint64 unloadStart = -1;
    qint64 unloadEnd = -1;

    bool cannotStart() const
    {
        return outcome == Outcome::Failed || outcome == Outcome::Crashed
            || outcome == Outcome::Exited || outcome == Outcome::TimedOut;
    }
    bool cannotShutDown() const
    {
        return unload == Unload::Crashed || unload == Unload::Exited || unload == Unload::TimedOut;
    }
    // Loading the library and creating its root object, and initialize(); -1 if not known.
    qint64 libraryUs() const;
    qint64 initializeUs() const;
};

struct ZELVANE_DIAGNOSTICS_EXPORT TrialReport
{
    QList<TrialPlugin> plugins; // in the order in which loading first reached them
    QString error; // why the trial could not run, or why loadPlugins() loaded nothing
    int runs = 0;
    int timeoutSeconds = 0;
    bool isolated = false;
    bool coreCannotBeLeftOut = false; // a Core plugin that cannot start runs anyway
    bool shutdown = false; // shutdown() ran after loadPlugins()

    bool everyPluginStarted() const;
    // The plugins that crashed, exited, hung or failed, in load order.
    QStringList culprits() const;
    // The plugins that crashed, exited or hung while shutdown() unloaded them.
    QStringList shutdownCulprits() const;
};

// Runs zelvane-trial over a plugin folder in a child process and watches it. The
// child loads with PluginController::loadPlugins() and reports each step; this side
// notices a death or a hang and names the plugin, the step and the cause. With
// isolate, every plugin that cannot start is switched off (in a copy of the
// settings) and the folder loaded again, until one run gets through.
class ZELVANE_DIAGNOSTICS_EXPORT TrialWatch
{
public:
    QString program; // zelvane-trial
    QString directory;
    QString iid;
    QString settingsFile; // may be empty or absent: every plugin at its "Default"
    QMap<QString, QString> arguments;
    int timeoutSeconds = 5; // per plugin
    bool isolate = false;
    // Call shutdown() after loadPlugins() and watch the unloads too; with isolate, a
    // plugin that takes shutdown() down is switched off in turn as well.
    bool shutdown = false;

    TrialReport run() const;

    // zelvane-trial beside the caller: relativePaths are tried, in order, from the
    // folder of the calling program or library. Empty when none exists.
    static QString findProgram(const QString& fromFolder, const QStringList& relativePaths);
};

// "SIGSEGV (Segmentation fault)"
ZELVANE_DIAGNOSTICS_EXPORT QString signalText(int signal);

// The folder of the shared object or program that holds address: where a library finds
// the helpers installed beside it. Empty when the dynamic loader cannot tell.
QString folderOfCode(const void* address);

// Whether a process with this identifier runs, this one included.
bool isProcessRunning(qint64 pid);
// Whether a process with this identifier runs, other than this one.
bool isOtherProcessRunning(qint64 pid);

// What became of the plugin, as users read it: "started: library 0.41 ms, initialize
// 0.02 ms", "crashed in initialize(): signal SIGSEGV (Segmentation fault)", ...
ZELVANE_DIAGNOSTICS_EXPORT QString trialOutcomeText(const TrialPlugin& plugin);

// What became of it at shutdown(): "unloaded in 0.12 ms", "crashed while unloading:
// signal SIGSEGV (Segmentation fault)", ...; empty when shutdown() did not reach it.
ZELVANE_DIAGNOSTICS_EXPORT QString trialUnloadText(const TrialPlugin& plugin);

} // namespace Zelvane
