// zelvane-create-plugin as its users run it: the values it refuses, with exit status 2
// and one line that says why, and the projects it writes for names that are hard to
// write into C++, JSON and CMake, whose metadata the build-time check passes silently.

#include "processrunner.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

namespace {

using Result = ZelvaneTest::ProcessResult;

Result createPlugin(const QStringList& arguments, const QString& workingFolder)
{
    const QString current = QDir::currentPath();
    QDir::setCurrent(workingFolder);
    const Result result
        = ZelvaneTest::runProcess(QStringLiteral(ZELVANE_CREATE_PLUGIN_EXECUTABLE), arguments);
    QDir::setCurrent(current);
    return result;
}

// Every file below folder, relative to it, sorted.
QStringList filesBelow(const QString& folder)
{
    QStringList files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(QDir(folder).relativeFilePath(it.next()));
    files.sort();
    return files;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot read>");
}

const QString iid = QStringLiteral("org.example.MyEditor/1.0");

} // namespace

class tst_CreatePlugin : public QObject
{
    Q_OBJECT

private slots:
    void refusals_data();
    void refusals();
    void project_data();
    void project();
};

void tst_CreatePlugin::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");

    const QString usage
        = QStringLiteral("usage: zelvane-create-plugin NAME --iid IID [--category Core|Extension] "
                         "[--depends NAME...] [--output DIR]\n");
    QTest::newRow("no name") << QStringList { QStringLiteral("--iid"), iid } << usage;
    QTest::newRow("no IID") << QStringList { QStringLiteral("Spellcheck") } << usage;
    QTest::newRow("two names") << QStringList {
        QStringLiteral("Spellcheck"), QStringLiteral("Documents"), QStringLiteral("--iid"), iid
    } << usage;
    QTest::newRow("an empty name")
        << QStringList { QString(), QStringLiteral("--iid"), iid }
        << QStringLiteral("zelvane-create-plugin: invalid plugin name \"\": a plugin name must "
                          "not be empty; the library refuses a plugin without one\n");
    QTest::newRow("an IID with a space")
        << QStringList { QStringLiteral("Spellcheck"), QStringLiteral("--iid"),
                         QStringLiteral("org.example Editor") }
        << QStringLiteral("zelvane-create-plugin: invalid IID \"org.example Editor\": an IID is "
                          "made of ASCII letters, digits and . _ - / + :, like "
                          "org.example.MyEditor/1.0\n");
    QTest::newRow("an IID with a quote")
        << QStringList { QStringLiteral("Spellcheck"), QStringLiteral("--iid"),
                         QStringLiteral("org.\"example") }
        << QStringLiteral("zelvane-create-plugin: invalid IID \"org.\"example\": an IID is "
                          "made of ASCII letters, digits and . _ - / + :, like "
                          "org.example.MyEditor/1.0\n");
    QTest::newRow("a category in lower case")
        << QStringList { QStringLiteral("Spellcheck"), QStringLiteral("--iid"), iid,
                         QStringLiteral("--category"), QStringLiteral("core") }
        << QStringLiteral("zelvane-create-plugin: invalid category \"core\": the category is "
                          "\"Core\" or \"Extension\", letter case included; a plugin of any "
                          "other category is never loaded\n");
    QTest::newRow("a dependency on itself")
        << QStringList { QStringLiteral("Spellcheck"),
                         QStringLiteral("--iid"),
                         iid,
                         QStringLiteral("--depends"),
                         QStringLiteral("Documents"),
                         QStringLiteral("Spellcheck") }
        << QStringLiteral("zelvane-create-plugin: invalid dependency \"Spellcheck\": the plugin "
                          "names itself, so it would never be loaded\n");
    QTest::newRow("an empty dependency")
        << QStringList { QStringLiteral("Spellcheck"), QStringLiteral("--iid"), iid,
                         QStringLiteral("--depends="), }
        << QStringLiteral("zelvane-create-plugin: invalid dependency \"\": a dependency must not "
                          "be empty; no plugin has an empty name, so the plugin would never be "
                          "loaded\n");
    QTest::newRow("a folder that is not empty")
        << QStringList { QStringLiteral("Spellcheck"), QStringLiteral("--iid"), iid,
                         QStringLiteral("--output"), QStringLiteral("full") }
        << QStringLiteral("zelvane-create-plugin: full exists and is not empty; give a new "
                          "folder with --output\n");
    QTest::newRow("the default folder, not empty")
        << QStringList { QStringLiteral("Full"), QStringLiteral("--iid"), iid }
        << QStringLiteral("zelvane-create-plugin: full exists and is not empty; give a new "
                          "folder with --output\n");
    QTest::newRow("a file") << QStringList { QStringLiteral("Spellcheck"), QStringLiteral("--iid"),
                                             iid, QStringLiteral("--output"),
                                             QStringLiteral("full/.hidden") }
                            << QStringLiteral("zelvane-create-plugin: full/.hidden exists and is "
                                              "not a folder\n");
}

