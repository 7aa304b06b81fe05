#pragma once

// The user's plugin selection as the tests see it: what a settings file holds on disk,
// read back without the settings object that wrote it, and the check states of a
// plugins model, in the same "Name=true" form so that the two compare as lists.

#include <zelvane/pluginsmodel.h>

#include <QtCore/QAbstractItemModel>
#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ZelvaneTest {

inline bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// The bytes of a file; empty when it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The bytes of a file, or "<no file>" when there is none: a test that expects nothing
// written tells an absent file from an empty one.
inline QByteArray fileContent(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArrayLiteral("<no file>");
    return file.readAll();
}

// The selection as it is on disk: "Name=true" for every entry of the INI file's
// [plugin] section, sorted. Read as text, so it shows what the file holds, not what
// a settings object would make of it.
inline QStringList storedSelection(const QString& iniPath)
{
    QStringList result;
    bool inPlugin = false;
    const QList<QByteArray> lines = fileContent(iniPath).split('\n');
    for (const QByteArray& line : lines) {
        const QString text = QString::fromUtf8(line).trimmed();
        if (text.startsWith(QLatin1Char('['))) {
            inPlugin = text == QLatin1String("[plugin]");
            continue;
        }
        if (inPlugin && !text.isEmpty())
            result.append(text);
    }
    result.sort();
    return result;
}

// A plugins model's rows as "Name=true", in the form and order of storedSelection().
// With Qt::CheckStateRole a row is ticked when it reads Qt::Checked, as a view sees it.
inline QStringList checkStates(const QAbstractItemModel* model,
                               int role = Zelvane::PluginsModel::CheckedRole)
{
    QStringList result;
    for (int i = 0; i < model->rowCount(); ++i) {
        const QModelIndex index = model->index(i, 0);
        const QVariant value = index.data(role);
        const bool ticked
            = role == Qt::CheckStateRole ? value.toInt() == Qt::Checked : value.toBool();
        result.append(index.data(Zelvane::PluginsModel::NameRole).toString()
                      + (ticked ? QLatin1String("=true") : QLatin1String("=false")));
    }
    result.sort();
    return result;
}

} // namespace ZelvaneTest
