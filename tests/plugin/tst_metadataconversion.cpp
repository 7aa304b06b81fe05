// The record read from a plugin's metadata is the same whether the five keys are read
// straight from the JSON object, as the library does, or from the whole object
// converted to a QVariantMap, as the literal form in metadataoracle.h does: for every
// JSON value in every key, for odd numbers, nested and mixed arrays, and for thousands
// of random metadata objects.

#include "metadataoracle.h"

#include <zelvane/pluginargumentdescription.h>
#include <zelvane/plugincontroller.h>

#include "plugin/plugindata_p.h"

#include <QtCore/QCborValue>
#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRandomGenerator>
#include <QtTest/QTest>

#include <cmath>
#include <limits>

using Zelvane::PluginArgumentDescription;
using Zelvane::PluginController;
using Zelvane::PluginData;

namespace {

const QString testIid = QStringLiteral(ZELVANE_TEST_IID);
const QStringList recordKeys { QStringLiteral("Name"), QStringLiteral("Category"),
                               QStringLiteral("Dependencies"), QStringLiteral("Default"),
                               QStringLiteral("Description") };

// An existing file, so that the error texts carry a file name: the records are filled
// from metadata built here, the file is never read.
QString fileName()
{
    return QCoreApplication::applicationFilePath();
}

QString json(const QJsonValue& value)
{
    if (value.isUndefined())
        return QStringLiteral("(absent)");
    const QJsonArray array { value };
    const QByteArray text = QJsonDocument(array).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(text.mid(1, text.size() - 2));
}

QString describe(const QList<PluginArgumentDescription>& arguments)
{
    QStringList parts;
    for (const PluginArgumentDescription& argument : arguments)
        parts.append(QStringLiteral("{%1|%2|%3}")
                         .arg(argument.name, argument.parameter, argument.description));
    return parts.join(QLatin1Char(','));
}

// Every field in which the two records differ, with both values; empty when none does.
QStringList differences(bool fastResult, const PluginData& fast, bool oracleResult,
                        const PluginData& oracle)
{
    QStringList found;
    const auto check = [&found](const char* field, const QString& a, const QString& b) {
        if (a != b)
            found.append(QStringLiteral("%1: JSON reading gives \"%2\", the converted map \"%3\"")
                             .arg(QLatin1String(field), a, b));
    };
    check("scan result", fastResult ? QStringLiteral("true") : QStringLiteral("false"),
          oracleResult ? QStringLiteral("true") : QStringLiteral("false"));
    check("name", fast.name, oracle.name);
    check("name is null", fast.name.isNull() ? QStringLiteral("null") : QStringLiteral("set"),
          oracle.name.isNull() ? QStringLiteral("null") : QStringLiteral("set"));
    check("category", fast.category, oracle.category);
    check("dependencies",
          QString::number(fast.dependencies.size()) + QLatin1Char(':')
              + fast.dependencies.join(QLatin1Char('|')),
          QString::number(oracle.dependencies.size()) + QLatin1Char(':')
              + oracle.dependencies.join(QLatin1Char('|')));
    check("loadByDefault", fast.loadByDefault ? QStringLiteral("true") : QStringLiteral("false"),
          oracle.loadByDefault ? QStringLiteral("true") : QStringLiteral("false"));
    check("description", fast.description, oracle.description);
    check("errorString", fast.errorString, oracle.errorString);
    check("arguments", describe(fast.arguments), describe(oracle.arguments));
    return found;
}

// Both readings of one top-level metadata object; the differences, empty when none.
QStringList compareReadings(const QJsonObject& metaData)
{
    PluginData fast(fileName());
    PluginData oracle(fileName());
    const bool fastResult = fast.scanMetadata(metaData);
    const bool oracleResult = MetadataOracle::scanMetadata(oracle, metaData);
    return differences(fastResult, fast, oracleResult, oracle);
}

QJsonObject withPluginMetaData(const QJsonValue& pluginMetaData)
{
    QJsonObject top { { QStringLiteral("IID"), testIid },
                      { QStringLiteral("className"), QStringLiteral("TestPlugin") },
                      { QStringLiteral("debug"), false } };
    if (!pluginMetaData.isUndefined())
        top.insert(QStringLiteral("MetaData"), pluginMetaData);
    return top;
}

// The object as QPluginLoader::metaData() hands it over: Qt keeps plugin metadata as
// CBOR and converts it to JSON when asked, which decides how numbers are held.
QJsonObject throughCbor(const QJsonObject& object)
{
    const QByteArray cbor = QCborValue::fromJsonValue(object).toCbor();
    return QCborValue::fromCbor(cbor).toJsonValue().toObject();
}

// One of every kind of JSON value, the odd numbers among them.
QList<QPair<QString, QJsonValue>> valueCatalogue()
{
    const double twoTo53 = 9007199254740992.0;
    const double twoTo63 = 9223372036854775808.0;
    const QJsonObject dependencyObject { { QStringLiteral("Name"), QStringLiteral("Core") },
                                         { QStringLiteral("Version"), QStringLiteral("9.0.2") } };
    return {
        { QStringLiteral("null"), QJsonValue(QJsonValue::Null) },
        { QStringLiteral("true"), QJsonValue(true) },
        { QStringLiteral("false"), QJsonValue(false) },
        { QStringLiteral("zero"), QJsonValue(0) },
        { QStringLiteral("negative zero"), QJsonValue(-0.0) },
        { QStringLiteral("one"), QJsonValue(1) },
        { QStringLiteral("minus one"), QJsonValue(-1) },
        { QStringLiteral("seven"), QJsonValue(7) },
        { QStringLiteral("7.5"), QJsonValue(7.5) },
        { QStringLiteral("0.1"), QJsonValue(0.1) },
        { QStringLiteral("0.5"), QJsonValue(0.5) },
        { QStringLiteral("-0.5"), QJsonValue(-0.5) },
        { QStringLiteral("0.9999"), QJsonValue(0.9999) },
        { QStringLiteral("1e-300"), QJsonValue(1e-300) },
        { QStringLiteral("denormal"), QJsonValue(std::numeric_limits<double>::denorm_min()) },
        { QStringLiteral("2^53"), QJsonValue(twoTo53) },
        { QStringLiteral("2^53 + 2"), QJsonValue(twoTo53 + 2) },
        { QStringLiteral("2^63 as a double"), QJsonValue(twoTo63) },
        { QStringLiteral("-2^63 as a double"), QJsonValue(-twoTo63) },
        { QStringLiteral("2^64 as a double"), QJsonValue(twoTo63 * 2) },
        { QStringLiteral("int64 maximum"), QJsonValue(std::numeric_limits<qint64>::max()) },
        { QStringLiteral("int64 minimum"), QJsonValue(std::numeric_limits<qint64>::min()) },
        { QStringLiteral("1e20"), QJsonValue(1e20) },
        { QStringLiteral("-1e300"), QJsonValue(-1e300) },
        { QStringLiteral("largest double"), QJsonValue(std::numeric_limits<double>::max()) },
        { QStringLiteral("12345.678"), QJsonValue(12345.678) },
        { QStringLiteral("empty string"), QJsonValue(QString()) },
        { QStringLiteral("a name"), QJsonValue(QStringLiteral("Viewer")) },
        { QStringLiteral("\"0\""), QJsonValue(QStringLiteral("0")) },
        { QStringLiteral("\"false\""), QJsonValue(QStringLiteral("false")) },
        { QStringLiteral("\"FALSE\""), QJsonValue(QStringLiteral("FALSE")) },
        { QStringLiteral("\"true\""), QJsonValue(QStringLiteral("true")) },
        { QStringLiteral("\"1\""), QJsonValue(QStringLiteral("1")) },
        { QStringLiteral("a blank"), QJsonValue(QStringLiteral(" ")) },
        { QStringLiteral("text beyond Latin-1"),
          QJsonValue(QStringLiteral("Zelvane \u00e9\u4e2d")) },
        { QStringLiteral("empty array"), QJsonValue(QJsonArray()) },
        { QStringLiteral("array of one string"), QJsonArray { QStringLiteral("Storage") } },
        { QStringLiteral("array of strings"),
          QJsonArray { QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("C") } },
        { QStringLiteral("array of an empty string"), QJsonArray { QString() } },
        { QStringLiteral("mixed array"),
          QJsonArray { QStringLiteral("A"), 1, 2.5, true, false, QJsonValue::Null, -0.0,
                       twoTo63 } },
        { QStringLiteral("array of numbers"), QJsonArray { 0, 1, -1, 1e300, 0.1 } },
        { QStringLiteral("array of nulls"), QJsonArray { QJsonValue::Null, QJsonValue::Null } },
        { QStringLiteral("array of booleans"), QJsonArray { true, false } },
        { QStringLiteral("nested array"),
          QJsonArray { QJsonArray { QStringLiteral("A") }, QStringLiteral("B") } },
        { QStringLiteral("deeply nested array"),
          QJsonArray { QJsonArray { QJsonArray { QJsonArray { 1 } } } } },
        { QStringLiteral("array of dependency objects"),
          QJsonArray { dependencyObject, dependencyObject } },
        { QStringLiteral("array of an object and a string"),
          QJsonArray { dependencyObject, QStringLiteral("Core") } },
        { QStringLiteral("empty object"), QJsonValue(QJsonObject()) },
        { QStringLiteral("object"), QJsonValue(dependencyObject) },
        { QStringLiteral("nested object"),
          QJsonObject { { QStringLiteral("Name"),
                          QJsonObject { { QStringLiteral("Name"), QStringLiteral("X") } } } } },
    };
}

class Generator
{
public:
    explicit Generator(quint32 seed)
        : m_random(seed)
    {
    }

