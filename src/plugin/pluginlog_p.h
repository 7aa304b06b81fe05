#pragma once

#include <zelvane/zelvane_export.h>

#include <QtCore/QString>

namespace Zelvane {

// The library's only two log lines by default; the start-up profile writes to
// "zelvane.startup" only when a host or QT_LOGGING_RULES turns it on. Both go through
// Qt's message log in the category "default" with no file, line or function: a host's
// message handler sees the same record in debug and release builds.
ZELVANE_AUTOTEST_EXPORT void logDroppedPlugin(const QString& errorString);
ZELVANE_AUTOTEST_EXPORT void logUnimplemented();

} // namespace Zelvane
