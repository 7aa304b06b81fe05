// One run of the trial helper, as the watcher follows it: the protocol's lines in, what
// became of each plugin out.

#include "diagnostics/trialrun_p.h"

#include "diagnostics/trialprotocol_p.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QProcess>

namespace Zelvane {

namespace {

using namespace TrialProtocol;

qint64 nowUs()
{
    return trialClockUs();
}

class RunWatch
{
public:
    RunWatch(const TrialWatch& watch, const QStringList& switchedOff)
        : m_watch(watch)
        , m_switchedOff(switchedOff)
    {
    }

    TrialRun run();

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
    // The plugin that shutdown() unloads first: the last one loadPlugins() loaded (it
    // unloads in the reverse of the load order, and only what it loaded); null when
    // nothing was.
    TrialPlugin* firstToUnload()
    {
        for (qsizetype i = m_run.plan.size(); i-- > 0;) {
            if (m_run.plan.at(i).outcome == TrialPlugin::Outcome::Started)
                return &m_run.plan[i];
        }
        return nullptr;
    }

    const TrialWatch& m_watch;
    const QStringList m_switchedOff;
    TrialRun m_run;
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
        m_run.endUs = relative(event);
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

TrialRun RunWatch::run()
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
        m_run.failure = TrialTexts::tr("cannot start %1: %2")
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
        // Gone after loadPlugins() returned and before the first unload was announced:
        // shutdown() was under way, and the plugin it was about to unload is the one a
        // host would lose its exit to. Dropping it would let a crash at exit go unnamed.
        if (m_watch.shutdown && !m_run.shutDown && !plugin) {
            plugin = firstToUnload();
            if (plugin)
                plugin->unloadStart = m_run.endUs;
        }
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
        m_run.failure = TrialTexts::tr("zelvane-trial made no progress within %1 s")
                            .arg(m_watch.timeoutSeconds);
    else if (process.exitStatus() == QProcess::CrashExit)
        m_run.failure = TrialTexts::tr("zelvane-trial was killed by signal %1 outside any plugin")
                            .arg(signalText(process.exitCode()));
    else
        m_run.failure = TrialTexts::tr("zelvane-trial exited with code %1 outside any plugin")
                            .arg(process.exitCode());
    return m_run;
}

} // namespace

TrialRun runTrialOnce(const TrialWatch& watch, const QStringList& switchedOff)
{
    return RunWatch(watch, switchedOff).run();
}

} // namespace Zelvane
