#include "pluginsdialog.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>

namespace ZelvaneDemo {

PluginsDialog::PluginsDialog(QAbstractItemModel* model, QWidget* parent)
    : QDialog(parent)
    , m_view(new QTableView(this))
{
    setWindowTitle(tr("Plugins"));

    auto* note = new QLabel(
        tr("Ticking a plugin also ticks the plugins it needs; clearing it clears the plugins "
           "that need it. Exactly one core plugin (in italics) is used. "
           "Changes apply at the next start."),
        this);
    note->setWordWrap(true);

    m_view->setModel(model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setShowGrid(false);
    m_view->setWordWrap(false);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    // Every accepted tick resets the model, which would drop the column widths.
    connect(model, &QAbstractItemModel::modelReset, m_view, &QTableView::resizeColumnsToContents);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    // With the focus in the table its first cell would look selected; ticking is a click
    // or the space bar once the user goes there.
    buttons->button(QDialogButtonBox::Close)->setFocus();

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(note);
    layout->addWidget(m_view, 1);
    layout->addWidget(buttons);
    resize(640, 400);
}

} // namespace ZelvaneDemo
