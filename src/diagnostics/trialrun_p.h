#pragma once

// Internal to the Diagnostics component: never installed.

#include "diagnostics/trialwatch_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Zelvane {

// The trial's words, for both the watcher and its runs, in a context of their own so that
// a translator finds them by the class they belong to; the "QObject" context holds the
// library's own texts, which hosts translate themselves.
class TrialTexts
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::TrialWatch)
};

// One run of the child: the plan it announced and what each plugin of it did.
struct TrialRun
{
    QList<TrialPlugin> plan;
    QList<TrialPlugin> dropped;
    qint64 startUs = -1; // loadPlugins() called, on the child's clock (the same clock)
    bool ended = false; // loadPlugins() returned
    qint64 endUs = -1; // when it returned, relative to startUs
    bool endedOk = false;
    QString endError;
    bool shutDown = false; // shutdown() returned
    QString failure; // the child itself could not run
};

// Starts the trial helper once over the watch's folder, with the plugins of switchedOff
// switched off, and follows it line by line until it ends, dies or makes no progress
// within the timeout. TrialWatch::run() merges the runs into one report.
TrialRun runTrialOnce(const TrialWatch& watch, const QStringList& switchedOff);

} // namespace Zelvane
