#pragma once

#include <zelvane/pluginloader.h>
#include <zelvane/zelvane_export.h>

#include <QtCore/QAbstractTableModel>
#include <QtCore/QList>
#include <QtCore/QMultiMap>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

// The table behind a plugin settings screen: one row per discovered "Core" plugin,
// then one per "Extension" plugin; column 0 is the name with a check box, column 1
// the description. Checked rows are bold, core rows italic.
//
// Ticking a plugin ticks what it depends on; clearing it clears what depends on it;
// ticking a core plugin clears the other core plugins, so the core rows act as one
// group of radio buttons, and a ticked core row cannot be cleared directly. Every
// accepted edit resets the model and is written to the settings at once under
// "plugin/<Name>"; it takes effect the next time the plugins are loaded.
//
// QML delegates bind to the roles "name", "description", "checked", "category",
// "checkedState" and "font". Use the model from the GUI thread only.
class ZELVANE_EXPORT PluginsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Roles {
        NameRole = Qt::UserRole + 1,
        DescriptionRole,
        CheckedRole,
        CategoryRole,
    };
    Q_ENUM(Roles)

    struct Record
    {
        bool checked;
        bool core;
        PluginLoader plugin;
    };

    // Rows are built from plugins.values("Core") and plugins.values("Extension");
    // plugins of any other category get no row. settings must not be null and must
    // outlive the model. Reads the stored selection; writes nothing.
    PluginsModel(const QMultiMap<QString, PluginLoader>& plugins, QSettings* settings);
    ~PluginsModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QHash<int, QByteArray> roleNames() const override;

    // The stored selection of one plugin, or its "Default" when none is stored.
    bool enabled(PluginLoader plugin);
    // Sets one row and spreads the change along dependencies and core exclusion,
    // without notifying views or saving. row must be a valid row.
    void toggle(int row, bool checked);
    // Keeps a leading run of rows of category "core" to exactly one ticked row.
    void validate();
    // Writes every row's state to the settings and syncs them.
    void save();

private:
    bool applyToggle(int row, bool checked);

    QList<Record> m_records;
    QSettings* m_settings;
};

} // namespace Zelvane
