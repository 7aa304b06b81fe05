// Shows PluginsPage of the installed QML module over a folder and prints what the Plugins
// singleton says about the plugin named on the command line: plugins/ IID file name.

#include <zelvane/PluginController>
#include <zelvane/quick/QmlPlugins>

#include <QtCore/QSettings>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

#include <cstdio>

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    if (argc != 5)
        return 2;
    QSettings settings(QString::fromLocal8Bit(argv[3]), QSettings::IniFormat);
    auto* controller = Zelvane::PluginController::instance();
    controller->setSettings(&settings);
    controller->setPluginIID(QString::fromLocal8Bit(argv[2]));
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    controller->loadPlugins(dir);
    Zelvane::QmlPlugins::setDefaultPluginDirectory(dir);

    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral(ZELVANE_QML_IMPORT_DIR));
    engine.loadData("import QtQuick\n"
                    "import Zelvane\n"
                    "Window { visible: true; width: 640; height: 400\n"
                    "    PluginsPage { anchors.fill: parent } }\n");
    if (engine.rootObjects().isEmpty())
        return 1;
    QCoreApplication::processEvents();
    const QVariantMap plugin = Zelvane::QmlPlugins::instance(&engine)
                                   ->details()
                                   .value(QString::fromLocal8Bit(argv[4]))
                                   .toMap();
    std::printf("qml: %s: %s\n", qPrintable(plugin.value(QStringLiteral("fileName")).toString()),
                qPrintable(plugin.value(QStringLiteral("stateText")).toString()));
    controller->shutdown();
    return 0;
}
