#include "widgets/pluginskeyrouter_p.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>

namespace Zelvane {

PluginsKeyRouter::PluginsKeyRouter(QLineEdit* filter, QListView* coreView, QListView* extensionView,
                                   ShowRow showRow, QObject* parent)
    : QObject(parent)
    , m_filter(filter)
    , m_coreView(coreView)
    , m_extensionView(extensionView)
    , m_showRow(std::move(showRow))
{
    for (QObject* object : { static_cast<QObject*>(filter), static_cast<QObject*>(coreView),
                             static_cast<QObject*>(extensionView) })
        object->installEventFilter(this);
}

void PluginsKeyRouter::watch(QObject* view)
{
    view->installEventFilter(this);
}

bool PluginsKeyRouter::eventFilter(QObject* watched, QEvent* event)
{
    // A list that gets the keyboard shows its current plugin.
    if (event->type() == QEvent::FocusIn && (watched == m_coreView || watched == m_extensionView)) {
        const QModelIndex current = static_cast<QListView*>(watched)->currentIndex();
        if (current.isValid())
            m_showRow(current);
        return false;
    }
    if (event->type() != QEvent::KeyPress)
        return false;
    auto* key = static_cast<QKeyEvent*>(event);
    if (watched == m_filter) {
        // Down leaves the filter for the first plugin shown.
        if (key->key() != Qt::Key_Down)
            return false;
        QListView* target = m_coreView->model()->rowCount() > 0 ? m_coreView : m_extensionView;
        target->setFocus(Qt::TabFocusReason);
        if (!target->currentIndex().isValid() && target->model()->rowCount() > 0)
            target->setCurrentIndex(target->model()->index(0, 0));
        return true;
    }

    // Arrows go on from one list to the next.
    auto* view = qobject_cast<QAbstractItemView*>(watched);
    if (view && key->modifiers() == Qt::NoModifier) {
        const int row = view->currentIndex().row();
        const int last = view->model()->rowCount() - 1;
        QAbstractItemView* next = nullptr;
        if (key->key() == Qt::Key_Down && row == last && view == m_coreView)
            next = m_extensionView->model()->rowCount() > 0 ? m_extensionView : nullptr;
        else if (key->key() == Qt::Key_Up && row == 0 && view == m_extensionView)
            next = m_coreView->model()->rowCount() > 0 ? m_coreView : nullptr;
        if (next) {
            next->setFocus(Qt::TabFocusReason);
            const int target = key->key() == Qt::Key_Down ? 0 : next->model()->rowCount() - 1;
            next->setCurrentIndex(next->model()->index(target, 0));
            // The row may have been current there already: show it all the same.
            m_showRow(next->currentIndex());
            return true;
        }
    }

    // Typing a letter in a list filters: the text goes to the filter field.
    const QString text = key->text();
    if (text.isEmpty() || !text.at(0).isPrint() || text == QStringLiteral(" ")
        || (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    m_filter->setFocus(Qt::OtherFocusReason);
    m_filter->end(false);
    QCoreApplication::sendEvent(m_filter, event);
    return true;
}

} // namespace Zelvane