    // A top-level metadata object, mostly of an acceptable plugin with keys of the
    // intended types, otherwise anything.
    QJsonObject metadata()
    {
        QJsonObject pluginMetaData;
        for (const QString& key : recordKeys) {
            const int roll = bounded(10);
            if (roll < 3)
                continue;
            pluginMetaData.insert(key, roll < 7 ? intended(key) : value(3));
        }
        // What real plugins carry beside the record's keys, read by nobody.
        const int extras = bounded(4);
        for (int i = 0; i < extras; ++i) {
            static const QStringList names { QStringLiteral("License"), QStringLiteral("Url"),
                                             QStringLiteral("Vendor"),  QStringLiteral("name"),
                                             QStringLiteral("Version"), QStringLiteral("default") };
            pluginMetaData.insert(names.at(bounded(int(names.size()))), value(3));
        }
        const int arguments = bounded(10);
        if (arguments < 4)
            pluginMetaData.insert(QStringLiteral("Arguments"), argumentsArray());
        else if (arguments < 5)
            pluginMetaData.insert(QStringLiteral("Arguments"), value(2));

        QJsonObject top;
        const int iid = bounded(20);
        if (iid < 17)
            top.insert(QStringLiteral("IID"), testIid);
        else if (iid < 18)
            top.insert(QStringLiteral("IID"), testIid.toLower());
        else if (iid < 19)
            top.insert(QStringLiteral("IID"), value(1));
        const int shape = bounded(20);
        if (shape < 18)
            top.insert(QStringLiteral("MetaData"), pluginMetaData);
        else if (shape < 19)
            top.insert(QStringLiteral("MetaData"), value(2));
        return top;
    }

private:
    int bounded(int bound) { return int(m_random.bounded(bound)); }

