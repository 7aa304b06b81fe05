// The relations between the files of a folder (what each plugin names that is missing,
// which plugins name it) against their literal form, a search of every file for every
// file, over many random folders: names shared by several files, refused files, a
// plugin that names itself, a name given twice, the empty name.

#include "diagnostics/dependencyrelations_p.h"

#include <QtCore/QRandomGenerator>
#include <QtTest/QTest>

namespace {

using Zelvane::DependencyRelations;

// The literal form, kept as the reference: for each accepted file, its dependencies that
// no accepted file is named, and every accepted file whose dependencies hold its name.
DependencyRelations literalRelations(const QList<DependencyRelations::File>& files)
{
    QStringList accepted;
    for (const DependencyRelations::File& file : files) {
        if (file.accepted)
            accepted.append(file.name);
    }
    DependencyRelations relations;
    for (const DependencyRelations::File& file : files) {
        QStringList missing;
        QStringList dependants;
        if (file.accepted) {
            for (const QString& dependency : file.dependencies) {
                if (!accepted.contains(dependency) && !missing.contains(dependency))
                    missing.append(dependency);
            }
            for (const DependencyRelations::File& other : files) {
                if (other.accepted && other.dependencies.contains(file.name)
                    && !dependants.contains(other.name))
                    dependants.append(other.name);
            }
        }
        relations.missing.append(missing);
        relations.dependants.append(dependants);
    }
    return relations;
}

QList<DependencyRelations::File> randomFolder(QRandomGenerator& random)
{
    // Few names for many files: collisions, self-references and missing names are common.
    const int nameCount = 1 + int(random.bounded(12));
    const auto name = [&] {
        const int index = int(random.bounded(nameCount + 1));
        return index == nameCount ? QString() : QStringLiteral("P%1").arg(index);
    };
    QList<DependencyRelations::File> files;
    const int fileCount = int(random.bounded(16));
    for (int index = 0; index < fileCount; ++index) {
        DependencyRelations::File file;
        file.name = name();
        file.accepted = random.bounded(5) != 0;
        const int dependencyCount = int(random.bounded(7));
        for (int dependency = 0; dependency < dependencyCount; ++dependency)
            file.dependencies.append(name());
        files.append(file);
    }
    return files;
}

QString describe(const QList<DependencyRelations::File>& files)
{
    QStringList lines;
    for (const DependencyRelations::File& file : files)
        lines.append(QStringLiteral("%1%2 -> [%3]")
                         .arg(file.name, file.accepted ? QString() : QStringLiteral(" (refused)"),
                              file.dependencies.join(QStringLiteral(", "))));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

class tst_DependencyRelations : public QObject
{
    Q_OBJECT

private slots:
    void sameAsTheLiteralForm();
    void aPluginThatNamesThousands();
};

void tst_DependencyRelations::sameAsTheLiteralForm()
{
    QRandomGenerator random(20261123);
    for (int round = 0; round < 20000; ++round) {
        const QList<DependencyRelations::File> files = randomFolder(random);
        const DependencyRelations expected = literalRelations(files);
        const DependencyRelations actual = Zelvane::dependencyRelations(files);
        if (actual.missing != expected.missing || actual.dependants != expected.dependants)
            QFAIL(qPrintable(
                QStringLiteral("round %1, the folder:\n%2").arg(round).arg(describe(files))));
    }
}

// One plugin names 5,000 others, of which 1,000 are in the folder and every one names
// the plugin before it.
void tst_DependencyRelations::aPluginThatNamesThousands()
{
    QList<DependencyRelations::File> files;
    DependencyRelations::File huge { QStringLiteral("Huge"), true, {} };
    for (int index = 0; index < 5000; ++index)
        huge.dependencies.append(QStringLiteral("P%1").arg(index));
    files.append(huge);
    for (int index = 0; index < 1000; ++index)
        files.append(
            { QStringLiteral("P%1").arg(index), true,
              index > 0 ? QStringList { QStringLiteral("P%1").arg(index - 1) } : QStringList() });
    const DependencyRelations expected = literalRelations(files);
    const DependencyRelations actual = Zelvane::dependencyRelations(files);
    QCOMPARE(actual.missing, expected.missing);
    QCOMPARE(actual.dependants, expected.dependants);
    QCOMPARE(actual.missing.at(0).size(), 4000);
    QCOMPARE(actual.dependants.at(1), QStringList({ "Huge", "P1" }));
}

QTEST_GUILESS_MAIN(tst_DependencyRelations)
#include "tst_dependencyrelations.moc"
