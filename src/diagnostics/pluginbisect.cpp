#include <zelvane/diagnostics/pluginbisect.h>

#include "controller/loadplan_p.h"
#include "diagnostics/pluginbisect_p.h"
#include "diagnostics/trialwatch_p.h"
#include "plugin/pluginnames_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSet>
#include <QtCore/QSettings>

namespace Zelvane {

namespace {

// The translation context of every text of this class.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::PluginBisect)
};

} // namespace

using namespace PluginBisectKeys;

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
    d->m_maximum = PluginBisectPrivate::ceilLog2(suspects.size()) + 1;
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
    if (mark.isValid() && !isProcessRunning(mark.toLongLong())) {
        // The last start under this bisect died before it got through: whatever the
        // step proves, the user is not left with a selection that is not theirs.
        d->restoreSelection();
        d->clear();
        d->m_culprits.clear();
        d->m_state = State::Interrupted;
        return d->m_state;
    }
    d->m_settings->setValue(key, QCoreApplication::applicationPid());
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
    d->m_maximum = d->m_restarts + PluginBisectPrivate::ceilLog2(suspects.size()) + 1;
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

QString PluginBisect::flowText(FlowText text)
{
    switch (text) {
    case FlowText::Title:
        return Texts::tr("Find a plugin that causes a problem");
    case FlowText::Introduction:
        return Texts::tr("Tick the plugins to keep on, then start. Each step switches some "
                         "plugins off and asks for a restart.");
    case FlowText::PinList:
        return Texts::tr("Plugins to keep on");
    case FlowText::Start:
        return Texts::tr("Start");
    case FlowText::StillThere:
        return Texts::tr("The problem is still there");
    case FlowText::Gone:
        return Texts::tr("The problem is gone");
    case FlowText::GoOn:
        return Texts::tr("Look for another one");
    case FlowText::Finish:
        return Texts::tr("Finish");
    }
    return QString();
}

} // namespace Zelvane
