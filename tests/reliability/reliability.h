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

using ZelvaneTest::modelTesterComplaints;

} // namespace ZelvaneReliability
