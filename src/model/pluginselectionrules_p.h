#pragma once

// The tick/clear rules that PluginsModel applies to its rows. Internal: included by
// the model's sources only, and never installed.

#include <zelvane/pluginsmodel.h>

#include <QtCore/QList>
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
    };

    void set(int row, bool checked);
    bool toggle(int row, bool checked);
    bool spread(int row, bool checked);

    QList<PluginsModel::Record>& m_records;
    QList<ToggleFrame> m_frames;
    quint64 m_state = 0;
};

} // namespace Zelvane
