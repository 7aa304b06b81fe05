#include "figures.h"

#include "pluginfactory.h"

#include "controller/dependencyordering_p.h"
#include "controller/loadplan_p.h"
#include "stepbystepordering.h"

#include <zelvane/iplugin.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLoggingCategory>
#include <QtCore/QPluginLoader>
#include <QtCore/QSettings>
#include <QtGui/QStandardItemModel>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>

namespace {

const QString benchIid = QStringLiteral("org.zelvane.Bench/1.0");

QString armDir(const QString& dir, const QString& arm)
{
    return QDir(dir).filePath(arm);
}

// The load order that prepareFigure() wrote beside the plugins of one arm.
QStringList loadOrder(const QString& dir)
{
    QFile file(QDir(dir).filePath(QStringLiteral("../order-") + QDir(dir).dirName()
                                  + QStringLiteral(".txt")));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read the load order of %s", qPrintable(dir));
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

double elapsed(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed());
}

// ---- the library's arms (never inlined, so that a profiler can tell them apart) ----

Q_NEVER_INLINE void libraryOptions(const QString& dir)
{
    const QList<QCommandLineOption> options
        = Zelvane::PluginController::instance()->pluginsOptions(QDir(dir));
    if (options.isEmpty())
        qFatal("no options found in %s", qPrintable(dir));
}

Q_NEVER_INLINE void libraryLoad(const QString& dir)
{
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    if (!controller->loadPlugins(QDir(dir)))
        qFatal("loadPlugins failed: %s", qPrintable(controller->errorString()));
    controller->shutdown();
}

// ---- the raw arms: the same work with Qt alone --------------------------------------

Q_NEVER_INLINE void rawOptions(const QString& dir)
{
    const QDir folder(dir);
    const QStringList names
        = folder.entryList({ QStringLiteral("*.so") }, QDir::Files, QDir::NoSort);
    QList<QCommandLineOption> options;
    for (const QString& name : names) {
        const QPluginLoader loader(folder.absoluteFilePath(name));
        const QJsonObject metaData = loader.metaData();
        if (metaData.value(QLatin1String("IID")).toString() != benchIid)
            continue;
        const QJsonArray arguments = metaData.value(QLatin1String("MetaData"))
                                         .toObject()
                                         .value(QLatin1String("Arguments"))
                                         .toArray();
        for (const QJsonValue& value : arguments) {
            const QJsonObject argument = value.toObject();
            options.append(QCommandLineOption(
                argument.value(QLatin1String("Name")).toString(),
                argument.value(QLatin1String("Description")).toString(),
                argument.value(QLatin1String("Parameter")).toString(), QString()));
        }
    }
    if (options.isEmpty())
        qFatal("no options found in %s", qPrintable(dir));
}

using Loaders = std::vector<std::unique_ptr<QPluginLoader>>;

// kept, when given, receives the unloaded loaders instead of destroying them: the warm
// mode keeps them as the controller keeps its handles after shutdown(), so that both
// arms leave Qt's library records in the same state for the next repetition.
Q_NEVER_INLINE void rawLoad(const QStringList& paths, Loaders* kept = nullptr)
{
    Loaders loaders;
    loaders.reserve(size_t(paths.size()));
    const QMap<QString, QString> arguments;
    for (const QString& path : paths) {
        auto loader = std::make_unique<QPluginLoader>(path);
        if (!loader->load())
            qFatal("cannot load %s: %s", qPrintable(path), qPrintable(loader->errorString()));
        auto* plugin = qobject_cast<Zelvane::IPlugin*>(loader->instance());
        QString error;
        if (!plugin || !plugin->initialize(arguments, &error))
            qFatal("cannot start %s", qPrintable(path));
        loaders.push_back(std::move(loader));
    }
    for (auto loader = loaders.rbegin(); loader != loaders.rend(); ++loader)
        (*loader)->unload();
    if (kept)
        std::move(loaders.begin(), loaders.end(), std::back_inserter(*kept));
}

// ---- the ordering, on plain records ---------------------------------------------------

struct Record
{
    QString m_name;
    QStringList m_dependencies;

