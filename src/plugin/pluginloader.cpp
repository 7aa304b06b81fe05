#include <zelvane/pluginloader.h>

#include "plugin/loadsteps_p.h"
#include "plugin/plugindata_p.h"
#include "plugin/pluginlog_p.h"

#include <zelvane/iplugin.h>

#include <exception>

namespace Zelvane {

/*!
 * \class Zelvane::PluginLoader
 * \headerfile pluginloader.h <zelvane/PluginLoader>
 * \brief A handle to one plugin file.
 *
 * Copies are cheap and share one record: the file's metadata, its load state and its
 * last error text, so loading through one copy is seen by every other copy. Dropping
 * the last copy of a loaded plugin unloads it.
 *
 * Hosts meet this type in PluginController::isEnabled() and in PluginsModel's rows;
 * they never create or load one themselves: the controller does. Its member
 * functions are not exported from the library.
 */

namespace {

LoadStepObserver loadStepObserver = nullptr;
LoadStepListener* innermostListener = nullptr;
UnloadObserver unloadObserver = nullptr;

void enterStep(const PluginLoader& plugin, LoadStep step)
{
    if (loadStepObserver)
        loadStepObserver(plugin, step);
    if (innermostListener)
        notifyLoadStepListeners(plugin, step);
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

void setUnloadObserver(UnloadObserver observer)
{
    unloadObserver = observer;
}

LoadStepListener::LoadStepListener()
    : m_outer(innermostListener)
{
    innermostListener = this;
}

LoadStepListener::~LoadStepListener()
{
    innermostListener = m_outer;
}

void notifyLoadStepListeners(const PluginLoader& plugin, LoadStep step)
{
    for (LoadStepListener* listener = innermostListener; listener; listener = listener->m_outer)
        listener->stepEntered(plugin, step);
}

/*!
 * \fn Zelvane::PluginLoader::PluginLoader()
 * \brief An invalid handle: no record, no file.
 */

/*!
 * \fn bool Zelvane::PluginLoader::scan(const QString& fileName)
 * \brief Points the handle at a new record for fileName and reads its metadata
 * without loading the file.
 *
 * True when the file is an acceptable plugin; the handle is valid afterwards either
 * way, and errorString() tells why a file was refused.
 */
bool PluginLoader::scan(const QString& fileName)
{
    d = std::make_shared<PluginData>(fileName);
    return d->scan();
}

/*!
 * \fn bool Zelvane::PluginLoader::isValid() const
 * \brief Whether the handle has a record, that is, whether it was scanned.
 */
bool PluginLoader::isValid() const
{
    return d != nullptr;
}

/*!
 * \fn bool Zelvane::PluginLoader::load(const QMap<QString, QString>& arguments)
 * \brief Loads the library, checks that its root object is an IPlugin and initialises
 * it with the arguments.
 *
 * Requires a valid handle. A failure leaves the library loaded; unload() or dropping
 * the last handle releases it.
 */
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

/*!
 * \fn void Zelvane::PluginLoader::unload()
 * \brief Unloads the library, which destroys the plugin's root object.
 */
void PluginLoader::unload()
{
    if (!d)
        return;
    if (unloadObserver)
        unloadObserver(*this);
    d->loader.unload();
}

/*!
 * \fn QObject* Zelvane::PluginLoader::instance() const
 * \brief The root object while loaded, otherwise null; never loads.
 */
QObject* PluginLoader::instance() const
{
    return d ? d->instance() : nullptr;
}

/*!
 * \fn bool Zelvane::PluginLoader::loaded() const
 * \brief Whether the plugin is loaded and initialised.
 */
bool PluginLoader::loaded() const
{
    return d && d->loader.isLoaded();
}

/*!
 * \fn QString Zelvane::PluginLoader::name() const
 * \brief The metadata's "Name", read when the handle was scanned; empty for an
 * invalid handle.
 */
QString PluginLoader::name() const
{
    return d ? d->name : QString();
}

/*!
 * \fn QString Zelvane::PluginLoader::category() const
 * \brief The metadata's "Category"; empty for an invalid handle.
 */
QString PluginLoader::category() const
{
    return d ? d->category : QString();
}

/*!
 * \fn QStringList Zelvane::PluginLoader::dependencies() const
 * \brief The metadata's "Dependencies"; empty for an invalid handle.
 */
QStringList PluginLoader::dependencies() const
{
    return d ? d->dependencies : QStringList();
}

/*!
 * \fn int Zelvane::PluginLoader::dependencyCount() const
 * \brief The number of dependencies(); 0 for an invalid handle.
 */
int PluginLoader::dependencyCount() const
{
    return d ? int(d->dependencies.size()) : 0;
}

/*!
 * \fn bool Zelvane::PluginLoader::loadByDefault() const
 * \brief The metadata's "Default"; false for an invalid handle.
 */
bool PluginLoader::loadByDefault() const
{
    return d && d->loadByDefault;
}

/*!
 * \fn QString Zelvane::PluginLoader::description() const
 * \brief The metadata's "Description"; empty for an invalid handle.
 */
QString PluginLoader::description() const
{
    return d ? d->description : QString();
}

/*!
 * \fn QList<PluginArgumentDescription> Zelvane::PluginLoader::argumentDescriptions() const
 * \brief The metadata's "Arguments".
 *
 * Requires a valid handle (it is only asked of plugins that discovery accepted).
 */
QList<PluginArgumentDescription> PluginLoader::argumentDescriptions() const
{
    return d->arguments;
}

/*!
 * \fn QString Zelvane::PluginLoader::errorString() const
 * \brief The last failure's text, empty when nothing has failed; "Unknown error" for
 * an invalid handle.
 */
QString PluginLoader::errorString() const
{
    return d ? d->errorString : QObject::tr("Unknown error");
}

/*!
 * \fn bool Zelvane::PluginLoader::dependsOn(const PluginLoader& other) const
 * \brief True when this plugin names other's name among its direct dependencies.
 */
bool PluginLoader::dependsOn(const PluginLoader& other) const
{
    return dependencies().contains(other.name());
}

/*!
 * \fn bool Zelvane::PluginLoader::conflictsWith(const PluginLoader& other) const
 * \brief Not implemented: always false, and says so in a warning.
 */
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

/*!
 * \fn bool Zelvane::PluginLoader::operator==(const QString& pluginName) const
 * \brief Exact, case-sensitive comparison of name() with a plugin name, so that a list
 * of handles can be searched by name with std::find.
 */
bool PluginLoader::operator==(const QString& pluginName) const
{
    return name() == pluginName;
}

/*!
 * \fn bool Zelvane::PluginLoader::operator!=(const QString& pluginName) const
 * \brief The opposite of operator==().
 */

// PluginArgumentDescription has no source file of its own; its reference sits beside
// the loader that reads it from the metadata and hands it out.

/*!
 * \struct Zelvane::PluginArgumentDescription
 * \headerfile pluginargumentdescription.h <zelvane/PluginArgumentDescription>
 * \brief One command-line argument that a plugin declares in the "Arguments" array of
 * its metadata.
 *
 * The host never builds these itself: PluginController::pluginsOptions() turns them
 * into QCommandLineOptions.
 *
 * \var Zelvane::PluginArgumentDescription::name
 * The option name, used verbatim.
 * \var Zelvane::PluginArgumentDescription::parameter
 * The value's name; empty for a switch without a value.
 * \var Zelvane::PluginArgumentDescription::description
 * The help text.
 */

// IPlugin has no source file of its own; its reference sits beside the loader that
// recognises a plugin's root object and calls its initialize().

/*!
 * \class Zelvane::IPlugin
 * \headerfile iplugin.h <zelvane/IPlugin>
 * \brief The interface of every plugin's root object.
 *
 * A plugin is a Qt plugin whose root class derives from IPlugin, declares
 * `Q_PLUGIN_METADATA(IID "<the host's IID>" FILE "<plugin>.json")` and implements
 * initialize(). The library recognises the root object with `qobject_cast<IPlugin*>`,
 * so a class that merely has a function called initialize() is not a plugin.
 *
 * There is no shut-down call: a plugin releases what it holds in its destructor,
 * which runs when the library is unloaded (PluginController::shutdown()).
 *
 * \sa \ref writing_a_plugin "Writing a plugin", \ref metadata "The plugin metadata",
 *     \ref cmake_helper "zelvane_add_plugin()"
 */

/*!
 * \fn Zelvane::IPlugin::IPlugin(QObject* parent = nullptr)
 * \brief Constructs the plugin object; Qt's plugin loader passes no parent.
 */

/*!
 * \fn Zelvane::IPlugin::~IPlugin()
 * \brief Runs when the library is unloaded: release what the plugin holds here.
 */

/*!
 * \fn virtual bool Zelvane::IPlugin::initialize(const QMap<QString, QString>& arguments, QString*
 * errorString) = 0 \brief Called once per load, on the thread that loads the plugins, after the
 * plugins that this one depends on have been initialised.
 *
 * arguments is the whole map that the host gave PluginController::setArguments():
 * pick out the names your metadata declares and ignore the rest. errorString is
 * never null and points to an empty string owned by the caller; on failure write
 * the reason there and return false. Do not keep the pointer.
 *
 * Exceptions: an exception that leaves initialize() is caught by the library and
 * treated like a false result, with the exception's what() text (or "unknown
 * exception") as the reason. Do not rely on it: report failures by returning false.
 */

} // namespace Zelvane
