#include <zelvane/diagnostics/safestart.h>

#include "plugin/pluginnames_p.h"
#include "trialwatch.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QSettings>

#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

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

// zelvane-trial, from the folder of this library: installed under libexec, or where
// the build tree puts it.
QString defaultTrialProgram()
{
    Dl_info info;
    if (!::dladdr(reinterpret_cast<void*>(&defaultTrialProgram), &info) || !info.dli_fname)
        return QString();
    const QString folder = QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
    return TrialWatch::findProgram(
        folder,
        { QStringLiteral(ZELVANE_TRIAL_FROM_LIBRARY), QStringLiteral(ZELVANE_TRIAL_BUILT) });
}

// Whether the process that wrote the mark still runs: then it is starting right now,
// not dead.
bool stillRunning(qint64 pid)
{
    if (pid <= 0 || pid == qint64(::getpid()))
        return false;
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
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
    return !stillRunning(mark.readAll().trimmed().toLongLong());
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
    mark.write(QByteArray::number(qint64(::getpid())) + '\n');
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

    const TrialReport report = watch.run();
    if (report.runs == 0 || (!report.error.isEmpty() && report.plugins.isEmpty()))
        d->errorString = report.error;
    QList<Culprit> culprits;
    for (const TrialPlugin& plugin : report.plugins) {
        if (plugin.cannotStart())
            culprits.append(Culprit { plugin.name, plugin.file, trialOutcomeText(plugin) });
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
