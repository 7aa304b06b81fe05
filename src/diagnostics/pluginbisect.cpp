#include <zelvane/diagnostics/pluginbisect.h>

#include "controller/loadplan_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSet>
#include <QtCore/QSettings>

#include <cerrno>
#include <signal.h>
#include <unistd.h>

namespace Zelvane {

namespace {

// The translation context of every text of this class.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::PluginBisect)
};

// Keys inside the bisect's group. The user's own selection is kept under "selection/"
// with QSettings' own encoding of each value, so that writing it back gives the very
// values, and so the very file, that the user had.
const QString stateKey = QStringLiteral("state");
const QString orderKey = QStringLiteral("order");
const QString needsKey = QStringLiteral("needs");
const QString pinnedKey = QStringLiteral("pinned");
const QString suspectsKey = QStringLiteral("suspects");
const QString keptOffKey = QStringLiteral("keptOff");
const QString halfKey = QStringLiteral("half");
const QString culpritsKey = QStringLiteral("culprits");
const QString restartsKey = QStringLiteral("restarts");
const QString maximumKey = QStringLiteral("maximum");
const QString selectionGroup = QStringLiteral("selection");
const QString startingKey = QStringLiteral("starting");

const QString pluginGroup = QStringLiteral("plugin");
const QChar needsSeparator = QLatin1Char('\t');

int ceilLog2(qsizetype n)
{
    int bits = 0;
    while ((qsizetype(1) << bits) < n)
        ++bits;
    return bits;
}

bool processIsGone(qint64 pid)
{
    return pid <= 0 || (::kill(pid_t(pid), 0) != 0 && errno == ESRCH);
}

} // namespace

class PluginBisectPrivate
{
public:
    explicit PluginBisectPrivate(QSettings* settings)
        : m_settings(settings)
    {
        load();
    }

    void load();
    void save() const;
    void clear();

    // The Extensions that switching off the given ones switches off too: those that
    // need one of them, directly or through others. In load order.
    QStringList closure(const QStringList& off) const;
    void applySelection(const QStringList& off) const;
    void restoreSelection() const;
    void saveSelection() const;
    void nextStep();
    void setStep(const QStringList& half);
    QStringList inOrder(const QSet<QString>& names) const;

    QSettings* m_settings;
    PluginBisect::State m_state = PluginBisect::State::Idle;
    QStringList m_order; // the enabled Extensions, each after what it needs
    QMultiHash<QString, QString> m_needs; // plugin → a plugin of m_order it needs
    QStringList m_pinned;
    QStringList m_suspects;
    QStringList m_keptOff; // off for the rest of the search: it may hide another culprit
    QStringList m_half; // the suspects this step switches off
    QStringList m_culprits;
    int m_restarts = 0;
    int m_maximum = 0;
    QString m_errorString;
};

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

PluginBisect::PluginBisect(QSettings* settings)
    : d(std::make_unique<PluginBisectPrivate>(settings))
{
}

PluginBisect::~PluginBisect() = default;

QString PluginBisect::settingsGroup()
{
    return QStringLiteral("PluginBisect");
}

PluginBisect::State PluginBisect::state() const
{
    return d->m_state;
}

bool PluginBisect::start(const QDir& dir, const QStringList& pinned)
{
    d->m_errorString.clear();
    if (d->m_state != State::Idle && d->m_state != State::Interrupted) {
        d->m_errorString = Texts::tr("A plugin bisect is already under way.");
        return false;
    }

    LoadPlan plan(dir);
    plan.decide(d->m_settings);
    if (!plan.error().isEmpty()) {
        d->m_errorString = plan.error();
        return false;
    }

    // The Extensions that load with the user's selection, in load order: the
    // controller's own order has every plugin after what it needs.
    const QList<LoadPlan::File> files = plan.files();
    QStringList order;
    QMultiHash<QString, QString> needs;
    const QList<int> loading = plan.loadOrderFiles();
    for (const int index : loading) {
        const LoadPlan::File& file = files.at(index);
        if (file.plugin.category() == extensionCategoryKey())
            order.append(file.name);
    }
    for (const int index : loading) {
        const LoadPlan::File& file = files.at(index);
        for (const QString& dependency : file.plugin.dependencies()) {
            if (order.contains(dependency) && order.contains(file.name))
                needs.insert(file.name, dependency);
        }
    }

    // Kept on: the pinned plugins and, since switching one off would switch a pinned one
    // off, everything they need.
    QSet<QString> kept;
    QStringList pending;
    for (const QString& name : pinned) {
        if (order.contains(name))
            pending.append(name);
    }
    while (!pending.isEmpty()) {
        const QString name = pending.takeLast();
        if (kept.contains(name))
            continue;
        kept.insert(name);
        pending.append(needs.values(name));
    }

    d->m_order = order;
    d->m_needs = needs;
    QStringList suspects;
    for (const QString& name : std::as_const(order)) {
        if (!kept.contains(name))
            suspects.append(name);
    }
    if (suspects.isEmpty()) {
        d->m_errorString = Texts::tr("No plugin to test: every Extension that loads is pinned.");
        d->m_order.clear();
        d->m_needs.clear();
        return false;
    }

    d->m_pinned = d->inOrder(kept);
    d->m_suspects = suspects;
    d->m_keptOff.clear();
    d->m_culprits.clear();
    d->m_restarts = 0;
    d->m_maximum = ceilLog2(suspects.size()) + 1;
    d->saveSelection();
    // The first test switches every suspect off: a problem that stays is not theirs.
    d->setStep(suspects);
    return true;
}

