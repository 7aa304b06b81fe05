// zelvane-create-plugin: a plugin project that builds, tests and trial-loads against the
// installed Zelvane package, in one command.

#include "pluginproject.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>

namespace {

class Texts
{
    Q_DECLARE_TR_FUNCTIONS(ZelvaneCreatePlugin)
};

QString usage()
{
    return Texts::tr("usage: zelvane-create-plugin NAME --iid IID [--category Core|Extension] "
                     "[--depends NAME...] [--output DIR]");
}

// "--depends A B --iid X" means two dependencies: the parser takes one value per option,
// so the names after --depends, up to the next option, each get one of their own.
QStringList spreadDependencies(const QStringList& arguments)
{
    QStringList result;
    bool inDepends = false;
    for (const QString& argument : arguments) {
        if (argument.startsWith(QLatin1Char('-'))) {
            inDepends = argument == QLatin1String("--depends");
            result.append(argument);
            continue;
        }
        if (inDepends && result.constLast() != QLatin1String("--depends"))
            result.append(QStringLiteral("--depends"));
        result.append(argument);
    }
    return result;
}

bool writeFile(const QString& path, const QByteArray& content, QString* error)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        *error = Texts::tr("cannot create the folder %1").arg(QFileInfo(path).absolutePath());
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()
        || !file.flush()) {
        *error = Texts::tr("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zelvane-create-plugin"));

    QCommandLineParser parser;
    parser.setApplicationDescription(Texts::tr(
        "Writes a Zelvane plugin project into DIR (default: a new folder named after the "
        "plugin): a CMakeLists.txt that builds it against the installed Zelvane package with "
        "zelvane_add_plugin(), the plugin class, whose initialize() puts an object into the "
        "ObjectPool, its JSON metadata, a Qt Test unit test, a test that trial-loads the "
        "plugin as a host would (zelvane_add_plugin_test()), a README.md and a .gitignore.\n"
        "NAME is the plugin's \"Name\": what the host's settings and other plugins' "
        "\"Dependencies\" call it. The class and file names are made of its ASCII letters and "
        "digits.\n"
        "Exit status: 0; 1 when a file cannot be written; 2 for a usage error, an invalid "
        "NAME, IID, category or dependency, or an output folder that exists and is not "
        "empty."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("NAME"), Texts::tr("The plugin's name."));
    const QCommandLineOption iidOption(
        QStringLiteral("iid"), Texts::tr("The plugin IID of the hosts that load the plugin."),
        Texts::tr("IID"));
    const QCommandLineOption categoryOption(
        QStringLiteral("category"),
        Texts::tr("Core (hosts load exactly one) or Extension (the default)."),
        Texts::tr("CATEGORY"), QStringLiteral("Extension"));
    const QCommandLineOption dependsOption(
        QStringLiteral("depends"),
        Texts::tr("The plugins that must be loaded before this one. Takes several names, and "
                  "may be repeated."),
        Texts::tr("NAME"));
    const QCommandLineOption outputOption(
        QStringLiteral("output"), Texts::tr("The project folder; it must not exist, or be empty."),
        Texts::tr("DIR"));
    parser.addOptions({ iidOption, categoryOption, dependsOption, outputOption });
    parser.process(spreadDependencies(QCoreApplication::arguments()));

    QTextStream out(stdout);
    QTextStream err(stderr);
    const auto refuse = [&err](const QString& text) {
        err << Texts::tr("zelvane-create-plugin: %1").arg(text) << Qt::endl;
        return 2;
    };

    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1 || !parser.isSet(iidOption)) {
        err << usage() << Qt::endl;
        return 2;
    }

    ZelvaneCreatePlugin::PluginProject project;
    project.name = positional.constFirst();
    project.iid = parser.value(iidOption);
    project.category = parser.value(categoryOption);
    if (const QString problem = ZelvaneCreatePlugin::nameProblem(project.name); !problem.isEmpty())
        return refuse(Texts::tr("invalid plugin name \"%1\": %2").arg(project.name, problem));
    if (const QString problem = ZelvaneCreatePlugin::iidProblem(project.iid); !problem.isEmpty())
        return refuse(Texts::tr("invalid IID \"%1\": %2").arg(project.iid, problem));
    if (const QString problem = ZelvaneCreatePlugin::categoryProblem(project.category);
        !problem.isEmpty())
        return refuse(Texts::tr("invalid category \"%1\": %2").arg(project.category, problem));
    const QStringList dependencies = parser.values(dependsOption);
    for (const QString& dependency : dependencies) {
        const QString problem = ZelvaneCreatePlugin::dependencyProblem(dependency, project.name);
        if (!problem.isEmpty())
            return refuse(Texts::tr("invalid dependency \"%1\": %2").arg(dependency, problem));
        if (!project.dependencies.contains(dependency))
            project.dependencies.append(dependency);
    }

    const QString folder
        = parser.isSet(outputOption) ? parser.value(outputOption) : project.target();
    const QFileInfo folderInfo(folder);
    if (folderInfo.exists() && !folderInfo.isDir())
        return refuse(Texts::tr("%1 exists and is not a folder").arg(folder));
    if (folderInfo.isDir()
        && !QDir(folder).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden
                                 | QDir::System))
        return refuse(
            Texts::tr("%1 exists and is not empty; give a new folder with --output").arg(folder));

    const QList<ZelvaneCreatePlugin::ProjectFile> files
        = ZelvaneCreatePlugin::projectFiles(project);
    for (const ZelvaneCreatePlugin::ProjectFile& file : files) {
        QString error;
        if (!writeFile(QDir(folder).filePath(file.path), file.content, &error)) {
            err << Texts::tr("zelvane-create-plugin: %1").arg(error) << Qt::endl;
            return 1;
        }
    }

    out << Texts::tr("Wrote the %1 plugin (%2) into %3:")
               .arg(project.name, project.category, QDir::cleanPath(folder))
        << Qt::endl;
    for (const ZelvaneCreatePlugin::ProjectFile& file : files)
        out << QStringLiteral("  ") << file.path << Qt::endl;
    out << Texts::tr("Build it and run its tests:") << Qt::endl
        << QStringLiteral("  cmake -S %1 -B %1/build\n  cmake --build %1/build\n"
                          "  ctest --test-dir %1/build --output-on-failure")
               .arg(QDir::cleanPath(folder))
        << Qt::endl;
    return 0;
}
