#pragma once

// The type StartupProfileModel of the module Zelvane. Internal: never installed.

#include <zelvane/diagnostics/startupprofile.h>

#include <QtCore/QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace Zelvane {

// The host's last start for a QML page: one row per plugin, the slowest first, with
// StartupProfile's texts, so that the page says what the widget view says.
class QmlStartupProfile : public QAbstractListModel
{
    Q_OBJECT
    QML_NAMED_ELEMENT(StartupProfileModel)
    Q_PROPERTY(QString summary READ summary NOTIFY profileChanged)
    Q_PROPERTY(int count READ count NOTIFY profileChanged)

public:
    enum Role {
        NameRole = Qt::UserRole + 1,
        TextRole,
        ShareRole,
        ShareTextRole,
        FailedRole,
    };

    explicit QmlStartupProfile(QObject* parent = nullptr);

    QString summary() const;
    int count() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Takes StartupProfile::last() again.
    Q_INVOKABLE void refresh();

Q_SIGNALS:
    void profileChanged();

private:
    StartupProfile m_profile;
    QList<StartupProfile::Plugin> m_rows;
};

} // namespace Zelvane
