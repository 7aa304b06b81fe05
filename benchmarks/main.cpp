// zelvane-bench: the library's start-up work against the same work done with raw Qt.
//
//   zelvane-bench [--quick] [--repetitions N] [--only REGEX] [--output DIR]
//
// Prints one line per figure: the median and minimum of each arm over the
// repetitions and the median of the per-repetition ratios (library / raw Qt). The
// start-up figures get a second line, warm: the same repetitions run in one process
// after one unmeasured run of each arm, the arms interleaved.
// Writes DIR/figures.csv (every repetition), DIR/summary.csv and DIR/scaling.png.

#include "figures.h"
#include "plot.h"
#include "pluginfactory.h"
#include "statistics.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QSysInfo>
#include <QtCore/QTextStream>
#include <QtCore/QThread>
#include <QtGui/QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

struct Result
{
    Figure figure;
    QList<double> lib; // ms, or MB for memory
    QList<double> raw;
    QList<double> ratios;
    // The warm repetitions: all in one process, each arm run once unmeasured before.
    QList<double> warmLib;
    QList<double> warmRaw;
    QList<double> warmRatios;

    double ratio() const
    {
        if (raw.isEmpty())
            return 0;
        if (figure.kind == Figure::Kind::Memory)
            return median(raw) > 0 ? median(lib) / median(raw) : 0;
        return median(ratios);
    }
};

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

// One repetition of a figure in a child process; returns the numbers it printed.
QList<double> runChild(const Figure& figure, const QString& dir, int rep, const QString& arm,
                       bool quick, int warmRepetitions = 0)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments { QStringLiteral("--child"), figure.key,
                            QStringLiteral("--dir"),   dir,
                            QStringLiteral("--rep"),   QString::number(rep),
                            QStringLiteral("--arm"),   arm };
    if (quick)
        arguments.append(QStringLiteral("--quick"));
    if (warmRepetitions > 0)
        arguments << QStringLiteral("--repetitions") << QString::number(warmRepetitions);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    if (!child.waitForFinished(-1) || child.exitStatus() != QProcess::NormalExit
        || child.exitCode() != 0) {
        qFatal("the repetition %d of %s failed", rep, qPrintable(figure.key));
    }
    QList<double> values;
    const QList<QByteArray> fields = child.readAllStandardOutput().trimmed().split(' ');
    for (const QByteArray& field : fields)
        values.append(field.toDouble());
    return values;
}

QString formatValue(double value, const QString& unit)
{
    return QStringLiteral("%1 %2")
        .arg(value, 9, 'f', unit == QLatin1String("MB") ? 2 : 3)
        .arg(unit);
}

void printResult(const Result& result)
{
    const Figure& figure = result.figure;
    const QString unit = figure.unit();
    QString line = QStringLiteral("%1 %2  library %3 (min %4)")
                       .arg(figure.title + QStringLiteral(", ") + QString::number(figure.count)
                                + QStringLiteral(" plugins"),
                            -62)
                       .arg(QString(), 0)
                       .arg(formatValue(median(result.lib), unit))
                       .arg(formatValue(minimum(result.lib), unit).trimmed());
    if (result.raw.isEmpty()) {
        line += QStringLiteral("  baseline skipped (too slow)  ratio -");
    } else {
        line += QStringLiteral("  %1 %2 (min %3)  ratio %4")
                    .arg(figure.kind == Figure::Kind::Ordering      ? QStringLiteral("step-by-step")
                             : figure.kind == Figure::Kind::Profile ? QStringLiteral("on")
                                                                    : QStringLiteral("raw Qt"))
                    .arg(formatValue(median(result.raw), unit))
                    .arg(formatValue(minimum(result.raw), unit).trimmed())
                    .arg(result.ratio(), 0, 'f', 3);
    }
    out() << line << Qt::endl;
    if (figure.kind == Figure::Kind::Profile) {
        // Whether off and on differ is read against how much each arm varies by itself.
        out() << QStringLiteral("%1 %2  spread (interquartile range): off %3, on %4")
                     .arg(QStringLiteral("  cold"), -62)
                     .arg(QString(), 0)
                     .arg(formatValue(interquartileRange(result.lib), unit).trimmed())
                     .arg(formatValue(interquartileRange(result.raw), unit).trimmed())
              << Qt::endl;
    }
    if (result.warmLib.isEmpty())
        return;
    out() << QStringLiteral("%1 %2  library %3 (min %4)  %5 %6 (min %7)  ratio %8")
                 .arg(QStringLiteral("  warm, one process"), -62)
                 .arg(QString(), 0)
                 .arg(formatValue(median(result.warmLib), unit))
                 .arg(formatValue(minimum(result.warmLib), unit).trimmed())
                 .arg(figure.kind == Figure::Kind::Profile ? QStringLiteral("on")
                                                           : QStringLiteral("raw Qt"))
                 .arg(formatValue(median(result.warmRaw), unit))
                 .arg(formatValue(minimum(result.warmRaw), unit).trimmed())
                 .arg(median(result.warmRatios), 0, 'f', 3)
          << Qt::endl;
    if (figure.kind == Figure::Kind::Profile)
        out() << QStringLiteral("%1 %2  spread (interquartile range): off %3, on %4")
                     .arg(QStringLiteral("  warm"), -62)
                     .arg(QString(), 0)
                     .arg(formatValue(interquartileRange(result.warmLib), unit).trimmed())
                     .arg(formatValue(interquartileRange(result.warmRaw), unit).trimmed())
              << Qt::endl;
}

