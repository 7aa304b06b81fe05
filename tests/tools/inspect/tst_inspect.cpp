// zelvane-inspect as its users run it: a folder of plugin files in, a report out.

#include "processrunner.h"
#include "settingsfixture.h"
#include "zelvanetest.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

namespace {

const QString iid = QStringLiteral(ZELVANE_TEST_IID);

using Result = ZelvaneTest::ProcessResult;

Result inspect(const QStringList& arguments, const QProcessEnvironment& environment = {})
{
    return ZelvaneTest::runProcess(QStringLiteral(ZELVANE_INSPECT_EXECUTABLE), arguments,
                                   environment);
}

QString willLoad()
{
    return QStringLiteral("    State: Will load at the next start.");
}

QStringList rejected(const QString& file, const QString& refusal)
{
    return {
        QStringLiteral("  %1: rejected").arg(file),
        QStringLiteral("    State: Will not load: the library refuses the file%1.").arg(refusal)
    };
}

// The per-file block of an accepted plugin.
QStringList accepted(const QString& file, const QString& name, const QString& category,
                     const QString& dependencies, const QString& enabled,
                     const QString& description, const QStringList& arguments = {},
                     const QStringList& explanation = { willLoad() })
{
    QStringList lines { QStringLiteral("  %1: accepted").arg(file),
                        QStringLiteral("    Name: %1").arg(name),
                        QStringLiteral("    Category: %1").arg(category),
                        QStringLiteral("    Dependencies: %1").arg(dependencies),
                        QStringLiteral("    Default: true"),
                        QStringLiteral("    Enabled: %1").arg(enabled),
                        QStringLiteral("    Description: %1").arg(description) };
    if (arguments.isEmpty())
        lines << QStringLiteral("    Arguments: (none)");
    else
        lines << QStringLiteral("    Arguments:") << arguments;
    return lines + explanation;
}

QStringList core(const QString& enabled = QStringLiteral("true (Default)"),
                 const QString& state = willLoad())
{
    return accepted(QStringLiteral("libzt_core.so"), QStringLiteral("Core"), QStringLiteral("Core"),
                    QStringLiteral("(none)"), enabled,
                    QStringLiteral("The core plugin of the test host"), {}, { state });
}

QStringList storage(const QString& enabled = QStringLiteral("true (Default)"),
                    const QString& state = willLoad())
{
    return accepted(QStringLiteral("libzt_storage.so"), QStringLiteral("Storage"),
                    QStringLiteral("Extension"), QStringLiteral("(none)"), enabled,
                    QStringLiteral("Keeps documents"), {}, { state });
}

QStringList viewer(const QStringList& explanation = { willLoad() },
                   const QString& dependencies = QStringLiteral("Storage"))
{
    return accepted(QStringLiteral("libzt_viewer.so"), QStringLiteral("Viewer"),
                    QStringLiteral("Extension"), dependencies, QStringLiteral("true (Default)"),
                    QStringLiteral("Shows documents"),
                    { QStringLiteral("      --viewer-theme <theme>: Colour theme"),
                      QStringLiteral("      --viewer-readonly: Opens documents read-only") },
                    explanation);
}

QStringList droppedViewer(const QString& problem,
                          const QString& dependencies = QStringLiteral("Storage"))
{
    return viewer({ QStringLiteral("    State: Will not load: its dependencies cannot be met."),
                    QStringLiteral("      ") + problem },
                  dependencies);
}

QStringList header(const QString& settings
                   = QStringLiteral("none (every plugin at its \"Default\")"))
{
    return { QStringLiteral("Directory: @DIR@"), QStringLiteral("IID: ") + iid,
             QStringLiteral("Settings: ") + settings, QString(), QStringLiteral("Files:") };
}

} // namespace

class tst_Inspect : public QObject
{
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void json();
    void cycle();
    void neverRunsPluginCode();
    void missingSettingsFile();
    void usageErrors_data();
    void usageErrors();
    void help();
};

