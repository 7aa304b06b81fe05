#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace ZelvaneInspect {

struct Inspection;

// The inspection as people read it, and as scripts read it. Both only format the
// plan: every decision shown comes from the library's own load plan.
QString toText(const Inspection& inspection);
QJsonObject toJson(const Inspection& inspection);

} // namespace ZelvaneInspect
