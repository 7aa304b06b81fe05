// Zelvane::PluginBisectWidget: the plugin bisect as a guided flow, from pinning and
// starting to the culprit and back to the user's own selection. Every restart is a new
// widget over the same settings, as the host would show it after starting again.

#include "../controller/loadingfixture.h"
#include "settingsfixture.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/widgets/PluginBisectWidget>
#include <zelvane/widgets/PluginsDialog>

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPushButton>

#include <memory>

using namespace LoadingTest;
using Zelvane::PluginBisectWidget;

namespace {

QString statusOf(const PluginBisectWidget& widget)
{
    return widget.findChild<QLabel*>(QStringLiteral("status"))->text();
}

// The object names of the buttons offered, left to right.
QStringList buttonsOf(const PluginBisectWidget& widget)
{
    QStringList names;
    for (const char* name : { "start", "stillThere", "gone", "goOn", "finish" }) {
        const auto* button = widget.findChild<QPushButton*>(QLatin1String(name));
        if (button && !button->isHidden())
            names.append(QLatin1String(name));
    }
    return names;
}

void click(PluginBisectWidget& widget, const char* button)
{
    QTest::mouseClick(widget.findChild<QPushButton*>(QLatin1String(button)), Qt::LeftButton);
}

} // namespace

class tst_PluginBisectWidget : public QObject
{
    Q_OBJECT

private slots:
    void guidedFlow();
    void pinnedPluginsStayOn();
    void everythingPinned();
    void reachableFromThePluginsDialog();
};

void tst_PluginBisectWidget::guidedFlow()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }, "[plugin]\nViewer=true\n"));
    scenario.configureController();
    const QByteArray before = ZelvaneTest::fileContent(scenario.settingsFile());
    const QDir dir(scenario.pluginDir());

    {
        PluginBisectWidget widget(scenario.settings(), dir);
        QCOMPARE(buttonsOf(widget), QStringList({ "start" }));
        QCOMPARE(statusOf(widget),
                 QStringLiteral("Tick the plugins to keep on, then start. Each step switches "
                                "some plugins off and asks for a restart."));
        const auto* pins = widget.findChild<QListWidget*>(QStringLiteral("pins"));
        QCOMPARE(pins->count(), 2);
        QCOMPARE(pins->item(0)->text(), QStringLiteral("Storage"));
        QCOMPARE(pins->item(1)->text(), QStringLiteral("Viewer"));
        QSignalSpy restart(&widget, &PluginBisectWidget::restartRequested);
        click(widget, "start");
        QCOMPARE(restart.count(), 1);
        QCOMPARE(buttonsOf(widget), QStringList({ "stillThere", "gone", "finish" }));
        QCOMPARE(statusOf(widget),
                 QStringLiteral("Restart the application, then tell whether the problem is "
                                "still there. 2 plugins are switched off for this test."));
    }
    {
        // Every suspect off and the problem is gone: one of them.
        PluginBisectWidget widget(scenario.settings(), dir);
        QSignalSpy restart(&widget, &PluginBisectWidget::restartRequested);
        click(widget, "gone");
        QCOMPARE(restart.count(), 1);
        QCOMPARE(statusOf(widget),
                 QStringLiteral("Restart the application, then tell whether the problem is "
                                "still there. 1 plugin is switched off for this test."));
    }
    {
        // Viewer off and the problem is still there: Storage.
        PluginBisectWidget widget(scenario.settings(), dir);
        click(widget, "stillThere");
        QCOMPARE(statusOf(widget), QStringLiteral("Found it: Storage causes the problem."));
        QCOMPARE(buttonsOf(widget), QStringList({ "goOn", "finish" }));
        QSignalSpy restart(&widget, &PluginBisectWidget::restartRequested);
        click(widget, "finish");
        QCOMPARE(restart.count(), 1);
        QCOMPARE(buttonsOf(widget), QStringList({ "start" }));
    }
    scenario.settings()->sync();
    QCOMPARE(ZelvaneTest::fileContent(scenario.settingsFile()), before);
}

void tst_PluginBisectWidget::pinnedPluginsStayOn()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    PluginBisectWidget widget(scenario.settings(), QDir(scenario.pluginDir()));
    auto* pins = widget.findChild<QListWidget*>(QStringLiteral("pins"));
    pins->item(0)->setCheckState(Qt::Checked);
    click(widget, "start");
    // Storage is pinned; Viewer alone is suspected and switched off.
    QCOMPARE(ZelvaneTest::storedSelection(scenario.settingsFile()),
             QStringList({ "Viewer=false" }));
    QCOMPARE(statusOf(widget),
             QStringLiteral("Restart the application, then tell whether the problem is "
                            "still there. 1 plugin is switched off for this test."));
}

void tst_PluginBisectWidget::everythingPinned()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    PluginBisectWidget widget(scenario.settings(), QDir(scenario.pluginDir()));
    auto* pins = widget.findChild<QListWidget*>(QStringLiteral("pins"));
    pins->item(1)->setCheckState(Qt::Checked);
    QSignalSpy restart(&widget, &PluginBisectWidget::restartRequested);
    click(widget, "start");
    QCOMPARE(restart.count(), 0);
    QCOMPARE(statusOf(widget),
             QStringLiteral("No plugin to test: every Extension that loads is pinned."));
    QCOMPARE(buttonsOf(widget), QStringList({ "start" }));
}

// The plugins dialog offers the bisect beside the plugins, over the controller's settings
// and the dialog's folder; a step that needs a restart asks the host through the dialog.
void tst_PluginBisectWidget::reachableFromThePluginsDialog()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer" }));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    Zelvane::PluginsDialog dialog(QDir(scenario.pluginDir()));
    QSignalSpy restart(&dialog, &Zelvane::PluginsDialog::restartRequested);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    auto* button = dialog.findChild<QPushButton*>(QStringLiteral("findProblemPlugin"));
    QVERIFY(button);
    QCOMPARE(button->text(), QStringLiteral("Find a problem plugin..."));
    QCOMPARE(button->accessibleName(), QStringLiteral("Find a problem plugin"));
    QTest::mouseClick(button, Qt::LeftButton);
    auto* window = dialog.findChild<QDialog*>(QStringLiteral("bisectWindow"));
    QVERIFY(window);
    QVERIFY(window->isVisible());
    QCOMPARE(window->windowTitle(), QStringLiteral("Find a plugin that causes a problem"));
    auto* widget = window->findChild<PluginBisectWidget*>();
    QVERIFY(widget);
    QCOMPARE(widget->findChild<QListWidget*>(QStringLiteral("pins"))->count(), 2);

    click(*widget, "start");
    QCOMPARE(restart.count(), 1);
    QCOMPARE(ZelvaneTest::storedSelection(scenario.settingsFile()),
             QStringList({ "Storage=false", "Viewer=false" }));
    // Asked again: the same window, showing where the bisect is.
    window->close();
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(dialog.findChildren<QDialog*>(QStringLiteral("bisectWindow")).size(), 1);
    QVERIFY(window->isVisible());
    QCOMPARE(buttonsOf(*widget), QStringList({ "stillThere", "gone", "finish" }));
    click(*widget, "finish");
    QCOMPARE(restart.count(), 2);
    Zelvane::PluginController::instance()->shutdown();
}

QTEST_MAIN(tst_PluginBisectWidget)
#include "tst_pluginbisectwidget.moc"
