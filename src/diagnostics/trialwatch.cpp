#include "diagnostics/trialwatch_p.h"

#include "diagnostics/trialprotocol_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QSet>

#include <algorithm>

namespace Zelvane {

namespace {

using namespace TrialProtocol;

qint64 nowUs()
{
    return trialClockUs();
}

// One run of the child: the plan it announced and what each plugin of it did.
struct Run
{
    QList<TrialPlugin> plan;
    QList<TrialPlugin> dropped;
    qint64 startUs = -1; // loadPlugins() called, on the child's clock (the same clock)
    bool ended = false; // loadPlugins() returned
    bool endedOk = false;
    QString endError;
    bool shutDown = false; // shutdown() returned
    QString failure; // the child itself could not run
};

class RunWatch
{
public:
    RunWatch(const TrialWatch& watch, const QStringList& switchedOff)
        : m_watch(watch)
        , m_switchedOff(switchedOff)
    {
    }

    Run run();

private:
    void handle(const QJsonObject& event);
    qint64 relative(const QJsonObject& event) const
    {
        return qint64(event.value(usKey).toDouble()) - m_run.startUs;
    }
    TrialPlugin* current()
    {
        return m_current >= 0 && m_current < m_run.plan.size() ? &m_run.plan[m_current] : nullptr;
    }
    TrialPlugin* unloading()
    {
        return m_unloading >= 0 && m_unloading < m_run.plan.size() ? &m_run.plan[m_unloading]
                                                                   : nullptr;
    }
    void unloaded(const QJsonObject& event);

