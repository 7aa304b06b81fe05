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

} // namespace Zelvane