void tst_Inspect::text_data()
{
    QTest::addColumn<QStringList>("plugins");
    QTest::addColumn<QString>("settings"); // INI text; empty: no --settings
    QTest::addColumn<QStringList>("expected"); // @DIR@ = the folder, @SETTINGS@ = the file
    QTest::addColumn<int>("exitCode");

    QTest::newRow("accepted and rejected files")
        << QStringList { QStringLiteral("zt_core"),
                         QStringLiteral("zt_viewer"),
                         QStringLiteral("zt_storage"),
                         QStringLiteral("zt_notaplugin"),
                         QStringLiteral("zt_inspect_stranger"),
                         QStringLiteral("zt_inspect_badarguments"),
                         QStringLiteral("zt_inspect_tool") }
        << QString()
        << (header() + core()
            + rejected(QStringLiteral("libzt_inspect_badarguments.so"),
                       QStringLiteral(" (its \"Arguments\" are malformed)"))
            + rejected(QStringLiteral("libzt_inspect_stranger.so"),
                       QStringLiteral(": @DIR@/libzt_inspect_stranger.so plugin ignored (IID "
                                      "does not match)"))
            + accepted(QStringLiteral("libzt_inspect_tool.so"), QStringLiteral("Tool"),
                       QStringLiteral("Tool"), QStringLiteral("(none)"),
                       QStringLiteral("true (Default)"),
                       QStringLiteral("Of a category that is never loaded"), {},
                       { QStringLiteral("    State: Will not load: its category \"Tool\" is "
                                        "neither Core nor Extension.") })
            + rejected(QStringLiteral("libzt_notaplugin.so"),
                       QStringLiteral(": @DIR@/libzt_notaplugin.so is not a plugin (no string "
                                      "IID found)"))
            + storage() + viewer()
            + QStringList { QString(), QStringLiteral("Load order:"),
                            QStringLiteral("  1. Core (libzt_core.so)"),
                            QStringLiteral("  2. Storage (libzt_storage.so)"),
                            QStringLiteral("  3. Viewer (libzt_viewer.so)"),
                            QStringLiteral("Not loaded:"),
                            QStringLiteral("  Tool (libzt_inspect_tool.so): Will not load: its "
                                           "category \"Tool\" is neither Core nor Extension.") })
        << 0;

    QTest::newRow("a disabled dependency drops its dependent")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_viewer"),
                         QStringLiteral("zt_storage") }
        << QStringLiteral("[plugin]\nStorage=false\n")
        << (header(QStringLiteral("@SETTINGS@")) + core()
            + storage(QStringLiteral("false (settings: plugin/Storage)"),
                      QStringLiteral("    State: Will not load: it is switched off."))
            + droppedViewer(QStringLiteral("Needs Storage, which is switched off."))
            + QStringList { QString(), QStringLiteral("Load order:"),
                            QStringLiteral("  1. Core (libzt_core.so)"),
                            QStringLiteral("Not loaded:"),
                            QStringLiteral("  Storage (libzt_storage.so): Will not load: it is "
                                           "switched off."),
                            QStringLiteral(
                                "Dropped by the dependency ordering (silently, at load time):"),
                            QStringLiteral("  Viewer (libzt_viewer.so): Needs Storage, which is "
                                           "switched off.") })
        << 1;

    QTest::newRow("a missing dependency drops its dependent")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_viewer") } << QString()
        << (header() + core()
            + droppedViewer(QStringLiteral("Needs Storage, which is not in the plugin folder."),
                            QStringLiteral("Storage (missing)"))
            + QStringList { QString(), QStringLiteral("Load order:"),
                            QStringLiteral("  1. Core (libzt_core.so)"),
                            QStringLiteral(
                                "Dropped by the dependency ordering (silently, at load time):"),
                            QStringLiteral(
                                "  Viewer (libzt_viewer.so): Needs Storage, which is not in the "
                                "plugin folder.") })
        << 1;

    QTest::newRow("a plugin that depends on itself is dropped")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_inspect_selfish") }
        << QString()
        << (header() + core()
            + QStringList { QStringLiteral("  libzt_inspect_selfish.so: accepted"),
                            QStringLiteral("    Name: Selfish"),
                            QStringLiteral("    Category: Extension"),
                            QStringLiteral("    Dependencies: Selfish"),
                            QStringLiteral("    Default: true"),
                            QStringLiteral("    Enabled: true (Default)"),
                            QStringLiteral("    Description: (none)"),
                            QStringLiteral("    Arguments: (none)"),
                            QStringLiteral(
                                "    State: Will not load: its dependencies cannot be met."),
                            QStringLiteral("      Names itself as a dependency."), QString(),
                            QStringLiteral("Load order:"),
                            QStringLiteral("  1. Core (libzt_core.so)"),
                            QStringLiteral(
                                "Dropped by the dependency ordering (silently, at load time):"),
                            QStringLiteral(
                                "  Selfish (libzt_inspect_selfish.so): Names itself as a "
                                "dependency.") })
        << 1;

    QTest::newRow("the settings pick the second core plugin")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_inspect_altcore") }
        << QStringLiteral("[plugin]\nCore=false\nAltCore=true\n")
        << (header(QStringLiteral("@SETTINGS@"))
            + core(QStringLiteral("false (settings: plugin/Core)"),
                   QStringLiteral("    State: Will not load: another Core plugin, AltCore, is "
                                  "chosen."))
            + QStringList { QStringLiteral("  libzt_inspect_altcore.so: accepted"),
                            QStringLiteral("    Name: AltCore"),
                            QStringLiteral("    Category: Core"),
                            QStringLiteral("    Dependencies: (none)"),
                            QStringLiteral("    Default: false"),
                            QStringLiteral("    Enabled: true (settings: plugin/AltCore)"),
                            QStringLiteral("    Description: A second core plugin"),
                            QStringLiteral("    Arguments: (none)"), willLoad(), QString(),
                            QStringLiteral("Load order:"),
                            QStringLiteral("  1. AltCore (libzt_inspect_altcore.so)"),
                            QStringLiteral("Not loaded:"),
                            QStringLiteral("  Core (libzt_core.so): Will not load: another Core "
                                           "plugin, AltCore, is chosen.") })
        << 0;

    QTest::newRow("no core plugin")
        << QStringList { QStringLiteral("zt_viewer"), QStringLiteral("zt_storage") } << QString()
        << (header()
            + storage(QStringLiteral("true (Default)"),
                      QStringLiteral("    State: Will not load: the plugin folder has no Core "
                                     "plugin."))
            + viewer({ QStringLiteral("    State: Will not load: the plugin folder has no Core "
                                      "plugin.") })
            + QStringList { QString(),
                            QStringLiteral(
                                "Load order: nothing is loaded: The Core plugin is not found"),
                            QStringLiteral("Not loaded:"),
                            QStringLiteral("  Storage (libzt_storage.so): Will not load: the "
                                           "plugin folder has no Core plugin."),
                            QStringLiteral("  Viewer (libzt_viewer.so): Will not load: the plugin "
                                           "folder has no Core plugin.") })
        << 1;

    QTest::newRow("metadata written for another host")
        << QStringList { QStringLiteral("zt_core"), QStringLiteral("zt_foreign_objects"),
                         QStringLiteral("zt_foreign_single"), QStringLiteral("zt_foreign_chatty") }
        << QString()
        << (header()
            + QStringList { QStringLiteral("  libzt_core.so: accepted"),
                            QStringLiteral("    Name: Core"),
                            QStringLiteral("    Category: Core"),
                            QStringLiteral("    Dependencies: (none)"),
                            QStringLiteral("    Default: true"),
                            QStringLiteral("    Enabled: true (Default)"),
                            QStringLiteral("    Description: The core plugin of the test host"),
                            QStringLiteral("    Arguments: (none)"),
                            QStringLiteral("    State: Will load at the next start."),
                            QStringLiteral("  libzt_foreign_chatty.so: accepted"),
                            QStringLiteral("    Name: Chatty"),
                            QStringLiteral("    Category: Extension"),
                            QStringLiteral("    Dependencies: Core"),
                            QStringLiteral("    Default: true"),
                            QStringLiteral("    Enabled: true (Default)"),
                            QStringLiteral(
                                "    Description: Declares an option that Objects declares too"),
                            QStringLiteral("    Arguments:"),
                            QStringLiteral(
                                "      --verbose: Talks a lot — Objects and Chatty both declare "
                                "--verbose: the host's parser refuses the second."),
                            QStringLiteral("    State: Will load at the next start."),
                            QStringLiteral("  libzt_foreign_objects.so: accepted"),
                            QStringLiteral("    Name: Objects"),
                            QStringLiteral("    Category: Extension"),
                            QStringLiteral(
                                "    Dependencies: Dependencies[0] (an object), 5 "
                                "(Dependencies[1], a number), Dependencies[2] (null), "
                                "Dependencies[3] (an empty string), Dependencies[4] (an object)"),
                            QStringLiteral("    Default: true"),
                            QStringLiteral("    Enabled: true (Default)"),
                            QStringLiteral("    Description: Written for another host: its "
                                           "dependencies are objects"),
                            QStringLiteral("    Arguments:"),
                            QStringLiteral("      \"-color\" <color>: Colour of the objects — The "
                                           "host's parser can never accept it: option names cannot "
                                           "start with a '-'."),
                            QStringLiteral(
                                "      \"a=b\": A setting with an equals sign — The host's parser "
                                "can never accept it: option names cannot contain a '='."),
                            QStringLiteral(
                                "      --verbose: Talks more — Objects and Chatty both declare "
                                "--verbose: the host's parser refuses the second."),
                            QStringLiteral(
                                "    State: Will not load: its dependencies cannot be met."),
                            QStringLiteral(
                                "      Needs a plugin with an empty name, which no plugin has."),
                            QStringLiteral("      Needs 5, which is not in the plugin folder."),
                            QStringLiteral("    In its metadata:"),
                            QStringLiteral(
                                "      Dependencies[0] is an object, not a plugin name: it counts "
                                "as a dependency on an empty name, which no plugin has; it names "
                                "Core, but as an object; write \"Core\"."),
                            QStringLiteral("      Dependencies[1] is a number, not a plugin name: "
                                           "it counts as a dependency on the name \"5\"."),
                            QStringLiteral(
                                "      Dependencies[2] is null, not a plugin name: it counts as a "
                                "dependency on an empty name, which no plugin has."),
                            QStringLiteral(
                                "      Dependencies[3] is an empty string, not a plugin name: it "
                                "counts as a dependency on an empty name, which no plugin has."),
                            QStringLiteral(
                                "      Dependencies[4] is an object, not a plugin name: it counts "
                                "as a dependency on an empty name, which no plugin has."),
                            QStringLiteral("  libzt_foreign_single.so: accepted"),
                            QStringLiteral("    Name: Single"),
                            QStringLiteral("    Category: Extension"),
                            QStringLiteral("    Dependencies: Dependencies[0] (an object)"),
                            QStringLiteral("    Default: true"),
                            QStringLiteral("    Enabled: true (Default)"),
                            QStringLiteral("    Description: One dependency, given as an object"),
                            QStringLiteral("    Arguments: (none)"),
                            QStringLiteral("    State: Will load at the next start, before a "
                                           "plugin it needs."),
                            QStringLiteral(
                                "      Needs a plugin with an empty name, which no plugin has."),
                            QStringLiteral("    In its metadata:"),
                            QStringLiteral(
                                "      Dependencies[0] is an object, not a plugin name: it counts "
                                "as a dependency on an empty name, which no plugin has; it names "
                                "Core, but as an object; write \"Core\"."),
                            QString(),
                            QStringLiteral("Load order:"),
                            QStringLiteral("  1. Core (libzt_core.so)"),
                            QStringLiteral("  2. Chatty (libzt_foreign_chatty.so)"),
                            QStringLiteral("  3. Single (libzt_foreign_single.so)"),
                            QStringLiteral(
                                "Dropped by the dependency ordering (silently, at load time):"),
                            QStringLiteral("  Objects (libzt_foreign_objects.so): Needs a plugin "
                                           "with an empty name, which no plugin has. Needs 5, "
                                           "which is not in the plugin folder."),
                            QStringLiteral(
                                "Loaded although their dependencies are not loaded before them:"),
                            QStringLiteral("  Single (libzt_foreign_single.so): Needs a plugin "
                                           "with an empty name, which no plugin has.") })
        << 1;

    QTest::newRow("empty folder")
        << QStringList() << QString()
        << (header()
            + QStringList { QStringLiteral("  (no *.so file)"), QString(),
                            QStringLiteral(
                                "Load order: nothing is loaded: The Core plugin is not found") })
        << 1;
}

