#include <zelvane/PluginController>
#include <zelvane/PluginsModel>

#include <QtCore/QCommandLineParser>
#include <QtCore/QSettings>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTableView>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    auto* plugins = Zelvane::PluginController::instance();
    QSettings settings(QStringLiteral("myeditor.ini"), QSettings::IniFormat);
    plugins->setSettings(&settings); // the user's selection: plugin/<Name>=true|false
    plugins->setPluginIID(QStringLiteral("org.example.MyEditor/1.0"));

    // The options that the plugins declare, and their values as the plugins' arguments.
    const QDir dir(QCoreApplication::applicationDirPath() + QStringLiteral("/plugins"));
    const QList<QCommandLineOption> options = plugins->pluginsOptions(dir);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions(options);
    parser.process(app);
    QMap<QString, QString> arguments;
    for (const QCommandLineOption& option : options) {
        if (parser.isSet(option))
            arguments.insert(option.names().constFirst(), parser.value(option));
    }
    plugins->setArguments(arguments);

    if (!plugins->loadPlugins(dir)) {
        qCritical("%s", qPrintable(plugins->errorString()));
        plugins->shutdown();
        return 1;
    }
    QTableView view; // the plugin settings screen; changes apply at the next start
    view.setModel(plugins->pluginsModel());
    view.show();
    const int status = app.exec();
    plugins->shutdown();
    return status;
}
