// The parts of the trial watcher that ask the operating system: signal names, the
// dynamic loader and process identifiers. POSIX (glibc) only, so kept apart from the
// portable rest, the way Qt keeps its _unix files.

#include "diagnostics/trialwatch_p.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Zelvane {

QString signalText(int signal)
{
    const char* abbreviation = sigabbrev_np(signal);
    const QString name = abbreviation ? QStringLiteral("SIG") + QString::fromLatin1(abbreviation)
                                      : QString::number(signal);
    return QStringLiteral("%1 (%2)").arg(name, QString::fromLocal8Bit(strsignal(signal)));
}

QString folderOfCode(const void* address)
{
    Dl_info info;
    if (!::dladdr(address, &info) || !info.dli_fname)
        return QString();
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
}

bool isProcessRunning(qint64 pid)
{
    // EPERM: it runs, under another user.
    return pid > 0 && (::kill(pid_t(pid), 0) == 0 || errno == EPERM);
}

bool isOtherProcessRunning(qint64 pid)
{
    return pid != qint64(::getpid()) && isProcessRunning(pid);
}

} // namespace Zelvane
