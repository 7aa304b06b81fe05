#pragma once

#include <QtCore/QDir>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QActionGroup;
class QMenu;
class QSettings;
class QWidget;
QT_END_NAMESPACE

namespace Editor {
class IWorkbench;
}

namespace ZelvaneDemo {

// The demo's way to try the tools for plugins that misbehave, with nothing to write:
//
//   Help > Problem Plugin    switches the example plugin Troublemaker on with the
//                            trouble chosen (slow typing, a slow start, a crash at start
//                            or at exit), or off; it applies at the next start
//   Help > Find a Problem Plugin…   the plugin bisect as a guided flow
//
// The trouble chosen is the demo's own setting, troubleKey() in the host's settings;
// the host hands it to the plugins as the argument "trouble" unless the command line
// gives one.
class ProblemPlugins : public QObject
{
    Q_OBJECT

public:
    ProblemPlugins(QSettings* settings, const QDir& pluginDir, QObject* parent = nullptr);
    ~ProblemPlugins() override;

    // "demo/trouble".
    static QString troubleKey();
    // The arguments with "trouble" added from the settings when they have none.
    static QMap<QString, QString> withTrouble(QMap<QString, QString> arguments,
                                              const QSettings& settings);

    // Puts both entries into the workbench's Help menu.
    void addTo(Editor::IWorkbench* workbench);
    // Opens the bisect's window over parent (once; later calls raise it).
    void showBisect(QWidget* parent);

Q_SIGNALS:
    // A change that applies at the next start: the host restarts.
    void restartRequested();

private:
    void choose(const QString& trouble, QWidget* parent);

    QSettings* m_settings;
    QDir m_pluginDir;
    // The workbench's window is the core plugin's and goes with it; the submenu is the
    // host's, so it is owned here and gone before the plugins are unloaded.
    std::unique_ptr<QMenu> m_menu;
    QActionGroup* m_troubles = nullptr;
    QPointer<QWidget> m_bisect;
};

} // namespace ZelvaneDemo
