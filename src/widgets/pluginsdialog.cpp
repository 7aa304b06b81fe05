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

namespace {

// The dialog's one window named objectName, made the first time with the view that
// makeView() returns, its title and a Close button; the view of an existing window is
// handed to refresh().
template<typename View, typename MakeView>
void showWindow(QDialog* dialog, const QString& objectName, const QSize& size, MakeView makeView)
{
    auto* window = dialog->findChild<QDialog*>(objectName);
    if (!window) {
        window = new QDialog(dialog);
        window->setObjectName(objectName);
        View* view = makeView(window);
        window->setWindowTitle(view->windowTitle());
        window->setAccessibleName(view->windowTitle());
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, window);
        QObject::connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::reject);
        auto* layout = new QVBoxLayout(window);
        layout->addWidget(view, 1);
        layout->addWidget(buttons);
        window->resize(size);
    } else {
        window->findChild<View*>()->refresh();
    }
    window->show();
    window->raise();
}

} // namespace

void PluginsDialog::showStartupProfile()
{
    // One window, refreshed when asked again: the profile is of the last start, which
    // does not change while the host runs unless it loads its plugins again.
    showWindow<StartupProfileView>(this, QStringLiteral("startupWindow"), QSize(560, 360),
                                   [](QDialog* window) { return new StartupProfileView(window); });
}

void PluginsDialog::showPluginBisect()
{
    // One window, read again from the settings when asked again: where the bisect is
    // lives there, and each of its steps ends in a restart.
    showWindow<PluginBisectWidget>(
        this, QStringLiteral("bisectWindow"), QSize(520, 400), [this](QDialog* window) {
            auto* view = new PluginBisectWidget(PluginController::instance()->settings(),
                                                m_widget->pluginDirectory(), window);
            connect(view, &PluginBisectWidget::restartRequested, this,
                    &PluginsDialog::restartRequested);
            return view;
        });
}

// Kept for hosts built against 1.0, whose code may call it; nothing depends on who is
// connected any more.
void PluginsDialog::connectNotify(const QMetaMethod& signal)
{
    QDialog::connectNotify(signal);
}

} // namespace Zelvane
