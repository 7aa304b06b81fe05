#pragma once

#include "controller/loadplan_p.h"

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

namespace ZelvaneInspect {

struct Inspection;

// The inspection as people read it, and as scripts read it. Both only format the
// plan: every decision shown comes from the library's own load plan.
QString toText(const Inspection& inspection);
QJsonObject toJson(const Inspection& inspection);

// Why the dependency ordering drops the plugin of plan.files().at(file) or loads it
// ahead of its dependencies, in the words of the plugin screens.
QString dependencyProblemsText(const Inspection& inspection, int file);

} // namespace ZelvaneInspect
