#pragma once

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QList>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>

namespace Zelvane {

class StartupProfileData;

/// How long the host's own start took, plugin by plugin: the profile of the last
/// PluginController::loadPlugins() in this process, measured while it ran, and of the
/// last shutdown() once that has run.
///
/// A value: last() takes a copy of what the library recorded; a later loadPlugins() or
/// shutdown() does not change a profile already taken. The library records every start,
/// whether or not anybody asks, at the cost of a few clock reads per plugin. Times are
/// nanoseconds of a monotonic clock; -1 stands for a part that was not reached.
class ZELVANE_DIAGNOSTICS_EXPORT StartupProfile
{
public:
    /// A step of loading one plugin, in the order they are taken.
    enum class Step {
        None, ///< no step: the plugin did not fail
        Library, ///< loading the library, its static initialisers included
        RootObject, ///< creating the plugin's root object
        Initialize, ///< the plugin's initialize()
    };

    /// One plugin whose loading was attempted.
    struct Plugin
    {
        QString name;
        QString fileName; ///< the file's bare name, as the plugin folder lists it
        qint64 libraryNs = -1;
        qint64 rootObjectNs = -1;
        qint64 initializeNs = -1;
        Step failedStep = Step::None; ///< the step in which loading failed, if it did
        /// The steps that were reached, added up.
        qint64 totalNs() const;
    };

    /// One plugin that shutdown() unloaded: the time its destructor took, and the
    /// library's unloading.
    struct Unload
    {
        QString name;
        qint64 ns = -1;
    };

    /// An empty profile, as before the first loadPlugins().
    StartupProfile();
    StartupProfile(const StartupProfile& other);
    StartupProfile& operator=(const StartupProfile& other);
    ~StartupProfile();

    /// The profile of the last loadPlugins() in this process, and of the last
    /// shutdown() after it; empty (isValid() false) before the first loadPlugins().
    static StartupProfile last();

    /// Whether a loadPlugins() has been profiled.
    bool isValid() const;
    /// Whether that loadPlugins() answered true.
    bool succeeded() const;

    /// The plugins in the order they were loaded; when loading failed, the last one is
    /// the plugin that failed.
    QList<Plugin> plugins() const;
    /// The same plugins, the slowest first; plugins of equal time keep their load order.
    QList<Plugin> slowestFirst() const;
    /// The plugin that failed; a Plugin without a name when none did.
    Plugin failedPlugin() const;

    /// Listing the plugin folder and reading every file's metadata.
    qint64 discoveryNs() const;
    /// Selecting the plugins to load and putting them in dependency order.
    qint64 orderingNs() const;
    /// Building the plugins model, after every plugin loaded; -1 when loading failed.
    qint64 modelNs() const;
    /// The whole loadPlugins().
    qint64 totalNs() const;
    /// A plugin's part of totalNs(), from 0 to 100.
    double share(const Plugin& plugin) const;

    /// Whether shutdown() has run after that loadPlugins().
    bool hasShutdown() const;
    /// The plugins that shutdown() unloaded, in its order: the reverse of loading.
    QList<Unload> unloads() const;
    /// The whole shutdown(); -1 before it has run.
    qint64 shutdownNs() const;

    /// A translated duration for users, in milliseconds with one decimal: "12.3 ms".
    static QString durationText(qint64 ns);
    /// A translated share for users: "45.6%".
    static QString shareText(double percent);
    /// The translated name of a step: "loading the library", "creating the root
    /// object", "initialize()"; empty for Step::None.
    static QString stepText(Step step);
    /// One translated line for a plugin: "Viewer: 12.3 ms (45.6%)", or for the plugin
    /// that failed "Viewer: 12.3 ms (45.6%), failed in initialize()".
    QString pluginText(const Plugin& plugin) const;
    /// One translated line for the whole start: "Started in 27.0 ms: 4 plugins, discovery
    /// 1.2 ms, ordering 0.1 ms", or "Start failed after 27.0 ms: ..."; "No start-up has
    /// been profiled." when isValid() is false.
    QString summaryText() const;

private:
    friend class StartupProfileData;
    QSharedDataPointer<StartupProfileData> d;
};

} // namespace Zelvane
