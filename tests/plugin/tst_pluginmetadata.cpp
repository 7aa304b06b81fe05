// Reading a plugin file's metadata: which files are accepted, with which error text
// the others are refused, and what an accepted file's record holds.

#include "zelvanetest.h"

#include <zelvane/pluginargumentdescription.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include "plugin/plugindata_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using Zelvane::PluginArgumentDescription;
using Zelvane::PluginController;
using Zelvane::PluginData;
using Zelvane::PluginLoader;

using Arguments = QList<PluginArgumentDescription>;

namespace Zelvane {

// Readable failures for compared argument lists (found by QTest through ADL).
char* toString(const PluginArgumentDescription& argument)
{
    return QTest::toString(QStringList { argument.name, argument.parameter, argument.description });
}

} // namespace Zelvane

namespace {

const QString testIid = QStringLiteral(ZELVANE_TEST_IID);

// The texts are compared untranslated: the tests install no translator.
const QString noStringIid = QStringLiteral("%1 is not a plugin (no string IID found)");
const QString iidMismatch = QStringLiteral("%1 plugin ignored (IID does not match)");
const QString noMetadata = QStringLiteral("The file \"%1\" has no plugin metadata");
const QString noName = QStringLiteral("The plugin \"%1\" has no name property in metadata");

} // namespace

class tst_PluginMetadata : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void scanFile_data();
    void scanFile();
    void scanWithEmptyHostIid_data();
    void scanWithEmptyHostIid();

    void everyKeyRead();
    void absentKeysGiveEmptyValues();
    void numberAsName();
    void argumentsWithTheSameName();
    void argumentWithoutParameter();
    void emptyArguments();
    void refusedRecordKeepsWhatWasRead();

    void validateIid_data();
    void validateIid();
    void expectedIidAskedEveryTime();
    void metaDataNotAnObject_data();
    void metaDataNotAnObject();
    void metadataConversions_data();
    void metadataConversions();
    void extractArguments_data();
    void extractArguments();

    void scanningRunsNoPluginCode();

private:
    // A fresh copy of a test plugin under a canonical path, which is also the file
    // name that Qt's plugin loader reports in the error texts.
    QString copy(const QString& target);

    QTemporaryDir m_dir;
};

void tst_PluginMetadata::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

void tst_PluginMetadata::init()
{
    PluginController::instance()->setPluginIID(testIid);
}

QString tst_PluginMetadata::copy(const QString& target)
{
    return ZelvaneTest::copyToOwnFolder(m_dir.path(), target);
}

