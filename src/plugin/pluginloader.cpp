#include <zelvane/pluginloader.h>

#include "plugin/loadsteps_p.h"
#include "plugin/plugindata_p.h"
#include "plugin/pluginlog_p.h"

#include <zelvane/iplugin.h>

#include <exception>

namespace Zelvane {

namespace {

LoadStepObserver loadStepObserver = nullptr;

void enterStep(const PluginLoader& plugin, LoadStep step)
{
    if (loadStepObserver)
        loadStepObserver(plugin, step);
}

// Tells the observer that load() returns, on every path out of it.
struct FinishedStep
{
    const PluginLoader& plugin;
    ~FinishedStep() { enterStep(plugin, LoadStep::Finished); }
};

// A plugin's initialize() runs inside the host's start-up. An exception escaping it
// would take the host down from a place it cannot guard, so it is turned into an
// ordinary failure with the exception's text as the plugin's reason.
bool initializeGuarded(IPlugin* plugin, const QMap<QString, QString>& arguments, QString* text)
{
    try {
        return plugin->initialize(arguments, text);
    } catch (const std::exception& exception) {
        *text = QString::fromLocal8Bit(exception.what());
    } catch (...) {
        *text = QObject::tr("unknown exception");
    }
    return false;
}

} // namespace

void setLoadStepObserver(LoadStepObserver observer)
{
    loadStepObserver = observer;
}

bool PluginLoader::scan(const QString& fileName)
{
    d = std::make_shared<PluginData>(fileName);
    return d->scan();
}

bool PluginLoader::isValid() const
{
    return d != nullptr;
}

bool PluginLoader::load(const QMap<QString, QString>& arguments)
{
    const FinishedStep finished { *this };
    enterStep(*this, LoadStep::Library);
    if (!d->loader.load()) {
        d->errorString = d->loader.errorString();
        return false;
    }

    // A failure below leaves the library loaded on purpose: loadPlugins() keeps what
    // it loaded before a failure for the host's shutdown(), and unloading here would
    // delete the root object under a caller that may still hold it. The last handle to
    // go unloads it. This holds for a root object that is not an IPlugin and for an
    // initialize() that fails alike.
    enterStep(*this, LoadStep::RootObject);
    auto* plugin = qobject_cast<IPlugin*>(d->instance());
    if (!plugin) {
        d->errorString = QObject::tr("The plugin \"%1\" has not compatible interface").arg(name());
        return false;
    }

    enterStep(*this, LoadStep::Initialize);
    QString text;
    if (!initializeGuarded(plugin, arguments, &text)) {
        d->errorString = QObject::tr("The plugin \"%1\" failed to initialize. Error: \"%2\"")
                             .arg(name(), text);
        return false;
    }
    return true;
}

void PluginLoader::unload()
{
    if (d)
        d->loader.unload();
}

QObject* PluginLoader::instance() const
{
    return d ? d->instance() : nullptr;
}

bool PluginLoader::loaded() const
{
    return d && d->loader.isLoaded();
}

QString PluginLoader::name() const
{
    return d ? d->name : QString();
}

QString PluginLoader::category() const
{
    return d ? d->category : QString();
}

QStringList PluginLoader::dependencies() const
{
    return d ? d->dependencies : QStringList();
}

int PluginLoader::dependencyCount() const
{
    return d ? int(d->dependencies.size()) : 0;
}

bool PluginLoader::loadByDefault() const
{
    return d && d->loadByDefault;
}

QString PluginLoader::description() const
{
    return d ? d->description : QString();
}

QList<PluginArgumentDescription> PluginLoader::argumentDescriptions() const
{
    return d->arguments;
}

QString PluginLoader::errorString() const
{
    return d ? d->errorString : QObject::tr("Unknown error");
}

bool PluginLoader::dependsOn(const PluginLoader& other) const
{
    return dependencies().contains(other.name());
}

bool PluginLoader::conflictsWith(const PluginLoader& other) const
{
    // Left unimplemented deliberately: no host can rely on conflicts yet, and the
    // warning ("Unimplemented code.", one of the library's two log lines, which hosts'
    // message handlers see) makes any caller visible, so the line is emitted on every
    // call and its text stays exactly as it is.
    Q_UNUSED(other)
    logUnimplemented();
    return false;
}

bool PluginLoader::operator==(const QString& pluginName) const
{
    return name() == pluginName;
}

} // namespace Zelvane
