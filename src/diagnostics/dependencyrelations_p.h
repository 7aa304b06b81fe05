#pragma once

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Zelvane API. It is private API of the Diagnostics
// component, exported for its tests, never installed, and may change from version to
// version without notice, or even be removed.
//

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Zelvane {

// How the files of a folder relate by the names that their metadata gives: what each
// accepted plugin names that no accepted plugin carries, and which accepted plugins
// name it. A folder may hold a plugin that names thousands of others, and the screens
// ask again after every tick, so this takes time in proportion to the names given, not
// to their square.
struct DependencyRelations
{
    struct File
    {
        QString name;
        bool accepted = false; // refused files relate to nothing
        QStringList dependencies;
    };

    // Per file: its dependencies that no accepted file is named, each once, in the order
    // its metadata first gives them; empty for a refused file.
    QList<QStringList> missing;
    // Per file: the accepted files that name it, each name once, in the folder's order;
    // empty for a refused file.
    QList<QStringList> dependants;
};

ZELVANE_DIAGNOSTICS_EXPORT DependencyRelations
dependencyRelations(const QList<DependencyRelations::File>& files);

} // namespace Zelvane
