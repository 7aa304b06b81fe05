#include <zelvane/diagnostics/pluginsfiltermodel.h>

#include "plugin/pluginnames_p.h"

#include <zelvane/pluginsmodel.h>

namespace Zelvane {

PluginsFilterModel::PluginsFilterModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
}

PluginsFilterModel::~PluginsFilterModel() = default;

QString PluginsFilterModel::category() const
{
    return m_category;
}

void PluginsFilterModel::setCategory(const QString& category)
{
    if (category == m_category)
        return;
    m_category = category;
    invalidateFilter();
    Q_EMIT categoryChanged();
}

QString PluginsFilterModel::filterText() const
{
    return m_filterText;
}

void PluginsFilterModel::setFilterText(const QString& text)
{
    if (text == m_filterText)
        return;
    m_filterText = text;
    invalidateFilter();
    Q_EMIT filterTextChanged();
}

// PluginsModel answers its row count for any parent, also for one of its rows, while
// saying that no row has children; views of a list must see none.
int PluginsFilterModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : QSortFilterProxyModel::rowCount(parent);
}

bool PluginsFilterModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid() && QSortFilterProxyModel::hasChildren(parent);
}

bool PluginsFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QModelIndex index = sourceModel()->index(sourceRow, 0, sourceParent);
    const QString category = index.data(PluginsModel::CategoryRole).toString();
    if (m_category.isEmpty() ? category != coreCategoryKey() && category != extensionCategoryKey()
                             : category != m_category)
        return false;
    const QString text = m_filterText.trimmed();
    return text.isEmpty()
        || index.data(PluginsModel::NameRole).toString().contains(text, Qt::CaseInsensitive)
        || index.data(PluginsModel::DescriptionRole).toString().contains(text, Qt::CaseInsensitive);
}

// The description is shown apart, in a details pane.
bool PluginsFilterModel::filterAcceptsColumn(int sourceColumn, const QModelIndex&) const
{
    return sourceColumn == 0;
}

} // namespace Zelvane
