#pragma once

// Shared by the model's tests: how an unexpected message reads, and the plugins that the
// view and QML tests show.

#include "zelvanetest.h"

#include <QtCore/QMultiMap>
#include <QtCore/QString>

namespace ZelvaneModelTest {

inline QString describe(const ZelvaneTest::LogRecord& record)
{
    return QStringLiteral("unexpected message [%1] %2").arg(record.category, record.message);
}

// Two core plugins (Desktop on by default) and three extensions, Viewer needing Storage:
// the rows of the screens that the view and QML tests click through.
inline QMultiMap<QString, Zelvane::PluginLoader> screenPlugins()
{
    const QString core = QStringLiteral("Core");
    const QString extension = QStringLiteral("Extension");
    QMultiMap<QString, Zelvane::PluginLoader> plugins;
    const auto add
        = [&plugins](const QString& name, const QString& category, const QStringList& dependencies,
                     bool loadByDefault, const QString& description) {
              plugins.insert(category,
                             ZelvaneTest::makePlugin(name, category, dependencies, loadByDefault,
                                                     description));
          };
    add(QStringLiteral("Minimal"), core, {}, false, QStringLiteral("A small core for tests"));
    add(QStringLiteral("Desktop"), core, {}, true, QStringLiteral("The full desktop core"));
    add(QStringLiteral("Spelling"), extension, {}, true, QStringLiteral("Checks spelling"));
    add(QStringLiteral("Viewer"), extension, { QStringLiteral("Storage") }, false,
        QStringLiteral("Shows documents"));
    add(QStringLiteral("Storage"), extension, {}, false, QStringLiteral("Keeps documents"));
    return plugins;
}

} // namespace ZelvaneModelTest
