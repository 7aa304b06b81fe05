// zelvane-console-host: a Zelvane host's whole start-up and shut-down, in a console
// program, against the example plugins of a small document editor.
//
//   zelvane-console-host [--settings <file>] [plugin options...]
//
// The plugin selection is read from the INI file given with --settings (keys
// "plugin/<Name>"); without it, from a fresh temporary file, so every plugin starts
// as its metadata's "Default" says. The plugins log one line when they are
// initialised and one when they are unloaded.

#include <zelvane/ObjectPool>
#include <zelvane/PluginController>
#include <zelvane/PluginsModel>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QMap>
#include <QtCore/QMetaObject>
#include <QtCore/QSettings>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

namespace {

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

QObject* findPublished(Zelvane::ObjectPool* pool, const QString& objectName)
{
    const QList<QObject*> objects = pool->allObjects();
    for (QObject* object : objects) {
        if (object->objectName() == objectName)
            return object;
    }
    return nullptr;
}

void printArguments(const QMap<QString, QString>& arguments)
{
    QStringList given;
    for (auto it = arguments.cbegin(); it != arguments.cend(); ++it)
        given.append(it.value().isEmpty() ? it.key() : it.key() + QLatin1Char('=') + it.value());
    out() << "Plugin arguments: "
          << (given.isEmpty() ? QStringLiteral("none") : given.join(QLatin1Char(' '))) << Qt::endl;
}

// The selection screen's data, as text: "[x]" for a plugin that is switched on.
// Core plugins first, then extensions, each by name: the model itself keeps the order
// in which the file system happened to list the plugin files.
void printSelection(const Zelvane::PluginsModel* model)
{
    QMap<QString, QString> core;
    QMap<QString, QString> extensions;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        const QString name = index.data(Zelvane::PluginsModel::NameRole).toString();
        const bool checked = index.data(Zelvane::PluginsModel::CheckedRole).toBool();
        const QString line
            = QStringLiteral("  [%1] %2: %3")
                  .arg(checked ? QLatin1Char('x') : QLatin1Char(' '))
                  .arg(name, index.data(Zelvane::PluginsModel::DescriptionRole).toString());
        const bool isCore
            = index.data(Zelvane::PluginsModel::CategoryRole).toString() == QLatin1String("Core");
        (isCore ? core : extensions).insert(name, line);
    }
    out() << "Plugin selection:\n"
          << (core.values() + extensions.values()).join(QLatin1Char('\n')) << Qt::endl;
}

// Uses what the plugins published: a document through the document manager, the
// spell checker on it, and the commands the extensions added to the workbench.
void useThePlugins(Zelvane::ObjectPool* pool)
{
    const QString title = QStringLiteral("report");
    QObject* documents = findPublished(pool, QStringLiteral("documents"));
    if (!documents) {
        out() << "No document manager: the Documents plugin is switched off." << Qt::endl;
        return;
    }
    QMetaObject::invokeMethod(documents, "create", Q_ARG(QString, title),
                              Q_ARG(QString,
                                    QStringLiteral("The NASA report is ready, but teh "
                                                   "summary is not.")));
    QStringList words;
    QMetaObject::invokeMethod(documents, "words", Q_RETURN_ARG(QStringList, words),
                              Q_ARG(QString, title));
    out() << "Document \"" << title << "\": " << words.size() << " words" << Qt::endl;

    if (QObject* checker = findPublished(pool, QStringLiteral("spellChecker"))) {
        QStringList unknown;
        QMetaObject::invokeMethod(checker, "check", Q_RETURN_ARG(QStringList, unknown),
                                  Q_ARG(QString, title));
        out() << "Unknown words (" << checker->property("language").toString()
              << "): " << unknown.join(QStringLiteral(", ")) << Qt::endl;
    }
    if (QObject* workbench = findPublished(pool, QStringLiteral("workbench"))) {
        out() << workbench->property("title").toString() << ", commands: "
              << workbench->property("commands").toStringList().join(QStringLiteral(", "))
              << Qt::endl;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zelvane-console-host"));

    // 1. The controller, and the interface identifier that this host's plugins declare.
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(QStringLiteral(ZELVANE_EXAMPLE_IID));
    const QDir pluginDir(QStringLiteral(ZELVANE_EXAMPLE_PLUGIN_DIR));

    // 2. The command line: the host's own options and every option a plugin declares.
    QCommandLineParser parser;
    parser.setApplicationDescription(QObject::tr("Loads the example plugins of a document "
                                                 "editor, uses them and unloads them."));
    parser.addHelpOption();
    const QCommandLineOption settingsOption(QStringLiteral("settings"),
                                            QObject::tr("INI file with the plugin selection."),
                                            QStringLiteral("file"));
    parser.addOption(settingsOption);
    const QList<QCommandLineOption> pluginOptions = controller->pluginsOptions(pluginDir);
    parser.addOptions(pluginOptions);
    parser.process(app);

    // 3. The settings that hold the user's plugin selection.
    QTemporaryDir scratch;
    QSettings settings(parser.isSet(settingsOption)
                           ? parser.value(settingsOption)
                           : scratch.filePath(QStringLiteral("settings.ini")),
                       QSettings::IniFormat);
    controller->setSettings(&settings);

    // 4. The plugin arguments: the plugin options given on the command line. Every
    //    plugin receives the whole map; a switch counts by its presence.
    QMap<QString, QString> arguments;
    for (const QCommandLineOption& option : pluginOptions) {
        if (parser.isSet(option))
            arguments.insert(option.names().constFirst(),
                             option.valueName().isEmpty() ? QString() : parser.value(option));
    }
    controller->setArguments(arguments);
    printArguments(arguments);

    // 5. Load. On failure the plugins loaded before the failing one are still loaded.
    if (!controller->loadPlugins(pluginDir)) {
        out() << "Loading failed: " << controller->errorString() << Qt::endl;
        controller->shutdown();
        return 1;
    }

    // 6. Use: the published objects are listed in the order they were added, which is
    //    the order in which their plugins were initialised.
    out() << "Published objects:";
    const QList<QObject*> objects = controller->pool()->allObjects();
    for (QObject* object : objects)
        out() << ' ' << object->objectName();
    out() << Qt::endl;
    printSelection(controller->pluginsModel());
    useThePlugins(controller->pool());

    // 7. Unload, in the reverse of the load order, while the application still exists.
    out() << "Shutting down" << Qt::endl;
    controller->shutdown();
    return 0;
}
