#include "diagnostics/trialwatch_p.h"

#include "diagnostics/trialrun_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <algorithm>

namespace Zelvane {

namespace {

QString milliseconds(qint64 us)
{
    return QString::number(double(us) / 1000.0, 'f', 2);
}

QString stepPhrase(std::optional<LoadStep> step)
{
    if (!step)
        return QString();
    switch (*step) {
    case LoadStep::Library:
        return TrialTexts::tr("while loading the library");
    case LoadStep::RootObject:
        return TrialTexts::tr("while creating the root object");
    case LoadStep::Initialize:
        return TrialTexts::tr("in initialize()");
    case LoadStep::Finished:
        break;
    }
    return QString();
}

} // namespace

QString trialOutcomeText(const TrialPlugin& plugin)
{
    const QString phase = stepPhrase(plugin.step);
    switch (plugin.outcome) {
    case TrialPlugin::Outcome::Started:
        return TrialTexts::tr("started: library %1 ms, initialize %2 ms")
            .arg(milliseconds(plugin.libraryUs()), milliseconds(plugin.initializeUs()));
    case TrialPlugin::Outcome::Failed:
        return TrialTexts::tr("failed %1: %2").arg(phase, plugin.error);
    case TrialPlugin::Outcome::Crashed:
        return TrialTexts::tr("crashed %1: signal %2")
            .arg(phase, Zelvane::signalText(plugin.signal));
    case TrialPlugin::Outcome::Exited:
        return TrialTexts::tr("exited %1: exit code %2").arg(phase).arg(plugin.exitCode);
    case TrialPlugin::Outcome::TimedOut:
        return TrialTexts::tr("hung %1: no progress within the timeout, stopped").arg(phase);
    case TrialPlugin::Outcome::NotTried:
        return TrialTexts::tr("not tried: loading stops at the first plugin that cannot start");
    case TrialPlugin::Outcome::Dropped:
        break;
    }
    // Dropped in the first run, nothing was switched off yet: the folder's own plan
    // leaves it out (a missing dependency, a cycle), as it does at every start.
    if (plugin.run == 0)
        return TrialTexts::tr("not loaded: the dependency ordering drops it, as at every start");
    return TrialTexts::tr("not loaded: the dependency ordering drops it once the plugins that "
                          "cannot start are switched off");
}

QString trialUnloadText(const TrialPlugin& plugin)
{
    switch (plugin.unload) {
    case TrialPlugin::Unload::NotReached:
        break;
    case TrialPlugin::Unload::Unloaded:
        return TrialTexts::tr("unloaded in %1 ms")
            .arg(milliseconds(plugin.unloadEnd - plugin.unloadStart));
    case TrialPlugin::Unload::Crashed:
        return TrialTexts::tr("crashed while unloading: signal %1")
            .arg(Zelvane::signalText(plugin.signal));
    case TrialPlugin::Unload::Exited:
        return TrialTexts::tr("exited while unloading: exit code %1").arg(plugin.exitCode);
    case TrialPlugin::Unload::TimedOut:
        return TrialTexts::tr("hung while unloading: no progress within the timeout, stopped");
    }
    return QString();
}

qint64 TrialPlugin::libraryUs() const
{
    if (libraryStart < 0)
        return -1;
    const qint64 until = initializeStart >= 0 ? initializeStart : end;
    return until >= 0 ? until - libraryStart : -1;
}

qint64 TrialPlugin::initializeUs() const
{
    return initializeStart >= 0 && end >= 0 ? end - initializeStart : -1;
}

bool TrialReport::everyPluginStarted() const
{
    if (!error.isEmpty() || plugins.isEmpty())
        return false;
    return std::all_of(plugins.cbegin(), plugins.cend(), [](const TrialPlugin& plugin) {
        return plugin.outcome == TrialPlugin::Outcome::Started;
    });
}

QStringList TrialReport::culprits() const
{
    QStringList names;
    for (const TrialPlugin& plugin : plugins) {
        if (plugin.cannotStart())
            names.append(plugin.name);
    }
    return names;
}

QStringList TrialReport::shutdownCulprits() const
{
    QStringList names;
    for (const TrialPlugin& plugin : plugins) {
        if (plugin.cannotShutDown())
            names.append(plugin.name);
    }
    return names;
}

TrialReport TrialWatch::run() const
{
    TrialReport report;
    report.timeoutSeconds = timeoutSeconds;
    report.isolated = isolate;
    report.shutdown = shutdown;
    QStringList switchedOff;
    QSet<QString> culpritFiles;
    for (;;) {
        TrialRun run = runTrialOnce(*this, switchedOff);
        const int runIndex = report.runs++;
        if (!run.failure.isEmpty()) {
            report.error = run.failure;
            return report;
        }

        // Merge: a plugin keeps its place of the first run that reached it, and the
        // figures of the last run that loaded it. Culprits keep the run they failed in.
        qsizetype insertAt = 0;
        for (TrialPlugin plugin : std::as_const(run.plan)) {
            plugin.run = runIndex;
            const auto same = [&plugin](const TrialPlugin& other) {
                return other.file == plugin.file;
            };
            const auto found = std::find_if(report.plugins.begin(), report.plugins.end(), same);
            if (found == report.plugins.end()) {
                report.plugins.insert(insertAt, plugin);
                ++insertAt;
                continue;
            }
            insertAt = std::distance(report.plugins.begin(), found) + 1;
            if (plugin.outcome != TrialPlugin::Outcome::NotTried
                || found->outcome == TrialPlugin::Outcome::Dropped)
                *found = plugin;
        }
        for (TrialPlugin plugin : std::as_const(run.dropped)) {
            plugin.run = runIndex;
            const auto found = std::find_if(
                report.plugins.begin(), report.plugins.end(),
                [&plugin](const TrialPlugin& other) { return other.file == plugin.file; });
            if (found == report.plugins.end())
                report.plugins.append(plugin);
            else if (found->outcome == TrialPlugin::Outcome::NotTried)
                *found = plugin;
        }

        // Once every plugin started, the one whose unload took shutdown() down, if any,
        // is the run's culprit.
        const bool started = run.ended && run.endedOk;
        const auto culprit
            = std::find_if(run.plan.cbegin(), run.plan.cend(), [started](const TrialPlugin& p) {
                  return started ? p.cannotShutDown() : p.cannotStart();
              });
        if (started && culprit == run.plan.cend()) {
            report.error.clear();
            return report;
        }
        if (culprit == run.plan.cend()) {
            // loadPlugins() failed before any plugin: the folder has no Core plugin.
            report.error = run.endError;
            return report;
        }
        if (!isolate)
            return report;
        if (culpritFiles.contains(culprit->file)) {
            // Switched off and loaded all the same: the Core plugin runs even when the
            // user switches every Core plugin off, so nothing can be tried without it.
            report.coreCannotBeLeftOut = true;
            return report;
        }
        culpritFiles.insert(culprit->file);
        switchedOff.append(culprit->name);
    }
}

QString TrialWatch::findProgram(const QString& fromFolder, const QStringList& relativePaths)
{
    for (const QString& relativePath : relativePaths) {
        const QFileInfo candidate(QDir(fromFolder).filePath(relativePath));
        if (candidate.isFile() && candidate.isExecutable())
            return candidate.absoluteFilePath();
    }
    return QString();
}

} // namespace Zelvane
