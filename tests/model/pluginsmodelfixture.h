#pragma once

// The scene of every plugins model test: a model over a real INI file in a fresh
// QTemporaryDir, a model tester attached, spies on the reset and change signals, and
// every message captured. The tests of the Qt model and of its selection rules derive
// from it; their init() and cleanup() call setUp() and tearDown().

#include "logcapture.h"
#include "modeltestsupport.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <zelvane/pluginloader.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QFile>
#include <QtCore/QMultiMap>
#include <QtCore/QObject>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>

namespace ZelvaneModelTest {

using Plugins = QMultiMap<QString, Zelvane::PluginLoader>;

inline const QString core = QStringLiteral("Core");
inline const QString extension = QStringLiteral("Extension");

inline Zelvane::PluginLoader plugin(const QString& name, const QString& category,
                                    const QStringList& dependencies = {},
                                    bool loadByDefault = false)
{
    return ZelvaneTest::makePlugin(name, category, dependencies, loadByDefault,
                                   QStringLiteral("About ") + name);
}

// Inserts so that values(key) returns the plugins in the order given: a multimap puts
// the entry inserted last first.
inline void insertInOrder(Plugins& plugins, const QString& key,
                          const QList<Zelvane::PluginLoader>& ordered)
{
    for (auto it = ordered.crbegin(); it != ordered.crend(); ++it)
        plugins.insert(key, *it);
}

// Indexes the model would never hand out: out-of-range rows and columns.
class TestModel : public Zelvane::PluginsModel
{
public:
    using PluginsModel::PluginsModel;
    QModelIndex makeIndex(int row, int column) const { return createIndex(row, column); }
};

class PluginsModelFixture : public QObject
{
protected:
    void setUp()
    {
        m_log = std::make_unique<ZelvaneTest::LogCapture>();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY2(m_dir->isValid(), qPrintable(m_dir->errorString()));
    }

    void tearDown()
    {
        releaseModel();
        m_dir.reset();

        verifyLog();
        m_log.reset();
    }

    // Drops the model with everything attached to it, and its settings object.
    void releaseModel()
    {
        m_dataChanged.reset();
        m_modelReset.reset();
        m_aboutToBeReset.reset();
        m_tester.reset();
        m_model.reset();
        m_settings.reset();
    }

    void verifyLog()
    {
        const QList<ZelvaneTest::LogRecord> records = m_log->records();
        for (const ZelvaneTest::LogRecord& record : records) {
            QVERIFY2(ZelvaneTest::isExpectedModelTesterWarning(record),
                     qPrintable(describe(record)));
        }
    }

    // Prints a line to the test log: the capture would swallow it.
    void inform(const QString& text)
    {
        verifyLog();
        m_log.reset();
        qInfo("%s", qPrintable(text));
        m_log = std::make_unique<ZelvaneTest::LogCapture>();
    }

    void build(const Plugins& plugins)
    {
        m_settings = std::make_unique<QSettings>(settingsPath(), QSettings::IniFormat);
        m_model = std::make_unique<TestModel>(plugins, m_settings.get());
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_model.get(), QAbstractItemModelTester::FailureReportingMode::Warning);
        m_aboutToBeReset
            = std::make_unique<QSignalSpy>(m_model.get(), &QAbstractItemModel::modelAboutToBeReset);
        m_modelReset = std::make_unique<QSignalSpy>(m_model.get(), &QAbstractItemModel::modelReset);
        m_dataChanged
            = std::make_unique<QSignalSpy>(m_model.get(), &QAbstractItemModel::dataChanged);
    }

    void store(const QByteArray& ini)
    {
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(ini), ini.size());
    }

    QString settingsPath() const { return m_dir->filePath(QStringLiteral("settings.ini")); }
    QByteArray fileContent() const { return ZelvaneTest::fileContent(settingsPath()); }
    QStringList stored() const { return ZelvaneTest::storedSelection(settingsPath()); }
    QStringList states() const { return ZelvaneTest::checkStates(m_model.get()); }

    QModelIndex row(const QString& name) const
    {
        const QModelIndexList found = m_model->match(
            m_model->index(0, 0), Zelvane::PluginsModel::NameRole, name, 1, Qt::MatchExactly);
        return found.isEmpty() ? QModelIndex() : found.first();
    }

    // The number of resets, checked to come in pairs and never with a dataChanged.
    int resets() const
    {
        if (m_aboutToBeReset->count() != m_modelReset->count() || m_dataChanged->count() != 0)
            return -1;
        return int(m_modelReset->count());
    }

    std::unique_ptr<ZelvaneTest::LogCapture> m_log;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<TestModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<QSignalSpy> m_aboutToBeReset;
    std::unique_ptr<QSignalSpy> m_modelReset;
    std::unique_ptr<QSignalSpy> m_dataChanged;
};

} // namespace ZelvaneModelTest