void tst_CreatePlugin::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);

    // "full" holds one hidden file, which counts: the project's .gitignore is one too.
    QTemporaryDir work;
    QVERIFY(QDir(work.path()).mkdir(QStringLiteral("full")));
    QFile hidden(work.filePath(QStringLiteral("full/.hidden")));
    QVERIFY(hidden.open(QIODevice::WriteOnly));
    hidden.close();

    const Result result = createPlugin(arguments, work.path());
    QCOMPARE(result.err, error);
    QCOMPARE(result.out, QString());
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(filesBelow(work.path()), QStringList { QStringLiteral("full/.hidden") });
}

void tst_CreatePlugin::project_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QStringList>("dependencies");

    QTest::newRow("a Core plugin")
        << QStringLiteral("Workbench")
        << QStringList { QStringLiteral("--category"), QStringLiteral("Core") }
        << QStringLiteral("workbench") << QStringLiteral("WorkbenchPlugin")
        << QStringLiteral("Core") << QStringList();
    QTest::newRow("words, and two dependencies after one --depends")
        << QStringLiteral("Spell check")
        << QStringList { QStringLiteral("--depends"), QStringLiteral("Documents"),
                         QStringLiteral("Work bench") }
        << QStringLiteral("spellcheck") << QStringLiteral("SpellCheckPlugin")
        << QStringLiteral("Extension")
        << QStringList { QStringLiteral("Documents"), QStringLiteral("Work bench") };
    QTest::newRow("a digit first, quotes and a backslash")
        << QStringLiteral("3D \"Viewer\" \\ 2") << QStringList() << QStringLiteral("my3dviewer2")
        << QStringLiteral("My3DViewer2Plugin") << QStringLiteral("Extension") << QStringList();
    QTest::newRow("letters beyond ASCII, and a dependency twice")
        << QStringLiteral("Ünïcödé")
        << QStringList { QStringLiteral("--depends"), QStringLiteral("Ärger"),
                         QStringLiteral("--depends"), QStringLiteral("Ärger") }
        << QStringLiteral("ncd") << QStringLiteral("NCDPlugin") << QStringLiteral("Extension")
        << QStringList { QStringLiteral("Ärger") };
}

void tst_CreatePlugin::project()
{
    QFETCH(QString, name);
    QFETCH(QStringList, options);
    QFETCH(QString, target);
    QFETCH(QString, className);
    QFETCH(QString, category);
    QFETCH(QStringList, dependencies);

    QTemporaryDir work;
    const Result result
        = createPlugin(QStringList { name, QStringLiteral("--iid"), iid } + options, work.path());
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, 0);

    const QString folder = work.filePath(target);
    QStringList expected { QStringLiteral(".gitignore"),
                           QStringLiteral("CMakeLists.txt"),
                           QStringLiteral("README.md"),
                           target + QStringLiteral(".json"),
                           target + QStringLiteral("object.cpp"),
                           target + QStringLiteral("object.h"),
                           target + QStringLiteral("plugin.cpp"),
                           QStringLiteral("tests/tst_") + target + QStringLiteral("object.cpp") };
    expected.sort();
    QCOMPARE(filesBelow(folder), expected);

    const QJsonObject metadata = QJsonDocument::fromJson(readFile(folder + QLatin1Char('/') + target
                                                                  + QStringLiteral(".json")))
                                     .object();
    QCOMPARE(metadata.value(QStringLiteral("Name")).toString(), name);
    QCOMPARE(metadata.value(QStringLiteral("Category")).toString(), category);
    QCOMPARE(metadata.value(QStringLiteral("Dependencies")).toVariant().toStringList(),
             dependencies);
    QCOMPARE(metadata.value(QStringLiteral("Default")), QJsonValue(true));
    QCOMPARE(metadata.value(QStringLiteral("Description")).toString(),
             QStringLiteral("The %1 plugin").arg(name));

    const QByteArray plugin
        = readFile(folder + QLatin1Char('/') + target + QStringLiteral("plugin.cpp"));
    QVERIFY2(plugin.contains("class " + className.toUtf8() + " : public Zelvane::IPlugin"),
             plugin.constData());
    const QByteArray cmake = readFile(folder + QStringLiteral("/CMakeLists.txt"));
    QVERIFY2(cmake.contains("set(HOST_IID \"" + iid.toUtf8() + "\")"), cmake.constData());

    // The build runs this check on the file; a generated project passes it silently.
    const Result check = ZelvaneTest::runProcess(
        QStringLiteral(ZELVANE_CMAKE_EXECUTABLE),
        { QStringLiteral("-DZELVANE_METADATA=") + folder + QLatin1Char('/') + target
              + QStringLiteral(".json"),
          QStringLiteral("-P"), QStringLiteral(ZELVANE_CHECK_METADATA_SCRIPT) });
    QCOMPARE(check.err, QString());
    QCOMPARE(check.exitCode, 0);
}

QTEST_GUILESS_MAIN(tst_CreatePlugin)
#include "tst_createplugin.moc"