void tst_PluginMetadata::scanFile_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("error"); // %1 is the file name
    QTest::addColumn<QString>("name");

    QTest::newRow("a shared object that is not a Qt plugin")
        << "zt_notaplugin" << false << noStringIid << QString();
    QTest::newRow("the IID of another host")
        << "zt_plugin_otheriid" << false << iidMismatch << QString();
    QTest::newRow("the host's IID in other letter case")
        << "zt_plugin_caseiid" << false << iidMismatch << QString();
    // moc writes no plugin metadata at all for a class declared with an empty IID.
    QTest::newRow("an IID declared empty")
        << "zt_plugin_emptyiid" << false << noStringIid << QString();
    QTest::newRow("no MetaData at all")
        << "zt_plugin_nometadata" << false << noMetadata << QString();
    QTest::newRow("MetaData an empty object")
        << "zt_plugin_emptymetadata" << false << noMetadata << QString();
    QTest::newRow("MetaData with only a Category")
        << "zt_plugin_categoryonly" << false << noName << QString();
    QTest::newRow("Name an empty string") << "zt_plugin_emptyname" << false << noName << QString();
    QTest::newRow("Name the number 7") << "zt_plugin_numbername" << true << QString() << "7";
    QTest::newRow("Arguments an object")
        << "zt_plugin_argsobject" << false << QString() << "ArgsObject";
    QTest::newRow("Arguments null") << "zt_plugin_argsnull" << false << QString() << "ArgsNull";
    QTest::newRow("Arguments an empty array")
        << "zt_plugin_argsempty" << true << QString() << "ArgsEmpty";
    QTest::newRow("an argument that is not an object")
        << "zt_plugin_argnotobject" << false << QString() << "ArgNotObject";
    QTest::newRow("an argument without Name")
        << "zt_plugin_argnoname" << false << QString() << "ArgNoName";
    QTest::newRow("an argument with an empty Name")
        << "zt_plugin_argemptyname" << false << QString() << "ArgEmptyName";
    QTest::newRow("an argument whose Name is not a string")
        << "zt_plugin_argnamenotstring" << false << QString() << "ArgNameNotString";
    QTest::newRow("an argument whose Parameter is 1")
        << "zt_plugin_argparameternumber" << false << QString() << "ArgParameterNumber";
    QTest::newRow("an argument whose Description is not a string")
        << "zt_plugin_argdescriptionnotstring" << false << QString() << "ArgDescriptionNotString";
    QTest::newRow("two arguments with the same Name")
        << "zt_plugin_argduplicate" << true << QString() << "ArgDuplicate";
    QTest::newRow("an argument without Parameter")
        << "zt_plugin_argnoparameter" << true << QString() << "ArgNoParameter";
    QTest::newRow("Name alone") << "zt_plugin_minimal" << true << QString() << "Minimal";
    QTest::newRow("every key") << "zt_plugin_full" << true << QString() << "Full";
}

void tst_PluginMetadata::scanFile()
{
    QFETCH(QString, target);
    QFETCH(bool, accepted);
    QFETCH(QString, error);
    QFETCH(QString, name);

    const QString fileName = copy(target);
    QVERIFY(!fileName.isEmpty());

    PluginLoader plugin;
    QCOMPARE(plugin.scan(fileName), accepted);
    QVERIFY(plugin.isValid());
    QCOMPARE(plugin.errorString(), error.isEmpty() ? QString() : error.arg(fileName));
    QCOMPARE(plugin.name(), name);
    QVERIFY(!plugin.loaded());
}

void tst_PluginMetadata::scanWithEmptyHostIid_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("error");

    QTest::newRow("the test host's IID is ignored") << "zt_plugin_minimal" << false << iidMismatch;
    QTest::newRow("another host's IID is ignored") << "zt_plugin_otheriid" << false << iidMismatch;
    QTest::newRow("no IID at all is still no plugin") << "zt_notaplugin" << false << noStringIid;
    QTest::newRow("an IID declared empty is still no plugin")
        << "zt_plugin_emptyiid" << false << noStringIid;
}

void tst_PluginMetadata::scanWithEmptyHostIid()
{
    QFETCH(QString, target);
    QFETCH(bool, accepted);
    QFETCH(QString, error);

    PluginController::instance()->setPluginIID(QString());
    const QString fileName = copy(target);
    QVERIFY(!fileName.isEmpty());

    PluginLoader plugin;
    QCOMPARE(plugin.scan(fileName), accepted);
    QCOMPARE(plugin.errorString(), error.isEmpty() ? QString() : error.arg(fileName));
}

void tst_PluginMetadata::everyKeyRead()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_full"))));

    QCOMPARE(plugin.name(), QStringLiteral("Full"));
    QCOMPARE(plugin.category(), QStringLiteral("Extension"));
    // Stored as given: the order kept, the duplicate too.
    QCOMPARE(plugin.dependencies(),
             (QStringList { QStringLiteral("Storage"), QStringLiteral("Core"),
                            QStringLiteral("Storage") }));
    QCOMPARE(plugin.dependencyCount(), 3);
    QCOMPARE(plugin.loadByDefault(), true);
    QCOMPARE(plugin.description(), QStringLiteral("Every key a plugin may declare"));
    QCOMPARE(
        plugin.argumentDescriptions(),
        (Arguments {
            { QStringLiteral("full-theme"), QStringLiteral("theme"),
              QStringLiteral("Colour theme") },
            { QStringLiteral("full-level"), QStringLiteral("level"), QStringLiteral("Log level") },
            { QStringLiteral("full-quiet"), QString(), QStringLiteral("No output") },
        }));
    QCOMPARE(plugin.errorString(), QString());
}