PluginBisect::State PluginBisect::beginStart()
{
    if (d->m_state == State::Idle || d->m_state == State::Interrupted)
        return d->m_state;
    const QString key = settingsGroup() + QLatin1Char('/') + startingKey;
    const QVariant mark = d->m_settings->value(key);
    if (mark.isValid() && processIsGone(mark.toLongLong())) {
        // The last start under this bisect died before it got through: whatever the
        // step proves, the user is not left with a selection that is not theirs.
        d->restoreSelection();
        d->clear();
        d->m_culprits.clear();
        d->m_state = State::Interrupted;
        return d->m_state;
    }
    d->m_settings->setValue(key, qint64(::getpid()));
    d->m_settings->sync();
    return d->m_state;
}

void PluginBisect::started()
{
    if (d->m_state == State::Idle || d->m_state == State::Interrupted)
        return;
    d->m_settings->remove(settingsGroup() + QLatin1Char('/') + startingKey);
    d->m_settings->sync();
}

void PluginBisect::answer(bool problemIsThere)
{
    if (d->m_state != State::Testing)
        return;
    if (d->m_half.isEmpty()) {
        // The check after goOn(): with the culprits found so far off, is there more?
        if (!problemIsThere) {
            d->m_state = State::NoOtherCulprit;
            d->save();
            return;
        }
        d->nextStep();
        return;
    }
    const QSet<QString> half(d->m_half.cbegin(), d->m_half.cend());
    QStringList remaining;
    if (problemIsThere) {
        // The problem is among the plugins that stayed on. The half stays off for the
        // rest of the search: it may hold a second culprit, which would otherwise show
        // the problem in every later step.
        for (const QString& name : std::as_const(d->m_suspects)) {
            if (!half.contains(name))
                remaining.append(name);
        }
        d->m_keptOff = d->closure(d->m_keptOff + d->m_half);
    } else {
        remaining = d->m_half;
    }
    d->m_suspects = remaining;
    d->nextStep();
}

void PluginBisect::goOn()
{
    if (d->m_state != State::Found)
        return;
    d->m_keptOff = d->closure(d->m_culprits);
    const QSet<QString> off(d->m_keptOff.cbegin(), d->m_keptOff.cend());
    const QSet<QString> kept(d->m_pinned.cbegin(), d->m_pinned.cend());
    QStringList suspects;
    for (const QString& name : std::as_const(d->m_order)) {
        if (!off.contains(name) && !kept.contains(name))
            suspects.append(name);
    }
    d->m_suspects = suspects;
    d->m_maximum = d->m_restarts + ceilLog2(suspects.size()) + 1;
    d->setStep({});
}

void PluginBisect::finish()
{
    if (d->m_state != State::Idle && d->m_state != State::Interrupted)
        d->restoreSelection();
    d->clear();
    d->m_culprits.clear();
    d->m_state = State::Idle;
}

void PluginBisect::cancel()
{
    finish();
}

QString PluginBisect::culprit() const
{
    return d->m_culprits.isEmpty() ? QString() : d->m_culprits.constLast();
}

QStringList PluginBisect::culprits() const
{
    return d->m_culprits;
}

QStringList PluginBisect::switchedOff() const
{
    if (d->m_state != State::Testing)
        return {};
    return d->closure(d->m_keptOff + d->m_half);
}

QStringList PluginBisect::suspects() const
{
    return d->m_suspects;
}

QStringList PluginBisect::pinned() const
{
    return d->m_pinned;
}

int PluginBisect::restarts() const
{
    return d->m_restarts;
}

int PluginBisect::maximumRestarts() const
{
    return d->m_maximum;
}

QString PluginBisect::statusText() const
{
    switch (d->m_state) {
    case State::Idle:
        return Texts::tr("No plugin bisect is under way.");
    case State::Testing: {
        const qsizetype off = switchedOff().size();
        const QString count = off == 1
            ? Texts::tr("1 plugin is switched off for this test.")
            : Texts::tr("%1 plugins are switched off for this test.").arg(off);
        return Texts::tr("Restart the application, then tell whether the problem is still "
                         "there. %1")
            .arg(count);
    }
    case State::Found:
        return Texts::tr("Found it: %1 causes the problem.").arg(culprit());
    case State::NoOtherCulprit:
        return Texts::tr("The problem is gone with %1 switched off: no other plugin causes it.")
            .arg(d->m_culprits.join(QStringLiteral(", ")));
    case State::NotAnExtension:
        return Texts::tr("The problem is still there with every plugin that was tested "
                         "switched off: it comes from the core plugin, a pinned plugin or "
                         "the application itself.");
    case State::Interrupted:
        return Texts::tr("The application did not start during the plugin bisect. Your "
                         "plugin selection is back as it was.");
    }
    return QString();
}

QString PluginBisect::errorString() const
{
    return d->m_errorString;
}

} // namespace Zelvane
