// The user's saved selection as other programs and people leave it: values of every
// type written by hand into the settings file, and a settings file that cannot be
// written. Reading follows QVariant::toBool(); a failed save is not examined, must
// not crash, and leaves the file as it was.

#include "reliability.h"
#include "zelvanetest.h"

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QFileInfo>
#include <QtCore/QScopeGuard>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <cerrno>
#include <cstring>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using Zelvane::PluginController;
using Zelvane::PluginLoader;
using Zelvane::PluginsModel;
using ZelvaneReliability::readFile;
using ZelvaneReliability::writeFile;

namespace {

// A selection file as a person or another program might write it, with a comment that
// QSettings itself would never write back.
const QByteArray handWritten = "; written by hand\n"
                               "[plugin]\n"
                               "Alpha=false\n"
                               "Beta=true\n";

QMultiMap<QString, PluginLoader> alphaAndBeta()
{
    QMultiMap<QString, PluginLoader> plugins;
    plugins.insert(
        QStringLiteral("Extension"),
        ZelvaneTest::makePlugin(QStringLiteral("Beta"), QStringLiteral("Extension"), {}, false));
    plugins.insert(
        QStringLiteral("Extension"),
        ZelvaneTest::makePlugin(QStringLiteral("Alpha"), QStringLiteral("Extension"), {}, true));
    return plugins;
}

QStringList checkedRows(const PluginsModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row, 0);
        rows.append(index.data(PluginsModel::NameRole).toString()
                    + (index.data(PluginsModel::CheckedRole).toBool() ? QStringLiteral("=on")
                                                                      : QStringLiteral("=off")));
    }
    return rows;
}

} // namespace

class tst_RelSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void storedValues_data();
    void storedValues();
    void storedValuesInModel_data();
    void storedValuesInModel();
    void unwritableSettingsPath();
    void readOnlySettingsFile();

private:
    QTemporaryDir m_dir;
};

void tst_RelSettings::initTestCase()
{
    QVERIFY(m_dir.isValid());
    PluginController::instance()->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
}

void tst_RelSettings::storedValues_data()
{
    QTest::addColumn<QByteArray>("stored"); // the value's text in the INI file
    QTest::addColumn<bool>("loadByDefault");
    QTest::addColumn<bool>("enabled");

    QTest::newRow("true") << QByteArray("true") << false << true;
    QTest::newRow("false") << QByteArray("false") << true << false;
    QTest::newRow("TRUE") << QByteArray("TRUE") << false << true;
    QTest::newRow("False") << QByteArray("False") << true << false;
    QTest::newRow("quoted false") << QByteArray("\"false\"") << true << false;
    QTest::newRow("false between spaces") << QByteArray("  false  ") << true << false;
    QTest::newRow("1") << QByteArray("1") << false << true;
    QTest::newRow("0") << QByteArray("0") << true << false;
    QTest::newRow("2") << QByteArray("2") << false << true;
    QTest::newRow("-1") << QByteArray("-1") << false << true;
    // Text, not a number: only "", "0" and "false" read as false.
    QTest::newRow("0.0") << QByteArray("0.0") << false << true;
    QTest::newRow("00") << QByteArray("00") << false << true;
    QTest::newRow("no") << QByteArray("no") << false << true;
    QTest::newRow("off") << QByteArray("off") << false << true;
    // An empty value is stored, and overrides a true default.
    QTest::newRow("empty") << QByteArray("") << true << false;
    QTest::newRow("empty quotes") << QByteArray("\"\"") << true << false;
    // A comma makes a list, which does not convert to bool at all.
    QTest::newRow("list of true and true") << QByteArray("true, true") << true << false;
    QTest::newRow("list of 1 and 1") << QByteArray("1, 1") << true << false;
    QTest::newRow("quoted comma") << QByteArray("\"true, true\"") << false << true;
    QTest::newRow("byte array false") << QByteArray("@ByteArray(false)") << true << false;
    QTest::newRow("byte array true") << QByteArray("@ByteArray(true)") << false << true;
    QTest::newRow("invalid") << QByteArray("@Invalid()") << true << false;
    QTest::newRow("size") << QByteArray("@Size(1 1)") << true << false;
}

void tst_RelSettings::storedValues()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, loadByDefault);
    QFETCH(bool, enabled);

    const QString path
        = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()) + QStringLiteral(".ini"));
    const QByteArray content = "[plugin]\nViewer=" + stored + "\n";
    QVERIFY(writeFile(path, content));
    QSettings settings(path, QSettings::IniFormat);
    PluginController::instance()->setSettings(&settings);

    const PluginLoader plugin = ZelvaneTest::makePlugin(
        QStringLiteral("Viewer"), QStringLiteral("Extension"), {}, loadByDefault);
    QCOMPARE(PluginController::instance()->isEnabled(plugin), enabled);
    // Reading never writes.
    QCOMPARE(readFile(path), content);
    PluginController::instance()->setSettings(nullptr);
}

void tst_RelSettings::storedValuesInModel_data()
{
    storedValues_data();
}

