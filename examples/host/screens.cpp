#include "screens.h"

#include "../plugins/published.h"
#include "../plugins/workbench.h"
#include "aboutplugins.h"
#include "problemplugins.h"
#ifdef ZELVANE_DEMO_QML
#include "pluginspage.h"
#endif

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>
#include <zelvane/widgets/pluginsdialog.h>
#include <zelvane/widgets/pluginswidget.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QMetaObject>
#include <QtGui/QAction>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QWidget>

namespace ZelvaneDemo {

namespace {

// Opens the window's first menu and returns a picture of both. A menu is a window of
// its own, so the two pictures are put together where the menu drops down.
QImage fileMenuPicture(QMainWindow* window)
{
    window->show();
    QCoreApplication::processEvents();
    QMenuBar* bar = window->menuBar();
    QAction* first = bar->actions().value(0);
    if (!first || !first->menu())
        return window->grab().toImage();
    bar->setActiveAction(first);
    const QPoint position = bar->mapTo(window, bar->actionGeometry(first).bottomLeft());
    first->menu()->popup(window->mapToGlobal(position));
    QCoreApplication::processEvents();
    QImage image = window->grab().toImage();
    QPainter painter(&image);
    painter.drawPixmap(position, first->menu()->grab());
    return image;
}

} // namespace

Screens::Screens(const QDir& pluginDir, const LoadTracker* tracker, const QString& settingsFile,
                 bool qmlPage, QObject* parent)
    : QObject(parent)
    , m_pluginDir(pluginDir)
    , m_tracker(tracker)
    , m_settingsFile(settingsFile)
    , m_qmlPage(qmlPage)
    , m_problems(std::make_unique<ProblemPlugins>(Zelvane::PluginController::instance()->settings(),
                                                  pluginDir))
{
    connect(m_problems.get(), &ProblemPlugins::restartRequested, this, &Screens::restart);
    m_workbench
        = qobject_cast<Editor::IWorkbench*>(Editor::findPublished(QStringLiteral("workbench")));
    if (!m_workbench || !m_workbench->window()) {
        m_workbench = nullptr;
        m_about = std::make_unique<AboutPlugins>(m_tracker, m_settingsFile);
        return;
    }
    auto* plugins = new QAction(tr("&Plugins…"), this);
    plugins->setObjectName(QStringLiteral("showPlugins"));
    connect(plugins, &QAction::triggered, this, &Screens::showPluginsScreen);
    m_workbench->addAction(Editor::Menu::Tools, plugins);
    auto* about = new QAction(tr("&About Plugins"), this);
    about->setObjectName(QStringLiteral("aboutPlugins"));
    connect(about, &QAction::triggered, this, &Screens::showAboutPlugins);
    m_workbench->addAction(Editor::Menu::Help, about);
    m_problems->addTo(m_workbench);
}

Screens::~Screens() = default;

QWidget* Screens::mainWindow() const
{
    return m_workbench ? static_cast<QWidget*>(m_workbench->window()) : m_about.get();
}

bool Screens::openFiles(const QStringList& files, QString* error)
{
    if (files.isEmpty())
        return true;
    QObject* documents = Editor::findPublished(QStringLiteral("documents"));
    if (!documents || !m_workbench) {
        *error = tr("cannot open %1: the Documents plugin is switched off").arg(files.join(u' '));
        return false;
    }
    for (const QString& file : files) {
        bool opened = false;
        QMetaObject::invokeMethod(documents, "open", Q_RETURN_ARG(bool, opened),
                                  Q_ARG(QString, file));
        if (!opened) {
            *error = documents->property("errorString").toString();
            return false;
        }
    }
    return true;
}

void Screens::show(Screen screen)
{
    mainWindow()->show();
    if (screen == Screen::Plugins)
        showPluginsScreen();
    else if (screen == Screen::About && m_workbench)
        showAboutPlugins();
    else if (screen == Screen::FileMenu && m_workbench)
        fileMenuPicture(m_workbench->window());
}

void Screens::showPluginsScreen()
{
#ifdef ZELVANE_DEMO_QML
    if (m_qmlPage) {
        auto* page = new PluginsPage(m_pluginDir, m_selectedPlugin);
        page->setModality(Qt::ApplicationModal);
        connect(page, &PluginsPage::restartRequested, this, &Screens::restart);
        connect(page, &QWindow::visibleChanged, page, [page](bool visible) {
            if (!visible)
                page->deleteLater();
        });
        page->show();
        return;
    }
#endif
    auto* dialog = new Zelvane::PluginsDialog(m_pluginDir, mainWindow());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (!m_selectedPlugin.isEmpty())
        dialog->pluginsWidget()->setCurrentPlugin(m_selectedPlugin);
    // The demo can restart itself: the notice offers "Restart now".
    dialog->pluginsWidget()->setRestartOffered(true);
    connect(dialog, &Zelvane::PluginsDialog::restartRequested, this, &Screens::restart);
    dialog->open();
}

void Screens::restart()
{
    m_restartRequested = true;
    QCoreApplication::quit();
}

void Screens::showAboutPlugins()
{
    if (!m_about)
        m_about = std::make_unique<AboutPlugins>(m_tracker, m_settingsFile, mainWindow());
    m_about->show();
    m_about->raise();
}

void Screens::showPluginBisect()
{
    m_problems->showBisect(mainWindow());
}

bool Screens::screenshot(Screen screen, const QString& fileName, QString* error)
{
    QImage image;
    if (screen == Screen::Plugins && m_qmlPage) {
#ifdef ZELVANE_DEMO_QML
        PluginsPage page(m_pluginDir, m_selectedPlugin);
        connect(&page, &PluginsPage::restartRequested, this, &Screens::restart);
        if (!page.errorText().isEmpty()) {
            *error = page.errorText();
            return false;
        }
        page.show();
        image = page.grabWindow();
#else
        *error = tr("this demo was built without Qt Quick");
        return false;
#endif
    } else if (screen == Screen::Plugins) {
        Zelvane::PluginsDialog dialog(m_pluginDir);
        if (!m_selectedPlugin.isEmpty())
            dialog.pluginsWidget()->setCurrentPlugin(m_selectedPlugin);
        // The notice's Restart now button shows as it does in the demo's window.
        dialog.pluginsWidget()->setRestartOffered(true);
        connect(&dialog, &Zelvane::PluginsDialog::restartRequested, this, &Screens::restart);
        dialog.show();
        QCoreApplication::processEvents();
        image = dialog.grab().toImage();
    } else if (screen == Screen::FileMenu && m_workbench) {
        image = fileMenuPicture(m_workbench->window());
    } else {
        if (screen == Screen::About)
            showAboutPlugins();
        QWidget* window
            = screen == Screen::About ? static_cast<QWidget*>(m_about.get()) : mainWindow();
        window->show();
        // Layouts settle and the spell checker highlights in posted events.
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        image = window->grab().toImage();
    }
    if (image.isNull() || !image.save(fileName, "PNG")) {
        *error = tr("cannot write %1").arg(fileName);
        return false;
    }
    return true;
}

} // namespace ZelvaneDemo
