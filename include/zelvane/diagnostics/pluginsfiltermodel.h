#pragma once

#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QString>

namespace Zelvane {

/// The rows of a PluginsModel of one category (or of both, "Core" then "Extension", when
/// category is empty) whose name or description contains the filter text, ignoring case.
///
/// It keeps the model's order and shows the name column only. It adds nothing to the
/// model and changes nothing in it: a tick through the proxy goes to the model, whose
/// rules spread it along the dependencies and save it.
class ZELVANE_DIAGNOSTICS_EXPORT PluginsFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_PROPERTY(QString category READ category WRITE setCategory NOTIFY categoryChanged)
    Q_PROPERTY(QString filterText READ filterText WRITE setFilterText NOTIFY filterTextChanged)

public:
    explicit PluginsFilterModel(QObject* parent = nullptr);
    ~PluginsFilterModel() override;

    QString category() const;
    void setCategory(const QString& category);
    QString filterText() const;
    void setFilterText(const QString& text);

    /// A list: no row has children, whatever the model says of them.
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;

Q_SIGNALS:
    void categoryChanged();
    void filterTextChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool filterAcceptsColumn(int sourceColumn, const QModelIndex& sourceParent) const override;

private:
    QString m_category;
    QString m_filterText;
};

} // namespace Zelvane