void tst_RelSettings::storedValuesInModel()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, loadByDefault);
    QFETCH(bool, enabled);

    const QString path
        = m_dir.filePath(QStringLiteral("model-") + QString::fromLatin1(QTest::currentDataTag())
                         + QStringLiteral(".ini"));
    const QByteArray content = "[plugin]\nViewer=" + stored + "\n";
    QVERIFY(writeFile(path, content));
    QSettings settings(path, QSettings::IniFormat);

    QMultiMap<QString, PluginLoader> plugins;
    plugins.insert(QStringLiteral("Extension"),
                   ZelvaneTest::makePlugin(QStringLiteral("Viewer"), QStringLiteral("Extension"),
                                           {}, loadByDefault));
    PluginsModel model(plugins, &settings);
    QCOMPARE(ZelvaneReliability::modelTesterComplaints(&model), QStringList());
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.index(0, 0).data(PluginsModel::CheckedRole), QVariant(enabled));
    QCOMPARE(model.index(0, 0).data(Qt::CheckStateRole),
             QVariant(enabled ? int(Qt::Checked) : int(Qt::Unchecked)));
    QCOMPARE(readFile(path), content);

    // The first edit replaces the odd value with a plain bool.
    QVERIFY(model.setData(model.index(0, 0), !enabled, PluginsModel::CheckedRole));
    QCOMPARE(readFile(path), QByteArray("[plugin]\nViewer=") + (enabled ? "false" : "true") + "\n");
}

void tst_RelSettings::unwritableSettingsPath()
{
    // The settings file would live in a "directory" that is a regular file: nothing
    // can be created there, whoever runs the test.
    const QString parent = m_dir.filePath(QStringLiteral("notadirectory"));
    QVERIFY(writeFile(parent, "a file\n"));
    const QString path = parent + QStringLiteral("/host.ini");
    QSettings settings(path, QSettings::IniFormat);

    PluginsModel model(alphaAndBeta(), &settings);
    QCOMPARE(checkedRows(model),
             QStringList({ QStringLiteral("Alpha=on"), QStringLiteral("Beta=off") }));
    QVERIFY(model.setData(model.index(1, 0), true, PluginsModel::CheckedRole));
    QVERIFY(model.setData(model.index(0, 0), int(Qt::Unchecked), Qt::CheckStateRole));
    QCOMPARE(checkedRows(model),
             QStringList({ QStringLiteral("Alpha=off"), QStringLiteral("Beta=on") }));
    QCOMPARE(readFile(parent), QByteArray("a file\n"));
    QVERIFY(!QFileInfo::exists(path));
}

void tst_RelSettings::readOnlySettingsFile()
{
    const QString dir = m_dir.filePath(QStringLiteral("readonly"));
    QVERIFY(QDir().mkpath(dir));
    const QString path = dir + QStringLiteral("/host.ini");
    QVERIFY(writeFile(path, handWritten));
    const QByteArray encodedDir = QFile::encodeName(dir);

    if (::geteuid() != 0) {
        QVERIFY(::chmod(QFile::encodeName(path).constData(), 0444) == 0);
        QVERIFY(::chmod(encodedDir.constData(), 0555) == 0);
    } else {
        // Permissions do not stop root. A read-only bind mount of the folder does: in
        // a mount namespace of this test process alone, which ends with the process.
        if (::unshare(CLONE_NEWNS) != 0
            || ::mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0
            || ::mount(encodedDir.constData(), encodedDir.constData(), "none", MS_BIND, nullptr)
                != 0
            || ::mount("none", encodedDir.constData(), "none", MS_REMOUNT | MS_BIND | MS_RDONLY,
                       nullptr)
                != 0) {
            QSKIP(qPrintable(
                QStringLiteral("running as root without a way to make a file read-only: ")
                + QString::fromLocal8Bit(std::strerror(errno))));
        }
    }
    const auto restore = qScopeGuard([&] {
        if (::geteuid() != 0)
            ::chmod(encodedDir.constData(), 0755);
        else
            ::umount2(encodedDir.constData(), MNT_DETACH);
    });
    QFile probe(path);
    QVERIFY2(!probe.open(QIODevice::Append), "the settings file is still writable");

    {
        QSettings settings(path, QSettings::IniFormat);
        PluginsModel model(alphaAndBeta(), &settings);
        QCOMPARE(checkedRows(model),
                 QStringList({ QStringLiteral("Alpha=off"), QStringLiteral("Beta=on") }));
        QVERIFY(model.setData(model.index(0, 0), true, PluginsModel::CheckedRole));
        QVERIFY(model.setData(model.index(1, 0), int(Qt::Unchecked), Qt::CheckStateRole));
        QCOMPARE(checkedRows(model),
                 QStringList({ QStringLiteral("Alpha=on"), QStringLiteral("Beta=off") }));
    }
    QCOMPARE(readFile(path), handWritten);
    QCOMPARE(QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList { QStringLiteral("host.ini") });

    // Within this run Qt keeps what it could not write, so the host sees the edit
    // until it exits; the next start reads the selection that the file still holds.
    QSettings again(path, QSettings::IniFormat);
    PluginController::instance()->setSettings(&again);
    QCOMPARE(PluginController::instance()->isEnabled(ZelvaneTest::makePlugin(
                 QStringLiteral("Alpha"), QStringLiteral("Extension"), {}, false)),
             true);
    QCOMPARE(PluginController::instance()->isEnabled(ZelvaneTest::makePlugin(
                 QStringLiteral("Beta"), QStringLiteral("Extension"), {}, true)),
             false);
    PluginController::instance()->setSettings(nullptr);
}

QTEST_MAIN(tst_RelSettings)
#include "tst_rel_settings.moc"
