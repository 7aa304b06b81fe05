#pragma once

#include <QtCore/QDir>
#include <QtCore/QMap>
#include <QtCore/QString>

namespace Zelvane {
class SafeStart;
}

namespace ZelvaneDemo {

// When the previous start died while loading the plugins (its mark is still there),
// finds the plugins that take the demo down, in a child process, tells which and why,
// and switches them off: after asking, or at once when there is nobody to ask
// (headless). Does nothing after a start that finished.
void checkPreviousStart(Zelvane::SafeStart& safeStart, const QDir& pluginDir,
                        const QMap<QString, QString>& arguments, bool headless);

} // namespace ZelvaneDemo
