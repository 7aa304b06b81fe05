#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {
struct TrialReport;
} // namespace Zelvane

namespace ZelvaneInspect {

// The IID that the plugin in file declares, read from its metadata without loading it;
// empty when the file embeds none.
QString declaredIid(const QString& file);

// For every required file of directory (bare file names) that did not start in the
// trial, or failed to unload, one line that names the file, the plugin and why: the
// trial's step and cause, or, for a plugin the trial never loaded, the Diagnostics
// component's reason. Empty when every required plugin started and unloaded.
QStringList requirementFailures(const QStringList& files, const QString& directory,
                                QSettings* settings, const Zelvane::TrialReport& report);

} // namespace ZelvaneInspect
