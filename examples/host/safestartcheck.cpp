#include "safestartcheck.h"

#include <zelvane/diagnostics/safestart.h>

#include <QtCore/QStringList>
#include <QtCore/QTextStream>
#include <QtWidgets/QMessageBox>

namespace ZelvaneDemo {

void checkPreviousStart(Zelvane::SafeStart& safeStart, const QDir& pluginDir,
                        const QMap<QString, QString>& arguments, bool headless)
{
    if (!safeStart.previousStartFailed())
        return;
    QTextStream err(stderr);
    err << "zelvane-demo: " << QObject::tr("the last start did not finish; trying the plugins")
        << Qt::endl;
    const QList<Zelvane::SafeStart::Culprit> culprits
        = safeStart.findCulprits(pluginDir, arguments);
    if (!safeStart.errorString().isEmpty()) {
        err << "zelvane-demo: " << safeStart.errorString() << Qt::endl;
        return;
    }
    if (culprits.isEmpty()) {
        err << "zelvane-demo: " << QObject::tr("every plugin starts now") << Qt::endl;
        return;
    }
    // Each culprit, and the plugins that go with it because they need it: the user
    // should not be surprised by a missing plugin that never crashed.
    QStringList lines;
    QStringList dependants;
    for (const Zelvane::SafeStart::Culprit& culprit : culprits) {
        lines.append(QObject::tr("%1 (%2) cannot start: %3")
                         .arg(culprit.name, culprit.fileName, culprit.reason));
        const QStringList with = safeStart.switchedOffWith(culprit);
        if (!with.isEmpty())
            lines.append(QObject::tr("switched off with %1, since they need it: %2")
                             .arg(culprit.name, with.join(QStringLiteral(", "))));
        for (const QString& name : with) {
            if (!dependants.contains(name))
                dependants.append(name);
        }
    }
    for (const QString& line : std::as_const(lines))
        err << "zelvane-demo: " << line << Qt::endl;

    if (!headless) {
        const auto answer = QMessageBox::warning(
            nullptr, QObject::tr("Zelvane demo"),
            QObject::tr("The last start did not finish.\n\n%1\n\nStart without them? You can "
                        "switch them on again on the plugins screen.")
                .arg(lines.join(QLatin1Char('\n'))),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
        if (answer != QMessageBox::Yes)
            return;
    }
    safeStart.switchOff(culprits);
    QStringList names;
    for (const Zelvane::SafeStart::Culprit& culprit : culprits)
        names.append(culprit.name);
    for (const QString& name : std::as_const(dependants)) {
        if (!names.contains(name))
            names.append(name);
    }
    err << "zelvane-demo: " << QObject::tr("switched off: %1").arg(names.join(QStringLiteral(", ")))
        << Qt::endl;
}

} // namespace ZelvaneDemo
