#include "plugin/pluginlog_p.h"

#include <QtCore/QDebug>
#include <QtCore/QLoggingCategory>

namespace Zelvane {

namespace {

// Built by hand rather than with qDebug(): the macros add file, line and function in
// debug builds, and a default-constructed QMessageLogger leaves the category null.
QMessageLogger logger()
{
    return QMessageLogger(nullptr, 0, nullptr, "default");
}

} // namespace

void logDroppedPlugin(const QString& errorString)
{
    // Streamed as a QString, so the log shows the text quoted.
    logger().debug() << errorString;
}

void logUnimplemented()
{
    logger().warning("Unimplemented code.");
}

} // namespace Zelvane
