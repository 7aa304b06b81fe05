#pragma once

// Capturing the messages that reach Qt's message handler, for the tests that check log
// lines exactly: type, category, source location and text. Qt only, so that a test
// of the library's logging code alone can use it too.

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

namespace ZelvaneTest {

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

} // namespace ZelvaneTest
