// zelvane-inspect: what a Zelvane host would make of a plugin directory, from the
// plugins' metadata alone.

#include "diagnostics/trialwatch_p.h"
#include "graph.h"
#include "inspection.h"
#include "permissions.h"
#include "report.h"
#include "requirement.h"
#include "timeline.h"
#include "trialreport.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <QtGui/QGuiApplication>

#include <unistd.h>

#include <cstdio>
#include <memory>

namespace {

// zelvane-trial, installed in the library folder's zelvane/ of this program's prefix, or
// where the build tree puts it.
QString trialProgram()
{
    return Zelvane::TrialWatch::findProgram(
        QCoreApplication::applicationDirPath(),
        { QStringLiteral(ZELVANE_TRIAL_INSTALLED), QStringLiteral(ZELVANE_TRIAL_BUILT) });
}

// Drawing the timeline needs fonts, which need a GUI application; everything else does
// with a core one, which needs no display.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char* argv[])
{
    bool drawing = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--timeline" || argument.startsWith("--timeline="))
            drawing = true;
    }
    if (!drawing)
        return std::make_unique<QCoreApplication>(argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Without a desktop session Qt warns about the runtime folder it would use for a
    // display, which a picture drawn into a file never needs.
    const QtMessageHandler previous
        = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    auto application = std::make_unique<QGuiApplication>(argc, argv);
    qInstallMessageHandler(previous);
    return application;
}

} // namespace