void tst_PluginMetadata::absentKeysGiveEmptyValues()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_minimal"))));

    QCOMPARE(plugin.name(), QStringLiteral("Minimal"));
    QCOMPARE(plugin.category(), QString());
    QCOMPARE(plugin.dependencies(), QStringList());
    QCOMPARE(plugin.dependencyCount(), 0);
    QCOMPARE(plugin.loadByDefault(), false);
    QCOMPARE(plugin.description(), QString());
    QCOMPARE(plugin.argumentDescriptions(), Arguments());
}

void tst_PluginMetadata::numberAsName()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_numbername"))));
    QCOMPARE(plugin.name(), QStringLiteral("7"));
    QVERIFY(plugin == QStringLiteral("7"));
}

void tst_PluginMetadata::argumentsWithTheSameName()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_argduplicate"))));
    QCOMPARE(plugin.argumentDescriptions(),
             (Arguments {
                 { QStringLiteral("argduplicate-mode"), QStringLiteral("first"),
                   QStringLiteral("First") },
                 { QStringLiteral("argduplicate-mode"), QStringLiteral("second"),
                   QStringLiteral("Second") },
             }));
}

void tst_PluginMetadata::argumentWithoutParameter()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_argnoparameter"))));
    const Arguments arguments = plugin.argumentDescriptions();
    QCOMPARE(arguments,
             (Arguments { { QStringLiteral("argnoparameter-quiet"), QString(),
                            QStringLiteral("No output") } }));
    QVERIFY(arguments.first().parameter.isEmpty());
}

void tst_PluginMetadata::emptyArguments()
{
    PluginLoader plugin;
    QVERIFY(plugin.scan(copy(QStringLiteral("zt_plugin_argsempty"))));
    QCOMPARE(plugin.argumentDescriptions(), Arguments());
}

void tst_PluginMetadata::refusedRecordKeepsWhatWasRead()
{
    // The "Arguments" are read last: a plugin refused for them keeps its metadata, and
    // the arguments read before the bad element.
    PluginLoader plugin;
    QVERIFY(!plugin.scan(copy(QStringLiteral("zt_plugin_argnotobject"))));
    QCOMPARE(plugin.name(), QStringLiteral("ArgNotObject"));
    QCOMPARE(plugin.category(), QStringLiteral("Extension"));
    QCOMPARE(plugin.argumentDescriptions(),
             (Arguments { { QStringLiteral("argnotobject-first"), QString(), QString() } }));
    QCOMPARE(plugin.errorString(), QString());

    // Refused for its name: the empty name stays assigned, nothing after it is read.
    PluginLoader unnamed;
    QVERIFY(!unnamed.scan(copy(QStringLiteral("zt_plugin_emptyname"))));
    QCOMPARE(unnamed.name(), QString());
    QCOMPARE(unnamed.category(), QString());
}

