#pragma once

#include <QtCore/QDir>
#include <QtQuick/QQuickView>

namespace ZelvaneDemo {

// The QML plugins screen: the PluginsPage of the Quick component's module
// (import Zelvane) in a window of its own, over the folder the demo loads.
class PluginsPage : public QQuickView
{
    Q_OBJECT

public:
    explicit PluginsPage(const QDir& pluginDir, const QString& selectedPlugin = QString(),
                         QWindow* parent = nullptr);

    // The QML errors, one per line; empty when the page loaded.
    QString errorText() const;

Q_SIGNALS:
    // The user pressed the notice's Restart now.
    void restartRequested();

private:
    QString m_errors;
};

} // namespace ZelvaneDemo