void tst_Inspect::text()
{
    QFETCH(QStringList, plugins);
    QFETCH(QString, settings);
    QFETCH(QStringList, expected);
    QFETCH(int, exitCode);

    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), plugins));
    QTemporaryDir settingsFolder;
    const QString settingsFile = settingsFolder.filePath(QStringLiteral("demo.ini"));
    QStringList arguments { folder.path(), QStringLiteral("--iid"), iid };
    if (!settings.isEmpty()) {
        QVERIFY(ZelvaneTest::writeFile(settingsFile, settings.toUtf8()));
        arguments << QStringLiteral("--settings") << settingsFile;
    }

    const Result result = inspect(arguments);
    const QString text = expected.join(QLatin1Char('\n')) + QLatin1Char('\n');
    QCOMPARE(result.out.split(QLatin1Char('\n')),
             QString(text)
                 .replace(QStringLiteral("@DIR@"), QDir(folder.path()).canonicalPath())
                 .replace(QStringLiteral("@SETTINGS@"), settingsFile)
                 .split(QLatin1Char('\n')));
    QCOMPARE(result.err, QString());
    QCOMPARE(result.exitCode, exitCode);
}

void tst_Inspect::json()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_viewer"),
                                       QStringLiteral("zt_notaplugin"),
                                       QStringLiteral("zt_inspect_badarguments") }));
    const QString dir = QDir(folder.path()).canonicalPath();

    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--json") });
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(result.out.toUtf8(), &error);
    QCOMPARE(error.errorString(), QStringLiteral("no error occurred"));

    const QJsonObject coreFile {
        { QStringLiteral("file"), QStringLiteral("libzt_core.so") },
        { QStringLiteral("path"), dir + QStringLiteral("/libzt_core.so") },
        { QStringLiteral("accepted"), true },
        { QStringLiteral("name"), QStringLiteral("Core") },
        { QStringLiteral("category"), QStringLiteral("Core") },
        { QStringLiteral("dependencies"), QJsonArray() },
        { QStringLiteral("default"), true },
        { QStringLiteral("enabled"), true },
        { QStringLiteral("enabledBy"), QStringLiteral("default") },
        { QStringLiteral("description"), QStringLiteral("The core plugin of the test host") },
        { QStringLiteral("arguments"), QJsonArray() },
        { QStringLiteral("state"), QStringLiteral("Loads") },
        { QStringLiteral("stateText"), QStringLiteral("Will load at the next start.") },
        { QStringLiteral("problems"), QJsonArray() },
    };
    const QJsonObject badArgumentsFile {
        { QStringLiteral("file"), QStringLiteral("libzt_inspect_badarguments.so") },
        { QStringLiteral("path"), dir + QStringLiteral("/libzt_inspect_badarguments.so") },
        { QStringLiteral("accepted"), false },
        { QStringLiteral("error"), QString() },
        { QStringLiteral("state"), QStringLiteral("Refused") },
        { QStringLiteral("stateText"),
          QStringLiteral("Will not load: the library refuses the file (its \"Arguments\" are "
                         "malformed).") },
        { QStringLiteral("problems"), QJsonArray() },
    };
    const QJsonObject notAPluginFile {
        { QStringLiteral("file"), QStringLiteral("libzt_notaplugin.so") },
        { QStringLiteral("path"), dir + QStringLiteral("/libzt_notaplugin.so") },
        { QStringLiteral("accepted"), false },
        { QStringLiteral("error"),
          dir + QStringLiteral("/libzt_notaplugin.so is not a plugin (no string IID found)") },
        { QStringLiteral("state"), QStringLiteral("Refused") },
        { QStringLiteral("stateText"),
          QStringLiteral("Will not load: the library refuses the file: %1/libzt_notaplugin.so is "
                         "not a plugin (no string IID found).")
              .arg(dir) },
        { QStringLiteral("problems"), QJsonArray() },
    };
    const QJsonObject viewerFile {
        { QStringLiteral("file"), QStringLiteral("libzt_viewer.so") },
        { QStringLiteral("path"), dir + QStringLiteral("/libzt_viewer.so") },
        { QStringLiteral("accepted"), true },
        { QStringLiteral("name"), QStringLiteral("Viewer") },
        { QStringLiteral("category"), QStringLiteral("Extension") },
        { QStringLiteral("dependencies"), QJsonArray { QStringLiteral("Storage") } },
        { QStringLiteral("default"), true },
        { QStringLiteral("enabled"), true },
        { QStringLiteral("enabledBy"), QStringLiteral("default") },
        { QStringLiteral("description"), QStringLiteral("Shows documents") },
        { QStringLiteral("arguments"),
          QJsonArray {
              QJsonObject {
                  { QStringLiteral("name"), QStringLiteral("viewer-theme") },
                  { QStringLiteral("parameter"), QStringLiteral("theme") },
                  { QStringLiteral("description"), QStringLiteral("Colour theme") },
                  { QStringLiteral("synopsis"), QStringLiteral("--viewer-theme <theme>") },
                  { QStringLiteral("note"), QString() } },
              QJsonObject {
                  { QStringLiteral("name"), QStringLiteral("viewer-readonly") },
                  { QStringLiteral("parameter"), QString() },
                  { QStringLiteral("description"), QStringLiteral("Opens documents read-only") },
                  { QStringLiteral("synopsis"), QStringLiteral("--viewer-readonly") },
                  { QStringLiteral("note"), QString() } } } },
        { QStringLiteral("state"), QStringLiteral("Dropped") },
        { QStringLiteral("stateText"),
          QStringLiteral("Will not load: its dependencies cannot be met.") },
        { QStringLiteral("problems"),
          QJsonArray { QJsonObject {
              { QStringLiteral("kind"), QStringLiteral("Missing") },
              { QStringLiteral("dependency"), QStringLiteral("Storage") },
              { QStringLiteral("text"),
                QStringLiteral("Needs Storage, which is not in the plugin folder.") } } } },
    };
    const QJsonObject expected {
        { QStringLiteral("directory"), QDir(folder.path()).absolutePath() },
        { QStringLiteral("iid"), iid },
        { QStringLiteral("settings"), QJsonValue() },
        { QStringLiteral("files"),
          QJsonArray { coreFile, badArgumentsFile, notAPluginFile, viewerFile } },
        { QStringLiteral("error"), QJsonValue() },
        { QStringLiteral("loadOrder"),
          QJsonArray {
              QJsonObject { { QStringLiteral("name"), QStringLiteral("Core") },
                            { QStringLiteral("file"), QStringLiteral("libzt_core.so") } } } },
        { QStringLiteral("notLoaded"), QJsonArray() },
        { QStringLiteral("dropped"),
          QJsonArray { QJsonObject {
              { QStringLiteral("name"), QStringLiteral("Viewer") },
              { QStringLiteral("file"), QStringLiteral("libzt_viewer.so") },
              { QStringLiteral("reason"),
                QStringLiteral("Needs Storage, which is not in the plugin folder.") } } } },
        { QStringLiteral("unordered"), QJsonArray() },
        { QStringLiteral("warnings"), QJsonArray() },
    };
    // Each file's "explanation" holds the sentences of the plugin screens; another test
    // compares them with the screens themselves.
    QJsonObject report = document.object();
    QJsonArray files = report.value(QStringLiteral("files")).toArray();
    for (int i = 0; i < files.size(); ++i) {
        QJsonObject file = files.at(i).toObject();
        QVERIFY(!file.take(QStringLiteral("explanation")).toArray().isEmpty());
        files.replace(i, file);
    }
    report.insert(QStringLiteral("files"), files);
    QCOMPARE(QString::fromUtf8(QJsonDocument(report).toJson()),
             QString::fromUtf8(QJsonDocument(expected).toJson()));
    QCOMPARE(result.exitCode, 1);
}

