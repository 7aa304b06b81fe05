#include "diagnostics/dependencyrelations_p.h"

#include <QtCore/QHash>
#include <QtCore/QSet>

namespace Zelvane {

DependencyRelations dependencyRelations(const QList<DependencyRelations::File>& files)
{
    QSet<QString> accepted;
    QSet<QString> sharedNames; // carried by more than one accepted file
    for (const DependencyRelations::File& file : files) {
        if (!file.accepted)
            continue;
        if (accepted.contains(file.name))
            sharedNames.insert(file.name);
        accepted.insert(file.name);
    }

    DependencyRelations relations;
    relations.missing.resize(files.size());
    relations.dependants.resize(files.size());
    // Every name given, with the files that give it in the folder's order: one pass over
    // the names instead of a search of every file for every file.
    QHash<QString, QStringList> dependantsOf;
    for (qsizetype index = 0; index < files.size(); ++index) {
        const DependencyRelations::File& file = files.at(index);
        if (!file.accepted)
            continue;
        QSet<QString> given;
        QStringList& missing = relations.missing[index];
        for (const QString& dependency : file.dependencies) {
            if (given.contains(dependency))
                continue;
            given.insert(dependency);
            if (!accepted.contains(dependency))
                missing.append(dependency);
            QStringList& dependants = dependantsOf[dependency];
            // Two files of one name name it once; only a shared name can be there already.
            if (!sharedNames.contains(file.name) || !dependants.contains(file.name))
                dependants.append(file.name);
        }
    }
    for (qsizetype index = 0; index < files.size(); ++index) {
        if (files.at(index).accepted)
            relations.dependants[index] = dependantsOf.value(files.at(index).name);
    }
    return relations;
}

} // namespace Zelvane
