#include "problemplugins.h"

#include "../plugins/workbench.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>
#include <zelvane/widgets/pluginbisectwidget.h>

#include <QtCore/QSettings>
#include <QtGui/QAction>
#include <QtGui/QActionGroup>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>

namespace ZelvaneDemo {

namespace {

const QString troublemaker = QStringLiteral("Troublemaker");
const QString troubleArgument = QStringLiteral("trouble");

// The Troublemaker row of the controller's model; invalid when the folder has none.
QModelIndex troublemakerRow(const Zelvane::PluginsModel* model)
{
    if (!model)
        return QModelIndex();
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        if (index.data(Zelvane::PluginsModel::NameRole).toString() == troublemaker)
            return index;
    }
    return QModelIndex();
}

} // namespace

ProblemPlugins::ProblemPlugins(QSettings* settings, const QDir& pluginDir, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_pluginDir(pluginDir)
{
}

ProblemPlugins::~ProblemPlugins()
{
    delete m_bisect;
}

QString ProblemPlugins::troubleKey()
{
    return QStringLiteral("demo/trouble");
}

QMap<QString, QString> ProblemPlugins::withTrouble(QMap<QString, QString> arguments,
                                                   const QSettings& settings)
{
    const QString trouble = settings.value(troubleKey()).toString();
    if (!trouble.isEmpty() && !arguments.contains(troubleArgument))
        arguments.insert(troubleArgument, trouble);
    return arguments;
}

void ProblemPlugins::addTo(Editor::IWorkbench* workbench)
{
    auto* find = new QAction(tr("&Find a Problem Plugin…"), this);
    find->setObjectName(QStringLiteral("findProblemPlugin"));
    connect(find, &QAction::triggered, this,
            [this, workbench] { showBisect(workbench->window()); });
    workbench->addAction(Editor::Menu::Help, find);

    const QModelIndex row = troublemakerRow(Zelvane::PluginController::instance()->pluginsModel());
    if (!row.isValid())
        return;
    m_menu = std::make_unique<QMenu>(tr("Problem &Plugin"));
    m_menu->menuAction()->setObjectName(QStringLiteral("problemPlugin"));
    m_troubles = new QActionGroup(this);
    const bool on = row.data(Zelvane::PluginsModel::CheckedRole).toBool();
    const QString chosen
        = m_settings->value(troubleKey(), QStringLiteral("slow-typing")).toString();
    const QList<std::pair<QString, QString>> troubles {
        { QString(), tr("&Off") },
        { QStringLiteral("slow-typing"), tr("Slow &Typing") },
        { QStringLiteral("slow-start"), tr("Slow &Start") },
        { QStringLiteral("crash-at-start"), tr("Crash at St&art") },
        { QStringLiteral("crash-at-exit"), tr("Crash at &Exit") },
    };
    for (const auto& [trouble, text] : troubles) {
        QAction* action = m_menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(on ? trouble == chosen : trouble.isEmpty());
        action->setData(trouble);
        m_troubles->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, trouble = trouble, workbench] { choose(trouble, workbench->window()); });
    }
    workbench->addAction(Editor::Menu::Help, m_menu->menuAction());
}

void ProblemPlugins::choose(const QString& trouble, QWidget* parent)
{
    // Through the model, as a tick on the plugins screen: the selection it saves is the
    // one its later ticks start from.
    Zelvane::PluginsModel* model = Zelvane::PluginController::instance()->pluginsModel();
    const QModelIndex row = troublemakerRow(model);
    if (!row.isValid())
        return;
    model->setData(row, !trouble.isEmpty(), Zelvane::PluginsModel::CheckedRole);
    if (!trouble.isEmpty())
        m_settings->setValue(troubleKey(), trouble);
    m_settings->sync();

    const auto answer = QMessageBox::question(
        parent, tr("Problem plugin"),
        trouble.isEmpty()
            ? tr("Troublemaker is switched off for the next start. Restart now?")
            : tr("Troublemaker will misbehave (%1) from the next start. Restart now?").arg(trouble),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
    if (answer == QMessageBox::Yes)
        emit restartRequested();
}

void ProblemPlugins::showBisect(QWidget* parent)
{
    if (!m_bisect) {
        auto* bisect = new Zelvane::PluginBisectWidget(m_settings, m_pluginDir, parent);
        bisect->setObjectName(QStringLiteral("pluginBisect"));
        bisect->setWindowFlag(Qt::Window);
        bisect->setAttribute(Qt::WA_DeleteOnClose);
        bisect->resize(520, 360);
        connect(bisect, &Zelvane::PluginBisectWidget::restartRequested, this,
                &ProblemPlugins::restartRequested);
        m_bisect = bisect;
    }
    m_bisect->show();
    m_bisect->raise();
    m_bisect->activateWindow();
}

} // namespace ZelvaneDemo