void tst_Inspect::cycle()
{
    // Which of the two is dropped depends on the order in which the file system lists
    // them; the other one is still loaded, without its dependency before it.
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(),
                                     { QStringLiteral("zt_core"), QStringLiteral("zt_inspect_ping"),
                                       QStringLiteral("zt_inspect_pong") }));
    const Result result
        = inspect({ folder.path(), QStringLiteral("--iid"), iid, QStringLiteral("--json") });
    const QJsonObject report = QJsonDocument::fromJson(result.out.toUtf8()).object();

    const QJsonArray dropped = report.value(QStringLiteral("dropped")).toArray();
    QCOMPARE(dropped.size(), 1);
    const QString droppedName = dropped.at(0).toObject().value(QStringLiteral("name")).toString();
    QVERIFY2(droppedName == QLatin1String("Ping") || droppedName == QLatin1String("Pong"),
             qPrintable(droppedName));
    const QString keptName
        = droppedName == QLatin1String("Ping") ? QStringLiteral("Pong") : QStringLiteral("Ping");
    const auto entry = [](const QString& name, const QString& reason = QString()) {
        QJsonObject object { { QStringLiteral("name"), name },
                             { QStringLiteral("file"),
                               QStringLiteral("libzt_inspect_%1.so").arg(name.toLower()) } };
        if (!reason.isEmpty())
            object.insert(QStringLiteral("reason"), reason);
        return object;
    };

    QCOMPARE(report.value(QStringLiteral("dropped")).toArray(),
             QJsonArray { entry(droppedName,
                                QStringLiteral("Needs %2 in a dependency cycle: %1 → %2 → %1.")
                                    .arg(droppedName, keptName)) });
    QCOMPARE(report.value(QStringLiteral("unordered")).toArray(),
             QJsonArray { entry(keptName,
                                QStringLiteral("Needs %2 in a dependency cycle: %1 → %2 → %1.")
                                    .arg(keptName, droppedName)) });
    QCOMPARE(
        report.value(QStringLiteral("loadOrder")).toArray(),
        (QJsonArray { QJsonObject { { QStringLiteral("name"), QStringLiteral("Core") },
                                    { QStringLiteral("file"), QStringLiteral("libzt_core.so") } },
                      entry(keptName) }));
    QCOMPARE(result.exitCode, 1);
}

