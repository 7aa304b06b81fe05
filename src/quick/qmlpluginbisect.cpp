#include "qmlpluginbisect_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/pluginbisect.h>
#include <zelvane/plugincontroller.h>

#include <QtCore/QSettings>

namespace Zelvane {

namespace {

// The page's states are the bisect's, value for value.
static_assert(int(QmlPluginBisect::Interrupted) == int(PluginBisect::State::Interrupted)
              && int(QmlPluginBisect::NotAnExtension) == int(PluginBisect::State::NotAnExtension)
              && int(QmlPluginBisect::Testing) == int(PluginBisect::State::Testing));

QString flowText(PluginBisect::FlowText text)
{
    return PluginBisect::flowText(text);
}

} // namespace

QmlPluginBisect::QmlPluginBisect(QObject* parent)
    : QObject(parent)
{
    refresh();
}

QSettings* QmlPluginBisect::settings() const
{
    return PluginController::instance()->settings();
}

QString QmlPluginBisect::pluginDirectory() const
{
    return m_directory;
}

void QmlPluginBisect::setPluginDirectory(const QString& path)
{
    if (path == m_directory)
        return;
    m_directory = path;
    emit pluginDirectoryChanged();
    refresh();
}

QmlPluginBisect::State QmlPluginBisect::state() const
{
    return m_state;
}

QString QmlPluginBisect::statusText() const
{
    return m_error.isEmpty() ? m_status : m_error;
}

QStringList QmlPluginBisect::candidates() const
{
    return m_candidates;
}

QStringList QmlPluginBisect::pinned() const
{
    return m_pinned;
}

void QmlPluginBisect::setPinned(const QStringList& names)
{
    // Pins are chosen before the start; under way they are the bisect's.
    if (m_state != Idle)
        return;
    // Only what can be pinned, in load order, whatever order the page ticked them in.
    QStringList pinned;
    for (const QString& name : std::as_const(m_candidates)) {
        if (names.contains(name))
            pinned.append(name);
    }
    if (pinned == m_pinned)
        return;
    m_pinned = pinned;
    emit pinnedChanged();
}

bool QmlPluginBisect::isPinned(const QString& name) const
{
    return m_pinned.contains(name);
}

void QmlPluginBisect::setPinnedPlugin(const QString& name, bool pinned)
{
    QStringList names = m_pinned;
    names.removeAll(name);
    if (pinned)
        names.append(name);
    setPinned(names);
}

QString QmlPluginBisect::culprit() const
{
    return m_culprits.isEmpty() ? QString() : m_culprits.constLast();
}

QStringList QmlPluginBisect::culprits() const
{
    return m_culprits;
}

QStringList QmlPluginBisect::switchedOff() const
{
    return m_switchedOff;
}

int QmlPluginBisect::restarts() const
{
    return m_restarts;
}

int QmlPluginBisect::maximumRestarts() const
{
    return m_maximumRestarts;
}

QString QmlPluginBisect::title() const
{
    return flowText(PluginBisect::FlowText::Title);
}

QString QmlPluginBisect::pinListName() const
{
    return flowText(PluginBisect::FlowText::PinList);
}

QString QmlPluginBisect::startText() const
{
    return flowText(PluginBisect::FlowText::Start);
}

QString QmlPluginBisect::stillThereText() const
{
    return flowText(PluginBisect::FlowText::StillThere);
}

QString QmlPluginBisect::goneText() const
{
    return flowText(PluginBisect::FlowText::Gone);
}

QString QmlPluginBisect::goOnText() const
{
    return flowText(PluginBisect::FlowText::GoOn);
}

QString QmlPluginBisect::finishText() const
{
    return flowText(PluginBisect::FlowText::Finish);
}

bool QmlPluginBisect::start()
{
    QSettings* const store = settings();
    if (!store)
        return false;
    PluginBisect bisect(store);
    const bool started = bisect.start(QDir(m_directory), m_pinned);
    const QString error = started ? QString() : bisect.errorString();
    refresh();
    // A refused start leaves the introduction's place to the reason, as the widget does,
    // until the next action.
    m_error = error;
    emit changed();
    if (started)
        emit restartRequested();
    return started;
}

void QmlPluginBisect::answer(bool problemIsThere)
{
    QSettings* const store = settings();
    if (!store)
        return;
    PluginBisect(store).answer(problemIsThere);
    refresh();
    emit restartRequested();
}

void QmlPluginBisect::goOn()
{
    QSettings* const store = settings();
    if (!store)
        return;
    PluginBisect(store).goOn();
    refresh();
    emit restartRequested();
}

void QmlPluginBisect::finish()
{
    QSettings* const store = settings();
    if (!store)
        return;
    PluginBisect(store).finish();
    refresh();
    emit restartRequested();
}

void QmlPluginBisect::cancel()
{
    finish();
}

void QmlPluginBisect::refresh()
{
    m_error.clear();
    QSettings* const store = settings();
    if (!store) {
        m_state = Idle;
        m_status.clear();
        emit changed();
        return;
    }
    const PluginBisect bisect(store);
    m_state = State(int(bisect.state()));
    m_status
        = m_state == Idle ? flowText(PluginBisect::FlowText::Introduction) : bisect.statusText();
    m_culprits = bisect.culprits();
    m_switchedOff = bisect.switchedOff();
    m_restarts = bisect.restarts();
    m_maximumRestarts = bisect.maximumRestarts();

    // The Extensions that load with the user's selection, in load order: the ones the
    // bisect can suspect, or pin. Read only while no bisect is under way, when the
    // selection is the user's own.
    QStringList candidates;
    if (m_state == Idle && !m_directory.isEmpty()) {
        const LoadDiagnostics diagnostics { QDir(m_directory), store };
        for (const QString& name : diagnostics.loadOrder()) {
            if (diagnostics.plugin(name).isExtension())
                candidates.append(name);
        }
    }
    m_candidates = candidates;
    // Under way, the bisect's own: the pinned plugins and what they need.
    QStringList pinned;
    if (m_state == Idle) {
        for (const QString& name : std::as_const(m_pinned)) {
            if (m_candidates.contains(name))
                pinned.append(name);
        }
    } else {
        pinned = bisect.pinned();
    }
    const bool pinsChanged = pinned != m_pinned;
    m_pinned = pinned;
    emit changed();
    if (pinsChanged)
        emit pinnedChanged();
}

} // namespace Zelvane
