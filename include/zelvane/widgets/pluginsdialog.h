#pragma once

#include <zelvane/widgets/zelvane_widgets_export.h>

#include <QtCore/QDir>
#include <QtWidgets/QDialog>

namespace Zelvane {

class PluginsWidget;

/// A PluginsWidget in a dialog with a Close button, a "Start-up..." button and a "Find a
/// problem plugin..." button: a host's "Plugins..." window.
///
/// Every tick is saved when it is made, so closing confirms nothing. The dialog repeats
/// the widget's restartRequested(); the widget itself is pluginsWidget(), whose
/// restartOffered property shows the "Restart now" button.
class ZELVANE_WIDGETS_EXPORT PluginsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PluginsDialog(QWidget* parent = nullptr);
    /// The same, showing the plugins of dir (see PluginsWidget::setPluginDirectory()).
    explicit PluginsDialog(const QDir& dir, QWidget* parent = nullptr);
    ~PluginsDialog() override;

    PluginsWidget* pluginsWidget() const;

public Q_SLOTS:
    /// Shows the "Start-up" view of the host's last start (StartupProfileView) in a
    /// window of its own; the dialog's "Start-up..." button calls it.
    void showStartupProfile();
    /// Shows the plugin bisect's guided flow (PluginBisectWidget) over the controller's
    /// settings and pluginsWidget()'s folder in a window of its own; the dialog's "Find a
    /// problem plugin..." button calls it. Each of its steps that needs a restart emits
    /// restartRequested().
    void showPluginBisect();

Q_SIGNALS:
    /// The user asked to restart, in the plugins widget or in the plugin bisect.
    void restartRequested();

protected:
    /// Does nothing beyond QDialog's; kept for binary compatibility.
    void connectNotify(const QMetaMethod& signal) override;

private:
    PluginsWidget* m_widget;
};

} // namespace Zelvane