    QString text()
    {
        static const QStringList pool {
            QString(),
            QStringLiteral("Core"),
            QStringLiteral("Extension"),
            QStringLiteral("0"),
            QStringLiteral("false"),
            QStringLiteral("False"),
            QStringLiteral("true"),
            QStringLiteral("1"),
            QStringLiteral(" "),
            QStringLiteral("Storage"),
            QStringLiteral("plugin-\u00e9\u4e2d"),
            QStringLiteral("7.5"),
            QStringLiteral("null"),
        };
        if (bounded(4) == 0) {
            QString random;
            const int length = bounded(12);
            for (int i = 0; i < length; ++i)
                random.append(QChar(char16_t(0x20 + bounded(0x250))));
            return random;
        }
        return pool.at(bounded(int(pool.size())));
    }

    double number()
    {
        static const QList<double> odd {
            0.0,
            -0.0,
            1.0,
            -1.0,
            0.1,
            0.5,
            -0.5,
            0.9999,
            1e-300,
            9007199254740992.0,
            9007199254740994.0,
            9223372036854775808.0,
            -9223372036854775808.0,
            18446744073709551616.0,
            1e300,
            -1e300,
            std::numeric_limits<double>::max(),
            std::numeric_limits<double>::denorm_min(),
        };
        switch (bounded(4)) {
        case 0:
            return odd.at(bounded(int(odd.size())));
        case 1:
            return double(bounded(2000) - 1000);
        case 2:
            return (m_random.generateDouble() - 0.5) * std::pow(10.0, bounded(40) - 20);
        default:
            return double(qint64(m_random.generate64()));
        }
    }

