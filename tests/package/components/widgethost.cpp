// Shows the plugins dialog over a folder and prints what it says about the plugin named
// on the command line: plugins/ IID file name.

#include <zelvane/PluginController>
#include <zelvane/diagnostics/LoadDiagnostics>
#include <zelvane/widgets/PluginsDialog>
#include <zelvane/widgets/PluginsWidget>

#include <QtCore/QSettings>
#include <QtWidgets/QApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (argc != 5)
        return 2;
    QSettings settings(QString::fromLocal8Bit(argv[3]), QSettings::IniFormat);
    auto* controller = Zelvane::PluginController::instance();
    controller->setSettings(&settings);
    controller->setPluginIID(QString::fromLocal8Bit(argv[2]));
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    controller->loadPlugins(dir);

    Zelvane::PluginsDialog dialog(dir);
    dialog.show();
    QCoreApplication::processEvents();
    const Zelvane::PluginDiagnostic plugin
        = dialog.pluginsWidget()->diagnostics().plugin(QString::fromLocal8Bit(argv[4]));
    std::printf("widgets: %s: %s\n", qPrintable(plugin.fileName()), qPrintable(plugin.stateText()));
    controller->shutdown();
    return dialog.isVisible() ? 0 : 1;
}
