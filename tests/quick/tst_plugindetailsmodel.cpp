// The module's PluginDetailsModel, the lines of PluginsPage's details: a model that Qt's
// model tester accepts through every change, that tells the explanation line by line,
// and that after a reread of the folder holds exactly what a model made afresh holds,
// having changed only the lines that differ.

#include "../controller/loadingfixture.h"
#include "diagnostics/pluginexplanation_p.h"

#include <zelvane/diagnostics/LoadDiagnostics>
#include <zelvane/quick/QmlPlugins>

#include <QtCore/QAbstractItemModel>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>

using namespace LoadingTest;

namespace {

// Every role of every row, one string per row.
QStringList rowsOf(const QAbstractItemModel* model)
{
    const QHash<int, QByteArray> roles = model->roleNames();
    QList<int> keys = roles.keys();
    std::sort(keys.begin(), keys.end());
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        QStringList values;
        for (int role : std::as_const(keys))
            values.append(roles.value(role) + QLatin1Char('=')
                          + model->data(model->index(row, 0), role).toString());
        rows.append(values.join(QLatin1Char('|')));
    }
    return rows;
}

// A line as the explanation's sentences() writes it.
QString sentenceOf(const QAbstractItemModel* model, int row)
{
    const auto value = [&](const char* role) {
        return model->data(model->index(row, 0), model->roleNames().key(role)).toString();
    };
    QStringList pieces;
    if (value("kind") == QLatin1String("paragraph")) {
        pieces = QStringList { value("label"), value("body") };
    } else {
        pieces = QStringList { value("code"), value("body") };
        pieces.removeAll(QString());
        if (!value("note").isEmpty())
            pieces.append(pieces.isEmpty() ? value("note") : QStringLiteral("— ") + value("note"));
    }
    pieces.removeAll(QString());
    return pieces.join(QLatin1Char(' '));
}

} // namespace

class tst_PluginDetailsModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void linesTellTheExplanation();
    void rereadChangesOnlyWhatDiffers();
    void cleanupTestCase();

private:
    std::unique_ptr<QAbstractItemModel> makeModel(const QString& filePath, const QString& title);
    QString pathOf(const QString& name) const;

    Scenario m_scenario;
    std::unique_ptr<QQmlEngine> m_engine;
};

void tst_PluginDetailsModel::initTestCase()
{
    QVERIFY(m_scenario.create(
        { "zt_core", "zt_storage", "zt_viewer", "zt_inspect_badarguments", "zt_foreign_chatty" }));
    m_scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(m_scenario.pluginDir())));
    Zelvane::QmlPlugins::setDefaultPluginDirectory(QDir(m_scenario.pluginDir()));
    m_engine = std::make_unique<QQmlEngine>();
    m_engine->addImportPath(QStringLiteral(ZELVANE_QML_DIR));
}

void tst_PluginDetailsModel::cleanupTestCase()
{
    m_engine.reset();
    Zelvane::PluginController::instance()->shutdown();
}

std::unique_ptr<QAbstractItemModel> tst_PluginDetailsModel::makeModel(const QString& filePath,
                                                                      const QString& title)
{
    QQmlComponent component(m_engine.get());
    component.setData(
        "import Zelvane\nPluginDetailsModel { plugins: Plugins; emptyText: \"none\" }", QUrl());
    std::unique_ptr<QObject> object(component.create());
    if (!object)
        qWarning("%s", qPrintable(component.errorString()));
    auto* model = qobject_cast<QAbstractItemModel*>(object.get());
    if (!model)
        return nullptr;
    object.release();
    model->setProperty("title", title);
    model->setProperty("filePath", filePath);
    return std::unique_ptr<QAbstractItemModel>(model);
}

QString tst_PluginDetailsModel::pathOf(const QString& name) const
{
    return QDir(m_scenario.pluginDir()).absoluteFilePath(name);
}

void tst_PluginDetailsModel::linesTellTheExplanation()
{
    const std::unique_ptr<QAbstractItemModel> model = makeModel(QString(), QString());
    QVERIFY(model);
    QAbstractItemModelTester tester(model.get(),
                                    QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(model->data(model->index(0, 0)).toString(), QStringLiteral("none"));

    const Zelvane::LoadDiagnostics folder(QDir(m_scenario.pluginDir()), m_scenario.settings());
    const QList<Zelvane::PluginDiagnostic> files = folder.plugins();
    QCOMPARE(files.size(), 5);
    for (const Zelvane::PluginDiagnostic& file : files) {
        QSignalSpy reset(model.get(), &QAbstractItemModel::modelReset);
        model->setProperty("title", file.fileName());
        model->setProperty("filePath", file.filePath());
        QCOMPARE(reset.size(), 1);
        const QStringList expected = Zelvane::PluginExplanation(file, folder).sentences();
        QStringList sentences;
        for (int row = 1; row < model->rowCount(); ++row)
            sentences.append(sentenceOf(model.get(), row));
        QCOMPARE(sentences, expected);
        QCOMPARE(model->data(model->index(0, 0)).toString(), file.fileName());
    }
}

// Ticks that change the plugin shown, the plugins it needs and the ones that need it,
// each followed by the page's reread: the model kept over them holds what a model made
// afresh holds, and never resets.
void tst_PluginDetailsModel::rereadChangesOnlyWhatDiffers()
{
    // The singleton is there once the engine has imported the module.
    QVERIFY(makeModel(QString(), QString()));
    auto* plugins = Zelvane::QmlPlugins::instance(m_engine.get());
    QVERIFY(plugins);
    Zelvane::PluginsModel* rows = Zelvane::PluginController::instance()->pluginsModel();
    const auto tick = [rows](const QString& name, bool on) {
        const QModelIndexList found = rows->match(
            rows->index(0, 0), Zelvane::PluginsModel::NameRole, name, 1, Qt::MatchExactly);
        if (found.isEmpty())
            return false;
        const Qt::CheckState state = on ? Qt::Checked : Qt::Unchecked;
        rows->setData(found.constFirst(), state, Qt::CheckStateRole);
        return found.constFirst().data(Qt::CheckStateRole).toInt() == state;
    };
    // Viewer needs Storage: ticking one ticks or clears the other along.
    const QList<QPair<QString, bool>> ticks { { "Storage", false }, { "Viewer", true },
                                              { "Viewer", false },  { "Storage", false },
                                              { "Storage", true },  { "Viewer", true } };
    for (const QString& shown :
         { QStringLiteral("libzt_viewer.so"), QStringLiteral("libzt_storage.so"),
           QStringLiteral("libzt_core.so") }) {
        const std::unique_ptr<QAbstractItemModel> kept = makeModel(pathOf(shown), shown);
        QVERIFY(kept);
        QAbstractItemModelTester tester(kept.get(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy reset(kept.get(), &QAbstractItemModel::modelReset);
        QSignalSpy changed(kept.get(), &QAbstractItemModel::dataChanged);
        for (const auto& [name, on] : ticks) {
            QVERIFY2(tick(name, on), qPrintable(name));
            plugins->refresh();
            QVERIFY(QMetaObject::invokeMethod(kept.get(), "reread"));
            const std::unique_ptr<QAbstractItemModel> fresh = makeModel(pathOf(shown), shown);
            QCOMPARE(rowsOf(kept.get()), rowsOf(fresh.get()));
        }
        QCOMPARE(reset.size(), 0);
        // Core's explanation does not depend on the extensions' ticks: not one signal.
        QCOMPARE(changed.isEmpty(), shown == QLatin1String("libzt_core.so"));
    }
}

QTEST_MAIN(tst_PluginDetailsModel)
#include "tst_plugindetailsmodel.moc"
