#include <zelvane/diagnostics/startupprofile.h>

#include "controller/startupprofile_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSharedData>

#include <algorithm>

namespace Zelvane {

namespace {

// The translation context of every text of this class.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::StartupProfile)
};

StartupProfile::Step stepOf(StartupRecord::Step step)
{
    switch (step) {
    case StartupRecord::Step::None:
        break;
    case StartupRecord::Step::Library:
        return StartupProfile::Step::Library;
    case StartupRecord::Step::RootObject:
        return StartupProfile::Step::RootObject;
    case StartupRecord::Step::Initialize:
        return StartupProfile::Step::Initialize;
    }
    return StartupProfile::Step::None;
}

} // namespace

class StartupProfileData : public QSharedData
{
public:
    bool valid = false;
    bool succeeded = false;
    QList<StartupProfile::Plugin> plugins;
    qint64 discoveryNs = -1;
    qint64 orderingNs = -1;
    qint64 modelNs = -1;
    qint64 totalNs = -1;
    bool shutDown = false;
    QList<StartupProfile::Unload> unloads;
    qint64 shutdownNs = -1;
};

qint64 StartupProfile::Plugin::totalNs() const
{
    qint64 sum = 0;
    for (const qint64 ns : { libraryNs, rootObjectNs, initializeNs }) {
        if (ns >= 0)
            sum += ns;
    }
    return sum;
}

StartupProfile::StartupProfile()
    : d(new StartupProfileData)
{
}

StartupProfile::StartupProfile(const StartupProfile& other) = default;
StartupProfile& StartupProfile::operator=(const StartupProfile& other) = default;
StartupProfile::~StartupProfile() = default;

StartupProfile StartupProfile::last()
{
    // The library's own record, taken as it stands: the screens show the very start the
    // user sat through, not a second one made to be measured.
    const StartupRecord record = lastStartupRecord();
    StartupProfile profile;
    if (!record.recorded)
        return profile;
    StartupProfileData& data = *profile.d;
    data.valid = true;
    data.succeeded = record.succeeded;
    data.plugins.reserve(record.plugins.size());
    for (const StartupRecord::Plugin& recorded : record.plugins) {
        Plugin plugin;
        plugin.name = recorded.name;
        plugin.fileName = recorded.fileName;
        plugin.libraryNs = recorded.libraryNs;
        plugin.rootObjectNs = recorded.rootObjectNs;
        plugin.initializeNs = recorded.initializeNs;
        plugin.failedStep = stepOf(recorded.failedStep);
        data.plugins.append(plugin);
    }
    data.discoveryNs = record.discoveryNs;
    data.orderingNs = record.orderingNs;
    data.modelNs = record.modelNs;
    data.totalNs = record.totalNs;
    data.shutDown = record.shutDown;
    for (const StartupRecord::Unload& unload : record.unloads)
        data.unloads.append({ unload.name, unload.ns });
    data.shutdownNs = record.shutdownNs;
    return profile;
}

bool StartupProfile::isValid() const
{
    return d->valid;
}

bool StartupProfile::succeeded() const
{
    return d->succeeded;
}

QList<StartupProfile::Plugin> StartupProfile::plugins() const
{
    return d->plugins;
}

QList<StartupProfile::Plugin> StartupProfile::slowestFirst() const
{
    QList<Plugin> sorted = d->plugins;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Plugin& left, const Plugin& right) {
        return left.totalNs() > right.totalNs();
    });
    return sorted;
}

StartupProfile::Plugin StartupProfile::failedPlugin() const
{
    if (!d->plugins.isEmpty() && d->plugins.constLast().failedStep != Step::None)
        return d->plugins.constLast();
    return {};
}

qint64 StartupProfile::discoveryNs() const
{
    return d->discoveryNs;
}

qint64 StartupProfile::orderingNs() const
{
    return d->orderingNs;
}

qint64 StartupProfile::modelNs() const
{
    return d->modelNs;
}

qint64 StartupProfile::totalNs() const
{
    return d->totalNs;
}

double StartupProfile::share(const Plugin& plugin) const
{
    if (d->totalNs <= 0)
        return 0.0;
    return 100.0 * double(plugin.totalNs()) / double(d->totalNs);
}

bool StartupProfile::hasShutdown() const
{
    return d->shutDown;
}

QList<StartupProfile::Unload> StartupProfile::unloads() const
{
    return d->unloads;
}

qint64 StartupProfile::shutdownNs() const
{
    return d->shutdownNs;
}

QString StartupProfile::durationText(qint64 ns)
{
    // %L1: the number in the user's locale (QLocale()), "12,3 ms" in German.
    //: A duration in milliseconds, e.g. "12.3 ms"
    return Texts::tr("%L1 ms").arg(double(qMax<qint64>(ns, 0)) / 1e6, 0, 'f', 1);
}

QString StartupProfile::shareText(double percent)
{
    //: A part of the whole start-up, e.g. "45.6%"
    return Texts::tr("%L1%").arg(percent, 0, 'f', 1);
}

QString StartupProfile::stepText(Step step)
{
    switch (step) {
    case Step::None:
        break;
    case Step::Library:
        return Texts::tr("loading the library");
    case Step::RootObject:
        return Texts::tr("creating the root object");
    case Step::Initialize:
        return Texts::tr("initialize()");
    }
    return QString();
}

QString StartupProfile::pluginText(const Plugin& plugin) const
{
    //: A plugin's start-up time and its part of the whole, e.g. "Viewer: 12.3 ms (45.6%)"
    const QString line
        = Texts::tr("%1: %2 (%3)")
              .arg(plugin.name, durationText(plugin.totalNs()), shareText(share(plugin)));
    switch (plugin.failedStep) {
    case Step::None:
        return line;
    case Step::Library:
        return Texts::tr("%1, failed while loading the library").arg(line);
    case Step::RootObject:
        return Texts::tr("%1, failed while creating the root object").arg(line);
    case Step::Initialize:
        return Texts::tr("%1, failed in initialize()").arg(line);
    }
    return line;
}

QString StartupProfile::summaryText() const
{
    if (!d->valid)
        return Texts::tr("No start-up has been profiled.");
    // Both numbers spelled out: the component ships no English catalogue that would
    // turn a "%n plugin(s)" into the right form.
    const QString plugins = d->plugins.size() == 1 ? Texts::tr("1 plugin")
                                                   : Texts::tr("%1 plugins").arg(d->plugins.size());
    const QString parts
        = Texts::tr("%1, discovery %2, ordering %3")
              .arg(plugins, durationText(d->discoveryNs), durationText(d->orderingNs));
    if (d->succeeded)
        return Texts::tr("Started in %1: %2").arg(durationText(d->totalNs), parts);
    return Texts::tr("Start failed after %1: %2").arg(durationText(d->totalNs), parts);
}

} // namespace Zelvane
