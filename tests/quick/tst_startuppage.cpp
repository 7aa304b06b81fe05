// The module's StartupPage and StartupProfileModel: the host's own last start, one bar
// per plugin, the slowest first, with the texts that the widget view shows too.

#include "../controller/loadingfixture.h"

#include <zelvane/diagnostics/StartupProfile>

#include <QtCore/QAbstractItemModel>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QTest>

#include <memory>

using namespace LoadingTest;
using Zelvane::StartupProfile;

namespace {

QStringList column(const QAbstractItemModel* model, const QByteArray& role)
{
    const int key = model->roleNames().key(role, -1);
    QStringList values;
    for (int row = 0; row < model->rowCount(); ++row)
        values.append(model->data(model->index(row, 0), key).toString());
    return values;
}

} // namespace

class tst_StartupPage : public QObject
{
    Q_OBJECT

private slots:
    void showsTheLastStartSlowestFirst();
};

void tst_StartupPage::showsTheLastStartSlowestFirst()
{
    Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage", "zt_viewer", "zt_startup_sleeper" }));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    QQmlEngine engine;
    engine.addImportPath(QStringLiteral(ZELVANE_QML_DIR));
    QQmlComponent component(&engine);
    component.setData("import Zelvane\nStartupPage { width: 400; height: 300 }", QUrl());
    std::unique_ptr<QObject> page(component.create());
    QVERIFY2(page, qPrintable(component.errorString()));

    QCOMPARE(page->property("title").toString(), QStringLiteral("Start-up"));
    auto* model = page->property("profile").value<QAbstractItemModel*>();
    QVERIFY(model);
    QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    const StartupProfile profile = StartupProfile::last();
    QStringList texts;
    QStringList shares;
    QStringList names;
    for (const StartupProfile::Plugin& plugin : profile.slowestFirst()) {
        names.append(plugin.name);
        texts.append(profile.pluginText(plugin));
        shares.append(StartupProfile::shareText(profile.share(plugin)));
    }
    QCOMPARE(names.size(), 4);
    QCOMPARE(column(model, "name"), names);
    QCOMPARE(column(model, "text"), texts);
    QCOMPARE(column(model, "shareText"), shares);
    QCOMPARE(column(model, "failed"), QStringList({ "false", "false", "false", "false" }));
    QCOMPARE(page->findChild<QObject*>(QStringLiteral("summary"))->property("text").toString(),
             profile.summaryText());
    QCOMPARE(page->findChild<QObject*>(QStringLiteral("bars"))->property("count").toInt(), 4);
}

QTEST_MAIN(tst_StartupPage)
#include "tst_startuppage.moc"
