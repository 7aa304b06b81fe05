#pragma once

// Internal to the library and its trial loader: never installed, never exported.

#include <QtCore/qglobal.h>

QT_BEGIN_NAMESPACE
class QString;
QT_END_NAMESPACE

namespace Zelvane {

class PluginLoader;

// The steps of PluginLoader::load(), in the order it takes them.
enum class LoadStep {
    Library, // the dynamic loader maps the library and runs its static initialisers
    RootObject, // Qt creates the plugin's root object
    Initialize, // the plugin's initialize() runs
    Finished, // load() returns, whatever its result
};

// Told as PluginLoader::load() enters each step. The trial loader (zelvane-trial) sets
// one to report, to the process that watches it, the last step a plugin reached before
// it took its process down; nothing else does, and without one load() does exactly
// what it always does. Not thread-safe: set it before loading starts.
using LoadStepObserver = void (*)(const PluginLoader& plugin, LoadStep step);
void setLoadStepObserver(LoadStepObserver observer);

// Told as PluginLoader::unload() begins, before the library goes and the root object's
// destructor runs: the trial loader sets one after loadPlugins() has returned, so that a
// plugin that takes the process down in shutdown() is named too. Like the load-step
// observer, nothing else sets one and without it unload() is unchanged.
using UnloadObserver = void (*)(const PluginLoader& plugin);
void setUnloadObserver(UnloadObserver observer);

// Told of every step as well, for as long as it lives, whatever observer is set: the
// controller keeps one on the stack while loadPlugins() runs to time the start-up, and
// the trial loader's observer must not displace it, nor it the observer. Listeners
// nest: each one is told, the most recent first, and each must be destroyed in the
// reverse order of construction, on the thread that loads (scoped, as the controller
// uses it). With none alive, load() pays one pointer test per step.
class LoadStepListener
{
public:
    LoadStepListener();
    virtual ~LoadStepListener();
    LoadStepListener(const LoadStepListener&) = delete;
    LoadStepListener& operator=(const LoadStepListener&) = delete;

    virtual void stepEntered(const PluginLoader& plugin, LoadStep step) = 0;

private:
    friend void notifyLoadStepListeners(const PluginLoader& plugin, LoadStep step);
    LoadStepListener* m_outer;
};

// Tells every live listener, the innermost first; PluginLoader::load() calls it.
void notifyLoadStepListeners(const PluginLoader& plugin, LoadStep step);

} // namespace Zelvane
