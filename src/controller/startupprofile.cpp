#include "controller/startupprofile_p.h"
#include "controller/startuprecorder_p.h"

#include <zelvane/pluginloader.h>

#include <QtCore/QDebug>
#include <QtCore/QLoggingCategory>

namespace Zelvane {

namespace {

// Debug messages are off unless QT_LOGGING_RULES (or a host's filter) turns them on: a
// host that never asks sees no line it did not see before.
Q_LOGGING_CATEGORY(lcStartup, "zelvane.startup", QtWarningMsg)

StartupRecord& storedRecord()
{
    static StartupRecord record;
    return record;
}

template<typename Duration>
qint64 nanoseconds(Duration duration)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count();
}

QString milliseconds(qint64 ns)
{
    return QString::number(double(ns) / 1e6, 'f', 2) + QStringLiteral(" ms");
}

QString share(qint64 part, qint64 whole)
{
    return QString::number(whole > 0 ? 100.0 * double(part) / double(whole) : 0.0, 'f', 1)
        + QLatin1Char('%');
}

qint64 pluginNs(const StartupRecord::Plugin& plugin)
{
    qint64 sum = 0;
    for (const qint64 ns : { plugin.libraryNs, plugin.rootObjectNs, plugin.initializeNs }) {
        if (ns >= 0)
            sum += ns;
    }
    return sum;
}

QString failure(StartupRecord::Step step)
{
    switch (step) {
    case StartupRecord::Step::None:
        break;
    case StartupRecord::Step::Library:
        return QStringLiteral("failed while loading the library");
    case StartupRecord::Step::RootObject:
        return QStringLiteral("failed while creating the root object");
    case StartupRecord::Step::Initialize:
        return QStringLiteral("failed in initialize()");
    }
    return QString();
}

// "<part> <time>" for each part that was reached, joined by ", ".
QString parts(std::initializer_list<std::pair<QString, qint64>> list)
{
    QStringList texts;
    for (const auto& [label, ns] : list) {
        if (ns >= 0)
            texts.append(label + QLatin1Char(' ') + milliseconds(ns));
    }
    return texts.join(QStringLiteral(", "));
}

void logStartup(const StartupRecord& record)
{
    for (const StartupRecord::Plugin& plugin : record.plugins) {
        const qint64 ns = pluginNs(plugin);
        QString line = plugin.name + QStringLiteral(": ") + milliseconds(ns) + QStringLiteral(", ")
            + share(ns, record.totalNs) + QStringLiteral(" (")
            + parts({ { QStringLiteral("library"), plugin.libraryNs },
                      { QStringLiteral("root object"), plugin.rootObjectNs },
                      { QStringLiteral("initialize()"), plugin.initializeNs } })
            + QLatin1Char(')');
        if (plugin.failedStep != StartupRecord::Step::None)
            line += QStringLiteral(", ") + failure(plugin.failedStep);
        qCDebug(lcStartup).noquote() << line;
    }
    qint64 loadingNs = 0;
    for (const StartupRecord::Plugin& plugin : record.plugins)
        loadingNs += pluginNs(plugin);
    const QString plugins = QString::number(record.plugins.size())
        + (record.plugins.size() == 1 ? QStringLiteral(" plugin") : QStringLiteral(" plugins"));
    qCDebug(lcStartup).noquote() << QStringLiteral("Total: ") + milliseconds(record.totalNs)
            + (record.succeeded ? QString() : QStringLiteral(", failed")) + QStringLiteral(" (")
            + parts({ { QStringLiteral("discovery"), record.discoveryNs },
                      { QStringLiteral("ordering"), record.orderingNs },
                      { plugins, record.orderingNs >= 0 ? loadingNs : -1 },
                      { QStringLiteral("plugins model"), record.modelNs } })
            + QLatin1Char(')');
}

void logShutdown(const StartupRecord& record)
{
    for (const StartupRecord::Unload& unload : record.unloads)
        qCDebug(lcStartup).noquote() << QStringLiteral("Unloaded ") + unload.name
                + QStringLiteral(": ") + milliseconds(unload.ns);
    qCDebug(lcStartup).noquote() << QStringLiteral("Shutdown total: ")
            + milliseconds(record.shutdownNs);
}

} // namespace

StartupRecord lastStartupRecord()
{
    return storedRecord();
}

StartupRecorder::StartupRecorder()
    : m_started(Clock::now())
    , m_lap(m_started)
{
    m_record.recorded = true;
}

StartupRecorder::~StartupRecorder()
{
    m_record.totalNs = nanoseconds(Clock::now() - m_started);
    // A new start-up makes the last shutdown() one of an earlier run.
    storedRecord() = m_record;
    if (lcStartup().isDebugEnabled())
        logStartup(m_record);
}

void StartupRecorder::discovered()
{
    const Clock::time_point now = Clock::now();
    m_record.discoveryNs = nanoseconds(now - m_lap);
    m_lap = now;
}

void StartupRecorder::ordered()
{
    const Clock::time_point now = Clock::now();
    m_record.orderingNs = nanoseconds(now - m_lap);
    m_lap = now;
}

void StartupRecorder::loading(const QString& name, const QString& fileName)
{
    StartupRecord::Plugin plugin;
    plugin.name = name;
    plugin.fileName = fileName;
    m_record.plugins.append(plugin);
    m_step = LoadStep::Finished;
    m_lastStep = LoadStep::Finished;
}

void StartupRecorder::loadFailed()
{
    StartupRecord::Plugin& plugin = m_record.plugins.last();
    switch (m_lastStep) {
    case LoadStep::Library:
        plugin.failedStep = StartupRecord::Step::Library;
        break;
    case LoadStep::RootObject:
        plugin.failedStep = StartupRecord::Step::RootObject;
        break;
    case LoadStep::Initialize:
    case LoadStep::Finished:
        plugin.failedStep = StartupRecord::Step::Initialize;
        break;
    }
}

void StartupRecorder::modelBuilt()
{
    m_record.modelNs = nanoseconds(Clock::now() - m_lap);
    m_record.succeeded = true;
}

void StartupRecorder::stepEntered(const PluginLoader& plugin, LoadStep step)
{
    Q_UNUSED(plugin)
    // A load() that loadPlugins() did not announce has no entry to be timed in.
    if (m_record.plugins.isEmpty())
        return;
    const Clock::time_point now = Clock::now();
    StartupRecord::Plugin& current = m_record.plugins.last();
    const qint64 ns = nanoseconds(now - m_lap);
    switch (m_step) {
    case LoadStep::Library:
        current.libraryNs = ns;
        break;
    case LoadStep::RootObject:
        current.rootObjectNs = ns;
        break;
    case LoadStep::Initialize:
        current.initializeNs = ns;
        break;
    case LoadStep::Finished:
        break;
    }
    m_lap = now;
    if (step == LoadStep::Finished)
        m_lastStep = m_step;
    m_step = step;
}

ShutdownRecorder::ShutdownRecorder()
    : m_started(Clock::now())
    , m_lap(m_started)
{
}

ShutdownRecorder::~ShutdownRecorder()
{
    StartupRecord& record = storedRecord();
    record.shutDown = true;
    record.unloads = m_unloads;
    record.shutdownNs = nanoseconds(Clock::now() - m_started);
    if (lcStartup().isDebugEnabled())
        logShutdown(record);
}

void ShutdownRecorder::unloading(const QString& name)
{
    m_lap = Clock::now();
    m_unloads.append({ name, -1 });
}

void ShutdownRecorder::unloaded()
{
    m_unloads.last().ns = nanoseconds(Clock::now() - m_lap);
}

} // namespace Zelvane