void tst_PluginMetadata::validateIid_data()
{
    QTest::addColumn<QString>("hostIid");
    QTest::addColumn<QJsonObject>("metaData");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("error");

    const QJsonObject metaData { { QStringLiteral("Name"), QStringLiteral("Direct") } };
    const auto withIid = [&metaData](const QJsonValue& iid) {
        return QJsonObject { { QStringLiteral("IID"), iid },
                             { QStringLiteral("MetaData"), metaData } };
    };

    QTest::newRow("IID absent") << testIid
                                << QJsonObject { { QStringLiteral("MetaData"), metaData } } << false
                                << noStringIid;
    QTest::newRow("IID a number") << testIid << withIid(42) << false << noStringIid;
    QTest::newRow("IID null") << testIid << withIid(QJsonValue::Null) << false << noStringIid;
    QTest::newRow("IID a boolean") << testIid << withIid(true) << false << noStringIid;
    QTest::newRow("IID an array") << testIid << withIid(QJsonArray { testIid }) << false
                                  << noStringIid;
    QTest::newRow("IID an object")
        << testIid << withIid(QJsonObject { { QStringLiteral("IID"), testIid } }) << false
        << noStringIid;
    QTest::newRow("IID in other letter case")
        << testIid << withIid(testIid.toUpper()) << false << iidMismatch;
    QTest::newRow("IID with a trailing blank")
        << testIid << withIid(testIid + QLatin1Char(' ')) << false << iidMismatch;
    QTest::newRow("IID empty") << testIid << withIid(QString()) << false << iidMismatch;
    QTest::newRow("IID equal") << testIid << withIid(testIid) << true << QString();

    // A host that sets no identifier accepts only plugins whose IID is empty.
    QTest::newRow("no host IID, IID empty") << QString() << withIid(QString()) << true << QString();
    QTest::newRow("no host IID, IID set") << QString() << withIid(testIid) << false << iidMismatch;
    QTest::newRow("no host IID, IID a blank")
        << QString() << withIid(QStringLiteral(" ")) << false << iidMismatch;
    QTest::newRow("no host IID, IID null")
        << QString() << withIid(QJsonValue::Null) << false << noStringIid;
    QTest::newRow("no host IID, IID absent")
        << QString() << QJsonObject { { QStringLiteral("MetaData"), metaData } } << false
        << noStringIid;
}

void tst_PluginMetadata::validateIid()
{
    QFETCH(QString, hostIid);
    QFETCH(QJsonObject, metaData);
    QFETCH(bool, valid);
    QFETCH(QString, error);

    PluginController::instance()->setPluginIID(hostIid);
    const QString fileName = copy(QStringLiteral("zt_plugin_minimal"));
    PluginData data(fileName);
    QCOMPARE(data.loader.fileName(), fileName);
    QCOMPARE(data.validateMetadata(metaData), valid);
    QCOMPARE(data.errorString, error.isEmpty() ? QString() : error.arg(fileName));
}

void tst_PluginMetadata::expectedIidAskedEveryTime()
{
    const QString fileName = copy(QStringLiteral("zt_plugin_minimal"));
    const QJsonObject metaData { { QStringLiteral("IID"),
                                   QStringLiteral("org.zelvane.Late/1.0") } };

    PluginData data(fileName);
    QVERIFY(!data.validateMetadata(metaData));
    QCOMPARE(data.errorString, iidMismatch.arg(fileName));

    PluginController::instance()->setPluginIID(QStringLiteral("org.zelvane.Late/1.0"));
    QVERIFY(data.validateMetadata(metaData));
    // Success leaves the earlier text alone.
    QCOMPARE(data.errorString, iidMismatch.arg(fileName));
}

void tst_PluginMetadata::metaDataNotAnObject_data()
{
    QTest::addColumn<QJsonValue>("value");

    QTest::newRow("a string") << QJsonValue(QStringLiteral("Name"));
    QTest::newRow("an array") << QJsonValue(QJsonArray { QStringLiteral("Name") });
    QTest::newRow("a number") << QJsonValue(7);
    QTest::newRow("null") << QJsonValue(QJsonValue::Null);
    QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined);
}

void tst_PluginMetadata::metaDataNotAnObject()
{
    QFETCH(QJsonValue, value);

    QJsonObject top { { QStringLiteral("IID"), testIid } };
    if (!value.isUndefined())
        top.insert(QStringLiteral("MetaData"), value);

    const QString fileName = copy(QStringLiteral("zt_plugin_minimal"));
    PluginData data(fileName);
    QVERIFY(data.validateMetadata(top));
    // The record reads "MetaData" as an object, which is empty for any other value.
    QVERIFY(!data.extractPluginMetadata(
        top.value(QStringLiteral("MetaData")).toObject().toVariantMap()));
    QCOMPARE(data.errorString, noMetadata.arg(fileName));
    QCOMPARE(data.name, QString());
}

