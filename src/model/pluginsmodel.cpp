// The Qt model plumbing of PluginsModel and its settings reads and writes. Which rows
// are ticked is decided in pluginselectionrules.cpp.

#include <zelvane/pluginsmodel.h>

#include "plugin/pluginnames_p.h"

#include <QtCore/QSettings>
#include <QtGui/QFont>
#include <QtGui/QGuiApplication>

namespace Zelvane {

PluginsModel::PluginsModel(const QMultiMap<QString, PluginLoader>& plugins, QSettings* settings)
    : QAbstractTableModel(nullptr)
    , m_settings(settings)
{
    const QList<PluginLoader> cores = plugins.values(coreCategoryKey());
    for (const PluginLoader& plugin : cores)
        m_records.append(Record { enabled(plugin), true, plugin });
    const QList<PluginLoader> extensions = plugins.values(extensionCategoryKey());
    for (const PluginLoader& plugin : extensions)
        m_records.append(Record { enabled(plugin), false, plugin });
    validate();
}

PluginsModel::~PluginsModel() = default;

int PluginsModel::rowCount(const QModelIndex& parent) const
{
    // A flat table that answers the same for every parent, on purpose; views only
    // ask about the root, and QML delegates and hosts' proxies may ask with any
    // parent, so the count under a valid parent must stay the row count. A model
    // tester complains about it twice; those two complaints are expected, any other
    // is a real fault.
    Q_UNUSED(parent)
    return int(m_records.size());
}

int PluginsModel::columnCount(const QModelIndex& parent) const
{
    Q_UNUSED(parent)
    return 2;
}

bool PluginsModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid();
}

QVariant PluginsModel::data(const QModelIndex& index, int role) const
{
    const int row = index.row();
    if (row < 0 || row >= m_records.size())
        return QVariant();
    const Record& record = m_records.at(row);

    const int column = index.column();
    if (column == 1)
        return role == Qt::DisplayRole ? QVariant(record.plugin.description()) : QVariant();

    switch (role) {
    case Qt::DisplayRole:
        return column == 0 ? record.plugin.name() : record.plugin.description();
    case Qt::FontRole: {
        if (column != 0)
            return QVariant();
        // Fresh on every call, so a change of the application font shows at once.
        QFont font = QGuiApplication::font();
        font.setWeight(record.checked ? QFont::Bold : QFont::Normal);
        font.setStyle(record.core ? QFont::StyleItalic : QFont::StyleNormal);
        return font;
    }
    case Qt::CheckStateRole:
        // A plain int (0 or 2), not a Qt::CheckState, deliberately: QML delegates bind
        // "checkedState" and compare it with numbers, so the variant's type must stay
        // int.
        return record.checked ? int(Qt::Checked) : int(Qt::Unchecked);
    case NameRole:
        return record.plugin.name();
    case DescriptionRole:
        return record.plugin.description();
    case CheckedRole:
        return record.checked;
    case CategoryRole:
        return record.plugin.category();
    default:
        return QVariant();
    }
}

bool PluginsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != CheckedRole && role != Qt::CheckStateRole)
        return false;
    const int row = index.row();
    if (row < 0 || row >= m_records.size())
        return false;
    // A ticked core row is released only by ticking another core row.
    const Record& record = m_records.at(row);
    if (record.core && record.checked)
        return false;

    const bool requested = role == Qt::CheckStateRole ? value.value<Qt::CheckState>() == Qt::Checked
                                                      : value.toBool();
    if (requested == record.checked)
        return false;

    if (!applyToggle(row, requested))
        return false;

    // The reset comes after the change and encloses nothing: one toggle may change many
    // rows, so every view re-reads the whole model. No dataChanged, ever.
    beginResetModel();
    endResetModel();
    save();
    return true;
}

QVariant PluginsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    // The "QObject" context, not this class's, so that existing translations apply.
    return section == 0 ? QObject::tr("Name") : QObject::tr("Description");
}

Qt::ItemFlags PluginsModel::flags(const QModelIndex& index) const
{
    const int row = index.row();
    if (row < 0 || row >= m_records.size())
        return QAbstractItemModel::flags(index);
    // Also for a ticked core row, which setData() refuses: the flags are not narrowed.
    return Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
}

QHash<int, QByteArray> PluginsModel::roleNames() const
{
    return {
        { NameRole, QByteArrayLiteral("name") },
        { DescriptionRole, QByteArrayLiteral("description") },
        { CheckedRole, QByteArrayLiteral("checked") },
        { CategoryRole, QByteArrayLiteral("category") },
        { Qt::CheckStateRole, QByteArrayLiteral("checkedState") },
        { Qt::FontRole, QByteArrayLiteral("font") },
    };
}

bool PluginsModel::enabled(PluginLoader plugin)
{
    return isPluginEnabled(*m_settings, plugin);
}

void PluginsModel::save()
{
    // Every row, changed or not, so the stored selection always matches the model.
    for (const Record& record : std::as_const(m_records))
        m_settings->setValue(selectionSettingsKey(record.plugin.name()), record.checked);
    m_settings->sync();
}

} // namespace Zelvane
