// The library's two log lines as a host's message handler sees them. This file is
// built twice with the library's logging code, once as a release build and once as a
// debug build, in which Qt's logging macros carry the source location: the library's
// lines must look the same in both.

#include "logcapture.h"
#include "plugin/pluginlog_p.h"

#include <QtCore/QDebug>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtTest/QTest>

#include <memory>

#if defined(ZELVANE_TEST_LOG_DEBUG)
#if defined(QT_NO_DEBUG) || !defined(QT_MESSAGELOGCONTEXT)
#error "the debug flavour must be built without QT_NO_DEBUG"
#endif
#elif defined(ZELVANE_TEST_LOG_RELEASE)
#if !defined(QT_NO_DEBUG) || defined(QT_MESSAGELOGCONTEXT)
#error "the release flavour must be built with QT_NO_DEBUG"
#endif
#else
#error "build this test as ZELVANE_TEST_LOG_DEBUG or ZELVANE_TEST_LOG_RELEASE"
#endif

using ZelvaneTest::LogCapture;
using ZelvaneTest::LogRecord;

class tst_PluginLog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void qtMacrosOfThisBuild();
    void droppedPlugin_data();
    void droppedPlugin();
    void unimplemented();

private:
    std::unique_ptr<LogCapture> m_log;
};

void tst_PluginLog::init()
{
    m_log = std::make_unique<LogCapture>();
}

void tst_PluginLog::cleanup()
{
    m_log.reset();
}

void tst_PluginLog::qtMacrosOfThisBuild()
{
    // The yardstick: what qDebug() of this very build hands the handler.
    const int line = __LINE__ + 1;
    qDebug("from the test");
    const QList<LogRecord> records = m_log->records();
    QCOMPARE(records.size(), 1);
    const LogRecord record = records.first();
    QCOMPARE(record.category, QStringLiteral("default"));
#if defined(ZELVANE_TEST_LOG_DEBUG)
    QCOMPARE(record.file, QStringLiteral(__FILE__));
    QCOMPARE(record.line, line);
    QVERIFY2(record.function.contains(QStringLiteral("qtMacrosOfThisBuild")),
             qPrintable(record.function));
#else
    Q_UNUSED(line)
    QCOMPARE(record.file, QStringLiteral("<null>"));
    QCOMPARE(record.line, 0);
    QCOMPARE(record.function, QStringLiteral("<null>"));
#endif
}

void tst_PluginLog::droppedPlugin_data()
{
    QTest::addColumn<QString>("errorString");
    QTest::addColumn<QString>("message");

    QTest::newRow("a plain text")
        << QStringLiteral("/plugins/libx.so is not a plugin (no string IID found)")
        << QStringLiteral("\"/plugins/libx.so is not a plugin (no string IID found)\"");
    QTest::newRow("a text with quotes")
        << QStringLiteral("The file \"/plugins/libx.so\" has no plugin metadata")
        << QStringLiteral("\"The file \\\"/plugins/libx.so\\\" has no plugin metadata\"");
    QTest::newRow("an empty text") << QString() << QStringLiteral("\"\"");
}

void tst_PluginLog::droppedPlugin()
{
    QFETCH(QString, errorString);
    QFETCH(QString, message);

    Zelvane::logDroppedPlugin(errorString);
    const QList<LogRecord> records = m_log->records();
    QCOMPARE(records.size(), 1);
    const LogRecord record = records.first();
    QCOMPARE(record.type, QtDebugMsg);
    QCOMPARE(record.category, QStringLiteral("default"));
    QCOMPARE(record.file, QStringLiteral("<null>"));
    QCOMPARE(record.function, QStringLiteral("<null>"));
    QCOMPARE(record.line, 0);
    QCOMPARE(record.message, message);
}

void tst_PluginLog::unimplemented()
{
    Zelvane::logUnimplemented();
    Zelvane::logUnimplemented();
    const QList<LogRecord> records = m_log->records();
    QCOMPARE(records.size(), 2);
    for (const LogRecord& record : records) {
        QCOMPARE(record.type, QtWarningMsg);
        QCOMPARE(record.category, QStringLiteral("default"));
        QCOMPARE(record.file, QStringLiteral("<null>"));
        QCOMPARE(record.function, QStringLiteral("<null>"));
        QCOMPARE(record.line, 0);
        QCOMPARE(record.message, QStringLiteral("Unimplemented code."));
    }
}

QTEST_GUILESS_MAIN(tst_PluginLog)

#include "tst_pluginlog.moc"