void writeCsv(const QString& dir, const QList<Result>& results)
{
    QFile all(QDir(dir).filePath(QStringLiteral("figures.csv")));
    QFile summary(QDir(dir).filePath(QStringLiteral("summary.csv")));
    if (!all.open(QIODevice::WriteOnly | QIODevice::Text)
        || !summary.open(QIODevice::WriteOnly | QIODevice::Text))
        qFatal("cannot write the CSV files in %s", qPrintable(dir));
    QTextStream allStream(&all);
    QTextStream summaryStream(&summary);
    allStream << "figure,plugins,arm,repetition,value,unit\n";
    summaryStream << "figure,title,plugins,unit,library_median,library_min,baseline_median,"
                     "baseline_min,ratio,baseline,warm_library_median,warm_library_min,"
                     "warm_baseline_median,warm_baseline_min,warm_ratio\n";
    for (const Result& result : results) {
        const Figure& figure = result.figure;
        for (int rep = 0; rep < result.lib.size(); ++rep)
            allStream << figure.key << ',' << figure.count << ",library," << rep << ','
                      << result.lib.at(rep) << ',' << figure.unit() << '\n';
        for (int rep = 0; rep < result.raw.size(); ++rep)
            allStream << figure.key << ',' << figure.count << ",baseline," << rep << ','
                      << result.raw.at(rep) << ',' << figure.unit() << '\n';
        for (int rep = 0; rep < result.warmLib.size(); ++rep)
            allStream << figure.key << ',' << figure.count << ",library-warm," << rep << ','
                      << result.warmLib.at(rep) << ',' << figure.unit() << '\n';
        for (int rep = 0; rep < result.warmRaw.size(); ++rep)
            allStream << figure.key << ',' << figure.count << ",baseline-warm," << rep << ','
                      << result.warmRaw.at(rep) << ',' << figure.unit() << '\n';
        summaryStream << figure.key << ",\"" << figure.title << "\"," << figure.count << ','
                      << figure.unit() << ',' << median(result.lib) << ',' << minimum(result.lib)
                      << ',';
        if (result.raw.isEmpty())
            summaryStream << ",,,";
        else
            summaryStream << median(result.raw) << ',' << minimum(result.raw) << ','
                          << result.ratio();
        summaryStream << ",\"" << figure.baseline << '"';
        if (result.warmLib.isEmpty())
            summaryStream << ",,,,,\n";
        else
            summaryStream << ',' << median(result.warmLib) << ',' << minimum(result.warmLib) << ','
                          << median(result.warmRaw) << ',' << minimum(result.warmRaw) << ','
                          << median(result.warmRatios) << '\n';
    }
}

