#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

// Writes plugin folders for the benchmark from the template plugins that CMake
// builds (plugin/shapes/): each file is a byte copy of a template whose placeholder
// names inside the embedded metadata are overwritten by names of the same length, so
// Qt reads it as a plugin of its own without a compiler in sight.
class PluginFactory
{
public:
    // The listing order of a folder's Extension files, as the ordering sees them: the
    // load list holds a category's plugins in the reverse of the folder listing, so
    // Dependencies lists every plugin after the ones it needs and Reverse before them.
    enum class Order { Dependencies, Reverse };

    explicit PluginFactory(const QString& templateDir);

    // Empty when the templates were read and each placeholder found exactly once.
    QString error() const { return m_error; }

    static QString pluginName(int index);
    static QString optionName(int index);
    // A name in one of four scripts by index: Latin (pluginName()), Arabic, CJK or emoji,
    // each 16 bytes of UTF-8 long. The huge shape's dependencies are scriptName(1) to
    // scriptName(5000).
    static QString scriptName(int index);

    // One Core plugin and count - 1 Extensions without dependencies, each declaring
    // one option. Returns the paths of the files in load order (the Core first).
    QStringList writeFlat(const QString& dir, int count) const;
    // One Core plugin and a chain of count - 1 Extensions, each needing the one
    // before it; listed as order says. Returns the paths in dependency order.
    QStringList writeChain(const QString& dir, int count, Order order) const;
    // One Core plugin and count - 1 Extensions whose metadata is that of a real plugin
    // written for another host: a licence of about 4 KB, URLs, vendor keys and
    // dependency objects, one option each. Returns the paths in load order.
    QStringList writeRich(const QString& dir, int count) const;

    // What the plugin settings screen meets in a large folder.
    struct ScreenFolder
    {
        QStringList extensions; // the names of the Extensions without dependencies
        QStringList others; // the names of the plugins of another category
        QString huge; // the name of the plugin with 5,000 dependencies
    };
    // One Core plugin, the huge one (a 100 KB description, 5,000 dependencies), one
    // plugin in ten of the category "Tool" and the rest Extensions without dependencies,
    // count in all, named by scriptName(); and junk files that are not plugins, one per
    // fifty plugins.
    ScreenFolder writeScreen(const QString& dir, int count) const;

private:
    struct Template
    {
        QByteArray bytes;
        QList<qsizetype> name;
        QList<qsizetype> dependency;
        QList<qsizetype> option;
    };

    bool read(Template& shape, const QString& fileName, bool dependency, bool option);
    void write(const Template& shape, const QString& path, const QString& name,
               const QString& dependency, const QString& option) const;
    // One Core plugin and count - 1 Extensions of the given shape, without dependencies.
    QStringList writeBesideCore(const Template& extension, const QString& dir, int count) const;

    Template m_core;
    Template m_leaf;
    Template m_link;
    Template m_rich;
    Template m_other;
    Template m_huge;
    QString m_error;
};
