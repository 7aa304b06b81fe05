#pragma once

#include <QtCore/QString>

namespace Zelvane {

// One command-line argument that a plugin declares in the "Arguments" array of its
// metadata. The host never builds these itself: PluginController::pluginsOptions()
// turns them into QCommandLineOptions.
struct PluginArgumentDescription
{
    QString name; // the option name, used verbatim
    QString parameter; // the value's name; empty for a switch without a value
    QString description; // the help text

    friend bool operator==(const PluginArgumentDescription& lhs,
                           const PluginArgumentDescription& rhs)
    {
        return lhs.name == rhs.name && lhs.parameter == rhs.parameter
            && lhs.description == rhs.description;
    }
    friend bool operator!=(const PluginArgumentDescription& lhs,
                           const PluginArgumentDescription& rhs)
    {
        return !(lhs == rhs);
    }
};

} // namespace Zelvane
