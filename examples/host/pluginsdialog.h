#pragma once

#include <QtWidgets/QDialog>

QT_BEGIN_NAMESPACE
class QAbstractItemModel;
class QTableView;
QT_END_NAMESPACE

namespace ZelvaneDemo {

// The plugin settings screen: a table of the discovered plugins with a check box each.
// Every tick is saved at once by the model; nothing here confirms or applies anything.
class PluginsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PluginsDialog(QAbstractItemModel* model, QWidget* parent = nullptr);

    QTableView* view() const { return m_view; }

private:
    QTableView* m_view;
};

} // namespace ZelvaneDemo
