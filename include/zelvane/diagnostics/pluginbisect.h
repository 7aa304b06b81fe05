#pragma once

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

class PluginBisectPrivate;

/// Finds the Extension plugin behind a problem that the user can see and the program
/// cannot (a missing menu, a wrong colour, a slow window), across restarts of the host.
///
/// Each step switches off one half of the plugins still suspected, together with the
/// plugins that need them, as the plugins model does when a tick is cleared; the host
/// restarts and the user answers whether the problem is still there. The first step
/// switches every suspect off at once: if the problem stays, it is not an Extension but
/// the Core plugin, a pinned plugin or the host itself. With n suspects it takes at most
/// ceil(log2 n) + 1 restarts. Pinned plugins, and the plugins they need, stay on
/// throughout.
///
/// The bisect lives in the host's settings, under the group "PluginBisect", so that it
/// survives the restarts; the user's own selection is saved there and written back
/// exactly as it was when the bisect is finished or cancelled, and when a start under a
/// step never got through (the host died): wrap the start in beginStart() and started()
/// as with SafeStart. Use it on the thread that uses the controller; it keeps, and never
/// owns, the settings.
class ZELVANE_DIAGNOSTICS_EXPORT PluginBisect
{
public:
    enum class State {
        Idle, ///< no bisect is under way
        Testing, ///< a step is set: restart the host, then answer()
        Found, ///< culprit() causes the problem; goOn() looks for another one
        NoOtherCulprit, ///< after goOn(): the problem went away with the culprits off
        NotAnExtension, ///< the problem stays with every suspect off: the Core plugin,
                        ///< a pinned plugin or the host
        Interrupted, ///< a start under a step did not get through; the selection is back
    };

    /// The words of the guided flow that a screen builds around the bisect, so that every
    /// screen (the Widgets component's, the QML module's) offers the same steps in the
    /// same words.
    enum class FlowText {
        Title, ///< "Find a plugin that causes a problem"
        Introduction, ///< "Tick the plugins to keep on, then start. Each step switches
                      ///< some plugins off and asks for a restart."
        PinList, ///< "Plugins to keep on", the name of the list of plugins to pin
        Start, ///< "Start"
        StillThere, ///< "The problem is still there"
        Gone, ///< "The problem is gone"
        GoOn, ///< "Look for another one"
        Finish, ///< "Finish", which also cancels a bisect under way
    };

    /// settings is the host's selection, the one set on the controller.
    explicit PluginBisect(QSettings* settings);
    ~PluginBisect();
    PluginBisect(const PluginBisect&) = delete;
    PluginBisect& operator=(const PluginBisect&) = delete;

    /// The settings group that holds the bisect: "PluginBisect".
    static QString settingsGroup();

    State state() const;

    /// Starts a bisect over the Extensions of dir that the user's selection switches
    /// on, except pinned ones and what they need, and sets the first step. False when
    /// a bisect is under way or nothing can be suspected; errorString() says why.
    bool start(const QDir& dir, const QStringList& pinned = {});
    /// Call at every start of the host, right before loadPlugins(): when the last start
    /// under a step never reached started(), puts the selection back and ends the bisect
    /// (state() is then Interrupted). Otherwise leaves a mark that started() removes.
    State beginStart();
    /// Removes the mark of beginStart(); call it when the host has started.
    void started();
    /// The user's answer after the restart: whether the problem is still there. Sets
    /// the next step, or ends the search with Found or NotAnExtension.
    void answer(bool problemIsThere);
    /// After Found: keeps the culprits found so far switched off and looks for another
    /// one; the next restart checks whether the problem is still there without them.
    void goOn();
    /// Ends the bisect, whatever its state: puts the user's selection back exactly as it
    /// was and removes the group.
    void finish();
    /// The same as finish(), for a user who gives up.
    void cancel();

    /// The plugin found by the last search; empty before one is found.
    QString culprit() const;
    /// Every culprit found so far, in the order they were found.
    QStringList culprits() const;
    /// The plugins that this step switches off, in the order they load.
    QStringList switchedOff() const;
    /// The plugins still suspected.
    QStringList suspects() const;
    /// The plugins kept on throughout: the pinned ones and what they need.
    QStringList pinned() const;
    /// The restarts asked for so far.
    int restarts() const;
    /// The most restarts the search can take: ceil(log2 n) + 1 for n suspects.
    int maximumRestarts() const;

    /// One translated sentence for users about where the bisect is, e.g. "Restart the
    /// application, then tell whether the problem is still there. 3 plugins are switched
    /// off for this test." or "Found it: Viewer causes the problem."
    QString statusText() const;
    /// Why start() refused; empty when it did not.
    QString errorString() const;

    /// One translated text of the guided flow.
    static QString flowText(FlowText text);

private:
    std::unique_ptr<PluginBisectPrivate> d;
};

} // namespace Zelvane
