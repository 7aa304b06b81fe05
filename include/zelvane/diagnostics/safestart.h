#pragma once

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QDir>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

class SafeStartPrivate;

/// Keeps a plugin that crashes, exits or hangs while the host starts from taking the
/// host down at every start. The host wraps its start-up in begin() and finish(): begin()
/// leaves a mark in a file beside the settings file, finish() removes it. When the next
/// start finds the mark, the start before it never finished: findCulprits() then loads
/// the plugins in a child process, as loadPlugins() would, and names the ones that
/// cannot start, and switchOff() switches them off in the settings, so that the host can
/// ask the user and start without them.
///
/// No plugin is ever loaded in the host's process by this class. The child is the
/// zelvane-trial helper installed with this library (zelvane/ in its folder). Use it
/// on the thread that uses the controller; it keeps, and never owns, the settings.
class ZELVANE_DIAGNOSTICS_EXPORT SafeStart
{
public:
    /// A plugin that cannot start, with the reason: "crashed in initialize(): signal
    /// SIGSEGV (Segmentation fault)", "hung in initialize(): ...", "exited while loading
    /// the library: exit code 3", or the library's own failure text.
    struct Culprit
    {
        QString name;
        QString fileName;
        QString reason;
    };

    /// settings is the host's selection, the one set on the controller; the mark is
    /// the file markFileName() beside settings->fileName().
    explicit SafeStart(QSettings* settings);
    ~SafeStart();
    SafeStart(const SafeStart&) = delete;
    SafeStart& operator=(const SafeStart&) = delete;

    /// "<settings file>.starting".
    QString markFileName() const;
    /// True when the mark of an earlier start is there, and that start's process is
    /// gone: it died, or was killed, between begin() and finish().
    bool previousStartFailed() const;
    /// Leaves the mark; call it right before loadPlugins(). False when the mark cannot
    /// be written.
    bool begin();
    /// Removes the mark; call it when the host has started.
    void finish();

    /// Loads dir's plugins in a child process with the controller's IID, the settings
    /// and arguments (the map the host gives setArguments()), switching off in a copy of
    /// the settings each plugin that cannot start and loading again, until a start gets
    /// through. The trial goes on through the controller's shutdown(), so a plugin that
    /// takes the process down while it is unloaded counts as well. Returns those plugins,
    /// in load order; an empty list when every plugin starts and unloads, or when the
    /// trial cannot run (errorString() then says why). Writes nothing.
    QList<Culprit> findCulprits(const QDir& dir, const QMap<QString, QString>& arguments = {});
    /// Switches the plugins off for the next start: "plugin/<Name>" = false in the
    /// settings, as the plugins model writes a cleared tick, and saves them. Like a
    /// cleared tick, it switches off the plugins that need a culprit too
    /// (switchedOffWith()).
    void switchOff(const QList<Culprit>& culprits);
    /// The plugins that switchOff() switches off along with culprit because they need it,
    /// directly or through others, by the rules of the plugins model: of the plugins of
    /// the folder of the last findCulprits() that the settings switch on, in the order of
    /// the model's rows. Empty before findCulprits() has run.
    QStringList switchedOffWith(const Culprit& culprit) const;

    /// "<settings file>.coreonly".
    QString coreOnlyFileName() const;
    /// Settings for one start with the Core plugin only, for a user who wants the host
    /// up first and the culprits found later: a copy of the user's settings in the file
    /// coreOnlyFileName(), with every Extension of dir switched off. Hand it to the
    /// controller for this run instead of the user's settings, which are never written,
    /// so the saved selection is the user's own at the next start. Null when the copy
    /// cannot be written.
    std::unique_ptr<QSettings> coreOnlySettings(const QDir& dir) const;

    /// How long one plugin may take before it counts as hanging; 5 seconds unless set.
    int timeout() const;
    void setTimeout(int seconds);
    /// The helper that findCulprits() starts; found beside the library unless set.
    QString trialProgram() const;
    void setTrialProgram(const QString& program);
    /// Why the last findCulprits() could not run; empty when it ran.
    QString errorString() const;

private:
    std::unique_ptr<SafeStartPrivate> d;
};

} // namespace Zelvane
