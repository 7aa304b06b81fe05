// The library's two log lines as a host's message handler sees them. This file is
// built twice with the library's logging code, once as a release build and once as a
// debug build, in which Qt's logging macros carry the source location: the library's
// lines must look the same in both.

#include "plugin/pluginlog_p.h"

#include <QtCore/QDebug>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtTest/QTest>

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

namespace {

struct Record
{
    QtMsgType type;
    QString category;
    QString file;
    QString function;
    int line;
    QString message;
};

QList<Record> records;

void handler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const auto text = [](const char* value) {
        return value ? QString::fromUtf8(value) : QStringLiteral("<null>");
    };
    records.append(Record { type, text(context.category), text(context.file),
                            text(context.function), context.line, message });
}

} // namespace

class tst_PluginLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void qtMacrosOfThisBuild();
    void droppedPlugin_data();
    void droppedPlugin();
    void unimplemented();

private:
    QtMessageHandler m_previous = nullptr;
};

void tst_PluginLog::init()
{
    records.clear();
    m_previous = qInstallMessageHandler(&handler);
}

void tst_PluginLog::cleanup()
{
    qInstallMessageHandler(m_previous);
}

void tst_PluginLog::qtMacrosOfThisBuild()
{
    // The yardstick: what qDebug() of this very build hands the handler.
    const int line = __LINE__ + 1;
    qDebug("from the test");
    QCOMPARE(records.size(), 1);
    const Record record = records.first();
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
    QCOMPARE(records.size(), 1);
    const Record record = records.first();
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
    QCOMPARE(records.size(), 2);
    for (const Record& record : std::as_const(records)) {
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
