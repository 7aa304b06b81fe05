#pragma once

#include <QtQuick/QQuickView>

QT_BEGIN_NAMESPACE
class QAbstractItemModel;
QT_END_NAMESPACE

namespace ZelvaneDemo {

// The QML version of the plugin settings screen (PluginsPage.qml). The page sees the
// model as "pluginsModel" and a PluginsCaterogies object as "pluginCategories", which
// tells it which rows are core plugins.
class PluginsPage : public QQuickView
{
    Q_OBJECT

public:
    explicit PluginsPage(QAbstractItemModel* model, QWindow* parent = nullptr);

    // The QML errors, one per line; empty when the page loaded.
    QString errorText() const;
};

} // namespace ZelvaneDemo
