#pragma once

// The record behind the singleton Plugins, for the module's own types. Internal: never
// installed.

#include <zelvane/quick/qmlplugins.h>

#include "diagnostics/pluginexplanation_p.h"

#include <zelvane/diagnostics/loaddiagnostics.h>
#include <zelvane/diagnostics/plugindiagnostic.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QVariantList>
#include <QtCore/QVariantMap>

#include <optional>

namespace Zelvane {

class QmlPluginsPrivate
{
public:
    static const QmlPluginsPrivate* get(const QmlPlugins* plugins) { return plugins->d.get(); }

    QPointer<PluginsModel> model;
    PluginsCaterogies* categories = nullptr;
    QString directory;
    LoadDiagnostics diagnostics;
    // The plugin that each name stands for: the first of the folder with that name that
    // the library did not refuse.
    QHash<QString, PluginDiagnostic> byName;
    // details and otherFiles, made when first read after a reread: the page asks for one
    // plugin at a time, and making every plugin's details at each tick took longer than
    // the tick itself over a large folder.
    mutable std::optional<QVariantMap> details;
    mutable std::optional<QVariantList> otherFiles;
    // The entries of details that detailsOf() made since the last reread: the page asks
    // again each time the user comes back to a plugin.
    mutable QHash<QString, QVariantMap> detailsByName;
    // The explanations asked for since the last reread, by path: the page's details and
    // its tests ask for the same file again and again, and a plugin with thousands of
    // dependencies takes a while to explain.
    mutable QHash<QString, QList<PluginExplanation::Part>> explanations;
    // The files that otherFiles lists, in the same order.
    QList<PluginDiagnostic> others;
    // Every file of the folder by its path, for the page's questions about one file.
    QHash<QString, PluginDiagnostic> byPath;
    bool restartOffered = false;

    PluginDiagnostic plugin(const QString& filePath) const { return byPath.value(filePath); }
    // The parts of the explanation of the file filePath; none for a file that is not in
    // the folder.
    QList<PluginExplanation::Part> explanation(const QString& filePath) const;
};

} // namespace Zelvane
