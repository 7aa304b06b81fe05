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

// Why the dependency ordering drops a plugin or loads it ahead of its dependencies:
// "missing dependency "Storage"; dependency cycle: A -> B -> A".
QString blockersText(const QList<Zelvane::LoadPlan::Blocker>& blockers);

} // namespace ZelvaneInspect
