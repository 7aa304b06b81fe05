#include "qmlstartupprofile_p.h"

namespace Zelvane {

QmlStartupProfile::QmlStartupProfile(QObject* parent)
    : QAbstractListModel(parent)
{
    refresh();
}

QString QmlStartupProfile::summary() const
{
    return m_profile.summaryText();
}

int QmlStartupProfile::count() const
{
    return int(m_rows.size());
}

int QmlStartupProfile::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant QmlStartupProfile::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return QVariant();
    const StartupProfile::Plugin& plugin = m_rows.at(index.row());
    switch (role) {
    case NameRole:
        return plugin.name;
    case Qt::DisplayRole:
    case TextRole:
        return m_profile.pluginText(plugin);
    case ShareRole:
        return m_profile.share(plugin);
    case ShareTextRole:
        return StartupProfile::shareText(m_profile.share(plugin));
    case FailedRole:
        return plugin.failedStep != StartupProfile::Step::None;
    default:
        break;
    }
    return QVariant();
}

QHash<int, QByteArray> QmlStartupProfile::roleNames() const
{
    return { { NameRole, "name" },
             { TextRole, "text" },
             { ShareRole, "share" },
             { ShareTextRole, "shareText" },
             { FailedRole, "failed" } };
}

void QmlStartupProfile::refresh()
{
    beginResetModel();
    m_profile = StartupProfile::last();
    // The slowest first, as in the widget view.
    m_rows = m_profile.slowestFirst();
    endResetModel();
    emit profileChanged();
}

} // namespace Zelvane
