#pragma once

// Internal to the library and its tools: never installed.

#include <zelvane/pluginloader.h>
#include <zelvane/zelvane_export.h>

#include <QtCore/QDir>
#include <QtCore/QList>
#include <QtCore/QMultiMap>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

// What PluginController::loadPlugins() does with a folder, decided before any plugin
// is loaded: which files are plugins, which plugins load and in what order, and why
// each of the others does not. The controller carries the plan out; pluginsOptions()
// and zelvane-inspect read it; a screen that explains loading reads it too, so an
// explanation can never drift from what the host does.
//
// Making a plan reads exactly what loadPlugins() reads, in the same order: the
// folder's listing, each file's metadata (a refused file costs its one debug line),
// and the settings once per selection question. It loads nothing and runs no plugin
// code. It writes nothing.
class ZELVANE_AUTOTEST_EXPORT LoadPlan
{
public:
    // What happens to one "*.so" file of the folder. These names, and those of
    // Blocker::Kind, are the ones that the Diagnostics component gives users in
    // PluginDiagnostic::State and DependencyProblem::Kind: one idea, one name, from the
    // plan to the screens.
    enum class Fate {
        Refused, // not an acceptable plugin: refusal says why (may be empty)
        Discovered, // accepted; decide() has not run yet
        OtherCategory, // neither "Core" nor "Extension": discovered, never loaded
        NoCore, // a "Core" or "Extension" plugin, but the folder has no Core plugin
        NoSettings, // a "Core" or "Extension" plugin, but no settings object is set
        OtherCoreChosen, // another Core plugin is chosen: exactly one loads
        Disabled, // an Extension switched off (by the settings or its "Default")
        Dropped, // selected, then removed by the dependency ordering
        Loads, // loads at position, possibly before its dependencies
    };

    // Why a plugin cannot be ordered after its dependencies: one entry per distinct
    // dependency that is not loaded before it.
    struct Blocker
    {
        enum class Kind {
            NamesItself, // it names itself
            Missing, // no file of the folder is an accepted plugin of that name
            Refused, // a file carries the name but is refused
            SwitchedOff, // an Extension that is switched off
            OtherCoreChosen, // a Core plugin other than the chosen one
            NeverLoaded, // a plugin of another category (see category)
            Cycle, // the names along the cycle, from this plugin back to it
            Unordered, // it could not be placed either, for reasons of its own
        };
        Kind kind;
        QString dependency;
        QString category; // NeverLoaded: the dependency's category
        QStringList cycle; // Cycle: this plugin's name, ..., this plugin's name
    };

    struct File
    {
        QString fileName; // bare name, as listed
        QString path; // absolute path, as the library's messages show it
        Fate fate = Fate::Refused;
        QString refusal; // Refused: the library's own text
        QString name; // the plugin's name; for a refused file what its metadata gave
        PluginLoader plugin; // accepted files only: scanned, never loaded by the plan
        int position = -1; // Loads: index in loadOrder()
        QList<Blocker> blockers; // Dropped, or Loads ahead of its dependencies (if explained)
    };

    // How much the plan works out beyond what loads and in which order. The Diagnostics
    // component and zelvane-inspect show why a plugin is dropped or loads ahead of its
    // dependencies; loadPlugins() only carries the order out, and asks for no more.
    enum class Explanations {
        Included, // blockers for every plugin that the ordering could not place
        Omitted, // blockers stay empty; files, fates and the load order are the same
    };

    // Discovers dir: lists it and reads every file's metadata. Nothing is selected
    // yet; pluginsOptions() needs no more than this, and reads no settings.
    explicit LoadPlan(const QDir& dir, Explanations explanations = Explanations::Included);
    // Selects one Core plugin and the enabled Extensions and orders them, asking the
    // settings exactly what loadPlugins() asks. settings may be null: the plan then
    // fails as loadPlugins() does, once a Core plugin is found. Call it once.
    void decide(QSettings* settings);

    // Every "*.so" file of the folder, in the order in which the QDir lists them.
    QList<File> files() const { return m_files; }
    // The accepted plugins keyed by category, as discovery returns them.
    QMultiMap<QString, PluginLoader> discovered() const { return m_discovered; }
    // The same map holding indices into files(): which file each entry of discovered()
    // is, e.g. for the rows of a PluginsModel made from discovered().
    QMultiMap<QString, int> discoveredFiles() const { return m_discoveredFiles; }
    // What loadPlugins() reports when the plan loads nothing; empty otherwise.
    QString error() const { return m_error; }
    // The plugins to load, front to back.
    QList<PluginLoader> loadOrder() const;
    // Indices into files(), in load order.
    QList<int> loadOrderFiles() const { return m_loadOrder; }
    // The index into files() of the Core plugin that loads; -1 when none does.
    int chosenCore() const { return m_chosenCore; }

private:
    void order(const QList<int>& selected);
    QList<Blocker> blockers(int file, const QSet<QString>& placedNames, const QList<int>& unplaced,
                            const QSet<QString>& selectedNames) const;

    QList<File> m_files;
    QMultiMap<QString, PluginLoader> m_discovered;
    QMultiMap<QString, int> m_discoveredFiles; // the same map, holding indices into m_files
    Explanations m_explanations = Explanations::Included;
    QString m_error;
    QList<int> m_loadOrder;
    int m_chosenCore = -1;
};

} // namespace Zelvane