    const TrialWatch& m_watch;
    const QStringList m_switchedOff;
    Run m_run;
    int m_current = -1;
    int m_unloading = -1; // the plugin shutdown() unloads, once it has begun
    bool m_progress = false; // a plugin was entered since the deadline was last set
};

// The unload under way, if any, is over: the next one begins or shutdown() returned.
void RunWatch::unloaded(const QJsonObject& event)
{
    TrialPlugin* plugin = unloading();
    if (!plugin)
        return;
    plugin->unload = TrialPlugin::Unload::Unloaded;
    plugin->unloadEnd = relative(event);
    m_unloading = -1;
}

void RunWatch::handle(const QJsonObject& event)
{
    const QString type = event.value(eventKey).toString();
    if (type == planEvent) {
        TrialPlugin plugin;
        plugin.name = event.value(nameKey).toString();
        plugin.file = event.value(fileKey).toString();
        m_run.plan.append(plugin);
    } else if (type == droppedEvent) {
        TrialPlugin plugin;
        plugin.name = event.value(nameKey).toString();
        plugin.file = event.value(fileKey).toString();
        plugin.outcome = TrialPlugin::Outcome::Dropped;
        m_run.dropped.append(plugin);
    } else if (type == startEvent) {
        m_run.startUs = qint64(event.value(usKey).toDouble());
    } else if (type == stepEvent) {
        m_current = event.value(pluginKey).toInt();
        TrialPlugin* plugin = current();
        if (!plugin)
            return;
        // A step this side does not know counts as the last one before finishing.
        const LoadStep step
            = stepFromName(event.value(stepKey).toString()).value_or(LoadStep::Initialize);
        plugin->step = step;
        const qint64 at = relative(event);
        switch (step) {
        case LoadStep::Library:
            plugin->libraryStart = at;
            m_progress = true;
            break;
        case LoadStep::RootObject:
            plugin->rootObjectStart = at;
            break;
        case LoadStep::Initialize:
        case LoadStep::Finished:
            plugin->initializeStart = at;
            break;
        }
    } else if (type == finishedEvent) {
        TrialPlugin* plugin = current();
        if (!plugin)
            return;
        plugin->end = relative(event);
        if (event.value(okKey).toBool()) {
            plugin->outcome = TrialPlugin::Outcome::Started;
        } else {
            plugin->outcome = TrialPlugin::Outcome::Failed;
            plugin->error = event.value(errorKey).toString();
        }
    } else if (type == endEvent) {
        m_run.ended = true;
        m_run.endedOk = event.value(okKey).toBool();
        m_run.endError = event.value(errorKey).toString();
        // shutdown() gets the whole timeout up to its first unload.
        if (m_watch.shutdown)
            m_progress = true;
    } else if (type == unloadingEvent) {
        unloaded(event);
        m_unloading = event.value(pluginKey).toInt(-1);
        if (TrialPlugin* plugin = unloading())
            plugin->unloadStart = relative(event);
        m_progress = true;
    } else if (type == shutdownEvent) {
        unloaded(event);
        m_run.shutDown = true;
    }
}

Run RunWatch::run()
{
    QStringList arguments { m_watch.directory, QStringLiteral("--iid"), m_watch.iid };
    if (!m_watch.settingsFile.isEmpty())
        arguments << QStringLiteral("--settings") << m_watch.settingsFile;
    for (auto it = m_watch.arguments.cbegin(); it != m_watch.arguments.cend(); ++it)
        arguments << QStringLiteral("--arg") << it.key() + QLatin1Char('=') + it.value();
    for (const QString& name : m_switchedOff)
        arguments << QStringLiteral("--switch-off") << name;
    if (m_watch.shutdown)
        arguments << QStringLiteral("--shutdown");

    QProcess process;
    // What plugins print is theirs; the report says what happened to them.
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(m_watch.program, arguments);
    if (!process.waitForStarted()) {
        m_run.failure = QObject::tr("cannot start %1: %2")
                            .arg(QDir::toNativeSeparators(m_watch.program), process.errorString());
        return m_run;
    }

    // Every plugin gets the whole timeout, from the moment its library starts loading
    // (or, with shutdown, its unload begins); so does the start of the child, up to the
    // first plugin.
    const qint64 timeoutUs = qint64(m_watch.timeoutSeconds) * 1000000;
    qint64 deadline = nowUs() + timeoutUs;
    bool timedOut = false;
    const auto readLines = [&]() {
        while (process.canReadLine()) {
            const QJsonObject event = QJsonDocument::fromJson(process.readLine()).object();
            handle(event);
            if (m_progress) {
                m_progress = false;
                deadline = nowUs() + timeoutUs;
            }
        }
    };
    for (;;) {
        readLines();
        if (process.state() == QProcess::NotRunning)
            break;
        const qint64 left = deadline - nowUs();
        if (left <= 0) {
            timedOut = true;
            process.kill();
            process.waitForFinished(-1);
            break;
        }
        process.waitForReadyRead(int(qMin<qint64>(left / 1000 + 1, 200)));
    }
    const qint64 stoppedAt = nowUs();
    readLines();

    if (m_run.ended) {
        // Without shutdown, whatever happens after loadPlugins() returned is not the
        // start-up. With it, a process that ends before shutdown() returned was taken
        // down by the plugin being unloaded.
        TrialPlugin* plugin = unloading();
        if (m_watch.shutdown && !m_run.shutDown && plugin) {
            plugin->unloadEnd = stoppedAt - m_run.startUs;
            if (timedOut) {
                plugin->unload = TrialPlugin::Unload::TimedOut;
            } else if (process.exitStatus() == QProcess::CrashExit) {
                plugin->unload = TrialPlugin::Unload::Crashed;
                plugin->signal = process.exitCode();
            } else {
                plugin->unload = TrialPlugin::Unload::Exited;
                plugin->exitCode = process.exitCode();
            }
        }
        return m_run;
    }

    TrialPlugin* plugin = current();
    if (plugin && plugin->outcome == TrialPlugin::Outcome::NotTried) {
        plugin->end = stoppedAt - m_run.startUs;
        if (timedOut) {
            plugin->outcome = TrialPlugin::Outcome::TimedOut;
        } else if (process.exitStatus() == QProcess::CrashExit) {
            plugin->outcome = TrialPlugin::Outcome::Crashed;
            plugin->signal = process.exitCode();
        } else {
            plugin->outcome = TrialPlugin::Outcome::Exited;
            plugin->exitCode = process.exitCode();
        }
        return m_run;
    }
    // Died outside any plugin: in the helper itself, before or between plugins.
    if (timedOut)
        m_run.failure
            = QObject::tr("zelvane-trial made no progress within %1 s").arg(m_watch.timeoutSeconds);
    else if (process.exitStatus() == QProcess::CrashExit)
        m_run.failure = QObject::tr("zelvane-trial was killed by signal %1 outside any plugin")
                            .arg(signalText(process.exitCode()));
    else
        m_run.failure = QObject::tr("zelvane-trial exited with code %1 outside any plugin")
                            .arg(process.exitCode());
    return m_run;
}

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
        return QObject::tr("while loading the library");
    case LoadStep::RootObject:
        return QObject::tr("while creating the root object");
    case LoadStep::Initialize:
        return QObject::tr("in initialize()");
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
        return QObject::tr("started: library %1 ms, initialize %2 ms")
            .arg(milliseconds(plugin.libraryUs()), milliseconds(plugin.initializeUs()));
    case TrialPlugin::Outcome::Failed:
        return QObject::tr("failed %1: %2").arg(phase, plugin.error);
    case TrialPlugin::Outcome::Crashed:
        return QObject::tr("crashed %1: signal %2").arg(phase, Zelvane::signalText(plugin.signal));
    case TrialPlugin::Outcome::Exited:
        return QObject::tr("exited %1: exit code %2").arg(phase).arg(plugin.exitCode);
    case TrialPlugin::Outcome::TimedOut:
        return QObject::tr("hung %1: no progress within the timeout, stopped").arg(phase);
    case TrialPlugin::Outcome::NotTried:
        return QObject::tr("not tried: loading stops at the first plugin that cannot start");
    case TrialPlugin::Outcome::Dropped:
        break;
    }
    return QObject::tr("not loaded: the dependency ordering drops it once the plugins that "
                       "cannot start are switched off");
}

QString trialUnloadText(const TrialPlugin& plugin)
{
    switch (plugin.unload) {
    case TrialPlugin::Unload::NotReached:
        break;
    case TrialPlugin::Unload::Unloaded:
        return QObject::tr("unloaded in %1 ms")
            .arg(milliseconds(plugin.unloadEnd - plugin.unloadStart));
    case TrialPlugin::Unload::Crashed:
        return QObject::tr("crashed while unloading: signal %1")
            .arg(Zelvane::signalText(plugin.signal));
    case TrialPlugin::Unload::Exited:
        return QObject::tr("exited while unloading: exit code %1").arg(plugin.exitCode);
    case TrialPlugin::Unload::TimedOut:
        return QObject::tr("hung while unloading: no progress within the timeout, stopped");
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
        Run run = RunWatch(*this, switchedOff).run();
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
