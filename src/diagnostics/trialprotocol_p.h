#pragma once

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Zelvane API. It is shared by the trial helper
// (zelvane-trial) and the side that watches it (SafeStart, zelvane-inspect --trial), and
// may change from version to version without notice, or even be removed.
//

#include "plugin/loadsteps_p.h"

#include <QtCore/QLatin1String>
#include <QtCore/QString>

#include <chrono>
#include <optional>

namespace Zelvane {

// The wire protocol between zelvane-trial and its watcher: one compact JSON object per
// line on the helper's own standard output, written in one call, so that a line is
// complete or absent when a plugin takes the process down:
//
//   {"event":"hello","us":T}                             the process runs
//   {"event":"plan","plugin":I,"name":N,"file":F}       one per plugin, in load order
//   {"event":"dropped","name":N,"file":F}               selected, dropped by the ordering
//   {"event":"start","us":T}                            loadPlugins() is called
//   {"event":"step","plugin":I,"step":S,"us":T}         S: library, root, initialize
//   {"event":"finished","plugin":I,"ok":B,"us":T[,"error":E]}
//   {"event":"end","ok":B,"us":T[,"error":E]}           loadPlugins() returned
//
// and, when the helper is asked to (--shutdown), PluginController::shutdown() after it:
//
//   {"event":"unloading","plugin":I,"us":T}             before each unload, in its order
//   {"event":"shutdown","us":T}                         shutdown() returned
//
// T is trialClockUs(): both processes read the same monotonic clock, so that the watcher
// can time a step that never finished. Both sides spell the keys from here only.
namespace TrialProtocol {

constexpr QLatin1String eventKey("event");
constexpr QLatin1String usKey("us");
constexpr QLatin1String pluginKey("plugin");
constexpr QLatin1String nameKey("name");
constexpr QLatin1String fileKey("file");
constexpr QLatin1String stepKey("step");
constexpr QLatin1String okKey("ok");
constexpr QLatin1String errorKey("error");

constexpr QLatin1String helloEvent("hello");
constexpr QLatin1String planEvent("plan");
constexpr QLatin1String droppedEvent("dropped");
constexpr QLatin1String startEvent("start");
constexpr QLatin1String stepEvent("step");
constexpr QLatin1String finishedEvent("finished");
constexpr QLatin1String endEvent("end");
constexpr QLatin1String unloadingEvent("unloading");
constexpr QLatin1String shutdownEvent("shutdown");

// The name of a step on the wire; LoadStep::Finished is told by a "finished" event.
inline QString stepName(LoadStep step)
{
    switch (step) {
    case LoadStep::Library:
        return QStringLiteral("library");
    case LoadStep::RootObject:
        return QStringLiteral("root");
    case LoadStep::Initialize:
        return QStringLiteral("initialize");
    case LoadStep::Finished:
        break;
    }
    return QString();
}

inline std::optional<LoadStep> stepFromName(const QString& name)
{
    for (LoadStep step : { LoadStep::Library, LoadStep::RootObject, LoadStep::Initialize }) {
        if (name == stepName(step))
            return step;
    }
    return std::nullopt;
}

// Microseconds of CLOCK_MONOTONIC, the clock of every "us" on the wire.
inline qint64 trialClockUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace TrialProtocol

} // namespace Zelvane
