#include "requirement.h"

#include "diagnostics/trialwatch_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>

#include <algorithm>
#include <optional>

namespace ZelvaneInspect {

QString declaredIid(const QString& file)
{
    return QPluginLoader(file).metaData().value(QStringLiteral("IID")).toString();
}

QStringList requirementFailures(const QStringList& files, const QString& directory,
                                QSettings* settings, const Zelvane::TrialReport& report)
{
    QStringList failures;
    // Made only when the trial itself cannot say why a required plugin is missing.
    std::optional<Zelvane::LoadDiagnostics> diagnostics;
    for (const QString& file : files) {
        const auto tried = std::find_if(
            report.plugins.cbegin(), report.plugins.cend(),
            [&file](const Zelvane::TrialPlugin& plugin) { return plugin.file == file; });
        // The trial drops a plugin for the same reasons as the library; the Diagnostics
        // component says which, unless it is the trial's own switching-off that drops it.
        const bool dropped = tried != report.plugins.cend()
            && tried->outcome == Zelvane::TrialPlugin::Outcome::Dropped;
        if (tried != report.plugins.cend() && !dropped) {
            if (tried->outcome != Zelvane::TrialPlugin::Outcome::Started) {
                failures.append(QObject::tr("%1 (%2) did not start: %3")
                                    .arg(file, tried->name, Zelvane::trialOutcomeText(*tried)));
            } else if (tried->cannotShutDown()) {
                failures.append(QObject::tr("%1 (%2) did not shut down: %3")
                                    .arg(file, tried->name, Zelvane::trialUnloadText(*tried)));
            }
            continue;
        }
        if (!dropped && !QFileInfo(QDir(directory).filePath(file)).isFile()) {
            failures.append(QObject::tr("%1 is not in %2").arg(file, directory));
            continue;
        }
        if (!diagnostics)
            diagnostics.emplace(QDir(directory), settings);
        const QList<Zelvane::PluginDiagnostic> plugins = diagnostics->plugins();
        const auto plugin = std::find_if(plugins.cbegin(), plugins.cend(),
                                         [&file](const Zelvane::PluginDiagnostic& diagnostic) {
                                             return diagnostic.fileName() == file;
                                         });
        if (dropped && (plugin == plugins.cend() || plugin->willLoad())) {
            failures.append(QObject::tr("%1 (%2) did not start: %3")
                                .arg(file, tried->name, Zelvane::trialOutcomeText(*tried)));
            continue;
        }
        QString reason = plugin == plugins.cend() ? QObject::tr("the trial did not reach it.")
                                                  : plugin->stateText();
        if (plugin != plugins.cend()) {
            const QList<Zelvane::DependencyProblem> problems = plugin->problems();
            for (const Zelvane::DependencyProblem& problem : problems)
                reason += QLatin1Char(' ') + problem.text();
        }
        const QString name = plugin == plugins.cend() ? QString() : plugin->name();
        failures.append(name.isEmpty()
                            ? QObject::tr("%1 was not loaded: %2").arg(file, reason)
                            : QObject::tr("%1 (%2) was not loaded: %3").arg(file, name, reason));
    }
    return failures;
}

} // namespace ZelvaneInspect
