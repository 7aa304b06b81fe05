#include <zelvane/widgets/pluginsdialog.h>

#include <zelvane/widgets/pluginswidget.h>

#include <QtCore/QMetaMethod>
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

// The widget offers its "Restart now" button only while someone listens; so the dialog
// listens to it only once someone listens to the dialog.
void PluginsDialog::connectNotify(const QMetaMethod& signal)
{
    if (signal == QMetaMethod::fromSignal(&PluginsDialog::restartRequested))
        connect(m_widget, &PluginsWidget::restartRequested, this, &PluginsDialog::restartRequested,
                Qt::UniqueConnection);
}

} // namespace Zelvane
