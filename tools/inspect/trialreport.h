#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Zelvane {
struct TrialPlugin;
struct TrialReport;
} // namespace Zelvane

namespace ZelvaneInspect {

// What the trial load found, as people read it and as scripts read it.
QString trialText(const Zelvane::TrialReport& report);
QJsonObject trialJson(const Zelvane::TrialReport& report);

} // namespace ZelvaneInspect
