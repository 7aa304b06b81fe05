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
#include <QtCore/QList>
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

// The other files of a folder, as the screens group them: one group per category, in
// the order in which the folder lists each category's first file, then the refused
// files in a group of their own. A group holds its files in the folder's order.
struct ZELVANE_DIAGNOSTICS_EXPORT OtherGroup
{
    bool refused = false;
    QString category; // as the metadata gives it; may be empty. Empty when refused.
    QList<PluginDiagnostic> files;

    // Identifies the group across rereads of the folder, e.g. to keep it expanded.
    QString key() const;
};

// The groups of the other files of plugins that the filter text keeps (matchesFilter);
// a group with no such file is left out.
ZELVANE_DIAGNOSTICS_EXPORT QList<OtherGroup> otherGroups(const QList<PluginDiagnostic>& plugins,
                                                         const QString& filterText);

// A group's title: its category (or that its files are refused) and how many files it
// holds, e.g. "Category "Tool": 2 files".
ZELVANE_DIAGNOSTICS_EXPORT QString groupTitle(const OtherGroup& group);

} // namespace PluginPresentation

} // namespace Zelvane
