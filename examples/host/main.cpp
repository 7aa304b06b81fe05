// zelvane-demo: a Qt Widgets host of the example document editor plugins. The editor
// on screen is the plugins' work: the core plugin makes the window, the extensions
// add their commands to it. The host adds the plugins screen and About plugins.
//
// The start-up is the one every Zelvane host follows: controller, IID, command line
// (with the options that the plugins declare), settings, arguments, loadPlugins(), and
// shutdown() before the end.

#include "loadtracker.h"
#include "problemplugins.h"
#include "safestartcheck.h"
#include "screens.h"
#ifdef ZELVANE_DEMO_QML
#include <QtQuick/QQuickWindow>
#endif

#include <zelvane/diagnostics/pluginbisect.h>
#include <zelvane/diagnostics/safestart.h>
#include <zelvane/diagnostics/translations.h>
#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginscaterogies.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLibraryInfo>
#include <QtCore/QProcess>
#include <QtCore/QSettings>
#include <QtCore/QTextStream>
#include <QtCore/QTranslator>
#include <QtGui/QImage>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <algorithm>
#include <cstring>
#include <memory>
#include <tuple>

namespace {

const QString pluginIID = QStringLiteral("org.zelvane.DocumentEditor/1.0");

// --list, --screenshot and --help need no display: they run on the offscreen platform,
// which also makes the screenshots the same on every machine.
bool headlessRequested(int argc, char* argv[])
{
    for (int i = 1; i < argc; ++i) {
        for (const char* option : { "--list", "--screenshot", "--help", "--help-all", "-h" }) {
            if (std::strcmp(argv[i], option) == 0)
                return true;
        }
        if (std::strncmp(argv[i], "--screenshot=", 13) == 0)
            return true;
    }
    return false;
}

QString joined(const QStringList& lines)
{
    return lines.isEmpty()
        ? QStringLiteral("  (none)\n")
        : QStringLiteral("  ") + lines.join(QStringLiteral("\n  ")) + QLatin1Char('\n');
}

// The load order, the plugins that are off or were left out, the pool and any error.
void printList(QTextStream& out, const QDir& dir, const QString& settingsFile,
               const ZelvaneDemo::LoadTracker& tracker, bool loaded)
{
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    out << "Plugins: " << dir.absolutePath() << '\n';
    out << "Settings: " << settingsFile << '\n';

    QStringList order;
    for (const QString& name : tracker.loadOrder())
        order.append(QStringLiteral("%1. %2").arg(order.size() + 1).arg(name));
    out << "Load order:\n" << joined(order);

    if (!loaded) {
        out << "Error: " << controller->errorString() << '\n';
        return;
    }

    // A ticked row that did not load is a second core plugin or a plugin whose
    // dependencies could not be met; the model cannot say which of the latter, the
    // inspector can. Core plugins come first, then the rest by name: the model's order
    // within a category follows the file system's listing, which differs between machines.
    struct Row
    {
        bool extension;
        QString name;
        bool checked;
        bool operator<(const Row& other) const
        {
            return std::tie(extension, name) < std::tie(other.extension, other.name);
        }
    };
    Zelvane::PluginsCaterogies categories(nullptr);
    const Zelvane::PluginsModel* model = controller->pluginsModel();
    QList<Row> rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        rows.append({ index.data(Zelvane::PluginsModel::CategoryRole).toString()
                          != categories.corePluginCategoryKey(),
                      index.data(Zelvane::PluginsModel::NameRole).toString(),
                      index.data(Zelvane::PluginsModel::CheckedRole).toBool() });
    }
    std::sort(rows.begin(), rows.end());
    QStringList disabled;
    QStringList skipped;
    for (const Row& row : std::as_const(rows)) {
        if (tracker.isLoaded(row.name))
            continue;
        if (!row.checked)
            disabled.append(row.name);
        else if (!row.extension)
            skipped.append(QObject::tr("%1: only one core plugin is loaded").arg(row.name));
        else
            skipped.append(QObject::tr("%1: its dependencies cannot be met "
                                       "(zelvane-inspect tells why)")
                               .arg(row.name));
    }
    out << "Disabled:\n" << joined(disabled);
    out << "Skipped:\n" << joined(skipped);

