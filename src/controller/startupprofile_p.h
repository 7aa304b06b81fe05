#pragma once

// Private API of libZelvane for its components (the Diagnostics component's
// StartupProfile): never installed, not part of the five exported classes. It may
// change from one release to the next; the components are built with the library.

#include <zelvane/zelvane_export.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Zelvane {

// What the last PluginController::loadPlugins() of this process took, and the last
// shutdown() once it has run. Every time is in nanoseconds of std::chrono::steady_clock;
// -1 stands for a part that was not reached.
struct StartupRecord
{
    // The step of PluginLoader::load() in which a plugin failed.
    enum class Step {
        None, // it did not fail
        Library, // loading the library, static initialisers included
        RootObject, // creating the root object
        Initialize, // its initialize()
    };

    struct Plugin
    {
        QString name;
        QString fileName; // bare file name, as the folder lists it
        qint64 libraryNs = -1;
        qint64 rootObjectNs = -1;
        qint64 initializeNs = -1;
        Step failedStep = Step::None;
    };

    struct Unload
    {
        QString name;
        qint64 ns = -1;
    };

    bool recorded = false; // loadPlugins() has run in this process
    bool succeeded = false; // and returned true
    qint64 discoveryNs = -1; // listing the folder and reading every file's metadata
    qint64 orderingNs = -1; // selecting the plugins and putting them in dependency order
    qint64 modelNs = -1; // building the plugins model, after a successful load
    qint64 totalNs = -1; // the whole call
    QList<Plugin> plugins; // those whose load() ran, in load order

    bool shutDown = false; // shutdown() has run since
    QList<Unload> unloads; // in the order shutdown() unloaded them
    qint64 shutdownNs = -1; // the whole shutdown()
};

// A copy of the record; recorded is false before the first loadPlugins().
ZELVANE_EXPORT StartupRecord lastStartupRecord();

} // namespace Zelvane
