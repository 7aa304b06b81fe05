#include "permissions.h"

#include "plugin/pluginnames_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QObject>

namespace ZelvaneInspect {

namespace {

QStringList warningsFor(const QFileInfo& info, uint hostUser)
{
    QStringList warnings;
    const QString path = QDir::toNativeSeparators(info.absoluteFilePath());
    const QFile::Permissions permissions = info.permissions();
    if (permissions & QFile::WriteOther)
        warnings << QObject::tr("%1 can be written by every user").arg(path);
    else if (permissions & QFile::WriteGroup)
        warnings << QObject::tr("%1 can be written by the group %2").arg(path, info.group());
    const uint owner = info.ownerId();
    if (owner != hostUser && owner != 0)
        warnings << QObject::tr("%1 belongs to the user %2, not to root or to the host's user")
                        .arg(path, info.owner().isEmpty() ? QString::number(owner) : info.owner());
    return warnings;
}

} // namespace

QStringList permissionWarnings(const QString& directory, uint hostUser)
{
    QStringList warnings = warningsFor(QFileInfo(directory), hostUser);
    const QDir dir(directory);
    const QStringList names
        = dir.entryList(Zelvane::pluginFileNameFilters(), QDir::Files, QDir::Name);
    for (const QString& name : names)
        warnings << warningsFor(QFileInfo(dir.filePath(name)), hostUser);
    return warnings;
}

} // namespace ZelvaneInspect
