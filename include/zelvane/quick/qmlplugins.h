#pragma once

#include <zelvane/quick/zelvane_quick_export.h>

#include <QtCore/QDir>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariantList>
#include <QtCore/QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <memory>

QT_BEGIN_NAMESPACE
class QQmlEngine;
class QJSEngine;
QT_END_NAMESPACE

namespace Zelvane {

class PluginsCaterogies;
class PluginsModel;
class QmlPluginsPrivate;

/// The QML singleton Plugins of the module Zelvane (import Zelvane): the controller's
/// PluginsModel, the category keys, and what the library's load plan says about every
/// plugin of the folder, without a context property.
///
/// details maps each plugin's name to an object with the keys name, title, fileName,
/// filePath, category, description, isCore, dependencies (a list of { name, missing }),
/// dependants, options (a list of { synopsis, description }), stateText, problems (a
/// list of texts), loaded, willLoad and refusal; it is read again after every tick, as
/// are restartNeeded and loadOrder. The folder is pluginDirectory, which the host sets
/// once for the process with setDefaultPluginDirectory(), or a page sets itself.
class ZELVANE_QUICK_EXPORT QmlPlugins : public QObject
{
    Q_OBJECT
    Q_MOC_INCLUDE(<zelvane / pluginscaterogies.h>)
    Q_MOC_INCLUDE(<zelvane / pluginsmodel.h>)
    QML_NAMED_ELEMENT(Plugins)
    QML_SINGLETON
    Q_PROPERTY(Zelvane::PluginsModel* model READ model NOTIFY modelChanged)
    Q_PROPERTY(Zelvane::PluginsCaterogies* categories READ categories CONSTANT)
    Q_PROPERTY(QString pluginDirectory READ pluginDirectory WRITE setPluginDirectory NOTIFY
                   pluginDirectoryChanged)
    Q_PROPERTY(QVariantMap details READ details NOTIFY detailsChanged)
    Q_PROPERTY(QVariantList otherFiles READ otherFiles NOTIFY detailsChanged)
    Q_PROPERTY(QStringList loadOrder READ loadOrder NOTIFY detailsChanged)
    Q_PROPERTY(bool restartNeeded READ isRestartNeeded NOTIFY detailsChanged)
    Q_PROPERTY(bool restartOffered READ isRestartOffered WRITE setRestartOffered NOTIFY
                   restartOfferedChanged)

public:
    explicit QmlPlugins(QObject* parent = nullptr);
    ~QmlPlugins() override;

    /// The folder that every Plugins singleton made from now on reads: the one the host
    /// hands to PluginController::loadPlugins().
    static void setDefaultPluginDirectory(const QDir& dir);
    /// The singleton of engine, made if need be; for a host that offers a restart and
    /// connects to restartRequested(). Null if the module is not available to the engine.
    static QmlPlugins* instance(QQmlEngine* engine);

    PluginsModel* model() const;
    PluginsCaterogies* categories() const;
    QString pluginDirectory() const;
    void setPluginDirectory(const QString& path);
    QVariantMap details() const;
    /// The files that no row stands for (refused, or of another category), each with the
    /// keys of details, in the folder's order.
    QVariantList otherFiles() const;
    QStringList loadOrder() const;
    bool isRestartNeeded() const;
    /// Whether PluginsPage offers a "Restart now" button, which emits restartRequested().
    /// Off by default: a host that can restart itself turns it on.
    bool isRestartOffered() const;
    void setRestartOffered(bool offered);

    /// Reads the model and the selection again; done by itself after every tick.
    Q_INVOKABLE void refresh();
    /// Emits restartRequested(): for the page's "Restart now" button.
    Q_INVOKABLE void requestRestart();
    /// The same as restartOffered, for pages written before the property.
    Q_INVOKABLE bool canRestart() const;
    /// What the screens say about the plugin in the file filePath, part by part: a list
    /// of { kind, label, text, items }, each item a { code, text, note, warning }. The
    /// kinds are description, state, problems, metadata, needs, neededBy, options and
    /// file; the Widgets screen and zelvane-inspect tell the same sentences. Empty for
    /// a file that is not in the folder.
    Q_INVOKABLE QVariantList explanation(const QString& filePath) const;
    /// The files of otherFiles that the filter text keeps, in the groups that PluginsPage
    /// shows: a list of { key, title, refused, category, files }, one group per category
    /// in the order of the folder, then the refused files; files as in otherFiles. The
    /// title names the category and counts the files; the key stays across rereads.
    /// Read it again when detailsChanged() is emitted.
    Q_INVOKABLE QVariantList otherGroups(const QString& filterText = QString()) const;
    /// Whether the filter text keeps the file filePath, by the rule of both screens (its
    /// title or description holds the text, ignoring case).
    Q_INVOKABLE bool matchesFilter(const QString& filePath, const QString& text) const;
    /// The entry of details for the plugin named name, made for that one plugin: an empty
    /// map for a name that details does not hold. What a page that shows one plugin reads,
    /// since reading details from QML converts every plugin's entry each time. Read it
    /// again when detailsChanged() is emitted.
    Q_INVOKABLE QVariantMap detailsOf(const QString& name) const;

Q_SIGNALS:
    void modelChanged();
    void pluginDirectoryChanged();
    void detailsChanged();
    void restartOfferedChanged();
    /// The user asked to restart the application, to apply the changes.
    void restartRequested();

private:
    friend class QmlPluginsPrivate;
    std::unique_ptr<QmlPluginsPrivate> d;
};

} // namespace Zelvane
