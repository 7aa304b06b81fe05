#pragma once

// The tick/clear rules that PluginsModel applies to its rows, and SafeStart to the
// plugins that go with a culprit. Internal: never installed.

#include <zelvane/pluginsmodel.h>

#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QtGlobal>

namespace Zelvane {

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
    explicit Toggler(QList<PluginsModel::Record>& records);

    // Sets one row and spreads the change. False when the edit would never end; the
    // records are then left partly changed, and the caller puts them back.
    bool run(int row, bool checked) { return toggle(row, checked); }

private:
    struct ToggleFrame
    {
        int row;
        bool checked;
        quint64 state;

        bool operator==(const ToggleFrame& other) const
        {
            return row == other.row && checked == other.checked && state == other.state;
        }
        friend size_t qHash(const ToggleFrame& frame, size_t seed = 0)
        {
            return qHashMulti(seed, frame.row, frame.checked, frame.state);
        }
    };

    void set(int row, bool checked);
    bool toggle(int row, bool checked);
    bool spread(int row, bool checked);

    QList<PluginsModel::Record>& m_records;
    // The unfinished calls: a set, since the guard asks at every call whether one of
    // them has the same three values.
    QSet<ToggleFrame> m_frames;
    quint64 m_state = 0;
    // Who a row can act on, in ascending row order: the rows whose names it lists as
    // dependencies, the rows that list its name, and the core rows. A spreading step
    // visits only these instead of every row; the others would not pass its tests.
    QList<QList<int>> m_needs;
    QList<QList<int>> m_neededBy;
    QList<int> m_coreRows;
};

} // namespace Zelvane
