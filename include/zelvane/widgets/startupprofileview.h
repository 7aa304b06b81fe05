#pragma once

#include <zelvane/widgets/zelvane_widgets_export.h>

#include <zelvane/diagnostics/startupprofile.h>

#include <QtWidgets/QWidget>

#include <memory>

namespace Zelvane {

class StartupProfileViewPrivate;

/// The "Start-up" view: how long the host's own last start took, with one bar per
/// plugin, the slowest first, each with its time and its share of the whole, under a
/// line with the total.
///
/// Shows StartupProfile::last() when it is made; refresh() takes it again. The texts are
/// StartupProfile's, so the QML page says the same.
class ZELVANE_WIDGETS_EXPORT StartupProfileView : public QWidget
{
    Q_OBJECT

public:
    explicit StartupProfileView(QWidget* parent = nullptr);
    ~StartupProfileView() override;

    /// The profile shown.
    StartupProfile profile() const;
    /// Shows profile instead of the last start's.
    void setProfile(const StartupProfile& profile);

public Q_SLOTS:
    /// Shows StartupProfile::last() again.
    void refresh();

private:
    std::unique_ptr<StartupProfileViewPrivate> d;
};

} // namespace Zelvane
