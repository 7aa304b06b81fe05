// zelvane-inspect: what a Zelvane host would make of a plugin directory, from the
// plugins' metadata alone.

#include "inspection.h"
#include "report.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
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
        "Exit status: 0; 1 when loading would fail for want of a Core plugin or would drop a "
        "plugin; 2 for a usage error."));
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
    parser.addOptions({ iidOption, settingsOption, jsonOption });
    parser.process(app);

    QTextStream err(stderr);
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1 || !parser.isSet(iidOption)) {
        err << QObject::tr("usage: zelvane-inspect DIR --iid IID [--settings FILE] [--json]")
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

    const ZelvaneInspect::Inspection inspection = ZelvaneInspect::inspect(
        directory, parser.value(iidOption), &settings,
        settingsFile.isEmpty() ? QString() : QFileInfo(settingsFile).absoluteFilePath());

    QTextStream out(stdout);
    if (parser.isSet(jsonOption))
        out << QJsonDocument(ZelvaneInspect::toJson(inspection)).toJson(QJsonDocument::Indented);
    else
        out << ZelvaneInspect::toText(inspection);
    out.flush();
    return inspection.hasProblems() ? 1 : 0;
}