int main(int argc, char* argv[])
{
    const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
    QCoreApplication& app = *application;
    QCoreApplication::setApplicationName(QStringLiteral("zelvane-inspect"));
    // Discovery writes one debug line per refused file, as it does in a host; the
    // report lists every refusal with its text, so the lines would only repeat it.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QObject::tr(
        "Shows, for every *.so file in DIR, whether a Zelvane host with the given IID accepts "
        "it (and the library's own reason when not), the metadata of the accepted plugins, and "
        "the plugins that PluginController::loadPlugins() would load, in which order, which it "
        "leaves out and which its dependency ordering would drop, and why.\n"
        "It only reads the metadata that each file embeds: it never loads a plugin and never "
        "runs plugin code.\n"
        "With --trial it does load them, as a host would, in a child process (zelvane-trial), "
        "and reports for each plugin the time it took or the step and cause of its failure: a "
        "crash, an exit, no progress within the timeout. With --shutdown the child then calls "
        "shutdown() and reports the plugin whose unloading fails the same way.\n"
        "It warns about a plugin folder or file that users other than the host's can write.\n"
        "Exit status: 0; 1 when loading would fail for want of a Core plugin or would drop a "
        "plugin (with --trial: when not every plugin started, or with --shutdown one failed to "
        "unload, or a plugin named with --require did not start); 2 for a usage error or a file "
        "that cannot be written."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("DIR"), QObject::tr("The plugin directory."));
    const QCommandLineOption iidOption(QStringLiteral("iid"),
                                       QObject::tr("The plugin IID that the host expects."),
                                       QObject::tr("IID"));
    const QCommandLineOption settingsOption(
        QStringLiteral("settings"),
        QObject::tr("The host's INI settings file holding the plugin selection "
                    "(plugin/<Name>=true|false). Without it every plugin is at its \"Default\"."),
        QObject::tr("FILE"));
    const QCommandLineOption jsonOption(QStringLiteral("json"),
                                        QObject::tr("Print one JSON document instead of text."));
    const QCommandLineOption trialOption(
        QStringLiteral("trial"),
        QObject::tr("Load the plugins, in load order, in a child process, and report how each "
                    "one starts."));
    const QCommandLineOption isolateOption(
        QStringLiteral("isolate"),
        QObject::tr("With --trial: after a plugin that cannot start, switch it off and load "
                    "again, so that one run finds every such plugin."));
    const QCommandLineOption timeoutOption(
        QStringLiteral("timeout"),
        QObject::tr("With --trial: stop a plugin that takes longer than S seconds (default 5)."),
        QObject::tr("S"), QStringLiteral("5"));
    const QCommandLineOption argOption(
        QStringLiteral("arg"),
        QObject::tr("With --trial: a plugin argument, as the host's command line would give it. "
                    "Repeatable."),
        QObject::tr("NAME=VALUE"));
    const QCommandLineOption shutdownOption(
        QStringLiteral("shutdown"),
        QObject::tr("With --trial: call shutdown() after loading, as a host does before it "
                    "exits, and report each plugin's unloading too."));
    const QCommandLineOption timelineOption(
        QStringLiteral("timeline"),
        QObject::tr("Run the trial and draw its time line into FILE (.png or .svg)."),
        QObject::tr("FILE"));
    const QCommandLineOption graphOption(
        QStringLiteral("graph"),
        QObject::tr("Write the dependency graph to FILE: Graphviz DOT, or rendered by dot for "
                    ".svg and .png."),
        QObject::tr("FILE"));
    const QCommandLineOption requireOption(
        QStringLiteral("require"),
        QObject::tr("With --trial: fail unless the plugin in FILE (a file name in DIR) starts, "
                    "and say why it did not: the step and cause, or why it is not loaded at "
                    "all. Without --iid, the IID that this plugin declares. Repeatable."),
        QObject::tr("FILE"));
    parser.addOptions({ iidOption, settingsOption, jsonOption, trialOption, isolateOption,
                        timeoutOption, argOption, shutdownOption, requireOption, timelineOption,
                        graphOption });
    parser.process(app);

    QTextStream err(stderr);
    const QStringList positional = parser.positionalArguments();
    const bool trial = parser.isSet(trialOption) || parser.isSet(timelineOption);
    const bool trialOnlyOptions = parser.isSet(isolateOption) || parser.isSet(timeoutOption)
        || parser.isSet(argOption) || parser.isSet(shutdownOption) || parser.isSet(requireOption);
    bool timeoutValid = false;
    const int timeout = parser.value(timeoutOption).toInt(&timeoutValid);
    const QStringList required = parser.values(requireOption);
    if (positional.size() != 1 || (!parser.isSet(iidOption) && required.isEmpty())
        || (trialOnlyOptions && !trial) || !timeoutValid || timeout <= 0) {
        err << QObject::tr("usage: zelvane-inspect DIR --iid IID [--settings FILE] [--json] "
                           "[--trial [--isolate] [--shutdown] [--timeout S] [--arg NAME=VALUE]... "
                           "[--require FILE]...] "
                           "[--timeline FILE] [--graph FILE]")
            << Qt::endl;
        return 2;
    }
    const QString directory = positional.first();
    if (!QFileInfo(directory).isDir()) {
        err << QObject::tr("zelvane-inspect: %1 is not a directory").arg(directory) << Qt::endl;
        return 2;
    }

    // isEnabled() needs a settings object; without a file, an empty one in a scratch
    // folder reads nothing. Neither is ever written.
    QTemporaryDir scratch;
    const QString settingsFile = parser.value(settingsOption);
    QSettings settings(settingsFile.isEmpty() ? scratch.filePath(QStringLiteral("none.ini"))
                                              : settingsFile,
                       QSettings::IniFormat);

    // A plugin's trial test may leave the IID to the plugin under test: it then checks
    // everything but whether that IID is the host's.
    const QString iid = parser.isSet(iidOption)
        ? parser.value(iidOption)
        : ZelvaneInspect::declaredIid(QDir(directory).filePath(required.constFirst()));
    const ZelvaneInspect::Inspection inspection = ZelvaneInspect::inspect(
        directory, iid, &settings,
        settingsFile.isEmpty() ? QString() : QFileInfo(settingsFile).absoluteFilePath());

    const QStringList warnings = ZelvaneInspect::permissionWarnings(directory, ::geteuid());

    if (parser.isSet(graphOption)) {
        QString error;
        if (!ZelvaneInspect::writeDependencyGraph(inspection, parser.value(graphOption), &error)) {
            err << QObject::tr("zelvane-inspect: %1").arg(error) << Qt::endl;
            return 2;
        }
    }

    Zelvane::TrialReport trialReport;
    if (trial) {
        Zelvane::TrialWatch watch;
        watch.program = trialProgram();
        if (watch.program.isEmpty()) {
            err << QObject::tr("zelvane-inspect: the trial helper zelvane-trial is not installed "
                               "beside this program")
                << Qt::endl;
            return 2;
        }
        watch.directory = inspection.directory;
        watch.iid = inspection.iid;
        watch.settingsFile = settingsFile;
        const QStringList pairs = parser.values(argOption);
        for (const QString& pair : pairs)
            watch.arguments.insert(pair.section(QLatin1Char('='), 0, 0),
                                   pair.section(QLatin1Char('='), 1));
        watch.timeoutSeconds = timeout;
        watch.isolate = parser.isSet(isolateOption);
        watch.shutdown = parser.isSet(shutdownOption);
        trialReport = watch.run();
        if (parser.isSet(timelineOption)) {
            QString error;
            if (!ZelvaneInspect::writeTimeline(trialReport, parser.value(timelineOption), &error)) {
                err << QObject::tr("zelvane-inspect: %1").arg(error) << Qt::endl;
                return 2;
            }
        }
    }

    QTextStream out(stdout);
    if (parser.isSet(jsonOption)) {
        QJsonObject report = ZelvaneInspect::toJson(inspection);
        report.insert(QStringLiteral("warnings"), QJsonArray::fromStringList(warnings));
        if (trial)
            report.insert(QStringLiteral("trial"), ZelvaneInspect::trialJson(trialReport));
        out << QJsonDocument(report).toJson(QJsonDocument::Indented);
    } else {
        out << ZelvaneInspect::toText(inspection);
        if (trial)
            out << Qt::endl << ZelvaneInspect::trialText(trialReport);
        for (const QString& warning : warnings)
            err << QObject::tr("zelvane-inspect: warning: %1").arg(warning) << Qt::endl;
    }
    out.flush();
    const QStringList failures = ZelvaneInspect::requirementFailures(required, inspection.directory,
                                                                     &settings, trialReport);
    for (const QString& failure : failures)
        err << QObject::tr("zelvane-inspect: %1").arg(failure) << Qt::endl;
    if (trial) {
        return trialReport.everyPluginStarted() && trialReport.shutdownCulprits().isEmpty()
                && failures.isEmpty()
            ? 0
            : 1;
    }
    return inspection.hasProblems() ? 1 : 0;
}
