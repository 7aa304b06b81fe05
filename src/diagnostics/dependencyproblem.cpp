#include <zelvane/diagnostics/dependencyproblem.h>

#include "diagnostics/diagnosticsdata_p.h"

#include <QtCore/QCoreApplication>

namespace Zelvane {

namespace {

// The translation context of every text of this class.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::DependencyProblem)
};

DependencyProblem::Kind kindOf(LoadPlan::Blocker::Kind kind)
{
    using Kind = LoadPlan::Blocker::Kind;
    switch (kind) {
    case Kind::NamesItself:
        return DependencyProblem::Kind::NamesItself;
    case Kind::Missing:
        return DependencyProblem::Kind::Missing;
    case Kind::Refused:
        return DependencyProblem::Kind::Refused;
    case Kind::SwitchedOff:
        return DependencyProblem::Kind::SwitchedOff;
    case Kind::OtherCoreChosen:
        return DependencyProblem::Kind::OtherCoreChosen;
    case Kind::NeverLoaded:
        return DependencyProblem::Kind::NeverLoaded;
    case Kind::Cycle:
        return DependencyProblem::Kind::Cycle;
    case Kind::Unordered:
        break;
    }
    return DependencyProblem::Kind::Unordered;
}

} // namespace

DependencyProblem DependencyProblemData::make(const LoadPlan::Blocker& blocker)
{
    DependencyProblem problem;
    problem.d->kind = kindOf(blocker.kind);
    problem.d->dependency = blocker.dependency;
    problem.d->category = blocker.category;
    problem.d->cycle = blocker.cycle;
    return problem;
}

DependencyProblem::DependencyProblem()
    : d(new DependencyProblemData)
{
}

DependencyProblem::DependencyProblem(const DependencyProblem& other) = default;
DependencyProblem& DependencyProblem::operator=(const DependencyProblem& other) = default;
DependencyProblem::~DependencyProblem() = default;

DependencyProblem::Kind DependencyProblem::kind() const
{
    return d->kind;
}

QString DependencyProblem::dependency() const
{
    return d->dependency;
}

QString DependencyProblem::category() const
{
    return d->category;
}

QStringList DependencyProblem::cycle() const
{
    return d->cycle;
}

QString DependencyProblem::text() const
{
    switch (d->kind) {
    case Kind::NamesItself:
        return Texts::tr("Names itself as a dependency.");
    case Kind::Missing:
        // An entry that is not a name (an object, null) converts to an empty name; the
        // plugin's metadata notes say which entry it is.
        if (d->dependency.isEmpty())
            return Texts::tr("Needs a plugin with an empty name, which no plugin has.");
        return Texts::tr("Needs %1, which is not in the plugin folder.").arg(d->dependency);
    case Kind::Refused:
        return Texts::tr("Needs %1, whose file is refused.").arg(d->dependency);
    case Kind::SwitchedOff:
        return Texts::tr("Needs %1, which is switched off.").arg(d->dependency);
    case Kind::OtherCoreChosen:
        return Texts::tr("Needs %1, a Core plugin that is not the chosen one.").arg(d->dependency);
    case Kind::NeverLoaded:
        return Texts::tr("Needs %1, whose category \"%2\" never loads.")
            .arg(d->dependency, d->category);
    case Kind::Cycle:
        return Texts::tr("Needs %1 in a dependency cycle: %2.")
            .arg(d->dependency, d->cycle.join(QStringLiteral(" → ")));
    case Kind::Unordered:
        break;
    }
    return Texts::tr("Needs %1, which cannot load before it either.").arg(d->dependency);
}

} // namespace Zelvane
