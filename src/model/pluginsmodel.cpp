// The Qt model plumbing of PluginsModel and its settings reads and writes. Which rows
// are ticked is decided in pluginselectionrules.cpp.

#include <zelvane/pluginsmodel.h>

#include "plugin/pluginnames_p.h"

#include <QtCore/QSettings>
#include <QtGui/QFont>
#include <QtGui/QGuiApplication>

namespace Zelvane {

/*!
 * \class Zelvane::PluginsModel
 * \headerfile pluginsmodel.h <zelvane/PluginsModel>
 * \brief The table behind a plugin settings screen.
 *
 * One row per discovered "Core" plugin, then one per "Extension" plugin; column 0 is
 * the name with a check box, column 1 the description. Checked rows are bold, core
 * rows italic.
 *
 * Ticking a plugin ticks what it depends on; clearing it clears what depends on it;
 * ticking a core plugin clears the other core plugins, so the core rows act as one
 * group of radio buttons, and a ticked core row cannot be cleared directly. Every
 * accepted edit resets the model and is written to the settings at once under
 * "plugin/<Name>"; it takes effect the next time the plugins are loaded.
 *
 * QML delegates bind to the roles "name", "description", "checked", "category",
 * "checkedState" and "font". Use the model from the GUI thread only.
 *
 * \sa \ref plugin_selection "Plugin selection"
 */

/*!
 * \enum Zelvane::PluginsModel::Roles
 * \brief The model's own roles, beside Qt's; QML knows them by roleNames().
 *
 * \var Zelvane::PluginsModel::NameRole
 * The plugin's name ("name").
 * \var Zelvane::PluginsModel::DescriptionRole
 * The plugin's description ("description").
 * \var Zelvane::PluginsModel::CheckedRole
 * Whether the row is ticked, as a bool ("checked").
 * \var Zelvane::PluginsModel::CategoryRole
 * "Core" or "Extension" ("category").
 */

/*!
 * \struct Zelvane::PluginsModel::Record
 * \brief One row of the model.
 *
 * \var Zelvane::PluginsModel::Record::checked
 * Whether the row is ticked.
 * \var Zelvane::PluginsModel::Record::core
 * Whether the plugin is a "Core" plugin.
 * \var Zelvane::PluginsModel::Record::plugin
 * The plugin of the row.
 */

/*!
 * \fn Zelvane::PluginsModel::PluginsModel(const QMultiMap<QString, PluginLoader>& plugins, QSettings* settings)
 * \brief Rows are built from plugins.values("Core") and plugins.values("Extension");
 * plugins of any other category get no row.
 *
 * settings must not be null and must outlive the model. Reads the stored selection;
 * writes nothing. Hosts use the controller's model, PluginController::pluginsModel().
 */
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

/*!
 * \fn Zelvane::PluginsModel::~PluginsModel()
 * \brief Destroys the model; the settings stay as the last accepted edit left them.
 */
PluginsModel::~PluginsModel() = default;

/*!
 * \fn int Zelvane::PluginsModel::rowCount(const QModelIndex& parent = QModelIndex()) const
 * \brief The number of Core and Extension plugins; 0 under a valid parent.
 */
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

/*!
 * \fn int Zelvane::PluginsModel::columnCount(const QModelIndex& parent = QModelIndex()) const
 * \brief Two: the name with its check box, and the description.
 */
int PluginsModel::columnCount(const QModelIndex& parent) const
{
    Q_UNUSED(parent)
    return 2;
}

/*!
 * \fn bool Zelvane::PluginsModel::hasChildren(const QModelIndex& parent = QModelIndex()) const
 * \brief Only the root has children: the model is a flat table.
 */
bool PluginsModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid();
}

/*!
 * \fn QVariant Zelvane::PluginsModel::data(const QModelIndex& index, int role = Qt::DisplayRole) const
 * \brief The row's name, description, check state, category and font, by role.
 */
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

/*!
 * \fn bool Zelvane::PluginsModel::setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole)
 * \brief Ticks or clears a row (role Qt::CheckStateRole or CheckedRole of any
 * column), following the rules above, and saves the selection at once.
 *
 * False, and nothing changes, for another role, a row out of range, a ticked core row
 * or a value that the row already has.
 */
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

/*!
 * \fn QVariant Zelvane::PluginsModel::headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const
 * \brief "Name" and "Description", translated, for the horizontal header.
 */
QVariant PluginsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    // The "QObject" context, not this class's, so that existing translations apply.
    return section == 0 ? QObject::tr("Name") : QObject::tr("Description");
}

/*!
 * \fn Qt::ItemFlags Zelvane::PluginsModel::flags(const QModelIndex& index) const
 * \brief Every row is selectable, enabled and user-checkable, a ticked core row too
 * (setData() refuses to clear it).
 */
Qt::ItemFlags PluginsModel::flags(const QModelIndex& index) const
{
    const int row = index.row();
    if (row < 0 || row >= m_records.size())
        return QAbstractItemModel::flags(index);
    // Also for a ticked core row, which setData() refuses: the flags are not narrowed.
    return Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
}

/*!
 * \fn QHash<int, QByteArray> Zelvane::PluginsModel::roleNames() const
 * \brief Qt's role names and "name", "description", "checked", "category",
 * "checkedState" and "font".
 */
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

/*!
 * \fn bool Zelvane::PluginsModel::enabled(PluginLoader plugin)
 * \brief The stored selection of one plugin, or its "Default" when none is stored.
 */
bool PluginsModel::enabled(PluginLoader plugin)
{
    return isPluginEnabled(*m_settings, plugin);
}

/*!
 * \fn void Zelvane::PluginsModel::save()
 * \brief Writes every row's state to the settings and syncs them.
 */
void PluginsModel::save()
{
    // Every row, changed or not, so the stored selection always matches the model.
    for (const Record& record : std::as_const(m_records))
        m_settings->setValue(selectionSettingsKey(record.plugin.name()), record.checked);
    m_settings->sync();
}

} // namespace Zelvane