    QJsonValue value(int depth)
    {
        switch (bounded(depth > 0 ? 9 : 7)) {
        case 0:
            return QJsonValue(QJsonValue::Null);
        case 1:
            return bounded(2) == 0;
        case 2:
            return number();
        case 3:
            return QJsonValue(qint64(m_random.generate64()));
        case 4:
        case 5:
        case 6:
            return text();
        case 7: {
            QJsonArray array;
            const int size = bounded(5);
            for (int i = 0; i < size; ++i)
                array.append(bounded(2) == 0 ? QJsonValue(text()) : value(depth - 1));
            return array;
        }
        default: {
            QJsonObject object;
            const int size = bounded(4);
            for (int i = 0; i < size; ++i)
                object.insert(bounded(2) == 0 ? recordKeys.at(bounded(5)) : text(),
                              value(depth - 1));
            return object;
        }
        }
    }

    QJsonValue intended(const QString& key)
    {
        if (key == QLatin1String("Default"))
            return bounded(2) == 0;
        if (key == QLatin1String("Dependencies")) {
            QJsonArray names;
            const int size = bounded(5);
            for (int i = 0; i < size; ++i)
                names.append(text());
            return names;
        }
        return text();
    }

    QJsonArray argumentsArray()
    {
        QJsonArray arguments;
        const int size = bounded(4);
        for (int i = 0; i < size; ++i) {
            QJsonObject argument;
            static const QStringList keys { QStringLiteral("Name"), QStringLiteral("Parameter"),
                                            QStringLiteral("Description") };
            for (const QString& key : keys) {
                const int roll = bounded(10);
                if (roll < 7)
                    argument.insert(key, text());
                else if (roll < 8)
                    argument.insert(key, value(1));
            }
            arguments.append(bounded(12) == 0 ? value(1) : QJsonValue(argument));
        }
        return arguments;
    }

    QRandomGenerator m_random;
};

} // namespace

class tst_MetadataConversion : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyValueInEveryKey_data();
    void everyValueInEveryKey();
    void numbersWrittenAsText_data();
    void numbersWrittenAsText();
    void metaDataOfEveryKind_data();
    void metaDataOfEveryKind();
    void topLevel_data();
    void topLevel();
    void randomMetadata();
};

void tst_MetadataConversion::initTestCase()
{
    PluginController::instance()->setPluginIID(testIid);
}

void tst_MetadataConversion::everyValueInEveryKey_data()
{
    QTest::addColumn<QJsonObject>("metaData"); // the "MetaData" object

    const auto catalogue = valueCatalogue();
    for (const QString& key : recordKeys) {
        for (const auto& [label, value] : catalogue) {
            // Beside an accepted name, so that every later key is read too.
            QJsonObject withName { { QStringLiteral("Name"), QStringLiteral("Plugin") },
                                   { QStringLiteral("Category"), QStringLiteral("Extension") } };
            withName.insert(key, value);
            QTest::addRow("%s %s", qPrintable(key), qPrintable(label)) << withName;
            // Alone: the name decides, and for the other keys it is absent.
            QTest::addRow("%s %s, alone", qPrintable(key), qPrintable(label))
                << QJsonObject { { key, value } };
        }
    }
    // Every key at once, each with the same kind of value.
    for (const auto& [label, value] : catalogue) {
        QJsonObject all;
        for (const QString& key : recordKeys)
            all.insert(key, value);
        QTest::addRow("every key %s", qPrintable(label)) << all;
    }
}

