#pragma once

// Internal to zelvane-inspect and the diagnostics library: never installed.

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Zelvane {

// What one plugin did when zelvane-trial loaded it as a host would.
struct TrialPlugin
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
    enum class Step { None, Library, RootObject, Initialize };

    QString name;
    QString file;
    Outcome outcome = Outcome::NotTried;
    Step step = Step::None; // the last step it entered
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

    bool cannotStart() const
    {
        return outcome == Outcome::Failed || outcome == Outcome::Crashed
            || outcome == Outcome::Exited || outcome == Outcome::TimedOut;
    }
    // Loading the library and creating its root object, and initialize(); -1 if not known.
    qint64 libraryUs() const;
    qint64 initializeUs() const;
};

struct TrialReport
{
    QList<TrialPlugin> plugins; // in the order in which loading first reached them
    QString error; // why the trial could not run, or why loadPlugins() loaded nothing
    int runs = 0;
    int timeoutSeconds = 0;
    bool isolated = false;
    bool coreCannotBeLeftOut = false; // a Core plugin that cannot start runs anyway

    bool everyPluginStarted() const;
    // The plugins that crashed, exited, hung or failed, in load order.
    QStringList culprits() const;
};

// Runs zelvane-trial over a plugin folder in a child process and watches it. The
// child loads with PluginController::loadPlugins() and reports each step; this side
// notices a death or a hang and names the plugin, the step and the cause. With
// isolate, every plugin that cannot start is switched off (in a copy of the
// settings) and the folder loaded again, until one run gets through.
class TrialWatch
{
public:
    QString program; // zelvane-trial
    QString directory;
    QString iid;
    QString settingsFile; // may be empty or absent: every plugin at its "Default"
    QMap<QString, QString> arguments;
    int timeoutSeconds = 5; // per plugin
    bool isolate = false;

    TrialReport run() const;

    // zelvane-trial beside the caller: relativePaths are tried, in order, from the
    // folder of the calling program or library. Empty when none exists.
    static QString findProgram(const QString& fromFolder, const QStringList& relativePaths);
};

// "SIGSEGV (Segmentation fault)"
QString signalText(int signal);

// What became of the plugin, as users read it: "started: library 0.41 ms, initialize
// 0.02 ms", "crashed in initialize(): signal SIGSEGV (Segmentation fault)", ...
QString trialOutcomeText(const TrialPlugin& plugin);

} // namespace Zelvane