void tst_PluginMetadata::metadataConversions_data()
{
    QTest::addColumn<QByteArray>("json"); // the "MetaData" object
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("loadByDefault");
    QTest::addColumn<QStringList>("dependencies");

    QTest::newRow("Name a string")
        << QByteArray(R"({"Name": "Viewer"})") << true << "Viewer" << false << QStringList();
    QTest::newRow("Name a whole number")
        << QByteArray(R"({"Name": 7})") << true << "7" << false << QStringList();
    QTest::newRow("Name a fraction")
        << QByteArray(R"({"Name": 7.5})") << true << "7.5" << false << QStringList();
    QTest::newRow("Name a boolean")
        << QByteArray(R"({"Name": true})") << true << "true" << false << QStringList();
    QTest::newRow("Name an array of one string")
        << QByteArray(R"({"Name": ["Viewer"]})") << false << QString() << false << QStringList();
    QTest::newRow("Name an object") << QByteArray(R"({"Name": {"Name": "Viewer"}})") << false
                                    << QString() << false << QStringList();
    QTest::newRow("Name null") << QByteArray(R"({"Name": null})") << false << QString() << false
                               << QStringList();
    QTest::newRow("name in lower case is not Name")
        << QByteArray(R"({"name": "Viewer"})") << false << QString() << false << QStringList();
    QTest::newRow("Default absent")
        << QByteArray(R"({"Name": "A"})") << true << "A" << false << QStringList();
    QTest::newRow("Default true") << QByteArray(R"({"Name": "A", "Default": true})") << true << "A"
                                  << true << QStringList();
    QTest::newRow("Default false") << QByteArray(R"({"Name": "A", "Default": false})") << true
                                   << "A" << false << QStringList();
    QTest::newRow("Default a non-zero number")
        << QByteArray(R"({"Name": "A", "Default": 2})") << true << "A" << true << QStringList();
    QTest::newRow("Default zero") << QByteArray(R"({"Name": "A", "Default": 0})") << true << "A"
                                  << false << QStringList();
    QTest::newRow("Dependencies in their order, the plugin itself among them")
        << QByteArray(R"({"Name": "A", "Dependencies": ["C", "A", "B", "C"]})") << true << "A"
        << false
        << QStringList { QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("B"),
                         QStringLiteral("C") };
}

void tst_PluginMetadata::metadataConversions()
{
    QFETCH(QByteArray, json);
    QFETCH(bool, accepted);
    QFETCH(QString, name);
    QFETCH(bool, loadByDefault);
    QFETCH(QStringList, dependencies);

    const QString fileName = QStringLiteral("/nowhere/libzt_plugin_direct.so");
    PluginData data(fileName);
    QCOMPARE(data.extractPluginMetadata(QJsonDocument::fromJson(json).object().toVariantMap()),
             accepted);
    // A file that does not exist has no file name for Qt's plugin loader.
    QCOMPARE(data.errorString, accepted ? QString() : noName.arg(data.loader.fileName()));
    QCOMPARE(data.name, name);
    QCOMPARE(data.loadByDefault, loadByDefault);
    QCOMPARE(data.dependencies, dependencies);
}

