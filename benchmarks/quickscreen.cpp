// zelvane-bench-quick-screen: the QML plugin settings page over a large plugin folder.
//
//   zelvane-bench-quick-screen [--quick] [--plugins N] [--repetitions N] [--output DIR]
//
// The same folder as zelvane-bench-screen (PluginFactory::writeScreen()): names in
// Latin, Arabic, CJK and emoji, one plugin in ten of another category, junk files, and
// one plugin with a 100 KB description and 5,000 dependencies. Loads it, shows the
// module's PluginsPage in a QQuickView and measures, in that one process, what a user
// waits for, each step with the events it posts and the frame that shows its result:
//
//   tick      setData() of a check state through the controller's model, and the
//             page's refresh that follows (Plugins.refresh(), the details, the lists)
//   details   the details of another plugin (the page's currentPlugin), laid out
//   filter    typing one more word in the filter field
//
// Prints the median and minimum of each over the repetitions; it asserts nothing. The
// page aims at 50 ms for each at 1,000 plugins, as the widget does.

#include "pluginfactory.h"
#include "statistics.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>
#include <zelvane/quick/qmlplugins.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSettings>
#include <QtCore/QTextStream>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickView>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace {

const QString benchIid = QStringLiteral("org.zelvane.Bench/1.0");

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

// Runs step, then whatever it posted (the queued refresh, the bindings it wakes), then
// renders a frame, which polishes and lays out the items first: the time of all, in
// milliseconds. Grabbing renders at once rather than at the platform's next vsync tick,
// which would add its wait to every figure.
double measure(QQuickView& view, const std::function<void()>& step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    QCoreApplication::processEvents();
    view.grabWindow();
    return timer.nsecsElapsed() / 1e6;
}

void print(const QString& title, const QList<double>& values)
{
    out() << QStringLiteral("%1  median %2 ms  min %3 ms")
                 .arg(title, -64)
                 .arg(median(values), 9, 'f', 3)
                 .arg(minimum(values), 0, 'f', 3)
          << Qt::endl;
}

