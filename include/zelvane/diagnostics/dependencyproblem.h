#pragma once

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Zelvane {

class DependencyProblemData;

/// Why one plugin cannot be loaded after one of the plugins it names as a dependency.
///
/// A value: PluginDiagnostic::problems() hands out one per distinct dependency that is
/// not loaded before the plugin, in the order of the plugin's "Dependencies".
class ZELVANE_DIAGNOSTICS_EXPORT DependencyProblem
{
public:
    enum class Kind {
        NamesItself, ///< the plugin names itself
        Missing, ///< no file of the folder is an accepted plugin of that name
        Refused, ///< a file carries the name, but the library refuses it
        SwitchedOff, ///< an Extension that the user (or its "Default") switched off
        OtherCoreChosen, ///< a Core plugin other than the one that loads
        NeverLoaded, ///< a plugin of a category that never loads (see category())
        Cycle, ///< a dependency cycle; cycle() lists it
        Unordered, ///< it cannot be placed before the plugin either, for its own reasons
    };

    DependencyProblem();
    DependencyProblem(const DependencyProblem& other);
    DependencyProblem& operator=(const DependencyProblem& other);
    ~DependencyProblem();

    Kind kind() const;
    /// The dependency's name, as the plugin names it.
    QString dependency() const;
    /// Kind::NeverLoaded: the dependency's category; empty otherwise.
    QString category() const;
    /// Kind::Cycle: the plugin's name, the names along the cycle, and the plugin's name
    /// again; empty otherwise.
    QStringList cycle() const;
    /// One translated sentence for users, e.g. "Needs Storage, which is switched off."
    QString text() const;

private:
    friend class DependencyProblemData;
    QSharedDataPointer<DependencyProblemData> d;
};

} // namespace Zelvane
