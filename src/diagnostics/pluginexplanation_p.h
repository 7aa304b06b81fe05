#pragma once

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Zelvane API. It is private API of the Diagnostics
// component, exported for the Widgets and Quick components and for zelvane-inspect,
// never installed, and may change from version to version without notice, or even be
// removed.
//

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/plugindiagnostic.h>
#include <zelvane/diagnostics/zelvane_diagnostics_export.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Zelvane {

// Everything that the plugin screens and zelvane-inspect say about one plugin of a
// folder, as translated sentences in parts. The widget, the QML page and the inspector
// only lay these out, each in its own way; none of them words anything itself, so the
// three can never tell a user two different stories about the same file.
//
// The explanation also reads the plugin's metadata as its author wrote it, to say what
// a value the library converts was before the conversion: a dependency given as an
// object counts as a dependency on an empty name, and that alone would leave the user
// with a blank.
class ZELVANE_DIAGNOSTICS_EXPORT PluginExplanation
{
    Q_DECLARE_TR_FUNCTIONS(Zelvane::PluginExplanation)

public:
    // One line of a list: an option's synopsis (code) and description (text), a
    // dependency, a problem. A warning is something the user has to act on; the screens
    // emphasise it, the inspector marks it.
    struct Item
    {
        QString code; // shown in a monospaced font before the text; may be empty
        QString text;
        QString note; // a warning's reason, shown after the text; may be empty
        bool warning = false;
    };

    struct Part
    {
        enum class Kind {
            Description, // the plugin's own description: text
            State, // its state now and at the next start: text
            Problems, // each dependency that is not loaded before it: items
            Metadata, // what its metadata gives that does not mean what it seems: items
            Needs, // its dependency entries, as written: items (or text when none)
            NeededBy, // the plugins that name it: text
            Options, // its command-line options: items
            File, // the file's path: text
        };
        Kind kind;
        QString label; // "State:" and so on; empty for the description and the problems
        QString text;
        QList<Item> items;
    };

    PluginExplanation(const PluginDiagnostic& plugin, const LoadDiagnostics& folder);

    // The plugin's name, or the file's name for a file refused before it had one.
    QString title() const { return m_title; }
    QList<Part> parts() const { return m_parts; }
    // The part of that kind; an empty part (no text, no items) when it has none.
    Part part(Part::Kind kind) const;

    // The enumerators' names, as zelvane-inspect's JSON gives them.
    static QString stateName(PluginDiagnostic::State state);
    static QString problemKindName(DependencyProblem::Kind kind);

    // The key that names a kind of part in zelvane-inspect's JSON and the QML page.
    static QString kindName(Part::Kind kind);

    // What a dependency entry is called when it is not a plugin's name: the whole
    // explanation of Needs and Metadata, for the inspector's one-line list.
    QStringList dependencyTitles() const;

    // The plugin's options as the Options part lists them, without what other plugins
    // of the folder declare: cheap enough for every plugin of a large folder at once.
    static QList<Item> optionItems(const PluginDiagnostic& plugin);

    // An item as one line of plain text: "--name <value> description — note".
    static QString itemText(const Item& item);

    // Every sentence of the explanation, in order: the label and text of each part, each
    // item as one line. The same for every screen that shows this plugin.
    QStringList sentences() const;

private:
    void addDependencyNotes(const PluginDiagnostic& plugin, const LoadDiagnostics& folder);
    void addOptions(const PluginDiagnostic& plugin, const LoadDiagnostics& folder);
    static QList<Item> optionItems(const PluginDiagnostic& plugin,
                                   const QList<PluginDiagnostic>& inParserOrder);

    QString m_title;
    QList<Part> m_parts;
    QList<Item> m_dependencies;
    QList<Item> m_notes;
};

} // namespace Zelvane
