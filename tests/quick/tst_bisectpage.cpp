// Runs bisectpage.qml: the module's BisectPage over a folder of test plugins and a
// real INI file, which the controller holds as the host's settings. A restart of the
// host is a new page over the same settings, as the host would show it after starting
// again.

#include "../controller/loadingfixture.h"
#include "settingsfixture.h"

#include <QtQml/QQmlEngine>
#include <QtQml/qqml.h>
#include <QtQuickTest/QtQuickTest>

#include <memory>
#include <vector>

// The world of one test function, made from QML: Fixture.create() copies the plugins and
// writes the selection, then points the controller at it.
class Fixture : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE bool create(const QStringList& targets, const QString& ini)
    {
        auto scenario = std::make_unique<LoadingTest::Scenario>();
        if (!scenario->create(targets, ini.toUtf8()))
            return false;
        scenario->configureController();
        // The settings of an earlier function stay alive: a page may still hold them.
        m_scenarios.push_back(std::move(scenario));
        return true;
    }

    Q_INVOKABLE QString pluginDir() const { return current().pluginDir(); }

    // The INI file as it is on disk, after the settings have written it.
    Q_INVOKABLE QString settingsContent() const
    {
        current().settings()->sync();
        return QString::fromUtf8(ZelvaneTest::fileContent(current().settingsFile()));
    }

    Q_INVOKABLE QStringList storedSelection() const
    {
        current().settings()->sync();
        return ZelvaneTest::storedSelection(current().settingsFile());
    }

private:
    const LoadingTest::Scenario& current() const { return *m_scenarios.back(); }

    std::vector<std::unique_ptr<LoadingTest::Scenario>> m_scenarios;
};

class Setup : public QObject
{
    Q_OBJECT

public slots:
    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->addImportPath(QStringLiteral(ZELVANE_QML_DIR));
        qmlRegisterSingletonInstance("ZelvaneTest", 1, 0, "Fixture", &m_fixture);
    }

private:
    Fixture m_fixture;
};

QUICK_TEST_MAIN_WITH_SETUP(tst_bisectpage, Setup)

#include "tst_bisectpage.moc"
