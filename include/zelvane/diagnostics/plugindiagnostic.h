#pragma once

#include <zelvane/diagnostics/dependencyproblem.h>
#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QList>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Zelvane {

class PluginDiagnosticData;

/// One "*.so" file of a plugin folder, and what PluginController::loadPlugins() does
/// with it: its metadata, how it relates to the other plugins of the folder, whether
/// it is loaded in this process now, and whether (and why not) it loads at the next
/// start with the selection saved now.
///
/// A value, made by LoadDiagnostics; a default-constructed one is invalid.
class ZELVANE_DIAGNOSTICS_EXPORT PluginDiagnostic
{
public:
    /// What the next loadPlugins() over the folder does with the file.
    enum class State {
        Invalid, ///< not a file of a LoadDiagnostics
        Loads, ///< loads at position(), after its dependencies
        LoadsUnordered, ///< loads at position(), but ahead of a dependency: problems() say which
        Disabled, ///< an Extension switched off, by the user or by its "Default"
        OtherCoreChosen, ///< another Core plugin loads: exactly one does
        Dropped, ///< selected, but the dependency ordering drops it: problems() say why
        Refused, ///< not an acceptable plugin: refusal() says why
        OtherCategory, ///< neither "Core" nor "Extension": never loads
        NoCore, ///< the folder has no Core plugin, so nothing loads
        NoSettings, ///< no settings object is set, so nothing loads
    };

    PluginDiagnostic();
    PluginDiagnostic(const PluginDiagnostic& other);
    PluginDiagnostic& operator=(const PluginDiagnostic& other);
    ~PluginDiagnostic();

    bool isValid() const;

    /// The file: its bare name and its absolute path, as the library's messages show it.
    QString fileName() const;
    QString filePath() const;

    /// Metadata. For a refused file the name is what its metadata gave (often empty)
    /// and everything else is empty.
    QString name() const;
    QString category() const;
    QString description() const;
    bool loadsByDefault() const;
    bool isCore() const; ///< category "Core", exactly
    bool isExtension() const; ///< category "Extension", exactly
    /// The plugins it names as dependencies, as its metadata lists them.
    QStringList dependencies() const;
    /// The dependencies that no accepted plugin of the folder carries.
    QStringList missingDependencies() const;
    /// The accepted plugins of the folder that name this one as a dependency.
    QStringList dependants() const;
    /// The command-line options it declares, as PluginController::pluginsOptions() gives
    /// them.
    QList<QCommandLineOption> options() const;

    /// The user's saved choice, or its "Default" when nothing is saved (false when no
    /// settings were given). A Core plugin may load without it: see state().
    bool isSelected() const;
    /// Whether the file is loaded in this process now (by any loader).
    bool isLoaded() const;

    State state() const;
    /// State::Loads and State::LoadsUnordered.
    bool willLoad() const;
    /// Its index in the load order when it will load; -1 otherwise.
    int position() const;
    /// State::Refused: the library's own refusal text, empty for malformed "Arguments".
    QString refusal() const;
    /// State::Dropped and State::LoadsUnordered: one entry per dependency in the way.
    QList<DependencyProblem> problems() const;

    /// One translated sentence about now and the next start, e.g. "Loaded now; will not
    /// load at the next start: it is switched off." The problems() have their own texts.
    QString stateText() const;

private:
    friend class LoadDiagnostics;
    friend class PluginDiagnosticData;
    QSharedDataPointer<PluginDiagnosticData> d;
};

} // namespace Zelvane
