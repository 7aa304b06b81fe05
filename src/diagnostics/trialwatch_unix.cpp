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

bool isOtherProcessRunning(qint64 pid)
{
    if (pid <= 0 || pid == qint64(::getpid()))
        return false;
    // EPERM: it runs, under another user.
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

} // namespace Zelvane
