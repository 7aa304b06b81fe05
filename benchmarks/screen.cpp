// zelvane-bench-screen: the Widgets plugin settings screen over a large plugin folder.
//
//   zelvane-bench-screen [--quick] [--plugins N] [--repetitions N] [--output DIR]
//
// Writes a folder of N plugins (1,000 by default; PluginFactory::writeScreen()): names in
// Latin, Arabic, CJK and emoji, one plugin in ten of another category, junk files, and
// one plugin with a 100 KB description and 5,000 dependencies. Loads it, opens a
// PluginsWidget over it and measures, in that one process, what a user waits for:
//
//   tick      setData() of a check state through the controller's model, and the
//             screen's refresh that follows (the queued reread, the lists, the groups)
//   details   the details pane of another plugin, laid out
//   filter    typing one more letter in the filter field
//
// Prints the median and minimum of each over the repetitions; it asserts nothing. The
// screen aims at 50 ms for each at 1,000 plugins.

#include "pluginfactory.h"
#include "statistics.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>
#include <zelvane/widgets/pluginswidget.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QLoggingCategory>
#include <QtCore/QSettings>
#include <QtCore/QTextStream>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

const QString benchIid = QStringLiteral("org.zelvane.Bench/1.0");

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

// Runs step, then whatever it posted (a queued refresh, the layout, the painting), and
// returns the time both took, in milliseconds.
double measure(const std::function<void()>& step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    QCoreApplication::processEvents();
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
QList<double> tickRepeatedly(Zelvane::PluginsModel* model, const QString& tickedName,
                             int repetitions)
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
        ticks.append(measure([&] {
            changed
                = model->setData(ticked, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
        }));
        if (!changed)
            qFatal("the model refused to tick %s", qPrintable(tickedName));
    }
    return ticks;
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures the plugin settings screen over a large plugin folder."));
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
                       QStringLiteral("dir"), QStringLiteral("bench-screen") });
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
        std::fprintf(stderr, "zelvane-bench-screen: %s\n", qPrintable(factory.error()));
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
    out() << "zelvane-bench-screen: " << count << " plugins, " << repetitions << " repetitions, Qt "
          << qVersion() << Qt::endl;

    // The junk files each cost a debug line, as they would in any host.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    QElapsedTimer timer;
    timer.start();
    if (!controller->loadPlugins(QDir(dir))) {
        std::fprintf(stderr, "zelvane-bench-screen: %s\n", qPrintable(controller->errorString()));
        return 1;
    }
    print(QStringLiteral("loadPlugins (for reference)"), { timer.nsecsElapsed() / 1e6 });

    Zelvane::PluginsWidget widget;
    widget.resize(960, 640);
    print(QStringLiteral("open the screen: setPluginDirectory, show"), { measure([&] {
              widget.setPluginDirectory(QDir(dir));
              widget.show();
          }) });

    // Off, then on again: a plugin that the huge one needs, so the rule clears that one
    // too, and every other row is read again after the reset. The reset ends every index
    // into the model, so each repetition looks its row up again.
    Zelvane::PluginsModel* model = widget.model();
    const QString tickedName = folder.extensions.value(folder.extensions.size() / 2);
    const QList<double> ticks = tickRepeatedly(model, tickedName, repetitions);
    print(QStringLiteral("tick: setData of a check state, the screen's refresh"), ticks);

    QList<double> plain;
    QList<double> huge;
    for (int rep = 0; rep < repetitions; ++rep) {
        const QString name = folder.extensions.value(rep % folder.extensions.size());
        plain.append(measure([&] { widget.setCurrentPlugin(name); }));
        huge.append(measure([&] { widget.setCurrentPlugin(folder.huge); }));
    }
    print(QStringLiteral("details: a plugin"), plain);
    print(QStringLiteral("details: 5,000 dependencies, a 100 KB description"), huge);
    // The large plugin stays in the details pane: every tick explains it again.
    print(QStringLiteral("tick, with the large plugin's details shown"),
          tickRepeatedly(model, tickedName, repetitions));

    QList<double> filter;
    const QString word = PluginFactory::scriptName(1).left(3);
    for (int rep = 0; rep < repetitions; ++rep) {
        widget.setFilterText(QString());
        QCoreApplication::processEvents();
        filter.append(measure([&] { widget.setFilterText(word); }));
    }
    print(QStringLiteral("filter: typing a word"), filter);

    widget.hide();
    controller->shutdown();
    controller->setSettings(nullptr);
    return 0;
}
