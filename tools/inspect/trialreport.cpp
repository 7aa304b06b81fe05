#include "trialreport.h"

#include "diagnostics/trialwatch_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>

namespace ZelvaneInspect {

namespace {

using Zelvane::TrialPlugin;

QJsonValue stepKey(std::optional<Zelvane::LoadStep> step)
{
    if (!step)
        return QJsonValue();
    switch (*step) {
    case Zelvane::LoadStep::Library:
        return QStringLiteral("library");
    case Zelvane::LoadStep::RootObject:
        return QStringLiteral("rootObject");
    case Zelvane::LoadStep::Initialize:
        return QStringLiteral("initialize");
    case Zelvane::LoadStep::Finished:
        break;
    }
    return QJsonValue();
}

QString outcomeKey(TrialPlugin::Outcome outcome)
{
    switch (outcome) {
    case TrialPlugin::Outcome::NotTried:
        return QStringLiteral("notTried");
    case TrialPlugin::Outcome::Started:
        return QStringLiteral("started");
    case TrialPlugin::Outcome::Failed:
        return QStringLiteral("failed");
    case TrialPlugin::Outcome::Crashed:
        return QStringLiteral("crashed");
    case TrialPlugin::Outcome::Exited:
        return QStringLiteral("exited");
    case TrialPlugin::Outcome::TimedOut:
        return QStringLiteral("timedOut");
    case TrialPlugin::Outcome::Dropped:
        break;
    }
    return QStringLiteral("dropped");
}

QJsonValue unloadKey(TrialPlugin::Unload unload)
{
    switch (unload) {
    case TrialPlugin::Unload::NotReached:
        break;
    case TrialPlugin::Unload::Unloaded:
        return QStringLiteral("unloaded");
    case TrialPlugin::Unload::Crashed:
        return QStringLiteral("crashed");
    case TrialPlugin::Unload::Exited:
        return QStringLiteral("exited");
    case TrialPlugin::Unload::TimedOut:
        return QStringLiteral("timedOut");
    }
    return QJsonValue();
}

QJsonValue msOrNull(qint64 us)
{
    return us < 0 ? QJsonValue() : QJsonValue(double(us) / 1000.0);
}

} // namespace

QString trialText(const Zelvane::TrialReport& report)
{
    QStringList lines;
    QString title = QObject::tr("Trial load (in a child process, timeout %1 s per plugin")
                        .arg(report.timeoutSeconds);
    if (report.shutdown)
        title += QObject::tr(", shutdown() included");
    if (report.isolated)
        title += report.runs == 1
            ? QObject::tr(", each plugin that cannot start switched off in turn: 1 run")
            : QObject::tr(", each plugin that cannot start switched off in turn: %1 runs")
                  .arg(report.runs);
    lines << title + QStringLiteral("):");
    for (int i = 0; i < report.plugins.size(); ++i) {
        const TrialPlugin& plugin = report.plugins.at(i);
        QString line = QStringLiteral("  %1. %2 (%3): %4")
                           .arg(i + 1)
                           .arg(plugin.name, plugin.file, Zelvane::trialOutcomeText(plugin));
        const QString unload = Zelvane::trialUnloadText(plugin);
        if (!unload.isEmpty())
            line += QStringLiteral("; ") + unload;
        lines << line;
    }
    if (!report.error.isEmpty())
        lines << QObject::tr("  nothing is loaded: %1").arg(report.error);
    if (report.coreCannotBeLeftOut)
        lines << QObject::tr("  The Core plugin loads even when it is switched off: nothing can "
                             "be tried without it.");
    const QStringList culprits = report.culprits();
    if (report.everyPluginStarted())
        lines << QObject::tr("Every plugin started.");
    else if (!culprits.isEmpty())
        lines << QObject::tr("Cannot start: %1").arg(culprits.join(QStringLiteral(", ")));
    else
        lines << QObject::tr("Not every plugin started.");
    const QStringList shutdownCulprits = report.shutdownCulprits();
    if (!shutdownCulprits.isEmpty())
        lines
            << QObject::tr("Cannot shut down: %1").arg(shutdownCulprits.join(QStringLiteral(", ")));
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QJsonObject trialJson(const Zelvane::TrialReport& report)
{
    QJsonArray plugins;
    for (const TrialPlugin& plugin : report.plugins) {
        QJsonObject object { { QStringLiteral("name"), plugin.name },
                             { QStringLiteral("file"), plugin.file },
                             { QStringLiteral("result"), outcomeKey(plugin.outcome) },
                             { QStringLiteral("text"), Zelvane::trialOutcomeText(plugin) },
                             { QStringLiteral("run"), plugin.run },
                             { QStringLiteral("step"), stepKey(plugin.step) },
                             { QStringLiteral("libraryMs"), msOrNull(plugin.libraryUs()) },
                             { QStringLiteral("initializeMs"), msOrNull(plugin.initializeUs()) },
                             { QStringLiteral("startMs"), msOrNull(plugin.libraryStart) },
                             { QStringLiteral("endMs"), msOrNull(plugin.end) } };
        if (plugin.outcome == TrialPlugin::Outcome::Crashed)
            object.insert(QStringLiteral("signal"), Zelvane::signalText(plugin.signal));
        if (plugin.outcome == TrialPlugin::Outcome::Exited)
            object.insert(QStringLiteral("exitCode"), plugin.exitCode);
        if (plugin.outcome == TrialPlugin::Outcome::Failed)
            object.insert(QStringLiteral("error"), plugin.error);
        if (report.shutdown) {
            // A plugin that failed to unload had started: the cause is its unload's.
            object.insert(QStringLiteral("unload"), unloadKey(plugin.unload));
            object.insert(QStringLiteral("unloadText"), Zelvane::trialUnloadText(plugin));
            object.insert(QStringLiteral("unloadMs"),
                          plugin.unloadStart >= 0 && plugin.unloadEnd >= 0
                              ? msOrNull(plugin.unloadEnd - plugin.unloadStart)
                              : QJsonValue());
            if (plugin.unload == TrialPlugin::Unload::Crashed)
                object.insert(QStringLiteral("signal"), Zelvane::signalText(plugin.signal));
            if (plugin.unload == TrialPlugin::Unload::Exited)
                object.insert(QStringLiteral("exitCode"), plugin.exitCode);
        }
        plugins.append(object);
    }
    QJsonObject trial {
        { QStringLiteral("timeoutSeconds"), report.timeoutSeconds },
        { QStringLiteral("isolate"), report.isolated },
        { QStringLiteral("runs"), report.runs },
        { QStringLiteral("plugins"), plugins },
        { QStringLiteral("error"),
          report.error.isEmpty() ? QJsonValue() : QJsonValue(report.error) },
        { QStringLiteral("coreCannotBeLeftOut"), report.coreCannotBeLeftOut },
        { QStringLiteral("cannotStart"), QJsonArray::fromStringList(report.culprits()) },
        { QStringLiteral("everyPluginStarted"), report.everyPluginStarted() },
    };
    if (report.shutdown) {
        trial.insert(QStringLiteral("shutdown"), true);
        trial.insert(QStringLiteral("cannotShutDown"),
                     QJsonArray::fromStringList(report.shutdownCulprits()));
    }
    return trial;
}

} // namespace ZelvaneInspect
