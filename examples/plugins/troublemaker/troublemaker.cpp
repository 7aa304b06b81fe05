// A plugin that does what a bad plugin does, so that the demo's safe start, its
// Start-up view and its plugin bisect each have a real case to find. Off unless the
// user switches it on (the demo's Help > Problem Plugin menu does); --trouble says what
// goes wrong:
//
//   slow-typing     every key press in a document takes a third of a second; nothing
//                   crashes, only the user notices: a case for the plugin bisect
//   slow-start      initialize() sleeps for a second and a half: the Start-up view shows it
//   crash-at-start  initialize() aborts: the next start's safe start names the plugin
//   crash-at-exit   the destructor aborts as shutdown() unloads the plugin
//
// It needs no other plugin, so the bisect suspects it alone and switches it off alone.

#include "../published.h"

#include <zelvane/iplugin.h>

#include <QtCore/QEvent>
#include <QtCore/QObject>
#include <QtCore/QThread>
#include <QtCore/QtDebug>
#include <QtWidgets/QPlainTextEdit>

#include <cstdlib>

namespace {

const QString slowTyping = QStringLiteral("slow-typing");
const QString slowStart = QStringLiteral("slow-start");
const QString crashAtStart = QStringLiteral("crash-at-start");
const QString crashAtExit = QStringLiteral("crash-at-exit");

// What the plugin publishes: the trouble it makes, and, for slow typing, the filter that
// holds up every key press of the editors it watches, as a plugin that does heavy work
// on the GUI thread at each keystroke would.
class Trouble : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind CONSTANT)

public:
    Trouble(const QString& kind, QObject* parent)
        : QObject(parent)
        , m_kind(kind)
    {
        setObjectName(QStringLiteral("troublemaker"));
    }

    QString kind() const { return m_kind; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress)
            QThread::msleep(300);
        return QObject::eventFilter(watched, event);
    }

private:
    QString m_kind;
};

} // namespace

class TroublemakerPlugin : public Zelvane::IPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZELVANE_EXAMPLE_IID FILE "troublemaker.json")

public:
    ~TroublemakerPlugin() override
    {
        qInfo("Troublemaker: unloaded");
        if (m_trouble == crashAtExit)
            std::abort();
    }

    bool initialize(const QMap<QString, QString>& arguments, QString* errorString) override
    {
        m_trouble = arguments.value(QStringLiteral("trouble"), slowTyping);
        if (m_trouble == crashAtStart)
            std::abort();
        if (m_trouble != slowTyping && m_trouble != slowStart && m_trouble != crashAtExit) {
            *errorString = tr("unknown trouble \"%1\" (there are slow-typing, slow-start, "
                              "crash-at-start and crash-at-exit)")
                               .arg(m_trouble);
            return false;
        }
        if (m_trouble == slowStart)
            QThread::msleep(1500);
        // The plugin's child: it stops watching before the plugin's code is unloaded.
        auto* trouble = new Trouble(m_trouble, this);
        Editor::publish(trouble);
        // The editors of later documents are watched as they come.
        if (m_trouble == slowTyping)
            Editor::forEachPublished<QPlainTextEdit>(
                this, [trouble](QPlainTextEdit* editor) { editor->installEventFilter(trouble); });
        qInfo("Troublemaker: initialised");
        return true;
    }

private:
    QString m_trouble;
};

#include "troublemaker.moc"
