#pragma once

#include <QtWidgets/QMainWindow>

QT_BEGIN_NAMESPACE
class QListWidget;
class QTreeWidget;
QT_END_NAMESPACE

namespace ZelvaneDemo {

class LoadTracker;

// Shows what the start-up produced: the loaded plugins in load order and the objects
// they published into the pool, and opens the plugin settings screen.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow(const LoadTracker* tracker, const QString& settingsFile, bool qmlPage,
               QWidget* parent = nullptr);

private:
    void showPluginsScreen();
    void refreshPool();
    void scheduleRefresh();

    const LoadTracker* m_tracker;
    bool m_qmlPage;
    QListWidget* m_plugins;
    QTreeWidget* m_objects;
};

} // namespace ZelvaneDemo
