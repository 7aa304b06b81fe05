#include <zelvane/widgets/pluginsdialog.h>

#include <zelvane/plugincontroller.h>
#include <zelvane/widgets/pluginbisectwidget.h>
#include <zelvane/widgets/pluginswidget.h>
#include <zelvane/widgets/startupprofileview.h>

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace Zelvane {

PluginsDialog::PluginsDialog(QWidget* parent)
    : QDialog(parent)
    , m_widget(new PluginsWidget(this))
{
    setWindowTitle(tr("Plugins"));
    setAccessibleName(tr("Plugins"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setAccessibleName(tr("Close"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    QPushButton* startup = buttons->addButton(tr("Start-up..."), QDialogButtonBox::ActionRole);
    startup->setObjectName(QStringLiteral("startupButton"));
    startup->setAccessibleName(tr("Start-up"));
    connect(startup, &QPushButton::clicked, this, &PluginsDialog::showStartupProfile);
    // The same words as the QML page's button.
    QPushButton* bisect
        = buttons->addButton(tr("Find a problem plugin..."), QDialogButtonBox::ActionRole);
    bisect->setObjectName(QStringLiteral("findProblemPlugin"));
    bisect->setAccessibleName(tr("Find a problem plugin"));
    connect(bisect, &QPushButton::clicked, this, &PluginsDialog::showPluginBisect);
    connect(m_widget, &PluginsWidget::restartRequested, this, &PluginsDialog::restartRequested);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_widget, 1);
    layout->addWidget(buttons);
    resize(760, 480);
}

PluginsDialog::PluginsDialog(const QDir& dir, QWidget* parent)
    : PluginsDialog(parent)
{
    m_widget->setPluginDirectory(dir);
}

PluginsDialog::~PluginsDialog() = default;

PluginsWidget* PluginsDialog::pluginsWidget() const
{
    return m_widget;
}

void PluginsDialog::showStartupProfile()
{
    // One window, refreshed when asked again: the profile is of the last start, which
    // does not change while the host runs unless it loads its plugins again.
    auto* window = findChild<QDialog*>(QStringLiteral("startupWindow"));
    if (!window) {
        window = new QDialog(this);
        window->setObjectName(QStringLiteral("startupWindow"));
        auto* view = new StartupProfileView(window);
        window->setWindowTitle(view->windowTitle());
        window->setAccessibleName(view->windowTitle());
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, window);
        connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::reject);
        auto* layout = new QVBoxLayout(window);
        layout->addWidget(view, 1);
        layout->addWidget(buttons);
        window->resize(560, 360);
    } else {
        window->findChild<StartupProfileView*>()->refresh();
    }
    window->show();
    window->raise();
}

void PluginsDialog::showPluginBisect()
{
    // One window, read again from the settings when asked again: where the bisect is
    // lives there, and each of its steps ends in a restart.
    auto* window = findChild<QDialog*>(QStringLiteral("bisectWindow"));
    if (!window) {
        window = new QDialog(this);
        window->setObjectName(QStringLiteral("bisectWindow"));
        auto* view = new PluginBisectWidget(PluginController::instance()->settings(),
                                            m_widget->pluginDirectory(), window);
        window->setWindowTitle(view->windowTitle());
        window->setAccessibleName(view->windowTitle());
        connect(view, &PluginBisectWidget::restartRequested, this,
                &PluginsDialog::restartRequested);
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, window);
        connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::reject);
        auto* layout = new QVBoxLayout(window);
        layout->addWidget(view, 1);
        layout->addWidget(buttons);
        window->resize(520, 400);
    } else {
        window->findChild<PluginBisectWidget*>()->refresh();
    }
    window->show();
    window->raise();
}

// Kept for hosts built against 1.0, whose code may call it; nothing depends on who is
// connected any more.
void PluginsDialog::connectNotify(const QMetaMethod& signal)
{
    QDialog::connectNotify(signal);
}

} // namespace Zelvane
