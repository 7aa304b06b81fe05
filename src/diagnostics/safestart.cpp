#include <zelvane/diagnostics/safestart.h>

#include "controller/loadplan_p.h"
#include "diagnostics/trialwatch_p.h"
#include "plugin/pluginnames_p.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QSettings>

namespace Zelvane {

class SafeStartPrivate
{
public:
    QSettings* settings = nullptr;
    int timeout = 5;
    QString trialProgram;
    QString errorString;
};

namespace {

// zelvane-trial, from the folder of this library. The build tree puts the libraries and
// the helper where an installation does, so the one relative path serves both, and no
// path of the build machine is written into the library.
QString defaultTrialProgram()
{
    const QString folder = folderOfCode(reinterpret_cast<const void*>(&defaultTrialProgram));
    if (folder.isEmpty())
        return QString();
    return TrialWatch::findProgram(folder, { QStringLiteral(ZELVANE_TRIAL_FROM_LIBRARY) });
}

} // namespace

SafeStart::SafeStart(QSettings* settings)
    : d(std::make_unique<SafeStartPrivate>())
{
    d->settings = settings;
}

SafeStart::~SafeStart() = default;

QString SafeStart::markFileName() const
{
    return d->settings ? d->settings->fileName() + QStringLiteral(".starting") : QString();
}

bool SafeStart::previousStartFailed() const
{
    QFile mark(markFileName());
    if (!mark.open(QIODevice::ReadOnly))
        return false;
    // A mark whose process still runs belongs to a start in progress, not a dead one.
    return !isOtherProcessRunning(mark.readAll().trimmed().toLongLong());
}

bool SafeStart::begin()
{
    // The settings' folder may not exist yet at a first start: QSettings makes it only
    // when it first saves.
    const QString fileName = markFileName();
    QDir().mkpath(QFileInfo(fileName).absolutePath());
    // Written whole or not at all: a start that dies while it writes the mark must not
    // leave half of one.
    QSaveFile mark(fileName);
    if (!mark.open(QIODevice::WriteOnly))
        return false;
    mark.write(QByteArray::number(QCoreApplication::applicationPid()) + '\n');
    return mark.commit();
}

void SafeStart::finish()
{
    QFile::remove(markFileName());
}

QList<SafeStart::Culprit> SafeStart::findCulprits(const QDir& dir,
                                                  const QMap<QString, QString>& arguments)
{
    d->errorString.clear();
    TrialWatch watch;
    watch.program = trialProgram();
    if (watch.program.isEmpty()) {
        d->errorString = QObject::tr("the trial helper zelvane-trial is not installed");
        return {};
    }
    watch.directory = dir.absolutePath();
    watch.iid = PluginController::instance()->pluginIID();
    if (d->settings) {
        d->settings->sync();
        watch.settingsFile = d->settings->fileName();
    }
    watch.arguments = arguments;
    watch.timeoutSeconds = d->timeout;
    watch.isolate = true;
    // A plugin that takes the host down as it quits breaks every run of it as surely as
    // one that crashes while it loads: the trial goes on through shutdown() to name it.
    watch.shutdown = true;

    const TrialReport report = watch.run();
    if (report.runs == 0 || (!report.error.isEmpty() && report.plugins.isEmpty()))
        d->errorString = report.error;
    QList<Culprit> culprits;
    for (const TrialPlugin& plugin : report.plugins) {
        if (plugin.cannotStart())
            culprits.append(Culprit { plugin.name, plugin.file, trialOutcomeText(plugin) });
        else if (plugin.cannotShutDown())
            culprits.append(Culprit { plugin.name, plugin.file, trialUnloadText(plugin) });
    }
    return culprits;
}

void SafeStart::switchOff(const QList<Culprit>& culprits)
{
    if (!d->settings)
        return;
    for (const Culprit& culprit : culprits)
        d->settings->setValue(selectionSettingsKey(culprit.name), false);
    d->settings->sync();
}

QString SafeStart::coreOnlyFileName() const
{
    return d->settings ? d->settings->fileName() + QStringLiteral(".coreonly") : QString();
}

std::unique_ptr<QSettings> SafeStart::coreOnlySettings(const QDir& dir) const
{
    if (!d->settings)
        return nullptr;
    const QString fileName = coreOnlyFileName();
    // A fresh copy each time: what a core-only run ticked must not carry over into the
    // next one, which starts again from the user's own selection.
    QFile::remove(fileName);
    auto copy = std::make_unique<QSettings>(fileName, QSettings::IniFormat);
    const QStringList keys = d->settings->allKeys();
    for (const QString& key : keys)
        copy->setValue(key, d->settings->value(key));
    // Every Extension the folder has, switched off as a cleared tick is: the controller
    // then loads the Core plugin alone, whatever the user's selection says.
    const LoadPlan plan(dir);
    const QList<PluginLoader> extensions = plan.discovered().values(extensionCategoryKey());
    for (const PluginLoader& plugin : extensions)
        copy->setValue(selectionSettingsKey(plugin.name()), false);
    copy->sync();
    if (copy->status() != QSettings::NoError)
        return nullptr;
    return copy;
}

int SafeStart::timeout() const
{
    return d->timeout;
}

void SafeStart::setTimeout(int seconds)
{
    d->timeout = seconds;
}

QString SafeStart::trialProgram() const
{
    return d->trialProgram.isEmpty() ? defaultTrialProgram() : d->trialProgram;
}

void SafeStart::setTrialProgram(const QString& program)
{
    d->trialProgram = program;
}

QString SafeStart::errorString() const
{
    return d->errorString;
}

} // namespace Zelvane
