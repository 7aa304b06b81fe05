#pragma once

// The type PluginBisectFlow of the module Zelvane. Internal: never installed.

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtQml/qqmlregistration.h>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

namespace Zelvane {

// The plugin bisect for a QML page: where it is, in PluginBisect's own words, and the
// actions of the guided flow that the Widgets component offers too. The bisect lives in
// the controller's settings across restarts, so every read and every action goes to a
// PluginBisect made afresh from them; after a restart a new page shows the next step.
class QmlPluginBisect : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(PluginBisectFlow)
    Q_PROPERTY(QString pluginDirectory READ pluginDirectory WRITE setPluginDirectory NOTIFY
                   pluginDirectoryChanged)
    Q_PROPERTY(State state READ state NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(QStringList candidates READ candidates NOTIFY changed)
    Q_PROPERTY(QStringList pinned READ pinned WRITE setPinned NOTIFY pinnedChanged)
    Q_PROPERTY(QString culprit READ culprit NOTIFY changed)
    Q_PROPERTY(QStringList culprits READ culprits NOTIFY changed)
    Q_PROPERTY(QStringList switchedOff READ switchedOff NOTIFY changed)
    Q_PROPERTY(int restarts READ restarts NOTIFY changed)
    Q_PROPERTY(int maximumRestarts READ maximumRestarts NOTIFY changed)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString pinListName READ pinListName CONSTANT)
    Q_PROPERTY(QString startText READ startText CONSTANT)
    Q_PROPERTY(QString stillThereText READ stillThereText CONSTANT)
    Q_PROPERTY(QString goneText READ goneText CONSTANT)
    Q_PROPERTY(QString goOnText READ goOnText CONSTANT)
    Q_PROPERTY(QString finishText READ finishText CONSTANT)

public:
    // PluginBisect::State, for QML.
    enum State {
        Idle,
        Testing,
        Found,
        NoOtherCulprit,
        NotAnExtension,
        Interrupted,
    };
    Q_ENUM(State)

    explicit QmlPluginBisect(QObject* parent = nullptr);

    QString pluginDirectory() const;
    void setPluginDirectory(const QString& path);

    State state() const;
    QString statusText() const;
    QStringList candidates() const;
    QStringList pinned() const;
    void setPinned(const QStringList& names);
    QString culprit() const;
    QStringList culprits() const;
    QStringList switchedOff() const;
    int restarts() const;
    int maximumRestarts() const;

    QString title() const;
    QString pinListName() const;
    QString startText() const;
    QString stillThereText() const;
    QString goneText() const;
    QString goOnText() const;
    QString finishText() const;

    Q_INVOKABLE bool isPinned(const QString& name) const;
    Q_INVOKABLE void setPinnedPlugin(const QString& name, bool pinned);

    // Starts over the candidates, keeping the pinned ones on; on success the host
    // restarts (restartRequested()), otherwise statusText says why.
    Q_INVOKABLE bool start();
    Q_INVOKABLE void answer(bool problemIsThere);
    Q_INVOKABLE void goOn();
    // Ends the bisect in any state and puts the user's selection back.
    Q_INVOKABLE void finish();
    Q_INVOKABLE void cancel();
    // Reads where the bisect is from the settings again.
    Q_INVOKABLE void refresh();

Q_SIGNALS:
    void changed();
    void pinnedChanged();
    void pluginDirectoryChanged();
    // The next step is set: the host should restart now.
    void restartRequested();

private:
    QSettings* settings() const;

    QString m_directory;
    State m_state = Idle;
    QString m_status;
    QString m_error;
    QStringList m_candidates;
    QStringList m_pinned;
    QStringList m_culprits;
    QStringList m_switchedOff;
    int m_restarts = 0;
    int m_maximumRestarts = 0;
};

} // namespace Zelvane
