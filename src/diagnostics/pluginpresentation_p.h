#pragma once

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Zelvane API. It is private API of the Diagnostics
// component, exported for the Widgets and Quick components, never installed, and may
// change from version to version without notice, or even be removed.
//

#include <zelvane/diagnostics/plugindiagnostic.h>
#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QString>

namespace Zelvane {

// How the plugin screens present a plugin of a folder. Both screens, the widget and the
// QML page, ask here, so that they show the same plugin the same way.
namespace PluginPresentation {

// What a screen calls the plugin: its name, or its file's name when it has none (a
// refused file).
ZELVANE_DIAGNOSTICS_EXPORT QString title(const PluginDiagnostic& plugin);

// Whether the screens list the file apart from the Core and Extension plugins: any file
// of the folder that is neither, refused files included. The model has rows for Core
// and Extension plugins only, so these have no check box.
ZELVANE_DIAGNOSTICS_EXPORT bool isOtherFile(const PluginDiagnostic& plugin);

// Whether a screen's filter text keeps the plugin: its title or its description holds
// the text, ignoring case; an empty text keeps everything.
ZELVANE_DIAGNOSTICS_EXPORT bool matchesFilter(const PluginDiagnostic& plugin, const QString& text);

// An option as the host's --help shows it: "--name <value>".
ZELVANE_DIAGNOSTICS_EXPORT QString optionSynopsis(const QCommandLineOption& option);

} // namespace PluginPresentation

} // namespace Zelvane