void tst_Inspect::neverRunsPluginCode()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(
        folder.path(), { QStringLiteral("zt_core"), QStringLiteral("zt_inspect_trap") }));
    const QString trapFile = folder.filePath(QStringLiteral("trap-sprung"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZELVANE_INSPECT_TRAP"), trapFile);

    const Result result = inspect({ folder.path(), QStringLiteral("--iid"), iid }, environment);
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains(QStringLiteral("  2. Trap (libzt_inspect_trap.so)\n")),
             qPrintable(result.out));
    QVERIFY2(!QFile::exists(trapFile), "the inspector ran plugin code");

    // The trap does go off when the plugin is loaded, so the check above can fail.
    qputenv("ZELVANE_INSPECT_TRAP", trapFile.toLocal8Bit());
    QPluginLoader loader(folder.filePath(QStringLiteral("libzt_inspect_trap.so")));
    QVERIFY2(loader.load(), qPrintable(loader.errorString()));
    QVERIFY(QFile::exists(trapFile));
    qunsetenv("ZELVANE_INSPECT_TRAP");
}

void tst_Inspect::missingSettingsFile()
{
    QTemporaryDir folder;
    QVERIFY(ZelvaneTest::copyPlugins(folder.path(), { QStringLiteral("zt_core") }));
    const QString settingsFile = folder.filePath(QStringLiteral("absent.ini"));
    const Result result = inspect({ folder.path(), QStringLiteral("--iid"), iid,
                                    QStringLiteral("--settings"), settingsFile });
    QCOMPARE(result.out.split(QLatin1Char('\n')).mid(0, 3),
             (QStringList { QStringLiteral("Directory: ") + QDir(folder.path()).absolutePath(),
                            QStringLiteral("IID: ") + iid,
                            QStringLiteral("Settings: %1 (does not exist: every plugin at its "
                                           "\"Default\")")
                                .arg(settingsFile) }));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(!QFile::exists(settingsFile));
}

