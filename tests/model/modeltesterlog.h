#pragma once

// What the model tester may say about a plugins model.

#include "zelvanetest.h"

#include <QtCore/QString>

namespace ZelvaneModelTest {

// rowCount answers the same for every parent, on purpose. The tester reports two
// consequences for the first row's index: it has rows but no children, and its first
// "child" is a row of the root. Any other message is a defect.
inline bool isExpectedTesterWarning(const ZelvaneTest::LogRecord& record)
{
    if (record.category != QLatin1String("qt.modeltest") || record.type != QtWarningMsg)
        return false;
    if (record.message.startsWith(
            QLatin1String("FAIL! model->hasChildren(topIndex) () returned FALSE (")))
        return true;
    return record.message.startsWith(QLatin1String("FAIL! Compared values are not the same:\n"))
        && record.message.contains(QLatin1String(
            "\n   Actual (model->parent(childIndex)) QModelIndex(-1,-1,(nil),(nil))\n"));
}

inline QString describe(const ZelvaneTest::LogRecord& record)
{
    return QStringLiteral("unexpected message [%1] %2").arg(record.category, record.message);
}

} // namespace ZelvaneModelTest
