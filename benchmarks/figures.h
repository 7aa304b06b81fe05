#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

class PluginFactory;

// One figure of the benchmark: a piece of work the library does, and where one exists
// the same work done with raw Qt (the "raw" arm). Each cold repetition runs in a child
// process of its own, since the controller is a process-wide singleton that loads
// plugins once; the child runs both arms, in an order that alternates from one
// repetition to the next, and prints what it measured. The start-up figures are also
// measured warm: every repetition in one process, the libraries and Qt's metadata
// already read once, so that what is left is each arm's own work over the same Qt state.
struct Figure
{
    enum class Kind {
        Options, // pluginsOptions() against entryList + metaData() + the options
        Load, // loadPlugins() + shutdown() against load/instance/initialize/unload
        Memory, // peak memory added by pluginsOptions() against the raw scan
        Ordering, // the ordering against its step-by-step form, on plain records
        Model, // building a PluginsModel against a QStandardItemModel of check boxes
        Tick, // one tick that spreads along a chain, with the settings write
        // loadPlugins() + shutdown() with the category zelvane.startup off against the
        // same with it on: what the start-up profile costs a host that does not ask for it
        Profile,
    };
    // Rich: like Flat, but every Extension carries the metadata of a real plugin written
    // for another host (licence texts, URLs, vendor keys, dependency objects).
    enum class Layout { Flat, Chain, ReverseChain, Rich };

    QString key; // names the figure in the CSV files and on the command line
    QString title;
    Kind kind;
    Layout layout;
    int count; // plugins
    bool hasRaw = true; // false when the raw arm is skipped (too slow to be useful)
    QString baseline; // what the raw arm is

    QString unit() const
    {
        return kind == Kind::Memory ? QStringLiteral("MB") : QStringLiteral("ms");
    }
    // Whether the figure is also measured warm: the start-up work, whose Qt calls read
    // files and map libraries that a second run in the same process finds ready.
    bool hasWarm() const
    {
        return kind == Kind::Options || kind == Kind::Load || kind == Kind::Profile;
    }
};

QList<Figure> figures(bool quick);

// Writes the plugin folders that a figure's repetitions read, under dir: lib/ and raw/,
// the same files twice, so that the two arms of one process share no library.
void prepareFigure(const Figure& figure, const PluginFactory& factory, const QString& dir);

// Runs one repetition in this process and returns what was measured: nanoseconds or,
// for memory, bytes. arm is "both" (library first when rep is even) or, for memory
// figures, "lib" or "raw" alone, since a process's peak can only be read once.
//
// arm "warm" runs each arm once unmeasured, then warmRepetitions of both, alternating
// which goes first, and returns library, raw, library, raw, ... in nanoseconds.
QList<double> runFigure(const Figure& figure, const QString& dir, int rep, const QString& arm,
                        int warmRepetitions = 0);