void tst_Inspect::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");

    const QString usage
        = QStringLiteral("usage: zelvane-inspect DIR --iid IID [--settings FILE] [--json] "
                         "[--trial [--isolate] [--shutdown] [--timeout S] [--arg NAME=VALUE]... "
                         "[--require FILE]...] [--timeline FILE] [--graph FILE]\n");
    QTest::newRow("no IID") << QStringList { QStringLiteral("@DIR@") } << usage;
    QTest::newRow("no folder") << QStringList { QStringLiteral("--iid"), iid } << usage;
    QTest::newRow("two folders") << QStringList { QStringLiteral("@DIR@"), QStringLiteral("@DIR@"),
                                                  QStringLiteral("--iid"), iid }
                                 << usage;
    QTest::newRow("--isolate without --trial")
        << QStringList { QStringLiteral("@DIR@"), QStringLiteral("--iid"), iid,
                         QStringLiteral("--isolate") }
        << usage;
    QTest::newRow("--require without --trial")
        << QStringList { QStringLiteral("@DIR@"), QStringLiteral("--require"),
                         QStringLiteral("libzt_core.so") }
        << usage;
    QTest::newRow("a timeout that is not a number") << QStringList {
        QStringLiteral("@DIR@"),   QStringLiteral("--iid"),     iid,
        QStringLiteral("--trial"), QStringLiteral("--timeout"), QStringLiteral("soon")
    } << usage;
    QTest::newRow("not a folder") << QStringList {
        QStringLiteral("@DIR@/none"), QStringLiteral("--iid"), iid
    } << QStringLiteral("zelvane-inspect: @DIR@/none is not a directory\n");
}

void tst_Inspect::usageErrors()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);

    QTemporaryDir folder;
    arguments.replaceInStrings(QStringLiteral("@DIR@"), folder.path());
    const Result result = inspect(arguments);
    QCOMPARE(result.err, QString(error).replace(QStringLiteral("@DIR@"), folder.path()));
    QCOMPARE(result.out, QString());
    QCOMPARE(result.exitCode, 2);
}

void tst_Inspect::help()
{
    const Result result = inspect({ QStringLiteral("--help") });
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains(QStringLiteral(
                 "It only reads the metadata that each file embeds: it never loads a plugin and "
                 "never runs plugin code.")),
             qPrintable(result.out));
}

QTEST_GUILESS_MAIN(tst_Inspect)
#include "tst_inspect.moc"
