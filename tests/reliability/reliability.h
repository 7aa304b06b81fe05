#pragma once

// Helpers shared by the reliability tests.

#include "settingsfixture.h"
#include "zelvanetest.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QDebug>
#include <QtTest/QAbstractItemModelTester>

namespace ZelvaneReliability {

using ZelvaneTest::readFile;
using ZelvaneTest::writeFile;

// A refused file's line as the debug log shows it: the text, quoted by Qt's stream.
inline QString logged(const QString& text)
{
    QString line;
    QDebug(&line).nospace() << text;
    return line;
}

using ZelvaneTest::modelTesterComplaints;

} // namespace ZelvaneReliability
