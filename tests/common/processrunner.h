#pragma once

// Running one of the project's programs as its users run it, for the tests of the
// tools and the demo: arguments in, exit code and both output streams out.

#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ZelvaneTest {

struct ProcessResult
{
    int exitCode = -1; // -1 also when the program crashed or did not finish in time
    QString out;
    QString err;
};

// Starts program and waits up to a minute for it. An empty environment means the
// test's own.
inline ProcessResult runProcess(const QString& program, const QStringList& arguments,
                                const QProcessEnvironment& environment = {})
{
    QProcess process;
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
        return {};
    return { process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
             QString::fromUtf8(process.readAllStandardOutput()),
             QString::fromUtf8(process.readAllStandardError()) };
}

} // namespace ZelvaneTest