void tst_MetadataConversion::everyValueInEveryKey()
{
    QFETCH(QJsonObject, metaData);

    for (const QJsonObject& top :
         { withPluginMetaData(metaData), throughCbor(withPluginMetaData(metaData)) }) {
        const QStringList found = compareReadings(top);
        QVERIFY2(found.isEmpty(),
                 qPrintable(json(top) + QLatin1Char('\n') + found.join(QLatin1Char('\n'))));
    }
}

void tst_MetadataConversion::numbersWrittenAsText_data()
{
    QTest::addColumn<QByteArray>("number"); // JSON text, as a plugin's file gives it

    for (const char* number : { "0",
                                "-0",
                                "-0.0",
                                "1",
                                "-1",
                                "7",
                                "7.0",
                                "7.5",
                                "0.1",
                                "1e3",
                                "1E-3",
                                "2.5e-7",
                                "9007199254740991",
                                "9007199254740992",
                                "9007199254740993",
                                "9223372036854775807",
                                "9223372036854775808",
                                "-9223372036854775808",
                                "-9223372036854775809",
                                "18446744073709551615",
                                "18446744073709551616",
                                "123456789012345678901234567890",
                                "1e308",
                                "-1e308",
                                "1.7976931348623157e308",
                                "4.9e-324",
                                "0.30000000000000004" })
        QTest::newRow(number) << QByteArray(number);
}

void tst_MetadataConversion::numbersWrittenAsText()
{
    QFETCH(QByteArray, number);

    for (const QString& key : recordKeys) {
        const QByteArray text = "{\"IID\": \"" + testIid.toUtf8() + "\", \"MetaData\": {\""
            + key.toUtf8() + "\": " + number + ", \"Name\": " + number + ", \"Dependencies\": ["
            + number + ", \"A\", " + number + "]}}";
        QJsonParseError error;
        const QJsonObject top = QJsonDocument::fromJson(text, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        for (const QJsonObject& read : { top, throughCbor(top) }) {
            const QStringList found = compareReadings(read);
            QVERIFY2(found.isEmpty(),
                     qPrintable(QString::fromUtf8(text) + QLatin1Char('\n')
                                + found.join(QLatin1Char('\n'))));
        }
    }
}

void tst_MetadataConversion::metaDataOfEveryKind_data()
{
    QTest::addColumn<QJsonValue>("metaData"); // the value of "MetaData"; undefined: absent

    QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined);
    for (const auto& [label, value] : valueCatalogue())
        QTest::addRow("%s", qPrintable(label)) << value;
    QTest::newRow("none of the five keys, other keys") << QJsonValue(
        QJsonObject { { QStringLiteral("License"), QJsonArray { QStringLiteral("GPL") } },
                      { QStringLiteral("Url"), QStringLiteral("https://example.org") } });
    QTest::newRow("the five keys in lower case") << QJsonValue(
        QJsonObject { { QStringLiteral("name"), QStringLiteral("A") },
                      { QStringLiteral("category"), QStringLiteral("Core") },
                      { QStringLiteral("dependencies"), QJsonArray { QStringLiteral("B") } },
                      { QStringLiteral("default"), true },
                      { QStringLiteral("description"), QStringLiteral("D") } });
    QTest::newRow("Arguments only")
        << QJsonValue(QJsonObject { { QStringLiteral("Arguments"), QJsonArray() } });
    const QJsonObject argument { { QStringLiteral("Name"), QStringLiteral("theme") },
                                 { QStringLiteral("Parameter"), QStringLiteral("name") },
                                 { QStringLiteral("Description"), QStringLiteral("Colours") } };
    for (const auto& [label, value] : valueCatalogue()) {
        QTest::addRow("Arguments %s", qPrintable(label))
            << QJsonValue(QJsonObject { { QStringLiteral("Name"), QStringLiteral("A") },
                                        { QStringLiteral("Arguments"), value } });
        QTest::addRow("Arguments [good, %s]", qPrintable(label)) << QJsonValue(
            QJsonObject { { QStringLiteral("Name"), QStringLiteral("A") },
                          { QStringLiteral("Arguments"), QJsonArray { argument, value } } });
        for (const QString& key : { QStringLiteral("Name"), QStringLiteral("Parameter"),
                                    QStringLiteral("Description") }) {
            QJsonObject changed = argument;
            changed.insert(key, value);
            QTest::addRow("argument %s %s", qPrintable(key), qPrintable(label)) << QJsonValue(
                QJsonObject { { QStringLiteral("Name"), QStringLiteral("A") },
                              { QStringLiteral("Arguments"), QJsonArray { argument, changed } } });
        }
    }
}

