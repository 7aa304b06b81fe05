#pragma once

#include <QtCore/QDir>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace Editor {
class IWorkbench;
}

namespace ZelvaneDemo {

class AboutPlugins;
class LoadTracker;
class ProblemPlugins;

// What zelvane-demo can show, on start (--show) or in a screenshot. FileMenu is the
// editor with its File menu open, where the extensions' commands are.
enum class Screen { Editor, FileMenu, Plugins, About };

// The demo's windows. The editor window is the core plugin's (the workbench in the
// pool); the host only adds its own commands to it, Tools > Plugins…, Help > About
// plugins and the entries of ProblemPlugins in the Help menu. Without a core plugin that makes a
// window, About plugins is the main window.
class Screens : public QObject
{
    Q_OBJECT

public:
    Screens(const QDir& pluginDir, const LoadTracker* tracker, const QString& settingsFile,
            bool qmlPage, QObject* parent = nullptr);
    ~Screens() override;

    // Opens the files through the Documents plugin's published "documents" object.
    // False with the reason when a file cannot be opened or no plugin opens documents.
    bool openFiles(const QStringList& files, QString* error);

    // The plugin whose details the plugins screen shows first.
    void setSelectedPlugin(const QString& name) { m_selectedPlugin = name; }

    // Shows the main window, and the screen over it unless that is the editor.
    void show(Screen screen);
    // Renders the screen offscreen to a PNG file; false with the reason on failure.
    bool screenshot(Screen screen, const QString& fileName, QString* error);

    void showPluginsScreen();
    void showAboutPlugins();
    // The plugin bisect's guided flow, over the main window.
    void showPluginBisect();

    // Whether the user asked for a restart: the host starts the demo again with the same
    // arguments once this run has shut its plugins down, so that a new selection applies
    // and the two runs never share the settings' safe-start mark.
    bool restartRequested() const { return m_restartRequested; }

private:
    QWidget* mainWindow() const;
    // Ends the event loop for a restart.
    void restart();

    QDir m_pluginDir;
    const LoadTracker* m_tracker;
    QString m_settingsFile;
    QString m_selectedPlugin;
    bool m_qmlPage;
    bool m_restartRequested = false;
    Editor::IWorkbench* m_workbench = nullptr;
    std::unique_ptr<AboutPlugins> m_about;
    std::unique_ptr<ProblemPlugins> m_problems;
};

} // namespace ZelvaneDemo
