// Which rows of the plugins model are ticked: the model's side of the tick/clear rules
// and the check of the leading core run. The rules themselves are in toggler.cpp; the Qt
// model plumbing and the settings reads and writes are in pluginsmodel.cpp.

#include "model/pluginselectionrules_p.h"

namespace Zelvane {

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
