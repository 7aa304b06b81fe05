// Which rows of the plugins model are ticked: the tick/clear rules with their cycle
// guard, and the check of the leading core run. The Qt model plumbing and the
// settings reads and writes are in pluginsmodel.cpp.

#include "model/pluginselectionrules_p.h"

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
    for (int row = 0; row < m_records.size(); ++row) {
        if (m_records.at(row).checked)
            m_state ^= rowKey(row);
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
bool Toggler::spread(int row, bool checked)
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
        if (m_records.at(i).checked && m_records.at(i).plugin.dependsOn(m_records.at(row).plugin)) {
            if (!toggle(i, false))
                return false;
        }
    }
    return true;
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
    // with the rows the constructor builds this changes nothing, and hosts' saved
    // selections depend on that (several ticked core rows stay as the user left them).
    // Keep both spellings: tst_pluginselectionrules' validateLeavesCoreKeyRowsAlone and
    // validateTrimsLowerCaseCoreRun pin them.
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
