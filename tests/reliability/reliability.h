#pragma once

// Helpers shared by the reliability tests.

#include "zelvanetest.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtTest/QAbstractItemModelTester>

namespace ZelvaneReliability {

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// A refused file's line as the debug log shows it: the text, quoted by Qt's stream.
inline QString logged(const QString& text)
{
    QString line;
    QDebug(&line).nospace() << text;
    return line;
}

// What QAbstractItemModelTester says about a model, apart from the two complaints that
// PluginsModel earns on purpose: rowCount() answers the number of rows whatever the
// parent, so the first row's index "has rows" but no children, and its first "child"
// turns out to be a row of the root.
inline QStringList modelTesterComplaints(QAbstractItemModel* model)
{
    ZelvaneTest::LogCapture capture;
    {
        QAbstractItemModelTester tester(model,
                                        QAbstractItemModelTester::FailureReportingMode::Warning);
    }
    QStringList complaints;
    const QList<ZelvaneTest::LogRecord> records = capture.records();
    for (const ZelvaneTest::LogRecord& record : records) {
        const bool hasNoChildren = record.message.startsWith(
            QLatin1String("FAIL! model->hasChildren(topIndex) () returned FALSE ("));
        const bool childOfRoot
            = record.message.startsWith(QLatin1String("FAIL! Compared values are not the same:\n"))
            && record.message.contains(QLatin1String(
                "\n   Actual (model->parent(childIndex)) QModelIndex(-1,-1,(nil),(nil))\n"));
        if (record.category != QLatin1String("qt.modeltest") || !(hasNoChildren || childOfRoot))
            complaints.append(record.message);
    }
    return complaints;
}

} // namespace ZelvaneReliability
