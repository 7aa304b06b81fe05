#include <zelvane/widgets/pluginsdialog.h>

#include <zelvane/widgets/pluginswidget.h>

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

// Kept for hosts built against 1.0, whose code may call it; nothing depends on who is
// connected any more.
void PluginsDialog::connectNotify(const QMetaMethod& signal)
{
    QDialog::connectNotify(signal);
}

} // namespace Zelvane
