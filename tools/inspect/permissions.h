#pragma once

#include <QtCore/QStringList>

namespace ZelvaneInspect {

// Who besides the host's user can change what the host runs: the plugin folder and
// every "*.so" file in it are checked for being writable by the group or by everyone,
// and for belonging to a user other than hostUser and root. Anyone who can write there
// can put code into the host. One text per finding, in file-name order.
QStringList permissionWarnings(const QString& directory, uint hostUser);

} // namespace ZelvaneInspect
