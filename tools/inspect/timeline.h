#pragma once

#include <QtCore/QString>

QT_BEGIN_NAMESPACE
class QSize;
QT_END_NAMESPACE

namespace Zelvane {
struct TrialReport;
}

namespace ZelvaneInspect {

// The start-up as a picture: one bar per plugin on a time axis, loading the library
// and initialize() in two shades, a plugin that cannot start marked in red; with the
// trial's shutdown, each plugin's unloading on its row after them, in red for one that
// took the process down. Writes a PNG, or an SVG when fileName ends in ".svg". False,
// with errorString set, when the file cannot be written.
bool writeTimeline(const Zelvane::TrialReport& report, const QString& fileName,
                   QString* errorString);

// The size writeTimeline() gives a picture of that report.
QSize timelineSize(const Zelvane::TrialReport& report);

} // namespace ZelvaneInspect
