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
    QStringList lines;
    for (const Zelvane::SafeStart::Culprit& culprit : culprits)
        lines.append(QObject::tr("%1 (%2) cannot start: %3")
                         .arg(culprit.name, culprit.fileName, culprit.reason));
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
    err << "zelvane-demo: " << QObject::tr("switched off: %1").arg(names.join(QStringLiteral(", ")))
        << Qt::endl;
}

} // namespace ZelvaneDemo
