#pragma once

// Helpers shared by the library's tests.

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include "plugin/plugindata_p.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtTest/QAbstractItemModelTester>

#include <memory>

namespace ZelvaneTest {

// The built test plugin of a CMake target, e.g. "zt_core" → .../libzt_core.so.
inline QString pluginPath(const QString& target)
{
    return QStringLiteral(ZELVANE_TEST_PLUGIN_DIR "/lib") + target + QStringLiteral(".so");
}

// Copies the built plugins of the given targets into dir under their own file names
// (or under fileName when given as "target=fileName"). Returns false if any copy fails.
inline bool copyPlugins(const QString& dir, const QStringList& targets)
{
    for (const QString& entry : targets) {
        const QString target = entry.section(QLatin1Char('='), 0, 0);
        QString fileName = entry.section(QLatin1Char('='), 1);
        if (fileName.isEmpty())
            fileName = QStringLiteral("lib") + target + QStringLiteral(".so");
        if (!QFile::copy(pluginPath(target), QDir(dir).filePath(fileName)))
            return false;
    }
    return true;
}

// Copies one built test plugin into a new folder of its own below parent and returns
// its path. The path is canonical, so it is also the file name that Qt's plugin loader
// reports in error texts. Empty when the copy fails.
inline QString copyToOwnFolder(const QString& parent, const QString& target)
{
    static int counter = 0;
    const QString folder
        = QFileInfo(parent).canonicalFilePath() + QLatin1Char('/') + QString::number(++counter);
    if (!QDir().mkpath(folder) || !copyPlugins(folder, { target }))
        return QString();
    return folder + QStringLiteral("/lib") + target + QStringLiteral(".so");
}

// What the test plugins have recorded: "initialize:<Name>" and "destroy:<Name>", in
// the order it happened.
inline QStringList events()
{
    return Zelvane::PluginController::instance()
        ->pool()
        ->property("zelvaneTestEvents")
        .toStringList();
}

inline void clearEvents()
{
    Zelvane::PluginController::instance()->pool()->setProperty("zelvaneTestEvents", QStringList());
}

// The names of the test plugins whose library code has run (static initialisers).
inline QStringList staticInitialised()
{
    const QByteArray value = qgetenv("ZELVANE_TEST_STATIC_INIT");
    return value.isEmpty() ? QStringList() : QString::fromUtf8(value).split(QLatin1Char(','));
}

// A handle whose record is filled from a "MetaData" map, without any plugin file:
// for the tests of ordering and of the model, which only read metadata.
inline Zelvane::PluginLoader makePlugin(const QVariantMap& metaData,
                                        const QString& fileName = QStringLiteral("/nowhere/x.so"))
{
    auto data = std::make_shared<Zelvane::PluginData>(fileName);
    data->extractPluginMetadata(metaData);
    return Zelvane::PluginData::handle(data);
}

inline Zelvane::PluginLoader makePlugin(const QString& name, const QString& category,
                                        const QStringList& dependencies = {},
                                        bool loadByDefault = false, const QString& description = {})
{
    return makePlugin(QVariantMap {
        { QStringLiteral("Name"), name },
        { QStringLiteral("Category"), category },
        { QStringLiteral("Dependencies"), dependencies },
        { QStringLiteral("Default"), loadByDefault },
        { QStringLiteral("Description"), description },
    });
}

// A message as a message handler sees it.
struct LogRecord
{
    QtMsgType type;
    QString category; // "<null>" when the context carried no category
    QString file; // "<null>" likewise
    QString function; // "<null>" likewise
    int line;
    QString message;
};

// Captures every message while alive, and restores the previous handler after.
class LogCapture
{
public:
    LogCapture()
    {
        s_records.clear();
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QList<LogRecord> records() const { return s_records; }
    QStringList messages() const
    {
        QStringList result;
        for (const LogRecord& record : s_records)
            result.append(record.message);
        return result;
    }

private:
    static void handler(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        const auto text = [](const char* value) {
            return value ? QString::fromUtf8(value) : QStringLiteral("<null>");
        };
        s_records.append(LogRecord { type, text(context.category), text(context.file),
                                     text(context.function), context.line, message });
    }

    static inline QList<LogRecord> s_records;
    QtMessageHandler m_previous;
};

// PluginsModel's rowCount() answers the same for every parent, on purpose. The model
// tester reports two consequences for the first row's index: it has rows but no
// children, and its first "child" is a row of the root. Any other message is a defect.
inline bool isExpectedModelTesterWarning(const LogRecord& record)
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

// Runs QAbstractItemModelTester over the model once and returns what it says beyond the
// two expected warnings.
inline QStringList modelTesterComplaints(QAbstractItemModel* model)
{
    LogCapture capture;
    {
        QAbstractItemModelTester tester(model,
                                        QAbstractItemModelTester::FailureReportingMode::Warning);
    }
    QStringList complaints;
    const QList<LogRecord> records = capture.records();
    for (const LogRecord& record : records) {
        if (!isExpectedModelTesterWarning(record))
            complaints.append(record.message);
    }
    return complaints;
}

} // namespace ZelvaneTest