    QString name() const { return m_name; }
    QStringList dependencies() const { return m_dependencies; }
    bool operator==(const QString& name) const { return m_name == name; }
};

QList<Record> chainRecords(int count, bool reverse)
{
    QList<Record> records;
    records.reserve(count);
    for (int link = 0; link < count; ++link) {
        Record record { PluginFactory::pluginName(link), {} };
        if (link > 0)
            record.m_dependencies.append(PluginFactory::pluginName(link - 1));
        records.append(record);
    }
    if (reverse)
        std::reverse(records.begin(), records.end());
    return records;
}

// ---- memory ----------------------------------------------------------------------------

qint64 statusField(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return -1;
}

// The peak resident size added by work: the kernel's high-water mark is reset to the
// current size first (clear_refs 5), so whatever the set-up used does not count.
double peakAdded(const std::function<void()>& work)
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (!clear.open(QIODevice::WriteOnly) || clear.write("5") != 1)
        qFatal("cannot reset the peak resident size");
    clear.close();
    const qint64 before = statusField("VmRSS:");
    work();
    return double(statusField("VmHWM:") - before);
}

} // namespace

QList<Figure> figures(bool quick)
{
    const auto scale = [quick](int full, int small) {
        return quick ? small : full;
    };
    const QString rawLoadText
        = QStringLiteral("QPluginLoader load/instance/qobject_cast/initialize/unload");
    const QString rawOptionsText
        = QStringLiteral("entryList + QPluginLoader::metaData() + QCommandLineOption");
    QList<Figure> list;
    const auto add
        = [&list](const QString& key, const QString& title, Figure::Kind kind,
                  Figure::Layout layout, int count, const QString& baseline, bool hasRaw = true) {
              list.append(Figure { key, title, kind, layout, count, hasRaw, baseline });
          };

    // The figures of the start-up goals come first.
    add(QStringLiteral("options-%1").arg(scale(1000, 20)), QStringLiteral("pluginsOptions"),
        Figure::Kind::Options, Figure::Layout::Flat, scale(1000, 20), rawOptionsText);
    add(QStringLiteral("load-%1").arg(scale(100, 10)), QStringLiteral("loadPlugins + shutdown"),
        Figure::Kind::Load, Figure::Layout::Flat, scale(100, 10), rawLoadText);
    add(QStringLiteral("chain-%1").arg(scale(500, 20)),
        QStringLiteral("loadPlugins + shutdown, chain in dependency order"), Figure::Kind::Load,
        Figure::Layout::Chain, scale(500, 20), rawLoadText);
    add(QStringLiteral("chain-reverse-%1").arg(scale(500, 20)),
        QStringLiteral("loadPlugins + shutdown, chain in reverse order"), Figure::Kind::Load,
        Figure::Layout::ReverseChain, scale(500, 20), rawLoadText);
    add(QStringLiteral("rich-options-%1").arg(scale(200, 10)),
        QStringLiteral("pluginsOptions, real-world metadata"), Figure::Kind::Options,
        Figure::Layout::Rich, scale(200, 10), rawOptionsText);
    add(QStringLiteral("memory-options-%1").arg(scale(1000, 20)),
        QStringLiteral("peak memory added by pluginsOptions"), Figure::Kind::Memory,
        Figure::Layout::Flat, scale(1000, 20), rawOptionsText);

    // The ordering alone; the step-by-step form is cubic in the worst order and is
    // left out where it would take minutes.
    for (int count : { scale(100, 10), scale(1000, 30), scale(10000, 50) }) {
        for (bool reverse : { false, true }) {
            add(QStringLiteral("ordering-%1-%2")
                    .arg(reverse ? QStringLiteral("worst") : QStringLiteral("best"))
                    .arg(count),
                QStringLiteral("ordering alone, %1")
                    .arg(reverse ? QStringLiteral("reverse chain")
                                 : QStringLiteral("chain in order")),
                Figure::Kind::Ordering,
                reverse ? Figure::Layout::ReverseChain : Figure::Layout::Chain, count,
                QStringLiteral("the step-by-step ordering"), !(reverse && count > 2000));
        }
    }

    add(QStringLiteral("model-%1").arg(scale(1000, 20)),
        QStringLiteral("building the PluginsModel"), Figure::Kind::Model, Figure::Layout::Flat,
        scale(1000, 20), QStringLiteral("QStandardItemModel of check boxes read from QSettings"));
    add(QStringLiteral("tick-%1").arg(scale(1000, 20)),
        QStringLiteral("one tick along a chain + settings sync"), Figure::Kind::Tick,
        Figure::Layout::Chain, scale(1000, 20),
        QStringLiteral("QSettings::setValue per plugin + sync"));

    // The start-up profile is recorded at every loadPlugins(); formatted and written only
    // when its category is on. Both arms are the library's: off is what every host pays.
    add(QStringLiteral("profile-%1").arg(scale(100, 10)),
        QStringLiteral("loadPlugins + shutdown, zelvane.startup off"), Figure::Kind::Profile,
        Figure::Layout::Flat, scale(100, 10),
        QStringLiteral("the same with zelvane.startup.debug=true"));

    // How the cost grows.
    for (int count : { scale(100, 10), scale(5000, 40) })
        add(QStringLiteral("options-%1").arg(count), QStringLiteral("pluginsOptions"),
            Figure::Kind::Options, Figure::Layout::Flat, count, rawOptionsText);
    for (int count : { scale(1000, 20), scale(5000, 40) })
        add(QStringLiteral("load-%1").arg(count), QStringLiteral("loadPlugins + shutdown"),
            Figure::Kind::Load, Figure::Layout::Flat, count, rawLoadText);
    return list;
}

