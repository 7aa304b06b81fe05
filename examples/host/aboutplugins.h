#pragma once

#include <QtWidgets/QDialog>

QT_BEGIN_NAMESPACE
class QListWidget;
class QTreeWidget;
QT_END_NAMESPACE

namespace ZelvaneDemo {

class LoadTracker;

// "About plugins": what the start-up produced, the loaded plugins in load order and
// the objects that they published into the pool, kept up to date while documents are
// opened and closed.
class AboutPlugins : public QDialog
{
    Q_OBJECT

public:
    AboutPlugins(const LoadTracker* tracker, const QString& settingsFile,
                 QWidget* parent = nullptr);

private:
    void refreshPool();
    void scheduleRefresh();

    const LoadTracker* m_tracker;
    QListWidget* m_plugins;
    QTreeWidget* m_objects;
};

} // namespace ZelvaneDemo