void tst_PluginMetadata::extractArguments_data()
{
    QTest::addColumn<QByteArray>("json"); // the "Arguments" array
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<Arguments>("arguments");

    const PluginArgumentDescription first { QStringLiteral("first"), QStringLiteral("value"),
                                            QStringLiteral("The first") };

    QTest::newRow("no element") << QByteArray("[]") << true << Arguments();
    QTest::newRow("every key, in array order")
        << QByteArray(R"([{"Name": "first", "Parameter": "value", "Description": "The first"},
                          {"Description": "The second", "Name": "second"}])")
        << true
        << Arguments { first,
                       { QStringLiteral("second"), QString(), QStringLiteral("The second") } };
    QTest::newRow("other keys ignored")
        << QByteArray(R"([{"Name": "first", "parameter": 1, "Default": null}])") << true
        << Arguments { { QStringLiteral("first"), QString(), QString() } };
    QTest::newRow("an element null") << QByteArray("[null]") << false << Arguments();
    QTest::newRow("an element a string") << QByteArray(R"(["first"])") << false << Arguments();
    QTest::newRow("an element an array")
        << QByteArray(R"([[{"Name": "first"}]])") << false << Arguments();
    QTest::newRow("Name null") << QByteArray(R"([{"Name": null}])") << false << Arguments();
    QTest::newRow("Name a boolean") << QByteArray(R"([{"Name": true}])") << false << Arguments();
    QTest::newRow("Parameter null")
        << QByteArray(R"([{"Name": "first", "Parameter": null}])") << false << Arguments();
    QTest::newRow("Parameter an array")
        << QByteArray(R"([{"Name": "first", "Parameter": ["value"]}])") << false << Arguments();
    QTest::newRow("Description null")
        << QByteArray(R"([{"Name": "first", "Description": null}])") << false << Arguments();
    QTest::newRow("Description a number")
        << QByteArray(R"([{"Name": "first", "Description": 1}])") << false << Arguments();
    QTest::newRow("a bad second element keeps the first")
        << QByteArray(R"([{"Name": "first", "Parameter": "value", "Description": "The first"},
                          {"Name": ""},
                          {"Name": "third"}])")
        << false << Arguments { first };
}

void tst_PluginMetadata::extractArguments()
{
    QFETCH(QByteArray, json);
    QFETCH(bool, accepted);
    QFETCH(Arguments, arguments);

    const QJsonDocument document = QJsonDocument::fromJson(json);
    QVERIFY(document.isArray());

    PluginData data(QStringLiteral("/nowhere/libzt_plugin_direct.so"));
    QCOMPARE(data.extractArguments(document.array()), accepted);
    QCOMPARE(data.arguments, arguments);
    // Refused arguments never leave a text.
    QCOMPARE(data.errorString, QString());
}

void tst_PluginMetadata::scanningRunsNoPluginCode()
{
    // Every test plugin's library leaves its name in the environment when its static
    // initialisers run, that is when the library is loaded.
    const QString fileName = copy(QStringLiteral("zt_plugin_staticinit"));
    const QStringList before = ZelvaneTest::staticInitialised();
    QVERIFY2(!before.contains(QStringLiteral("StaticInit")), qPrintable(before.join(u',')));

    PluginLoader plugin;
    QVERIFY(plugin.scan(fileName));
    QCOMPARE(plugin.name(), QStringLiteral("StaticInit"));

    // And every plugin of these tests, accepted or refused, straight from the folder
    // they were built in.
    const QDir plugins(QStringLiteral(ZELVANE_TEST_PLUGIN_DIR));
    const QStringList files = plugins.entryList(
        { QStringLiteral("libzt_plugin_*.so"), QStringLiteral("libzt_notaplugin.so") },
        QDir::Files);
    QVERIFY2(files.size() > 20, qPrintable(files.join(u',')));
    for (const QString& file : files) {
        PluginLoader other;
        other.scan(plugins.absoluteFilePath(file));
        QVERIFY2(!other.loaded(), qPrintable(file));
    }

    QCOMPARE(ZelvaneTest::staticInitialised(), before);
    QCOMPARE(plugin.instance(), nullptr);

    QVERIFY2(plugin.load({}), qPrintable(plugin.errorString()));
    QCOMPARE(ZelvaneTest::staticInitialised(),
             before + QStringList { QStringLiteral("StaticInit") });
}

QTEST_GUILESS_MAIN(tst_PluginMetadata)

#include "tst_pluginmetadata.moc"
