#pragma once

#include <zelvane/widgets/zelvane_widgets_export.h>

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtWidgets/QWidget>

#include <memory>

namespace Zelvane {

class LoadDiagnostics;
class PluginsModel;
class PluginsWidgetPrivate;

/// A ready plugin settings screen to embed in a host's own window.
///
/// It shows the controller's PluginsModel grouped as "Core" (one choice, drawn as radio
/// buttons) and "Extensions" (check boxes), with a filter field that matches names and
/// descriptions ignoring case, and a details pane for the current plugin: what it needs
/// and what needs it, the command-line options it declares, its file, and whether it is
/// loaded now, loads at the next start, or will not load and why. The folder's other
/// files, of other categories or refused, are listed apart, grouped by category with
/// the refused files in a group of their own, each with its reason. Every tick goes
/// through the model, so it follows the dependencies and is saved at once; when the saved
/// selection differs from what is running, a notice says that changes apply at the next
/// start, with a "Restart now" button when the host offers one (restartOffered).
///
/// The explanations come from LoadDiagnostics over pluginDirectory(): the library's own
/// load plan. Set the directory the host loads from, after loadPlugins(). Keyboard:
/// arrows move, space ticks, typing filters. Use it on the GUI thread.
class ZELVANE_WIDGETS_EXPORT PluginsWidget : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(
        QString currentPlugin READ currentPlugin WRITE setCurrentPlugin NOTIFY currentPluginChanged)
    Q_PROPERTY(QString filterText READ filterText WRITE setFilterText)
    Q_PROPERTY(bool restartNeeded READ isRestartNeeded NOTIFY restartNeededChanged)
    Q_PROPERTY(bool restartOffered READ isRestartOffered WRITE setRestartOffered NOTIFY
                   restartOfferedChanged)

public:
    explicit PluginsWidget(QWidget* parent = nullptr);
    ~PluginsWidget() override;

    /// The folder the host hands to PluginController::loadPlugins(). Setting it reads the
    /// folder and takes the controller's current pluginsModel(), unless setModel() chose
    /// one.
    QDir pluginDirectory() const;
    void setPluginDirectory(const QDir& dir);

    /// The model shown; null until the controller has loaded plugins. Not owned.
    PluginsModel* model() const;
    void setModel(PluginsModel* model);

    /// The name of the plugin that the details pane shows; empty when none.
    QString currentPlugin() const;
    void setCurrentPlugin(const QString& name);

    QString filterText() const;
    void setFilterText(const QString& text);

    /// Whether the saved selection differs from the plugins loaded now.
    bool isRestartNeeded() const;
    /// Whether the notice offers a "Restart now" button, which emits restartRequested().
    /// Off by default: a host that can restart itself turns it on.
    bool isRestartOffered() const;
    void setRestartOffered(bool offered);
    /// What the screen explains, as read after the last change.
    LoadDiagnostics diagnostics() const;

public Q_SLOTS:
    /// Reads the selection again; the widget does so itself after every tick.
    void refresh();

Q_SIGNALS:
    void currentPluginChanged(const QString& name);
    void restartNeededChanged(bool needed);
    void restartOfferedChanged(bool offered);
    /// The user asked to restart the application, to apply the changes.
    void restartRequested();

protected:
    /// These do nothing beyond QWidget's; kept for binary compatibility.
    void connectNotify(const QMetaMethod& signal) override;
    void disconnectNotify(const QMetaMethod& signal) override;

private:
    std::unique_ptr<PluginsWidgetPrivate> d;
};

} // namespace Zelvane
