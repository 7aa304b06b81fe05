#include "diagnostics/pluginbisect_p.h"

#include "plugin/pluginnames_p.h"

#include <QtCore/QSettings>

namespace Zelvane {

using namespace PluginBisectKeys;

int PluginBisectPrivate::ceilLog2(qsizetype n)
{
    int bits = 0;
    while ((qsizetype(1) << bits) < n)
        ++bits;
    return bits;
}

void PluginBisectPrivate::load()
{
    m_settings->beginGroup(PluginBisect::settingsGroup());
    m_state = PluginBisect::State(m_settings->value(stateKey, 0).toInt());
    m_order = m_settings->value(orderKey).toStringList();
    m_needs.clear();
    const QStringList needs = m_settings->value(needsKey).toStringList();
    for (const QString& pair : needs)
        m_needs.insert(pair.section(needsSeparator, 0, 0), pair.section(needsSeparator, 1));
    m_pinned = m_settings->value(pinnedKey).toStringList();
    m_suspects = m_settings->value(suspectsKey).toStringList();
    m_keptOff = m_settings->value(keptOffKey).toStringList();
    m_half = m_settings->value(halfKey).toStringList();
    m_culprits = m_settings->value(culpritsKey).toStringList();
    m_restarts = m_settings->value(restartsKey, 0).toInt();
    m_maximum = m_settings->value(maximumKey, 0).toInt();
    m_settings->endGroup();
}

void PluginBisectPrivate::save() const
{
    m_settings->beginGroup(PluginBisect::settingsGroup());
    m_settings->setValue(stateKey, int(m_state));
    m_settings->setValue(orderKey, m_order);
    QStringList needs;
    for (auto it = m_needs.cbegin(); it != m_needs.cend(); ++it)
        needs.append(it.key() + needsSeparator + it.value());
    needs.sort();
    m_settings->setValue(needsKey, needs);
    m_settings->setValue(pinnedKey, m_pinned);
    m_settings->setValue(suspectsKey, m_suspects);
    m_settings->setValue(keptOffKey, m_keptOff);
    m_settings->setValue(halfKey, m_half);
    m_settings->setValue(culpritsKey, m_culprits);
    m_settings->setValue(restartsKey, m_restarts);
    m_settings->setValue(maximumKey, m_maximum);
    m_settings->endGroup();
    m_settings->sync();
}

void PluginBisectPrivate::clear()
{
    m_settings->remove(PluginBisect::settingsGroup());
    m_settings->sync();
    m_order.clear();
    m_needs.clear();
    m_pinned.clear();
    m_suspects.clear();
    m_keptOff.clear();
    m_half.clear();
    m_restarts = 0;
    m_maximum = 0;
}

QStringList PluginBisectPrivate::inOrder(const QSet<QString>& names) const
{
    QStringList result;
    for (const QString& name : m_order) {
        if (names.contains(name))
            result.append(name);
    }
    return result;
}

QStringList PluginBisectPrivate::closure(const QStringList& off) const
{
    // m_order has every plugin after what it needs, so one pass settles each plugin.
    QSet<QString> result(off.cbegin(), off.cend());
    for (const QString& name : m_order) {
        const QList<QString> needs = m_needs.values(name);
        for (const QString& need : needs) {
            if (result.contains(need))
                result.insert(name);
        }
    }
    return inOrder(result);
}

void PluginBisectPrivate::saveSelection() const
{
    m_settings->beginGroup(pluginGroup);
    const QStringList keys = m_settings->childKeys();
    QList<QVariant> values;
    for (const QString& key : keys)
        values.append(m_settings->value(key));
    m_settings->endGroup();

    m_settings->beginGroup(PluginBisect::settingsGroup());
    m_settings->remove(selectionGroup);
    m_settings->beginGroup(selectionGroup);
    for (qsizetype i = 0; i < keys.size(); ++i)
        m_settings->setValue(keys.at(i), values.at(i));
    m_settings->endGroup();
    m_settings->endGroup();
}

void PluginBisectPrivate::restoreSelection() const
{
    m_settings->beginGroup(PluginBisect::settingsGroup());
    m_settings->beginGroup(selectionGroup);
    const QStringList keys = m_settings->childKeys();
    QList<QVariant> values;
    for (const QString& key : keys)
        values.append(m_settings->value(key));
    m_settings->endGroup();
    m_settings->endGroup();

    m_settings->remove(pluginGroup);
    m_settings->beginGroup(pluginGroup);
    for (qsizetype i = 0; i < keys.size(); ++i)
        m_settings->setValue(keys.at(i), values.at(i));
    m_settings->endGroup();
}

void PluginBisectPrivate::applySelection(const QStringList& off) const
{
    // From the user's own selection each time: every plugin that this step does not
    // switch off is as the user left it, which is on.
    restoreSelection();
    for (const QString& name : closure(off))
        m_settings->setValue(selectionSettingsKey(name), false);
}

void PluginBisectPrivate::setStep(const QStringList& half)
{
    m_half = half;
    ++m_restarts;
    m_state = PluginBisect::State::Testing;
    applySelection(m_keptOff + m_half);
    save();
}

void PluginBisectPrivate::nextStep()
{
    if (m_suspects.isEmpty()) {
        m_state = PluginBisect::State::NotAnExtension;
        m_half.clear();
        save();
        return;
    }
    if (m_suspects.size() == 1) {
        m_state = PluginBisect::State::Found;
        m_culprits.append(m_suspects.constFirst());
        m_half.clear();
        save();
        return;
    }
    // The later half in load order: whatever needs one of them comes later still, so
    // switching them off switches off no other suspect, and the halves stay halves
    // whatever the dependencies. The larger half when the count is odd, so that either
    // answer leaves at most ceil(n / 2) suspects.
    const qsizetype count = m_suspects.size() - m_suspects.size() / 2;
    setStep(m_suspects.mid(m_suspects.size() - count));
}

} // namespace Zelvane
