#pragma once

// Internal: never installed.

#include <zelvane/pluginargumentdescription.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QString>

namespace Zelvane {

// The command-line option for one argument that a plugin declares: its name as it
// stands (no plugin prefix), a switch when it names no parameter, and never a default
// value. pluginsOptions() hands these to the host's parser, and a settings screen that
// lists a plugin's options shows the same ones.
inline QCommandLineOption pluginOption(const PluginArgumentDescription& argument)
{
    return QCommandLineOption(argument.name, argument.description, argument.parameter, QString());
}

} // namespace Zelvane
