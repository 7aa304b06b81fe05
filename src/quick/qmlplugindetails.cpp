#include "qmlplugindetails_p.h"

#include "qmlplugins_p.h"

#include <algorithm>

namespace Zelvane {

bool QmlPluginDetails::Line::operator==(const Line& other) const
{
    return kind == other.kind && part == other.part && label == other.label && body == other.body
        && code == other.code && note == other.note && warning == other.warning;
}

QmlPluginDetails::QmlPluginDetails(QObject* parent)
    : QAbstractListModel(parent)
{
    m_lines = lines();
}

QmlPlugins* QmlPluginDetails::plugins() const
{
    return m_plugins;
}

void QmlPluginDetails::setPlugins(QmlPlugins* plugins)
{
    if (plugins == m_plugins)
        return;
    m_plugins = plugins;
    explain();
    update(Update::Reset);
    Q_EMIT pluginsChanged();
}

QString QmlPluginDetails::filePath() const
{
    return m_filePath;
}

void QmlPluginDetails::setFilePath(const QString& filePath)
{
    if (filePath == m_filePath)
        return;
    m_filePath = filePath;
    explain();
    update(Update::Reset);
    Q_EMIT filePathChanged();
}

QString QmlPluginDetails::title() const
{
    return m_title;
}

void QmlPluginDetails::setTitle(const QString& title)
{
    if (title == m_title)
        return;
    m_title = title;
    update(Update::Keep);
    Q_EMIT titleChanged();
}

QString QmlPluginDetails::emptyText() const
{
    return m_emptyText;
}

void QmlPluginDetails::setEmptyText(const QString& text)
{
    if (text == m_emptyText)
        return;
    m_emptyText = text;
    update(Update::Keep);
    Q_EMIT emptyTextChanged();
}

int QmlPluginDetails::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_lines.size());
}

QVariant QmlPluginDetails::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return QVariant();
    const Line& line = m_lines.at(index.row());
    switch (role) {
    case KindRole:
        return line.kind;
    case PartRole:
        return line.part;
    case LabelRole:
        return line.label;
    case Qt::DisplayRole:
    case BodyRole:
        return line.body;
    case CodeRole:
        return line.code;
    case NoteRole:
        return line.note;
    case WarningRole:
        return line.warning;
    default:
        break;
    }
    return QVariant();
}

QHash<int, QByteArray> QmlPluginDetails::roleNames() const
{
    return {
        { KindRole, QByteArrayLiteral("kind") },       { PartRole, QByteArrayLiteral("part") },
        { LabelRole, QByteArrayLiteral("label") },     { BodyRole, QByteArrayLiteral("body") },
        { CodeRole, QByteArrayLiteral("code") },       { NoteRole, QByteArrayLiteral("note") },
        { WarningRole, QByteArrayLiteral("warning") },
    };
}

// The properties arrive one by one while the page is made: the lines are made once, when
// all of them are there.
void QmlPluginDetails::classBegin()
{
    m_complete = false;
}

void QmlPluginDetails::componentComplete()
{
    m_complete = true;
    explain();
    update(Update::Reset);
}

void QmlPluginDetails::reread()
{
    explain();
    update(Update::Keep);
}

void QmlPluginDetails::explain()
{
    m_parts = m_complete && m_plugins && !m_filePath.isEmpty()
        ? QmlPluginsPrivate::get(m_plugins)->explanation(m_filePath)
        : QList<PluginExplanation::Part>();
}

QList<QmlPluginDetails::Line> QmlPluginDetails::lines() const
{
    if (m_filePath.isEmpty())
        return { Line { QStringLiteral("empty"), {}, {}, m_emptyText, {}, {}, false } };
    QList<Line> lines { Line { QStringLiteral("title"), {}, {}, m_title, {}, {}, false } };
    const QString paragraph = QStringLiteral("paragraph");
    const QString item = QStringLiteral("item");
    for (const PluginExplanation::Part& part : m_parts) {
        const QString kind = PluginExplanation::kindName(part.kind);
        if (!part.label.isEmpty() || !part.text.isEmpty())
            lines.append(Line { paragraph, kind, part.label, part.text, {}, {}, false });
        for (const PluginExplanation::Item& entry : part.items)
            lines.append(
                Line { item, kind, {}, entry.text, entry.code, entry.note, entry.warning });
    }
    return lines;
}

void QmlPluginDetails::update(Update how)
{
    if (!m_complete)
        return;
    QList<Line> next = lines();
    if (how == Update::Reset) {
        beginResetModel();
        m_lines = std::move(next);
        endResetModel();
        return;
    }

    // The lines that stay at the start and at the end, then the ones between them: those
    // that both lists have are changed in place, the rest inserted or removed.
    const qsizetype shorter = std::min(m_lines.size(), next.size());
    qsizetype head = 0;
    while (head < shorter && m_lines.at(head) == next.at(head))
        ++head;
    qsizetype tail = 0;
    while (tail < shorter - head
           && m_lines.at(m_lines.size() - 1 - tail) == next.at(next.size() - 1 - tail))
        ++tail;
    const qsizetype before = m_lines.size() - head - tail;
    const qsizetype after = next.size() - head - tail;
    const qsizetype both = std::min(before, after);
    qsizetype row = head;
    while (row < head + both) {
        if (m_lines.at(row) == next.at(row)) {
            ++row;
            continue;
        }
        const qsizetype first = row;
        while (row < head + both && m_lines.at(row) != next.at(row)) {
            m_lines[row] = next.at(row);
            ++row;
        }
        Q_EMIT dataChanged(index(int(first)), index(int(row - 1)));
    }
    const qsizetype from = head + both;
    if (after > before) {
        beginInsertRows(QModelIndex(), int(from), int(head + after - 1));
        m_lines.insert(from, after - before, Line {});
        std::copy(next.cbegin() + from, next.cbegin() + head + after, m_lines.begin() + from);
        endInsertRows();
    } else if (before > after) {
        beginRemoveRows(QModelIndex(), int(from), int(head + before - 1));
        m_lines.remove(from, before - after);
        endRemoveRows();
    }
}

} // namespace Zelvane
