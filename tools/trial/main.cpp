// zelvane-trial: loads a plugin folder as a host would, in a process of its own, and
// tells the process that started it (zelvane-inspect --trial, Zelvane::SafeStart) each
// step as it is entered. When a plugin crashes, aborts, exits or hangs, the last line
// written names the plugin and the step; the watcher supplies the cause. With
// --shutdown it then calls the controller's shutdown() and tells each unload the same
// way, for a plugin that takes the host down as it quits.
//
// It is not meant to be run by hand. Its output is the trial protocol of
// src/diagnostics/trialprotocol_p.h, written unbuffered to what was its standard output
// when it started; plugins' own output goes to standard error.
//
// The plugins are loaded by PluginController::loadPlugins() itself: the selection, the
// order and the loading are the library's own, and the steps come from the library's
// load-step observer. Why this executable carries its own copy of the library is said
// in its CMakeLists.txt.

#include <zelvane/plugincontroller.h>

#include "controller/loadplan_p.h"
#include "diagnostics/trialprotocol_p.h"
#include "plugin/loadsteps_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>

#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>

namespace {

using namespace Zelvane::TrialProtocol;

int protocolFd = -1;
int nextPlugin = 0; // the index, in load order, of the plugin whose load() runs next
int currentPlugin = -1;
QHash<QString, int> planIndex; // a plugin's name to its index in load order

qint64 nowUs()
{
    return trialClockUs();
}

// One line, written in one call: a line is complete or absent when the process dies.
void emitLine(QJsonObject object)
{
    QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact);
    line.append('\n');
    const char* data = line.constData();
    qsizetype left = line.size();
    while (left > 0) {
        const ssize_t written = ::write(protocolFd, data, size_t(left));
        if (written <= 0)
            return;
        data += written;
        left -= written;
    }
}

void observeStep(const Zelvane::PluginLoader& plugin, Zelvane::LoadStep step)
{
    const qint64 us = nowUs();
    switch (step) {
    case Zelvane::LoadStep::Library:
        currentPlugin = nextPlugin++;
        Q_FALLTHROUGH();
    case Zelvane::LoadStep::RootObject:
    case Zelvane::LoadStep::Initialize:
        emitLine({ { eventKey, stepEvent },
                   { pluginKey, currentPlugin },
                   { stepKey, stepName(step) },
                   { usKey, double(us) } });
        return;
    case Zelvane::LoadStep::Finished:
        break;
    }
    // The error text of a failed load is the one the controller takes over; a success
    // leaves an earlier text in place, so it is only read when load() failed.
    QJsonObject finished { { eventKey, finishedEvent },
                           { pluginKey, currentPlugin },
                           { usKey, double(us) } };
    const bool ok = plugin.loaded() && plugin.errorString().isEmpty();
    finished.insert(okKey, ok);
    if (!ok)
        finished.insert(errorKey, plugin.errorString());
    emitLine(finished);
}

void observeUnload(const Zelvane::PluginLoader& plugin)
{
    emitLine({ { eventKey, unloadingEvent },
               { pluginKey, planIndex.value(plugin.name(), -1) },
               { usKey, double(nowUs()) } });
}

} // namespace

// A plugin that crashes is the expected case here, and the watcher tells a crash by the
// signal that ends this process. Built with AddressSanitizer, the helper would catch a
// SIGSEGV, report it and exit instead; this default (which ASAN_OPTIONS may still
// override) lets the signal end the process as it does in a release build. Without the
// sanitizer nothing calls it.
extern "C" const char* __asan_default_options()
{
    return "handle_segv=0";
}