void tst_MetadataConversion::metaDataOfEveryKind()
{
    QFETCH(QJsonValue, metaData);

    for (const QJsonObject& top :
         { withPluginMetaData(metaData), throughCbor(withPluginMetaData(metaData)) }) {
        const QStringList found = compareReadings(top);
        QVERIFY2(found.isEmpty(),
                 qPrintable(json(top) + QLatin1Char('\n') + found.join(QLatin1Char('\n'))));
    }
}

void tst_MetadataConversion::topLevel_data()
{
    QTest::addColumn<QJsonObject>("metaData"); // the whole top-level object

    const QJsonObject plugin { { QStringLiteral("Name"), QStringLiteral("A") } };
    QTest::newRow("nothing") << QJsonObject();
    QTest::newRow("no IID") << QJsonObject { { QStringLiteral("MetaData"), plugin } };
    for (const auto& [label, value] : valueCatalogue())
        QTest::addRow("IID %s", qPrintable(label))
            << QJsonObject { { QStringLiteral("IID"), value },
                             { QStringLiteral("MetaData"), plugin } };
    QTest::newRow("IID in other letter case")
        << QJsonObject { { QStringLiteral("IID"), testIid.toUpper() },
                         { QStringLiteral("MetaData"), plugin } };
    QTest::newRow("IID matches") << QJsonObject { { QStringLiteral("IID"), testIid },
                                                  { QStringLiteral("MetaData"), plugin } };
    QTest::newRow("the keys at the top level instead of in MetaData")
        << QJsonObject { { QStringLiteral("IID"), testIid }, { QStringLiteral("Name"), 1 } };
}

void tst_MetadataConversion::topLevel()
{
    QFETCH(QJsonObject, metaData);

    const QStringList found = compareReadings(metaData);
    QVERIFY2(found.isEmpty(),
             qPrintable(json(metaData) + QLatin1Char('\n') + found.join(QLatin1Char('\n'))));
}

void tst_MetadataConversion::randomMetadata()
{
    // ZELVANE_TEST_SEED repeats a run; otherwise every run tries new objects.
    bool fixed = false;
    const quint32 seed = quint32(qEnvironmentVariableIntValue("ZELVANE_TEST_SEED", &fixed));
    const quint32 used = fixed ? seed : QRandomGenerator::global()->generate();
    Generator generator(used);

    int accepted = 0;
    for (int i = 0; i < 5000; ++i) {
        const QJsonObject top = generator.metadata();
        for (const QJsonObject& read : { top, throughCbor(top) }) {
            const QStringList found = compareReadings(read);
            QVERIFY2(found.isEmpty(),
                     qPrintable(QStringLiteral("seed %1 (ZELVANE_TEST_SEED=%1 repeats it), "
                                               "object %2:\n%3\n%4")
                                    .arg(used)
                                    .arg(i)
                                    .arg(json(read), found.join(QLatin1Char('\n')))));
        }
        PluginData data(fileName());
        accepted += data.scanMetadata(top) ? 1 : 0;
    }
    // The objects must reach the later keys and the arguments, not only the refusals.
    QVERIFY2(
        accepted > 1000,
        qPrintable(QStringLiteral("only %1 of 5000 accepted, seed %2").arg(accepted).arg(used)));
}

QTEST_GUILESS_MAIN(tst_MetadataConversion)

#include "tst_metadataconversion.moc"
