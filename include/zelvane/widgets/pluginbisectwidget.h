#pragma once

#include <zelvane/widgets/zelvane_widgets_export.h>

#include <QtCore/QDir>
#include <QtWidgets/QWidget>

#include <memory>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

class PluginBisectWidgetPrivate;

/// The plugin bisect (PluginBisect) as a short guided flow: the user pins the plugins to
/// keep, starts, and after each restart answers whether the problem is still there,
/// until the culprit is named; then looks for another one or finishes, which puts the
/// user's own selection back.
///
/// Every step that needs a restart emits restartRequested(); the host restarts and shows
/// the widget again, which reads where the bisect is from the settings. The host calls
/// PluginBisect::beginStart() and started() around its own start-up as usual.
class ZELVANE_WIDGETS_EXPORT PluginBisectWidget : public QWidget
{
    Q_OBJECT

public:
    /// settings is the host's selection, the one set on the controller; dir its plugin
    /// folder.
    PluginBisectWidget(QSettings* settings, const QDir& dir, QWidget* parent = nullptr);
    ~PluginBisectWidget() override;

public Q_SLOTS:
    /// Reads the bisect's state from the settings again.
    void refresh();

Q_SIGNALS:
    /// The next step is set: the host should restart now.
    void restartRequested();

private:
    std::unique_ptr<PluginBisectWidgetPrivate> d;
};

} // namespace Zelvane