void prepareFigure(const Figure& figure, const PluginFactory& factory, const QString& dir)
{
    if (figure.kind == Figure::Kind::Ordering)
        return; // plain records, made in the process that measures
    for (const QString& arm : { QStringLiteral("lib"), QStringLiteral("raw") }) {
        const QString folder = armDir(dir, arm);
        QDir(folder).removeRecursively();
        QStringList paths;
        switch (figure.layout) {
        case Figure::Layout::Flat:
            paths = factory.writeFlat(folder, figure.count);
            break;
        case Figure::Layout::Chain:
            paths = factory.writeChain(folder, figure.count, PluginFactory::Order::Dependencies);
            break;
        case Figure::Layout::ReverseChain:
            paths = factory.writeChain(folder, figure.count, PluginFactory::Order::Reverse);
            break;
        case Figure::Layout::Rich:
            paths = factory.writeRich(folder, figure.count);
            break;
        }
        QFile order(QDir(dir).filePath(QStringLiteral("order-%1.txt").arg(arm)));
        if (!order.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(order.fileName()));
        order.write(paths.join(QLatin1Char('\n')).toUtf8());
    }
}

QList<double> runFigure(const Figure& figure, const QString& dir, int rep, const QString& arm,
                        int warmRepetitions)
{
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(benchIid);
    QSettings settings(QDir(dir).filePath(QStringLiteral("settings-%1.ini").arg(rep)),
                       QSettings::IniFormat);
    settings.clear();
    controller->setSettings(&settings);

    const QString libDir = armDir(dir, QStringLiteral("lib"));
    const QString rawDir = armDir(dir, QStringLiteral("raw"));
    std::function<void()> lib;
    std::function<void()> raw;
    std::unique_ptr<Zelvane::PluginsModel> model;
    QList<Record> records;
    Loaders keptLoaders;
    const bool warm = arm == QLatin1String("warm");

    switch (figure.kind) {
    case Figure::Kind::Options:
    case Figure::Kind::Memory:
        lib = [&] {
            libraryOptions(libDir);
        };
        raw = [&] {
            rawOptions(rawDir);
        };
        break;
    case Figure::Kind::Load: {
        const QStringList paths = loadOrder(rawDir);
        lib = [&] {
            libraryLoad(libDir);
        };
        raw = [paths, warm, &keptLoaders] {
            rawLoad(paths, warm ? &keptLoaders : nullptr);
        };
        break;
    }
    case Figure::Kind::Profile:
        // The profile's lines are formatted as a host would get them, then dropped: the
        // child's standard error is the terminal of whoever runs the benchmark.
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        // Both arms set the rules, so that setting them costs each arm the same.
        lib = [&] {
            QLoggingCategory::setFilterRules(QStringLiteral("zelvane.startup.debug=false"));
            libraryLoad(libDir);
        };
        raw = [&] {
            QLoggingCategory::setFilterRules(QStringLiteral("zelvane.startup.debug=true"));
            libraryLoad(rawDir);
        };
        break;
    case Figure::Kind::Ordering:
        records = chainRecords(figure.count, figure.layout == Figure::Layout::ReverseChain);
        lib = [records] {
            QList<Record> list = records;
            Zelvane::dependecySorting(list);
        };
        raw = [records] {
            QList<Record> list = records;
            ZelvaneTest::stepByStepDependencySorting(list);
        };
        break;
    case Figure::Kind::Model: {
        const QMultiMap<QString, Zelvane::PluginLoader> plugins
            = Zelvane::LoadPlan(QDir(libDir)).discovered();
        QStringList names;
        for (const Zelvane::PluginLoader& plugin : plugins)
            names.append(plugin.name());
        lib = [plugins, &settings] {
            Zelvane::PluginsModel model(plugins, &settings);
        };
        raw = [names, &settings] {
            QStandardItemModel model;
            for (const QString& name : names) {
                auto* item = new QStandardItem(name);
                item->setCheckable(true);
                const bool checked
                    = settings.value(QStringLiteral("plugin/") + name, true).toBool();
                item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
                model.appendRow(item);
            }
        };
        break;
    }
    case Figure::Kind::Tick: {
        // Everything off, then the last plugin of the chain is ticked: the tick spreads
        // to every plugin it needs, directly or not, and each one is written.
        const QMultiMap<QString, Zelvane::PluginLoader> plugins
            = Zelvane::LoadPlan(QDir(libDir)).discovered();
        QStringList names;
        for (const Zelvane::PluginLoader& plugin : plugins) {
            settings.setValue(QStringLiteral("plugin/") + plugin.name(), false);
            names.append(plugin.name());
        }
        settings.sync();
        model = std::make_unique<Zelvane::PluginsModel>(plugins, &settings);
        const QString last = PluginFactory::pluginName(figure.count - 2);
        QModelIndex index;
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->index(row, 0).data(Qt::DisplayRole).toString() == last)
                index = model->index(row, 0);
        }
        if (!index.isValid())
            qFatal("no row for %s", qPrintable(last));
        lib = [&settings, index, &model] {
            model->setData(index, Qt::Checked, Qt::CheckStateRole);
            settings.sync();
        };
        // Its own file, so that the library arm's writes are not synced by it.
        raw = [names, dir, rep] {
            QSettings rawSettings(
                QDir(dir).filePath(QStringLiteral("raw-settings-%1.ini").arg(rep)),
                QSettings::IniFormat);
            for (const QString& name : names)
                rawSettings.setValue(QStringLiteral("plugin/") + name, true);
            rawSettings.sync();
        };
        break;
    }
    }

    if (figure.kind == Figure::Kind::Memory)
        return { peakAdded(arm == QLatin1String("lib") ? lib : raw) };

    if (warm) {
        // The first run of each arm maps the libraries and reads the files: not counted.
        lib();
        raw();
        QList<double> values;
        for (int warmRep = 0; warmRep < warmRepetitions; ++warmRep) {
            double libWarm = 0;
            double rawWarm = 0;
            if (warmRep % 2 == 0) {
                libWarm = elapsed(lib);
                rawWarm = elapsed(raw);
            } else {
                rawWarm = elapsed(raw);
                libWarm = elapsed(lib);
            }
            values << libWarm << rawWarm;
        }
        controller->setSettings(nullptr);
        return values;
    }

    double libNs = 0;
    double rawNs = 0;
    if (rep % 2 == 0) {
        libNs = elapsed(lib);
        rawNs = figure.hasRaw ? elapsed(raw) : 0;
    } else {
        rawNs = figure.hasRaw ? elapsed(raw) : 0;
        libNs = elapsed(lib);
    }
    controller->setSettings(nullptr);
    return { libNs, rawNs };
}