// Ticks the named plugin off and on again, repetitions times; the times of each.
QList<double> tickRepeatedly(QQuickView& view, Zelvane::PluginsModel* model,
                             const QString& tickedName, int repetitions)
{
    QList<double> ticks;
    for (int rep = 0; rep < repetitions; ++rep) {
        const QModelIndexList found = model->match(
            model->index(0, 0), Zelvane::PluginsModel::NameRole, tickedName, 1, Qt::MatchExactly);
        if (found.isEmpty())
            qFatal("no row for %s", qPrintable(tickedName));
        const QModelIndex ticked = found.constFirst();
        const bool checked = ticked.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        bool changed = false;
        ticks.append(measure(view, [&] {
            changed
                = model->setData(ticked, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
        }));
        if (!changed)
            qFatal("the model refused to tick %s", qPrintable(tickedName));
    }
    return ticks;
}

// The page shows the details of the plugin named, or says why not.
void expectDetailsOf(QQuickItem* page, const QString& name)
{
    const QVariant current = page->property("current");
    const QString shown = current.value<QVariantMap>().value(QStringLiteral("name")).toString();
    if (shown != name)
        qFatal("the page shows \"%s\" rather than \"%s\"", qPrintable(shown), qPrintable(name));
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The software scene graph, as the Widgets screen paints with the raster engine: the
    // same on every machine, with or without a GPU.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
        qputenv("QT_QUICK_BACKEND", "software");
    QGuiApplication app(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures the QML plugin settings page over a large plugin folder."));
    parser.addHelpOption();
    parser.addOption({ QStringLiteral("quick"),
                       QStringLiteral("60 plugins and three repetitions: checks that it runs.") });
    parser.addOption({ QStringLiteral("plugins"),
                       QStringLiteral("Plugins in the folder (default 1000, at least 20)."),
                       QStringLiteral("n") });
    parser.addOption({ QStringLiteral("repetitions"),
                       QStringLiteral("Repetitions per figure (default 21)."),
                       QStringLiteral("n") });
    parser.addOption({ QStringLiteral("output"), QStringLiteral("Folder for the plugin files."),
                       QStringLiteral("dir"), QStringLiteral("bench-quick-screen") });
    parser.process(app);
    const bool quick = parser.isSet(QStringLiteral("quick"));
    const int count = parser.isSet(QStringLiteral("plugins"))
        ? std::max(20, parser.value(QStringLiteral("plugins")).toInt())
        : (quick ? 60 : 1000);
    const int repetitions = parser.isSet(QStringLiteral("repetitions"))
        ? std::max(1, parser.value(QStringLiteral("repetitions")).toInt())
        : (quick ? 3 : 21);

    const PluginFactory factory(QStringLiteral(ZELVANE_BENCH_TEMPLATE_DIR));
    if (!factory.error().isEmpty()) {
        std::fprintf(stderr, "zelvane-bench-quick-screen: %s\n", qPrintable(factory.error()));
        return 1;
    }
    const QDir output(QDir(parser.value(QStringLiteral("output"))).absolutePath());
    const QString dir = output.filePath(QStringLiteral("plugins"));
    QDir(dir).removeRecursively();
    const PluginFactory::ScreenFolder folder = factory.writeScreen(dir, count);

    auto* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(benchIid);
    QSettings settings(output.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    settings.clear();
    controller->setSettings(&settings);
    out() << "zelvane-bench-quick-screen: " << count << " plugins, " << repetitions
          << " repetitions, Qt " << qVersion() << Qt::endl;

    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    QElapsedTimer timer;
    timer.start();
    if (!controller->loadPlugins(QDir(dir))) {
        std::fprintf(stderr, "zelvane-bench-quick-screen: %s\n",
                     qPrintable(controller->errorString()));
        return 1;
    }
    print(QStringLiteral("loadPlugins (for reference)"), { timer.nsecsElapsed() / 1e6 });
    Zelvane::QmlPlugins::setDefaultPluginDirectory(QDir(dir));

    // The page as a host shows it: the module from the build tree, the page filling the
    // window.
    const QString source = output.filePath(QStringLiteral("page.qml"));
    QFile page(source);
    if (!page.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || page.write("import QtQuick\nimport Zelvane\n\nPluginsPage { }\n") < 0) {
        std::fprintf(stderr, "zelvane-bench-quick-screen: cannot write %s\n", qPrintable(source));
        return 1;
    }
    page.close();

    // Gone before the controller shuts down: the page holds its model.
    auto owner = std::make_unique<QQuickView>();
    QQuickView& view = *owner;
    view.engine()->addImportPath(QStringLiteral(ZELVANE_QML_DIR));
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(960, 640);
    print(QStringLiteral("open the page: setSource, show"), { measure(view, [&] {
              view.setSource(QUrl::fromLocalFile(source));
              view.show();
          }) });
    QQuickItem* root = view.rootObject();
    if (!root) {
        for (const QQmlError& error : view.errors())
            std::fprintf(stderr, "%s\n", qPrintable(error.toString()));
        return 1;
    }

    Zelvane::PluginsModel* model = controller->pluginsModel();
    const QString tickedName = folder.extensions.value(folder.extensions.size() / 2);
    const QList<double> ticks = tickRepeatedly(view, model, tickedName, repetitions);
    print(QStringLiteral("tick: setData of a check state, the page's refresh"), ticks);

    QList<double> plain;
    QList<double> huge;
    for (int rep = 0; rep < repetitions; ++rep) {
        const QString name = folder.extensions.value(rep % folder.extensions.size());
        plain.append(measure(view, [&] { root->setProperty("currentPlugin", name); }));
        expectDetailsOf(root, name);
        huge.append(measure(view, [&] { root->setProperty("currentPlugin", folder.huge); }));
        expectDetailsOf(root, folder.huge);
    }
    print(QStringLiteral("details: a plugin"), plain);
    print(QStringLiteral("details: 5,000 dependencies, a 100 KB description"), huge);
    // The large plugin stays in the details: every tick explains it again.
    print(QStringLiteral("tick, with the large plugin's details shown"),
          tickRepeatedly(view, model, tickedName, repetitions));
    expectDetailsOf(root, folder.huge);

    QList<double> filter;
    const QString word = PluginFactory::scriptName(1).left(3);
    for (int rep = 0; rep < repetitions; ++rep) {
        root->setProperty("filterText", QString());
        QCoreApplication::processEvents();
        filter.append(measure(view, [&] { root->setProperty("filterText", word); }));
    }
    print(QStringLiteral("filter: typing a word"), filter);

    owner.reset();
    controller->shutdown();
    controller->setSettings(nullptr);
    return 0;
}
