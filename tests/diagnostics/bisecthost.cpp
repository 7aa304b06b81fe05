// A host that dies while it starts under a plugin bisect: it marks the start as the
// bisect asks every start to, and aborts before it gets through.
//
// Usage: zt_bisecthost <settings file>

#include <zelvane/diagnostics/PluginBisect>

#include <QtCore/QCoreApplication>
#include <QtCore/QSettings>

#include <cstdlib>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2)
        return 2;
    QSettings settings(arguments.at(1), QSettings::IniFormat);
    Zelvane::PluginBisect bisect(&settings);
    if (bisect.beginStart() != Zelvane::PluginBisect::State::Testing)
        return 3;
    std::abort();
}
