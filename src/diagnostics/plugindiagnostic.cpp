#include <zelvane/diagnostics/plugindiagnostic.h>

#include "controller/pluginoptions_p.h"
#include "diagnostics/diagnosticsdata_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QCoreApplication>

namespace Zelvane {

namespace {

// The translation context of every text of this class.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::PluginDiagnostic)
};

} // namespace

PluginDiagnostic::PluginDiagnostic()
    : d(new PluginDiagnosticData)
{
}

PluginDiagnostic::PluginDiagnostic(const PluginDiagnostic& other) = default;
PluginDiagnostic& PluginDiagnostic::operator=(const PluginDiagnostic& other) = default;
PluginDiagnostic::~PluginDiagnostic() = default;

bool PluginDiagnostic::isValid() const
{
    return d->state != State::Invalid;
}

QString PluginDiagnostic::fileName() const
{
    return d->file.fileName;
}

QString PluginDiagnostic::filePath() const
{
    return d->file.path;
}

QString PluginDiagnostic::name() const
{
    return d->file.name;
}

QString PluginDiagnostic::category() const
{
    return d->file.plugin.category();
}

QString PluginDiagnostic::description() const
{
    return d->file.plugin.description();
}

bool PluginDiagnostic::loadsByDefault() const
{
    return d->file.plugin.loadByDefault();
}

bool PluginDiagnostic::isCore() const
{
    return d->file.plugin.isValid() && category() == coreCategoryKey();
}

bool PluginDiagnostic::isExtension() const
{
    return d->file.plugin.isValid() && category() == extensionCategoryKey();
}

QStringList PluginDiagnostic::dependencies() const
{
    return d->file.plugin.dependencies();
}

QStringList PluginDiagnostic::missingDependencies() const
{
    return d->missingDependencies;
}

QStringList PluginDiagnostic::dependants() const
{
    return d->dependants;
}

QList<QCommandLineOption> PluginDiagnostic::options() const
{
    QList<QCommandLineOption> options;
    if (!d->file.plugin.isValid())
        return options;
    const QList<PluginArgumentDescription> arguments = d->file.plugin.argumentDescriptions();
    for (const PluginArgumentDescription& argument : arguments)
        options.append(pluginOption(argument));
    return options;
}

bool PluginDiagnostic::isSelected() const
{
    return d->selected;
}

bool PluginDiagnostic::isLoaded() const
{
    return d->loaded;
}

PluginDiagnostic::State PluginDiagnostic::state() const
{
    return d->state;
}

bool PluginDiagnostic::willLoad() const
{
    return d->state == State::Loads || d->state == State::LoadsUnordered;
}

int PluginDiagnostic::position() const
{
    return willLoad() ? d->file.position : -1;
}

QString PluginDiagnostic::refusal() const
{
    return d->file.refusal;
}

QList<DependencyProblem> PluginDiagnostic::problems() const
{
    QList<DependencyProblem> problems;
    for (const LoadPlan::Blocker& blocker : d->file.blockers)
        problems.append(DependencyProblemData::make(blocker));
    return problems;
}

QString PluginDiagnostic::stateText() const
{
    QString reason;
    switch (d->state) {
    case State::Invalid:
        return QString();
    case State::Loads:
        return d->loaded ? Texts::tr("Loaded now.") : Texts::tr("Will load at the next start.");
    case State::LoadsUnordered:
        // The ordering got stuck elsewhere and left it in the list: it loads, but before
        // a plugin it needs.
        return d->loaded ? Texts::tr("Loaded now, before a plugin it needs.")
                         : Texts::tr("Will load at the next start, before a plugin it needs.");
    case State::Disabled:
        reason = Texts::tr("it is switched off");
        break;
    case State::OtherCoreChosen:
        reason = Texts::tr("another Core plugin, %1, is chosen").arg(d->chosenCore);
        break;
    case State::Dropped:
        reason = Texts::tr("its dependencies cannot be met");
        break;
    case State::Refused:
        reason = d->file.refusal.isEmpty()
            ? Texts::tr("the library refuses the file (its \"Arguments\" are malformed)")
            : Texts::tr("the library refuses the file: %1").arg(d->file.refusal);
        break;
    case State::OtherCategory:
        reason = Texts::tr("its category \"%1\" is neither Core nor Extension").arg(category());
        break;
    case State::NoCore:
        reason = Texts::tr("the plugin folder has no Core plugin");
        break;
    case State::NoSettings:
        reason = Texts::tr("no settings object is set");
        break;
    }
    return d->loaded ? Texts::tr("Loaded now; will not load at the next start: %1.").arg(reason)
                     : Texts::tr("Will not load: %1.").arg(reason);
}

} // namespace Zelvane
