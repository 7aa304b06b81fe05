// The tick/clear rules with their cycle guard. Part of the library's internal code, not
// of the model: SafeStart names the plugins that go with a culprit by these very rules,
// so the Diagnostics component takes them with the rest of the internal code.

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

} // namespace Zelvane
