#pragma once

// The type PluginDetailsModel of the module Zelvane. Internal: never installed.

#include "diagnostics/pluginexplanation_p.h"

#include <zelvane/quick/qmlplugins.h>

#include <QtCore/QAbstractListModel>
#include <QtCore/QPointer>
#include <QtQml/QQmlParserStatus>
#include <QtQml/qqmlregistration.h>

namespace Zelvane {

// The lines of PluginsPage's details: the title, then one line per paragraph or list item
// of the file's explanation, the way the page lays them out. A model rather than a list
// of JavaScript objects: a plugin with thousands of dependencies has thousands of lines,
// which a list would convert at every change, and the view asks only for those that show.
//
// Another file starts the lines anew. The same file after a reread keeps the lines that
// did not change and updates only the others, so that the view keeps their items and
// does not lay out a long description again because one dependency changed its state.
class QmlPluginDetails : public QAbstractListModel, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_NAMED_ELEMENT(PluginDetailsModel)
    Q_PROPERTY(Zelvane::QmlPlugins* plugins READ plugins WRITE setPlugins NOTIFY pluginsChanged)
    Q_PROPERTY(QString filePath READ filePath WRITE setFilePath NOTIFY filePathChanged)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(QString emptyText READ emptyText WRITE setEmptyText NOTIFY emptyTextChanged)

public:
    enum Role {
        KindRole = Qt::UserRole + 1,
        PartRole,
        LabelRole,
        BodyRole,
        CodeRole,
        NoteRole,
        WarningRole,
    };

    explicit QmlPluginDetails(QObject* parent = nullptr);

    QmlPlugins* plugins() const;
    void setPlugins(QmlPlugins* plugins);
    QString filePath() const;
    void setFilePath(const QString& filePath);
    QString title() const;
    void setTitle(const QString& title);
    QString emptyText() const;
    void setEmptyText(const QString& text);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    void classBegin() override;
    void componentComplete() override;

    // Explains the file again, after a reread of the folder.
    Q_INVOKABLE void reread();

Q_SIGNALS:
    void pluginsChanged();
    void filePathChanged();
    void titleChanged();
    void emptyTextChanged();

private:
    struct Line
    {
        QString kind; // empty, title, paragraph or item
        QString part; // the kind of part of the explanation, for a paragraph or an item
        QString label;
        QString body;
        QString code;
        QString note;
        bool warning = false;

        bool operator==(const Line& other) const;
        bool operator!=(const Line& other) const { return !(*this == other); }
    };

    enum class Update { Reset, Keep };

    void explain();
    QList<Line> lines() const;
    void update(Update how);

    QPointer<QmlPlugins> m_plugins;
    QString m_filePath;
    QString m_title;
    QString m_emptyText;
    QList<PluginExplanation::Part> m_parts;
    QList<Line> m_lines;
    bool m_complete = true;
};

} // namespace Zelvane
