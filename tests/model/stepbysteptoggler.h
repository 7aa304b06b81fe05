#pragma once

// The tick/clear rules written out step by step, as the library had them before they
// looked rows up through indices: every spreading step scans all rows, and the guard
// against endless edits scans the unfinished calls. The library's form must change
// the same rows in the same order and refuse the same edits; tst_pluginselectionrules
// compares the two on random models. Keep this one simple and literal.

#include <zelvane/pluginsmodel.h>

#include <QtCore/QList>

namespace ZelvaneModelTest {

class StepByStepToggler
{
public:
    explicit StepByStepToggler(QList<Zelvane::PluginsModel::Record>& records)
        : m_records(records)
    {
        for (int row = 0; row < m_records.size(); ++row) {
            if (m_records.at(row).checked)
                m_state ^= rowKey(row);
        }
    }

    bool run(int row, bool checked) { return toggle(row, checked); }

private:
    struct Frame
    {
        int row;
        bool checked;
        quint64 state;
    };

    static quint64 rowKey(int row)
    {
        quint64 z = quint64(row) + 0x9e3779b97f4a7c15ULL;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }

    void set(int row, bool checked)
    {
        Zelvane::PluginsModel::Record& record = m_records[row];
        if (record.checked != checked)
            m_state ^= rowKey(row);
        record.checked = checked;
    }

    bool toggle(int row, bool checked)
    {
        for (const Frame& frame : std::as_const(m_frames)) {
            if (frame.row == row && frame.checked == checked && frame.state == m_state)
                return false;
        }
        m_frames.append(Frame { row, checked, m_state });
        const bool finished = spread(row, checked);
        m_frames.removeLast();
        return finished;
    }

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

    QList<Zelvane::PluginsModel::Record>& m_records;
    QList<Frame> m_frames;
    quint64 m_state = 0;
};

} // namespace ZelvaneModelTest
