// Which rows of the plugins model are ticked: the tick/clear rules with their cycle
// guard, and the check of the leading core run. The Qt model plumbing and the
// settings reads and writes are in pluginsmodel.cpp.

#include "model/pluginselectionrules_p.h"

#include <QtCore/QHash>

#include <algorithm>

namespace Zelvane {

namespace {

// A per-row key for the hash of all check states (Zobrist hashing): flipping a row
// flips its key in the hash, so the hash follows every change in constant time.
quint64 rowKey(int row)
{
    quint64 z = quint64(row) + 0x9e3779b97f4a7c15ULL;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

} // namespace

Toggler::Toggler(QList<PluginsModel::Record>& records)
    : m_records(records)
{
    const int count = int(m_records.size());
    QHash<QString, QList<int>> rowsByName;
    for (int row = 0; row < count; ++row) {
        if (m_records.at(row).checked)
            m_state ^= rowKey(row);
        if (m_records.at(row).core)
            m_coreRows.append(row);
        rowsByName[m_records.at(row).plugin.name()].append(row);
    }

    // Row a needs row b when a's dependencies name b, as PluginLoader::dependsOn()
    // says. Rows are handled in ascending order, so every list comes out ascending.
    m_needs.resize(count);
    m_neededBy.resize(count);
    for (int row = 0; row < count; ++row) {
        const QStringList dependencies = m_records.at(row).plugin.dependencies();
        QList<int>& needs = m_needs[row];
        for (const QString& dependency : dependencies)
            needs.append(rowsByName.value(dependency));
        std::sort(needs.begin(), needs.end());
        needs.erase(std::unique(needs.begin(), needs.end()), needs.end());
        for (int needed : std::as_const(needs))
            m_neededBy[needed].append(row);
    }
}

void Toggler::set(int row, bool checked)
{
    PluginsModel::Record& record = m_records[row];
    if (record.checked != checked)
        m_state ^= rowKey(row);
    record.checked = checked;
}

bool Toggler::toggle(int row, bool checked)
{
    const ToggleFrame frame { row, checked, m_state };
    if (m_frames.contains(frame))
        return false;
    m_frames.insert(frame);
    const bool finished = spread(row, checked);
    m_frames.remove(frame);
    return finished;
}

// Rows are visited in ascending order and each recursive call finishes before the
// loop goes on: the spreading is depth-first in row order. Ticking visits the core rows
// (when the ticked row is one) and the rows it needs, merged in row order; clearing
// visits the rows that need it. Whether a row is ticked is read when it is visited,
// since the calls before it may have changed it.
bool Toggler::spread(int row, bool checked)
{
    set(row, checked);
    if (checked) {
        const bool core = m_records.at(row).core;
        const QList<int> noRows;
        const QList<int>& cores = core ? m_coreRows : noRows;
        const QList<int>& needs = m_needs.at(row);
        auto nextCore = cores.cbegin();
        auto nextNeeded = needs.cbegin();
        while (nextCore != cores.cend() || nextNeeded != needs.cend()) {
            const int i = nextNeeded == needs.cend() ? *nextCore
                : nextCore == cores.cend()           ? *nextNeeded
                                                     : std::min(*nextCore, *nextNeeded);
            const bool otherCore = nextCore != cores.cend() && *nextCore == i;
            const bool needed = nextNeeded != needs.cend() && *nextNeeded == i;
            if (otherCore)
                ++nextCore;
            if (needed)
                ++nextNeeded;
            if (i == row)
                continue;
            if (otherCore && m_records.at(i).checked) {
                if (!toggle(i, false))
                    return false;
            }
            if (needed && !m_records.at(i).checked) {
                if (!toggle(i, true))
                    return false;
            }
        }
        return true;
    }
    const QList<int>& neededBy = m_neededBy.at(row);
    for (int i : neededBy) {
        if (i == row)
            continue;
        if (m_records.at(i).checked) {
            if (!toggle(i, false))
                return false;
        }
    }
    return true;
}

/*!
 * \fn void Zelvane::PluginsModel::toggle(int row, bool checked)
 * \brief Sets one row and spreads the change along dependencies and core exclusion,
 * without notifying views or saving.
 *
 * row must be a valid row.
 */
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

/*!
 * \fn void Zelvane::PluginsModel::validate()
 * \brief Keeps a leading run of rows of category "core" to exactly one ticked row.
 */
void PluginsModel::validate()
{
    // "core" in lower case on purpose, although rows are built from the key "Core":
    // with the rows the constructor builds this changes nothing, and hosts' saved
    // selections depend on that (several ticked core rows stay as the user left them).
    // Keep both spellings: rows of category "Core" are left alone, and only a leading
    // run of rows of category "core" is trimmed to one ticked row.
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

} // namespace Zelvane
