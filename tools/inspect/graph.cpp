#include "graph.h"

#include "inspection.h"
#include "report.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QStringList>

namespace ZelvaneInspect {

namespace {

using Zelvane::LoadPlan;

QString quoted(const QString& text)
{
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    escaped.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    escaped.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

struct NodeStyle
{
    QString state; // the second line of the label
    QString fill;
    QString extra; // further attributes
};

NodeStyle styleOf(const Inspection& inspection, int index)
{
    const LoadPlan::File file = inspection.plan.files().at(index);
    switch (file.fate) {
    case LoadPlan::Fate::Loads:
        return { QObject::tr("loads #%1").arg(file.position + 1), QStringLiteral("#c8e6c9"), {} };
    case LoadPlan::Fate::Disabled:
        return { QObject::tr("disabled"), QStringLiteral("#eeeeee"),
                 QStringLiteral("fontcolor=\"#666666\"") };
    case LoadPlan::Fate::OtherCoreChosen:
        return { QObject::tr("not the chosen Core"), QStringLiteral("#fff3c4"), {} };
    case LoadPlan::Fate::Dropped:
        return { QObject::tr("dropped: %1").arg(dependencyProblemsText(inspection, index)),
                 QStringLiteral("#ffcdd2"), QStringLiteral("color=\"#c62828\"") };
    case LoadPlan::Fate::OtherCategory:
        return { QObject::tr("category \"%1\": never loaded").arg(file.plugin.category()),
                 QStringLiteral("#eeeeee"), QStringLiteral("fontcolor=\"#666666\"") };
    case LoadPlan::Fate::NoCore:
    case LoadPlan::Fate::NoSettings:
    case LoadPlan::Fate::Discovered:
        return { QObject::tr("not loaded: %1").arg(inspection.plan.error()),
                 QStringLiteral("#eeeeee"),
                 {} };
    case LoadPlan::Fate::Refused:
        break;
    }
    return { QObject::tr("refused file"), QStringLiteral("#ffffff"),
             QStringLiteral("shape=note, color=\"#c62828\", fontcolor=\"#c62828\"") };
}

} // namespace

QString dependencyGraph(const Inspection& inspection)
{
    const QList<LoadPlan::File> files = inspection.plan.files();
    QStringList lines;
    lines << QStringLiteral("digraph plugins {") << QStringLiteral("    rankdir=BT;")
          << QStringLiteral(
                 "    node [shape=box, style=\"rounded,filled\", fontname=\"DejaVu Sans\", "
                 "fontsize=11];")
          << QStringLiteral("    edge [color=\"#555555\"];");

    // A dependency names a plugin; it is drawn to the file of that name that loads,
    // or else the first one by file name. A refused file counts when its metadata
    // gave the name.
    QHash<QString, QString> nodeOfName;
    for (int index : inspection.filesByName) {
        const LoadPlan::File& file = files.at(index);
        if (file.name.isEmpty())
            continue;
        const QString node = file.fileName;
        if (!nodeOfName.contains(file.name) || file.fate == LoadPlan::Fate::Loads)
            nodeOfName.insert(file.name, node);
    }

    for (int index : inspection.filesByName) {
        const LoadPlan::File& file = files.at(index);
        const NodeStyle style = styleOf(inspection, index);
        const bool core = file.fate != LoadPlan::Fate::Refused
            && file.plugin.category() == QLatin1String("Core");
        QString label = file.fate == LoadPlan::Fate::Refused
            ? file.fileName
            : QStringLiteral("%1\n%2").arg(file.name, file.fileName);
        label += QLatin1Char('\n') + style.state;
        QString attributes
            = QStringLiteral("label=%1, fillcolor=\"%2\"").arg(quoted(label), style.fill);
        if (core)
            attributes += QStringLiteral(", peripheries=2");
        if (!style.extra.isEmpty())
            attributes += QStringLiteral(", ") + style.extra;
        lines << QStringLiteral("    %1 [%2];").arg(quoted(file.fileName), attributes);
    }

    QStringList missing;
    QStringList edges;
    for (int index : inspection.filesByName) {
        const LoadPlan::File& file = files.at(index);
        if (file.fate == LoadPlan::Fate::Refused)
            continue;
        QStringList blocking;
        for (const LoadPlan::Blocker& blocker : file.blockers)
            blocking.append(blocker.dependency);
        QStringList seen;
        const QStringList dependencies = file.plugin.dependencies();
        for (const QString& dependency : dependencies) {
            if (seen.contains(dependency))
                continue;
            seen.append(dependency);
            QString target = nodeOfName.value(dependency);
            if (target.isEmpty()) {
                target = QStringLiteral("missing: ") + dependency;
                if (!missing.contains(dependency))
                    missing.append(dependency);
            }
            const bool blocks = blocking.contains(dependency);
            edges << QStringLiteral("    %1 -> %2%3;")
                         .arg(quoted(file.fileName), quoted(target),
                              blocks ? QStringLiteral(" [color=\"#c62828\", penwidth=1.5]")
                                     : QString());
        }
    }
    for (const QString& name : std::as_const(missing))
        lines << QStringLiteral("    %1 [label=%2, style=\"dashed\", color=\"#c62828\", "
                                "fontcolor=\"#c62828\"];")
                     .arg(quoted(QStringLiteral("missing: ") + name),
                          quoted(name + QLatin1Char('\n') + QObject::tr("missing")));
    lines << edges << QStringLiteral("}");
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

bool writeDependencyGraph(const Inspection& inspection, const QString& fileName,
                          QString* errorString)
{
    const QByteArray dot = dependencyGraph(inspection).toUtf8();
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix != QLatin1String("svg") && suffix != QLatin1String("png")) {
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
            || file.write(dot) != dot.size()) {
            *errorString = QObject::tr("cannot write %1: %2").arg(fileName, file.errorString());
            return false;
        }
        return true;
    }
    const QString program = QStandardPaths::findExecutable(QStringLiteral("dot"));
    if (program.isEmpty()) {
        *errorString = QObject::tr("rendering %1 needs Graphviz's dot, which is not installed; "
                                   "write a .dot file instead")
                           .arg(fileName);
        return false;
    }
    QProcess process;
    process.start(program, { QStringLiteral("-T") + suffix, QStringLiteral("-o"), fileName });
    process.write(dot);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        *errorString
            = QObject::tr("dot could not render %1: %2")
                  .arg(fileName, QString::fromLocal8Bit(process.readAllStandardError()).trimmed());
        return false;
    }
    return true;
}

} // namespace ZelvaneInspect
