// A host that does nothing but start and stop: it gives the controller a settings file
// and the test plugins' IID, loads one folder's plugins and shuts them down. What it
// writes to standard error is what the library logs.
//
// Usage: zt_startuphost <plugin folder> <settings file>

#include <zelvane/plugincontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QSettings>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        return 2;
    QSettings settings(arguments.at(2), QSettings::IniFormat);
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setSettings(&settings);
    controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    const bool loaded = controller->loadPlugins(QDir(arguments.at(1)));
    controller->shutdown();
    return loaded ? 0 : 1;
}