int main(int argc, char* argv[])
{
    // The protocol keeps the standard output it was given; anything a plugin prints
    // goes to standard error, where it cannot break a line of the protocol.
    protocolFd = ::dup(STDOUT_FILENO);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    // A plugin that crashes is the expected case here: no core file for each one.
    ::prctl(PR_SET_DUMPABLE, 0);

    // A plugin of a GUI host may need a GUI application; without a display, the
    // offscreen platform stands in for it.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY")
        && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    emitLine({ { eventKey, helloEvent }, { usKey, double(nowUs()) } });
    // Refused files cost a debug line each in a host; the watcher reports them itself.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("DIR"), QString());
    const QCommandLineOption iidOption(QStringLiteral("iid"), QString(), QStringLiteral("IID"));
    const QCommandLineOption settingsOption(QStringLiteral("settings"), QString(),
                                            QStringLiteral("FILE"));
    const QCommandLineOption argOption(QStringLiteral("arg"), QString(),
                                       QStringLiteral("NAME=VALUE"));
    const QCommandLineOption offOption(QStringLiteral("switch-off"), QString(),
                                       QStringLiteral("NAME"));
    const QCommandLineOption shutdownOption(QStringLiteral("shutdown"));
    parser.addOptions({ iidOption, settingsOption, argOption, offOption, shutdownOption });
    if (!parser.parse(app.arguments()) || parser.positionalArguments().size() != 1
        || !parser.isSet(iidOption)) {
        std::fprintf(stderr,
                     "usage: zelvane-trial DIR --iid IID [--settings FILE] "
                     "[--arg NAME=VALUE]... [--switch-off NAME]... [--shutdown]\n");
        return 2;
    }

    // The host's settings file is never written: the trial reads a copy of it, in which
    // the plugins to leave out are switched off as a user would switch them off.
    QTemporaryDir scratch;
    const QString settingsFile = scratch.filePath(QStringLiteral("settings.ini"));
    const QString hostSettings = parser.value(settingsOption);
    if (!hostSettings.isEmpty() && QFile::exists(hostSettings))
        QFile::copy(hostSettings, settingsFile);
    QFile::setPermissions(settingsFile, QFile::ReadOwner | QFile::WriteOwner);
    QSettings settings(settingsFile, QSettings::IniFormat);
    const QStringList switchedOff = parser.values(offOption);
    for (const QString& name : switchedOff)
        settings.setValue(Zelvane::selectionSettingsKey(name), false);
    settings.sync();

    QMap<QString, QString> arguments;
    const QStringList pairs = parser.values(argOption);
    for (const QString& pair : pairs)
        arguments.insert(pair.section(QLatin1Char('='), 0, 0), pair.section(QLatin1Char('='), 1));

    auto* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(parser.value(iidOption));
    controller->setSettings(&settings);
    controller->setArguments(arguments);
    const QDir dir(parser.positionalArguments().constFirst());

    // The plan that loadPlugins() is about to carry out, so that the watcher knows which
    // plugins follow the one that takes the process down. It reads the same folder and
    // settings the same way, and loads nothing.
    {
        Zelvane::LoadPlan plan(dir);
        plan.decide(&settings);
        const QList<Zelvane::LoadPlan::File> files = plan.files();
        const QList<int> order = plan.loadOrderFiles();
        for (int i = 0; i < order.size(); ++i) {
            const Zelvane::LoadPlan::File& file = files.at(order.at(i));
            planIndex.insert(file.name, i);
            emitLine({ { eventKey, planEvent },
                       { pluginKey, i },
                       { nameKey, file.name },
                       { fileKey, file.fileName } });
        }
        for (const Zelvane::LoadPlan::File& file : files) {
            if (file.fate == Zelvane::LoadPlan::Fate::Dropped)
                emitLine({ { eventKey, droppedEvent },
                           { nameKey, file.name },
                           { fileKey, file.fileName } });
        }
    }

    Zelvane::setLoadStepObserver(observeStep);
    emitLine({ { eventKey, startEvent }, { usKey, double(nowUs()) } });
    const bool ok = controller->loadPlugins(dir);
    const qint64 end = nowUs();
    Zelvane::setLoadStepObserver(nullptr);
    QJsonObject last { { eventKey, endEvent }, { okKey, ok }, { usKey, double(end) } };
    if (!ok)
        last.insert(errorKey, controller->errorString());
    emitLine(last);

    // With --shutdown the host's own shutdown() follows, and each unload is announced
    // before it begins, so that the last line names the plugin whose destructor took
    // the process down. shutdown() unloads what it loaded, in its own order.
    if (parser.isSet(shutdownOption)) {
        Zelvane::setUnloadObserver(observeUnload);
        controller->shutdown();
        Zelvane::setUnloadObserver(nullptr);
        emitLine({ { eventKey, shutdownEvent }, { usKey, double(nowUs()) } });
    }

    // Anything after shutdown(), or instead of it, is not the plugins' to answer for:
    // leave at once, without the destructors of whatever is still loaded.
    std::fflush(stderr);
    ::_exit(0);
}
