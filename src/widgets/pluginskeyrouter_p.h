#pragma once

#include <QtCore/QObject>

#include <functional>

QT_BEGIN_NAMESPACE
class QLineEdit;
class QListView;
class QModelIndex;
QT_END_NAMESPACE

namespace Zelvane {

// The keyboard of PluginsWidget, as one list: Down leaves the filter field for the first
// plugin shown, the arrows go on from the Core list to the Extensions and back, and a
// letter typed in a list goes to the filter field. A list that gets the focus shows its
// current plugin. It filters the events of the field and the lists it is given.
class PluginsKeyRouter : public QObject
{
    Q_OBJECT

public:
    using ShowRow = std::function<void(const QModelIndex& index)>;

    PluginsKeyRouter(QLineEdit* filter, QListView* coreView, QListView* extensionView,
                     ShowRow showRow, QObject* parent);

    // Another view whose typing goes to the filter field, without arrow routing.
    void watch(QObject* view);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* m_filter;
    QListView* m_coreView;
    QListView* m_extensionView;
    ShowRow m_showRow;
};

} // namespace Zelvane
