// Zelvane::StartupProfileView: the "Start-up" view of the host's own last start, one bar
// per plugin, the slowest first, with the texts of StartupProfile.

#include "../controller/loadingfixture.h"

#include <zelvane/widgets/PluginsDialog>
#include <zelvane/widgets/StartupProfileView>

#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>

using namespace LoadingTest;
using Zelvane::StartupProfile;
using Zelvane::StartupProfileView;

namespace {

// The rows of the view, top to bottom: "<label text> | <bar text>".
QStringList rowsOf(const StartupProfileView& view)
{
    const QList<QLabel*> labels = view.findChildren<QLabel*>(QStringLiteral("pluginText"));
    const QList<QProgressBar*> bars = view.findChildren<QProgressBar*>(QStringLiteral("pluginBar"));
    QStringList rows;
    for (qsizetype i = 0; i < labels.size() && i < bars.size(); ++i)
        rows.append(labels.at(i)->text() + QStringLiteral(" | ") + bars.at(i)->text());
    if (labels.size() != bars.size())
        rows.append(QStringLiteral("<labels and bars differ in number>"));
    return rows;
}

} // namespace

class tst_StartupProfileView : public QObject
{
    Q_OBJECT

private slots:
    void beforeAnyStart();
    void slowestFirstWithTheProfilesTexts();
    void refreshShowsTheLatestStart();
    void reachableFromThePluginsDialog();
};

void tst_StartupProfileView::beforeAnyStart()
{
    StartupProfileView view;
    QCOMPARE(view.windowTitle(), QStringLiteral("Start-up"));
    QCOMPARE(view.findChild<QLabel*>(QStringLiteral("summary"))->text(),
             QStringLiteral("No start-up has been profiled."));
    QCOMPARE(rowsOf(view), QStringList());
}

void tst_StartupProfileView::slowestFirstWithTheProfilesTexts()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer", "zt_startup_sleeper" }));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    StartupProfileView view;
    const StartupProfile profile = view.profile();
    QCOMPARE(profile.plugins().size(), 4);
    QStringList expected;
    for (const StartupProfile::Plugin& plugin : profile.slowestFirst())
        expected.append(profile.pluginText(plugin) + " | "
                        + StartupProfile::shareText(profile.share(plugin)));
    QCOMPARE(rowsOf(view), expected);
    QCOMPARE(view.findChild<QLabel*>(QStringLiteral("summary"))->text(), profile.summaryText());
    const QList<QProgressBar*> bars = view.findChildren<QProgressBar*>("pluginBar");
    for (qsizetype i = 1; i < bars.size(); ++i)
        QVERIFY(bars.at(i - 1)->value() >= bars.at(i)->value());
}

void tst_StartupProfileView::refreshShowsTheLatestStart()
{
    StartupProfileView view;
    QCOMPARE(rowsOf(view).size(), 0);

    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core" }));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    QCOMPARE(rowsOf(view).size(), 0);

    view.refresh();
    const StartupProfile profile = StartupProfile::last();
    const StartupProfile::Plugin core = profile.plugins().constFirst();
    QCOMPARE(rowsOf(view),
             QStringList({ profile.pluginText(core) + " | "
                           + StartupProfile::shareText(profile.share(core)) }));
    QVERIFY(profile.pluginText(core).startsWith("Core: "));
}

void tst_StartupProfileView::reachableFromThePluginsDialog()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage" }));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    Zelvane::PluginsDialog dialog(QDir(scenario.pluginDir()));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    auto* button = dialog.findChild<QPushButton*>(QStringLiteral("startupButton"));
    QVERIFY(button);
    QCOMPARE(button->text(), QStringLiteral("Start-up..."));
    QTest::mouseClick(button, Qt::LeftButton);

    auto* window = dialog.findChild<QDialog*>(QStringLiteral("startupWindow"));
    QVERIFY(window);
    QVERIFY(window->isVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("Start-up"));
    const auto* view = window->findChild<StartupProfileView*>();
    QVERIFY(view);
    const StartupProfile profile = StartupProfile::last();
    QStringList expected;
    for (const StartupProfile::Plugin& plugin : profile.slowestFirst())
        expected.append(profile.pluginText(plugin) + " | "
                        + StartupProfile::shareText(profile.share(plugin)));
    QCOMPARE(rowsOf(*view), expected);

    // Asked again: the same window, not a second one.
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(dialog.findChildren<QDialog*>(QStringLiteral("startupWindow")).size(), 1);
}

QTEST_MAIN(tst_StartupProfileView)
#include "tst_startupprofileview.moc"
