#include <zelvane/pluginsmodel.h>

#include <QtCore/QSettings>
#include <QtGui/QFont>
#include <QtGui/QGuiApplication>

namespace Zelvane {

namespace {

QString settingsKey(const PluginLoader& plugin)
{
    return QStringLiteral("plugin/") + plugin.name();
}

// A per-row key for the hash of all check states (Zobrist hashing): flipping a row
// flips its key in the hash, so the hash follows every change in constant time.
quint64 rowKey(int row)
{
    quint64 z = quint64(row) + 0x9e3779b97f4a7c15ULL;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

struct ToggleFrame
{
    int row;
    bool checked;
    quint64 state;
};

// Runs the tick/clear rules on the records. The rules can recurse forever when core
// plugins depend on one another in a cycle (ticking A clears B, which clears A, then
// ticks B as A's dependency, which ticks A as B's dependency, ...). toggle() depends
// only on its row, the requested state and the check states of all rows, so a call
// that meets an unfinished call of itself with the same three values would repeat
// that call forever. That is the one case this stops, by refusing the whole edit;
// every edit that ends on its own goes exactly as the rules say.
class Toggler
{
public:
    explicit Toggler(QList<PluginsModel::Record>& records)
        : m_records(records)
    {
        for (int row = 0; row < m_records.size(); ++row) {
            if (m_records.at(row).checked)
                m_state ^= rowKey(row);
        }
    }

    bool run(int row, bool checked) { return toggle(row, checked); }

private:
    void set(int row, bool checked)
    {
        PluginsModel::Record& record = m_records[row];
        if (record.checked != checked)
            m_state ^= rowKey(row);
        record.checked = checked;
    }

    bool toggle(int row, bool checked)
    {
        for (const ToggleFrame& frame : std::as_const(m_frames)) {
            if (frame.row == row && frame.checked == checked && frame.state == m_state)
                return false;
        }
        m_frames.append(ToggleFrame { row, checked, m_state });
        const bool finished = spread(row, checked);
        m_frames.removeLast();
        return finished;
    }

    // Rows are visited in ascending order and each recursive call finishes before the
    // loop goes on: the spreading is depth-first in row order.
    bool spread(int row, bool checked)
    {
        set(row, checked);
        const int count = int(m_records.size());
        if (checked) {
            for (int i = 0; i < count; ++i) {
                if (i == row)
                    continue;
                if (m_records.at(row).core && m_records.at(i).core && m_records.at(i).checked) {
                    if (!toggle(i, false))
                        return false;
                }
                if (!m_records.at(i).checked
                    && m_records.at(row).plugin.dependsOn(m_records.at(i).plugin)) {
                    if (!toggle(i, true))
                        return false;
                }
            }
            return true;
        }
        for (int i = 0; i < count; ++i) {
            if (i == row)
                continue;
            if (m_records.at(i).checked
                && m_records.at(i).plugin.dependsOn(m_records.at(row).plugin)) {
                if (!toggle(i, false))
                    return false;
            }
        }
        return true;
    }

    QList<PluginsModel::Record>& m_records;
    QList<ToggleFrame> m_frames;
    quint64 m_state = 0;
};

} // namespace

PluginsModel::PluginsModel(const QMultiMap<QString, PluginLoader>& plugins, QSettings* settings)
    : QAbstractTableModel(nullptr)
    , m_settings(settings)
{
    const QList<PluginLoader> cores = plugins.values(QStringLiteral("Core"));
    for (const PluginLoader& plugin : cores)
        m_records.append(Record { enabled(plugin), true, plugin });
    const QList<PluginLoader> extensions = plugins.values(QStringLiteral("Extension"));
    for (const PluginLoader& plugin : extensions)
        m_records.append(Record { enabled(plugin), false, plugin });
    validate();
}

PluginsModel::~PluginsModel() = default;

int PluginsModel::rowCount(const QModelIndex& parent) const
{
    // A flat table that answers the same for every parent, on purpose; views only
    // ask about the root.
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
        // A plain int (0 or 2), not a Qt::CheckState, deliberately.
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
    return m_settings->value(settingsKey(plugin), QVariant(plugin.loadByDefault())).toBool();
}

void PluginsModel::toggle(int row, bool checked)
{
    applyToggle(row, checked);
}

bool PluginsModel::applyToggle(int row, bool checked)
{
    QList<bool> before;
    before.reserve(m_records.size());
    for (const Record& record : std::as_const(m_records))
        before.append(record.checked);

    if (Toggler(m_records).run(row, checked))
        return true;

    // Refused: the rows go back to how they were.
    for (qsizetype i = 0; i < before.size(); ++i)
        m_records[i].checked = before.at(i);
    return false;
}

void PluginsModel::validate()
{
    // "core" in lower case on purpose, although rows are built from the key "Core":
    // with the rows the constructor builds this changes nothing, and that is the
    // behaviour hosts have. Keep both spellings.
    const QString core = QStringLiteral("core");
    qsizetype runEnd = 0;
    while (runEnd < m_records.size() && m_records.at(runEnd).plugin.category() == core)
        ++runEnd;
    if (runEnd == 0)
        return;

    qsizetype firstChecked = 0;
    while (firstChecked < runEnd && !m_records.at(firstChecked).checked)
        ++firstChecked;
    if (firstChecked == runEnd) {
        m_records[0].checked = true;
        return;
    }
    for (qsizetype i = firstChecked + 1; i < runEnd; ++i)
        m_records[i].checked = false;
}

void PluginsModel::save()
{
    // Every row, changed or not, so the stored selection always matches the model.
    for (const Record& record : std::as_const(m_records))
        m_settings->setValue(settingsKey(record.plugin), record.checked);
    m_settings->sync();
}

} // namespace Zelvane