void writeScalingPlot(const QString& dir, const QList<Result>& results)
{
    const auto line = [&results](Figure::Kind kind, Figure::Layout layout, bool library,
                                 const QString& label, const QColor& color) {
        Series series { label, color, !library, {} };
        for (const Result& result : results) {
            if (result.figure.kind != kind || result.figure.layout != layout)
                continue;
            const QList<double>& values = library ? result.lib : result.raw;
            if (!values.isEmpty())
                series.points.append(QPointF(result.figure.count, median(values)));
        }
        std::sort(series.points.begin(), series.points.end(),
                  [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
        return series;
    };
    const QColor blue(0x1f, 0x77, 0xb4);
    const QColor orange(0xff, 0x7f, 0x0e);
    const QColor green(0x2c, 0xa0, 0x2c);
    const QColor red(0xd6, 0x27, 0x28);
    const Panel startUp { QStringLiteral("Start-up: library (solid) and raw Qt (dashed)"),
                          { line(Figure::Kind::Options, Figure::Layout::Flat, true,
                                 QStringLiteral("pluginsOptions"), blue),
                            line(Figure::Kind::Options, Figure::Layout::Flat, false,
                                 QStringLiteral("entryList + metaData()"), blue),
                            line(Figure::Kind::Load, Figure::Layout::Flat, true,
                                 QStringLiteral("loadPlugins + shutdown"), orange),
                            line(Figure::Kind::Load, Figure::Layout::Flat, false,
                                 QStringLiteral("load/initialize/unload"), orange) } };
    const Panel ordering { QStringLiteral(
                               "Ordering alone: library (solid) and step-by-step (dashed)"),
                           { line(Figure::Kind::Ordering, Figure::Layout::Chain, true,
                                  QStringLiteral("chain in order"), green),
                             line(Figure::Kind::Ordering, Figure::Layout::Chain, false,
                                  QStringLiteral("chain in order, step-by-step"), green),
                             line(Figure::Kind::Ordering, Figure::Layout::ReverseChain, true,
                                  QStringLiteral("reverse chain"), red),
                             line(Figure::Kind::Ordering, Figure::Layout::ReverseChain, false,
                                  QStringLiteral("reverse chain, step-by-step"), red) } };
    const QString title = QStringLiteral("Zelvane %1, Qt %2, %3 (%4 cores): median times")
                              .arg(QStringLiteral(ZELVANE_BENCH_VERSION),
                                   QString::fromLatin1(qVersion()), QSysInfo::prettyProductName())
                              .arg(QThread::idealThreadCount());
    const QString fileName = QDir(dir).filePath(QStringLiteral("scaling.png"));
    if (!writePlot(fileName, title, { startUp, ordering }))
        qFatal("cannot write %s", qPrintable(fileName));
}

int childMain(const QCommandLineParser& parser, bool quick)
{
    const QString key = parser.value(QStringLiteral("child"));
    const QList<Figure> all = figures(quick);
    const auto figure = std::find_if(all.cbegin(), all.cend(),
                                     [&](const Figure& candidate) { return candidate.key == key; });
    if (figure == all.cend())
        qFatal("no figure %s", qPrintable(key));
    const QList<double> values = runFigure(
        *figure, parser.value(QStringLiteral("dir")), parser.value(QStringLiteral("rep")).toInt(),
        parser.value(QStringLiteral("arm")), parser.value(QStringLiteral("repetitions")).toInt());
    QStringList fields;
    for (double value : values)
        fields.append(QString::number(value, 'f', 0));
    std::printf("%s\n", qPrintable(fields.join(QLatin1Char(' '))));
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    // A repetition needs no GUI; the driver's plot needs fonts, not a screen.
    const bool child = std::any_of(argv + 1, argv + argc, [](const char* argument) {
        return qstrcmp(argument, "--child") == 0;
    });
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QCoreApplication> app(child ? new QCoreApplication(argc, argv)
                                                : new QGuiApplication(argc, argv));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Measures the library's start-up work against the same work done with raw Qt."));
    parser.addHelpOption();
    parser.addOption(
        { QStringLiteral("quick"),
          QStringLiteral(
              "A few plugins per figure and three repetitions: checks that every figure runs.") });
    parser.addOption({ QStringLiteral("repetitions"),
                       QStringLiteral("Repetitions per figure (default 7, at least 3)."),
                       QStringLiteral("n") });
    parser.addOption({ QStringLiteral("only"),
                       QStringLiteral("Only the figures whose key matches."),
                       QStringLiteral("regex") });
    parser.addOption({ QStringLiteral("output"),
                       QStringLiteral("Folder for the plugin files, the CSV files and the plot."),
                       QStringLiteral("dir"), QStringLiteral("bench-results") });
    parser.addOption(
        { QStringLiteral("keep"),
          QStringLiteral("Keep each figure's plugin folders, e.g. to profile one repetition "
                         "with --child FIGURE --dir DIR --rep 0 --arm both, or the warm "
                         "repetitions with --arm warm --repetitions N.") });
    parser.addOption({ QStringLiteral("child"), QStringLiteral("(internal) Run one repetition."),
                       QStringLiteral("figure") });
    parser.addOption(
        { QStringLiteral("dir"), QStringLiteral("(internal)"), QStringLiteral("dir") });
    parser.addOption({ QStringLiteral("rep"), QStringLiteral("(internal)"), QStringLiteral("n") });
    parser.addOption(
        { QStringLiteral("arm"), QStringLiteral("(internal)"), QStringLiteral("arm") });
    parser.process(*app);
    const bool quick = parser.isSet(QStringLiteral("quick"));
    if (parser.isSet(QStringLiteral("child")))
        return childMain(parser, quick);

    const int repetitions = parser.isSet(QStringLiteral("repetitions"))
        ? std::max(3, parser.value(QStringLiteral("repetitions")).toInt())
        : (quick ? 3 : 7);
    const QString output = QDir(parser.value(QStringLiteral("output"))).absolutePath();
    const QString work = QDir(output).filePath(QStringLiteral("plugins"));
    QDir().mkpath(work);
    const PluginFactory factory(QStringLiteral(ZELVANE_BENCH_TEMPLATE_DIR));
    if (!factory.error().isEmpty()) {
        std::fprintf(stderr, "zelvane-bench: %s\n", qPrintable(factory.error()));
        return 1;
    }
    const QRegularExpression only(parser.value(QStringLiteral("only")));

    out() << "zelvane-bench: " << repetitions << " repetitions per figure, Qt " << qVersion()
          << ", " << QSysInfo::prettyProductName() << ", " << QThread::idealThreadCount()
          << " cores; ratio = median of library / baseline per repetition" << Qt::endl;
    QList<Result> results;
    for (const Figure& figure : figures(quick)) {
        if (!only.pattern().isEmpty() && !only.match(figure.key).hasMatch())
            continue;
        const QString dir = QDir(work).filePath(figure.key);
        prepareFigure(figure, factory, dir);
        Result result { figure, {}, {}, {}, {}, {}, {} };
        const double scale = figure.kind == Figure::Kind::Memory ? 1.0 / (1024 * 1024) : 1e-6;
        for (int rep = 0; rep < repetitions; ++rep) {
            if (figure.kind == Figure::Kind::Memory) {
                // One process per arm: a process's peak cannot be taken back. The order
                // of the two alternates, like the arms of the other figures.
                const bool libFirst = rep % 2 == 0;
                const double first
                    = runChild(figure, dir, rep,
                               libFirst ? QStringLiteral("lib") : QStringLiteral("raw"), quick)
                          .value(0);
                const double second
                    = runChild(figure, dir, rep,
                               libFirst ? QStringLiteral("raw") : QStringLiteral("lib"), quick)
                          .value(0);
                result.lib.append((libFirst ? first : second) * scale);
                result.raw.append((libFirst ? second : first) * scale);
                continue;
            }
            const QList<double> values = runChild(figure, dir, rep, QStringLiteral("both"), quick);
            result.lib.append(values.value(0) * scale);
            if (figure.hasRaw) {
                result.raw.append(values.value(1) * scale);
                result.ratios.append(values.value(1) > 0 ? values.value(0) / values.value(1) : 0);
            }
        }
        if (figure.hasWarm()) {
            const QList<double> values
                = runChild(figure, dir, repetitions, QStringLiteral("warm"), quick, repetitions);
            for (qsizetype i = 0; i + 1 < values.size(); i += 2) {
                result.warmLib.append(values.at(i) * scale);
                result.warmRaw.append(values.at(i + 1) * scale);
                result.warmRatios.append(values.at(i + 1) > 0 ? values.at(i) / values.at(i + 1)
                                                              : 0);
            }
        }
        if (!parser.isSet(QStringLiteral("keep")))
            QDir(dir).removeRecursively();
        printResult(result);
        results.append(result);
    }
    writeCsv(output, results);
    writeScalingPlot(output, results);
    out() << "Wrote " << QDir(output).filePath(QStringLiteral("summary.csv"))
          << ", figures.csv and scaling.png" << Qt::endl;
    return 0;
}
