#include <zelvane/diagnostics/safestart.h>

#include "controller/loadplan_p.h"
#include "diagnostics/trialwatch_p.h"
#include "model/pluginselectionrules_p.h"
#include "plugin/pluginnames_p.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QSettings>

#include <optional>

namespace Zelvane {

namespace {

// The words of this file in a context of their own, so that a translator finds them by
// the class they belong to; the "QObject" context holds the library's own texts, which
// hosts translate themselves.
class SafeStartTexts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::SafeStart)
};

} // namespace

class SafeStartPrivate
{
public:
    QSettings* settings = nullptr;
    int timeout = 5;
    QString trialProgram;
    QString errorString;
    // The folder of the last findCulprits(): its culprits are switched off in it.
    std::optional<QDir> culpritsDir;

    // The plugins switched off, beyond the culprits themselves, when the culprits are
    // switched off one after the other as cleared ticks.
    QStringList switchedOffWith(const QList<SafeStart::Culprit>& culprits) const;
};

QStringList SafeStartPrivate::switchedOffWith(const QList<SafeStart::Culprit>& culprits) const
{
    if (!settings || !culpritsDir)
        return {};
    // The rows of the plugins model, as it makes them: the Core plugins, then the
    // Extensions, each ticked as the settings say. The model's own rules then spread
    // the cleared ticks, so this can never name a plugin that the screen would leave on.
    const LoadPlan plan(*culpritsDir);
    const QMultiMap<QString, PluginLoader> discovered = plan.discovered();
    QList<PluginsModel::Record> records;
    for (const PluginLoader& plugin : discovered.values(coreCategoryKey()))
        records.append(PluginsModel::Record { isPluginEnabled(*settings, plugin), true, plugin });
    for (const PluginLoader& plugin : discovered.values(extensionCategoryKey()))
        records.append(PluginsModel::Record { isPluginEnabled(*settings, plugin), false, plugin });
    const QList<PluginsModel::Record> before = records;

    QStringList culpritNames;
    for (const SafeStart::Culprit& culprit : culprits)
        culpritNames.append(culprit.name);
    Toggler toggler(records);
    for (qsizetype row = 0; row < records.size(); ++row) {
        // A refused edit (core plugins that need one another in a cycle) would leave the
        // rows half changed: then nothing is named beyond the culprits.
        if (culpritNames.contains(records.at(row).plugin.name()) && !toggler.run(int(row), false))
            return {};
    }
    QStringList off;
    for (qsizetype row = 0; row < records.size(); ++row) {
        const QString name = records.at(row).plugin.name();
        if (before.at(row).checked && !records.at(row).checked && !culpritNames.contains(name))
            off.append(name);
    }
    return off;
}

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
    d->culpritsDir = dir;
    TrialWatch watch;
    watch.program = trialProgram();
    if (watch.program.isEmpty()) {
        d->errorString = SafeStartTexts::tr("the trial helper zelvane-trial is not installed");
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
    // Only the plugins that change are written, as the culprits are found in a
    // selection that may never have been saved: the others keep following their Default.
    const QStringList dependants = d->switchedOffWith(culprits);
    for (const Culprit& culprit : culprits)
        d->settings->setValue(selectionSettingsKey(culprit.name), false);
    for (const QString& name : dependants)
        d->settings->setValue(selectionSettingsKey(name), false);
    d->settings->sync();
}

QStringList SafeStart::switchedOffWith(const Culprit& culprit) const
{
    return d->switchedOffWith({ culprit });
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