    QStringList objects;
    for (QObject* obj : controller->pool()->allObjects()) {
        if (!obj)
            continue;
        QString line = tracker.publisher(obj);
        line += (line.isEmpty() ? QString() : QStringLiteral(": "))
            + QString::fromLatin1(obj->metaObject()->className());
        if (!obj->objectName().isEmpty())
            line += QStringLiteral(" \"%1\"").arg(obj->objectName());
        objects.append(line);
    }
    out << "Objects in the pool:\n" << joined(objects);
}

// The screens that --show names.
const QMap<QString, ZelvaneDemo::Screen> screenNames {
    { QStringLiteral("editor"), ZelvaneDemo::Screen::Editor },
    { QStringLiteral("file-menu"), ZelvaneDemo::Screen::FileMenu },
    { QStringLiteral("plugins"), ZelvaneDemo::Screen::Plugins },
    { QStringLiteral("about"), ZelvaneDemo::Screen::About },
};

} // namespace

int main(int argc, char* argv[])
{
    const bool headless = headlessRequested(argc, argv);
    if (headless)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Zelvane"));
    QApplication::setApplicationName(QStringLiteral("zelvane-demo"));
    // The plugin screens follow the system's language (LANGUAGE=de, LANG=de_DE.UTF-8);
    // without a catalogue for it they stay English. Qt's own texts, such as the
    // dialog's standard Close button, come from Qt's catalogue (Debian:
    // qt6-translations-l10n), when it is installed.
    Zelvane::installTranslations();
    auto* qtTranslator = new QTranslator(&app);
    if (qtTranslator->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                           QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(qtTranslator);
#ifdef ZELVANE_DEMO_QML
    // The offscreen platform has no GPU context; Qt Quick's software renderer draws
    // the page there.
    if (headless)
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
#endif

    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(pluginIID);

    // The plugins' own options depend on the plugin folder, which is itself an option:
    // read it first, leniently, then build the real parser.
    const QCommandLineOption pluginsOption(
        QStringLiteral("plugins"),
        QObject::tr("Load the plugins in DIR (default: the example plugins, %1).")
            .arg(QStringLiteral(ZELVANE_DEMO_PLUGIN_DIR)),
        QStringLiteral("DIR"), QStringLiteral(ZELVANE_DEMO_PLUGIN_DIR));
    QCommandLineParser folderParser;
    folderParser.addOption(pluginsOption);
    folderParser.parse(QCoreApplication::arguments());
    const QDir pluginDir(folderParser.value(pluginsOption));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QObject::tr("A small document editor made of the Zelvane example plugins."));
    parser.addHelpOption();
    const QCommandLineOption settingsOption(
        QStringLiteral("settings"),
        QObject::tr("Keep the plugin selection in the INI file FILE (default: %1).")
            .arg(QSettings(QSettings::IniFormat, QSettings::UserScope,
                           QCoreApplication::organizationName(),
                           QCoreApplication::applicationName())
                     .fileName()),
        QStringLiteral("FILE"));
    const QCommandLineOption listOption(
        QStringLiteral("list"),
        QObject::tr("Print the load order, the disabled and skipped plugins and any error, "
                    "then exit."));
    const QCommandLineOption showOption(
        QStringLiteral("show"),
        QObject::tr("Open SCREEN on start: editor (the default), file-menu (its File menu), "
                    "plugins (the plugins screen) or about (About plugins)."),
        QStringLiteral("SCREEN"), QStringLiteral("editor"));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        QObject::tr("Render the screen that --show names to the PNG file FILE, then exit."),
        QStringLiteral("FILE"));
    const QCommandLineOption selectOption(
        QStringLiteral("select"),
        QObject::tr("Show the details of plugin NAME on the plugins screen."),
        QStringLiteral("NAME"));
    const QCommandLineOption qmlOption(
        QStringLiteral("qml"), QObject::tr("Use the QML plugins page instead of the dialog."));
    parser.addOptions({ pluginsOption, settingsOption, listOption, showOption, screenshotOption,
                        selectOption, qmlOption });
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QObject::tr("Documents to open (with the Documents plugin)."),
                                 QStringLiteral("[FILE...]"));

    const QList<QCommandLineOption> pluginOptions = controller->pluginsOptions(pluginDir);
    for (const QCommandLineOption& option : pluginOptions) {
        if (!parser.addOption(option))
            qWarning().noquote() << QObject::tr("zelvane-demo: two plugins declare the option --%1")
                                        .arg(option.names().constFirst());
    }
    parser.process(app);
    if (!screenNames.contains(parser.value(showOption))) {
        QTextStream(stderr) << "zelvane-demo: "
                            << QObject::tr(
                                   "--show takes editor, file-menu, plugins or about, not %1")
                                   .arg(parser.value(showOption))
                            << Qt::endl;
        return 2;
    }
    const ZelvaneDemo::Screen screen = screenNames.value(parser.value(showOption));

    // Every plugin receives the whole map: the plugin options given on the command
    // line, with their values; a switch has an empty value.
    QMap<QString, QString> arguments;
    for (const QCommandLineOption& option : pluginOptions) {
        const QString name = option.names().constFirst();
        if (parser.isSet(name))
            arguments.insert(name, parser.value(name));
    }

    std::unique_ptr<QSettings> settings = parser.isSet(settingsOption)
        ? std::make_unique<QSettings>(parser.value(settingsOption), QSettings::IniFormat)
        : std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                      QCoreApplication::organizationName(),
                                      QCoreApplication::applicationName());
    controller->setSettings(settings.get());
    // The trouble chosen in Help > Problem Plugin, for the Troublemaker example plugin.
    arguments = ZelvaneDemo::ProblemPlugins::withTrouble(arguments, *settings);
    controller->setArguments(arguments);

    // A start that died while loading the plugins left its mark beside the settings: the
    // plugins that take the demo down are found in a child process and switched off.
    Zelvane::SafeStart safeStart(settings.get());
    ZelvaneDemo::checkPreviousStart(safeStart, pluginDir, arguments, headless);
    safeStart.begin();
    // A plugin bisect (Help > Find a Problem Plugin…) goes on across restarts; a start
    // under one of its steps that died puts the user's own selection back.
    Zelvane::PluginBisect bisect(settings.get());
    if (bisect.beginStart() == Zelvane::PluginBisect::State::Interrupted)
        QTextStream(stderr) << "zelvane-demo: " << bisect.statusText() << Qt::endl;

    ZelvaneDemo::LoadTracker tracker(pluginDir, pluginIID, controller->pool());
    const bool loaded = controller->loadPlugins(pluginDir);
    tracker.finish();
    safeStart.finish();
    bisect.started();
    const QString settingsFile = QFileInfo(settings->fileName()).absoluteFilePath();

    int status = 0;
    bool restart = false;
    if (parser.isSet(listOption)) {
        QTextStream out(stdout);
        printList(out, pluginDir, settingsFile, tracker, loaded);
    }
    if (!loaded) {
        QTextStream(stderr) << "zelvane-demo: " << controller->errorString() << Qt::endl;
        if (!headless)
            QMessageBox::critical(
                nullptr, QObject::tr("Zelvane demo"),
                QObject::tr("The plugins could not be loaded:\n%1").arg(controller->errorString()));
        status = 1;
    } else if (!parser.isSet(listOption) || parser.isSet(screenshotOption)) {
        // The host's windows go before the plugins that made the editor.
        ZelvaneDemo::Screens screens(pluginDir, &tracker, settingsFile, parser.isSet(qmlOption));
        screens.setSelectedPlugin(parser.value(selectOption));
        QString error;
        if (!screens.openFiles(parser.positionalArguments(), &error)) {
            QTextStream(stderr) << "zelvane-demo: " << error << Qt::endl;
            status = 1;
        } else if (parser.isSet(screenshotOption)) {
            if (!screens.screenshot(screen, parser.value(screenshotOption), &error)) {
                QTextStream(stderr) << "zelvane-demo: " << error << Qt::endl;
                status = 1;
            }
        } else if (!headless) {
            screens.show(screen);
            // The user restarted for a step of the bisect: its question comes first.
            if (bisect.state() != Zelvane::PluginBisect::State::Idle)
                screens.showPluginBisect();
            status = app.exec();
            restart = screens.restartRequested();
        }
    }

    // Plugins go before the application object and the settings they may still use. A
    // plugin can take the demo down as it quits, too: the safe-start mark stands over
    // shutdown() as well, and the next start's trial, which runs shutdown() too, names it.
    safeStart.begin();
    controller->shutdown();
    safeStart.finish();
    if (restart)
        QProcess::startDetached(QCoreApplication::applicationFilePath(),
                                QCoreApplication::arguments().mid(1));
    return status;
}
