// zelvane-demo run as a user runs it headless: --list and --screenshot over the
// example plugins. The screenshots are read as a user would look at them: the red wavy
// lines under unknown words, the focus mode's page, the text of the plugins screen.

#include "processrunner.h"
#include "settingsfixture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QSet>
#include <QtCore/QTemporaryDir>
#include <QtGui/QColor>
#include <QtGui/QImage>
#include <QtTest/QTest>

namespace {

const QString pluginDir = QStringLiteral(ZELVANE_EXAMPLE_PLUGIN_DIR);

using Result = ZelvaneTest::ProcessResult;

Result runDemo(const QStringList& arguments)
{
    return ZelvaneTest::runProcess(QStringLiteral(ZELVANE_DEMO_EXECUTABLE), arguments);
}

int countPixels(const QImage& image, const std::function<bool(QRgb)>& wanted)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (wanted(image.pixel(x, y)))
                ++count;
        }
    }
    return count;
}

int colourCount(const QImage& image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            colours.insert(image.pixel(x, y));
    }
    return int(colours.size());
}

bool isText(QRgb pixel)
{
    return qGray(pixel) < 80;
}

// The spell checker's wavy underline, thin and anti-aliased: clearly red, whatever
// the shade.
bool isUnderline(QRgb pixel)
{
    return qRed(pixel) > qGreen(pixel) + 60 && qRed(pixel) > qBlue(pixel) + 60;
}

} // namespace

class tst_Demo : public QObject
{
    Q_OBJECT

private slots:
    void list_data();
    void list();
    void loadFailure();
    void noCorePlugin();
    void pluginOptionsInHelp();
    void editorScreenshot_data();
    void editorScreenshot();
    void openFailure();
    void unknownScreen();
    void pluginsScreenshot_data();
    void pluginsScreenshot();
    void aboutScreenshot();
    void troublemaker_data();
    void troublemaker();
};

void tst_Demo::list_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("expected"); // after the Plugins: and Settings: lines

    // What the bundled plugins give with nothing stored: the example's own defaults.
    const QStringList defaultListing { QStringLiteral("Load order:"),
                                       QStringLiteral("  1. Workbench"),
                                       QStringLiteral("  2. Storage"),
                                       QStringLiteral("  3. Documents"),
                                       QStringLiteral("  4. Spellcheck"),
                                       QStringLiteral("Disabled:"),
                                       QStringLiteral("  Focus"),
                                       QStringLiteral("  Export"),
                                       QStringLiteral("  Troublemaker"),
                                       QStringLiteral("Skipped:"),
                                       QStringLiteral("  (none)"),
                                       QStringLiteral("Objects in the pool:"),
                                       QStringLiteral("  Workbench: TabbedWorkbench \"workbench\""),
                                       QStringLiteral("  Workbench: QPlainTextEdit \"editor\""),
                                       QStringLiteral("  Storage: DocumentStore \"documentStore\""),
                                       QStringLiteral("  Documents: DocumentManager \"documents\""),
                                       QStringLiteral(
                                           "  Spellcheck: SpellChecker \"spellChecker\"") };

    QTest::newRow("bundled plugins, nothing stored")
        << QByteArray() << QStringList() << defaultListing;

    QTest::newRow("an extension disabled in the settings")
        << QByteArray("[plugin]\nSpellcheck=false\n") << QStringList()
        << QStringList { QStringLiteral("Load order:"),
                         QStringLiteral("  1. Workbench"),
                         QStringLiteral("  2. Storage"),
                         QStringLiteral("  3. Documents"),
                         QStringLiteral("Disabled:"),
                         QStringLiteral("  Focus"),
                         QStringLiteral("  Export"),
                         QStringLiteral("  Spellcheck"),
                         QStringLiteral("  Troublemaker"),
                         QStringLiteral("Skipped:"),
                         QStringLiteral("  (none)"),
                         QStringLiteral("Objects in the pool:"),
                         QStringLiteral("  Workbench: TabbedWorkbench \"workbench\""),
                         QStringLiteral("  Workbench: QPlainTextEdit \"editor\""),
                         QStringLiteral("  Storage: DocumentStore \"documentStore\""),
                         QStringLiteral("  Documents: DocumentManager \"documents\"") };

    QTest::newRow("the settings pick the second core plugin")
        << QByteArray("[plugin]\nWorkbench=false\nFocus=true\n") << QStringList()
        << QStringList { QStringLiteral("Load order:"),
                         QStringLiteral("  1. Focus"),
                         QStringLiteral("  2. Storage"),
                         QStringLiteral("  3. Documents"),
                         QStringLiteral("  4. Spellcheck"),
                         QStringLiteral("Disabled:"),
                         QStringLiteral("  Workbench"),
                         QStringLiteral("  Export"),
                         QStringLiteral("  Troublemaker"),
                         QStringLiteral("Skipped:"),
                         QStringLiteral("  (none)"),
                         QStringLiteral("Objects in the pool:"),
                         QStringLiteral("  Focus: FocusWorkbench \"workbench\""),
                         QStringLiteral("  Focus: QPlainTextEdit \"editor\""),
                         QStringLiteral("  Storage: DocumentStore \"documentStore\""),
                         QStringLiteral("  Documents: DocumentManager \"documents\""),
                         QStringLiteral("  Spellcheck: SpellChecker \"spellChecker\"") };

    // The selection screen would have cleared Spellcheck with Documents; a hand-edited
    // file can still ask for it, and the library drops it without a word.
    QTest::newRow("a dependency disabled by hand")
        << QByteArray("[plugin]\nDocuments=false\nSpellcheck=true\n") << QStringList()
        << QStringList { QStringLiteral("Load order:"),
                         QStringLiteral("  1. Workbench"),
                         QStringLiteral("  2. Storage"),
                         QStringLiteral("Disabled:"),
                         QStringLiteral("  Focus"),
                         QStringLiteral("  Documents"),
                         QStringLiteral("  Export"),
                         QStringLiteral("  Troublemaker"),
                         QStringLiteral("Skipped:"),
                         QStringLiteral("  Spellcheck: its dependencies cannot be met "
                                        "(zelvane-inspect tells why)"),
                         QStringLiteral("Objects in the pool:"),
                         QStringLiteral("  Workbench: TabbedWorkbench \"workbench\""),
                         QStringLiteral("  Workbench: QPlainTextEdit \"editor\""),
                         QStringLiteral("  Storage: DocumentStore \"documentStore\"") };

    QTest::newRow("a plugin option with its value")
        << QByteArray()
        << QStringList { QStringLiteral("--spell-language"), QStringLiteral("de"),
                         QStringLiteral("--spell-skip-acronyms") }
        << defaultListing;
}

void tst_Demo::list()
{
    QFETCH(QByteArray, settings);
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, expected);

    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    if (!settings.isEmpty())
        QVERIFY(ZelvaneTest::writeFile(settingsFile, settings));

    const Result result = runDemo(
        QStringList { QStringLiteral("--list"), QStringLiteral("--settings"), settingsFile }
        + arguments);
    const QStringList lines = QStringList { QStringLiteral("Plugins: ") + pluginDir,
                                            QStringLiteral("Settings: ") + settingsFile }
        + expected + QStringList { QString() };
    QCOMPARE(result.out.split(QLatin1Char('\n')), lines);
    QCOMPARE(result.exitCode, 0);
    // Listing changes no selection: nothing is written when the file did not exist.
    QCOMPARE(QFile::exists(settingsFile), !settings.isEmpty());
}

void tst_Demo::loadFailure()
{
    // Spellcheck refuses the language in initialize(): the plugins before it stay loaded
    // (they are listed), Spellcheck itself is not, and the library's text is the error.
    QTemporaryDir folder;
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    const Result result
        = runDemo({ QStringLiteral("--list"), QStringLiteral("--settings"), settingsFile,
                    QStringLiteral("--spell-language"), QStringLiteral("fr") });
    const QString error = QStringLiteral(
        "The plugin \"Spellcheck\" failed to initialize. Error: \"no dictionary for the language "
        "\"fr\" (there are en and de)\"");
    QCOMPARE(result.out.split(QLatin1Char('\n')),
             (QStringList { QStringLiteral("Plugins: ") + pluginDir,
                            QStringLiteral("Settings: ") + settingsFile,
                            QStringLiteral("Load order:"), QStringLiteral("  1. Workbench"),
                            QStringLiteral("  2. Storage"), QStringLiteral("  3. Documents"),
                            QStringLiteral("Error: ") + error, QString() }));
    QVERIFY2(result.err.split(QLatin1Char('\n')).contains(QStringLiteral("zelvane-demo: ") + error),
             qPrintable(result.err));
    QCOMPARE(result.exitCode, 1);
}

void tst_Demo::noCorePlugin()
{
    QTemporaryDir folder;
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    const Result result = runDemo({ QStringLiteral("--list"), QStringLiteral("--settings"),
                                    settingsFile, QStringLiteral("--plugins"), folder.path() });
    QCOMPARE(result.out.split(QLatin1Char('\n')),
             (QStringList { QStringLiteral("Plugins: ") + QDir(folder.path()).absolutePath(),
                            QStringLiteral("Settings: ") + settingsFile,
                            QStringLiteral("Load order:"), QStringLiteral("  (none)"),
                            QStringLiteral("Error: The Core plugin is not found"), QString() }));
    QVERIFY2(result.err.split(QLatin1Char('\n'))
                 .contains(QStringLiteral("zelvane-demo: The Core plugin is not found")),
             qPrintable(result.err));
    QCOMPARE(result.exitCode, 1);

    // Without --list the error goes to stderr all the same.
    const Result screenshot = runDemo(
        { QStringLiteral("--screenshot"), folder.filePath(QStringLiteral("shot.png")),
          QStringLiteral("--settings"), settingsFile, QStringLiteral("--plugins"), folder.path() });
    QCOMPARE(screenshot.out, QString());
    QVERIFY(
        screenshot.err.contains(QStringLiteral("zelvane-demo: The Core plugin is not found\n")));
    QCOMPARE(screenshot.exitCode, 1);
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("shot.png"))));
}

void tst_Demo::pluginOptionsInHelp()
{
    const Result result = runDemo({ QStringLiteral("--help") });
    QCOMPARE(result.exitCode, 0);
    const QStringList lines = result.out.split(QLatin1Char('\n'));
    const auto line = [&lines](const QString& start) {
        for (const QString& line : lines) {
            if (line.trimmed().startsWith(start))
                return line.trimmed();
        }
        return QString();
    };
    QCOMPARE(
        line(QStringLiteral("--spell-language")),
        QStringLiteral("--spell-language <language>  Dictionary language: en (the default) or de"));
    QCOMPARE(
        line(QStringLiteral("--spell-skip-acronyms")),
        QStringLiteral("--spell-skip-acronyms        Does not check words written in capitals"));
    QCOMPARE(line(QStringLiteral("--export-format")),
             QStringLiteral(
                 "--export-format <format>     Export format: html (the default) or markdown"));
}

void tst_Demo::editorScreenshot_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("underlined");
    QTest::addColumn<bool>("focusPage");

    // The document opened is one line: "The NASA report is ready, but teh summary is
    // not." Which words are underlined, tst_editorplugins checks in the document itself.
    QTest::newRow("Workbench, English: teh underlined")
        << QByteArray() << QStringList() << true << false;
    QTest::newRow("Spellcheck switched off: nothing underlined")
        << QByteArray("[plugin]\nSpellcheck=false\n") << QStringList() << false << false;
    QTest::newRow("Focus, English: teh underlined")
        << QByteArray("[plugin]\nWorkbench=false\nFocus=true\n") << QStringList() << true << true;
    QTest::newRow("Focus without Spellcheck")
        << QByteArray("[plugin]\nWorkbench=false\nFocus=true\nSpellcheck=false\n") << QStringList()
        << false << true;
}

void tst_Demo::editorScreenshot()
{
    QFETCH(QByteArray, settings);
    QFETCH(QStringList, arguments);
    QFETCH(bool, underlined);
    QFETCH(bool, focusPage);

    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    if (!settings.isEmpty())
        QVERIFY(ZelvaneTest::writeFile(settingsFile, settings));
    const QString document = folder.filePath(QStringLiteral("report.txt"));
    QVERIFY(
        ZelvaneTest::writeFile(document, "The NASA report is ready, but teh summary is not.\n"));
    const QString file = folder.filePath(QStringLiteral("editor.png"));
    const Result result
        = runDemo(QStringList { QStringLiteral("--screenshot"), file, QStringLiteral("--settings"),
                                settingsFile, document }
                  + arguments);
    QCOMPARE(result.out, QString());
    QCOMPARE(result.exitCode, 0);

    const QImage image(file);
    QVERIFY2(!image.isNull(), "no PNG written");
    QCOMPARE(image.size(), QSize(760, 480));
    // The text sits below the menu bar (and the tabs); above it the workbench's tab has
    // a red close button.
    const QImage text = image.copy(QRect(0, 52, image.width(), 100));
    QCOMPARE(countPixels(text, isUnderline) > 10, underlined);
    // The focus mode's page: text in a column on a quiet background, no tabs.
    const auto isPage = [](QRgb pixel) {
        return QColor(pixel) == QColor(0xee, 0xea, 0xe0);
    };
    QCOMPARE(countPixels(image, isPage) > 50000, focusPage);
}

void tst_Demo::openFailure()
{
    QTemporaryDir folder;
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    const QString missing = folder.filePath(QStringLiteral("missing.txt"));
    const Result result
        = runDemo({ QStringLiteral("--screenshot"), folder.filePath(QStringLiteral("shot.png")),
                    QStringLiteral("--settings"), settingsFile, missing });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.err.contains(
                 QStringLiteral("zelvane-demo: Cannot read %1: No such file or directory\n")
                     .arg(missing)),
             qPrintable(result.err));

    // Without Documents no plugin opens documents.
    QVERIFY(ZelvaneTest::writeFile(settingsFile, "[plugin]\nStorage=false\nDocuments=false\n"));
    const Result off
        = runDemo({ QStringLiteral("--screenshot"), folder.filePath(QStringLiteral("shot.png")),
                    QStringLiteral("--settings"), settingsFile, missing });
    QCOMPARE(off.exitCode, 1);
    QVERIFY2(
        off.err.contains(
            QStringLiteral("zelvane-demo: cannot open %1: the Documents plugin is switched off\n")
                .arg(missing)),
        qPrintable(off.err));
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("shot.png"))));
}

void tst_Demo::unknownScreen()
{
    QTemporaryDir folder;
    const Result result
        = runDemo({ QStringLiteral("--show"), QStringLiteral("menus"),
                    QStringLiteral("--screenshot"), folder.filePath(QStringLiteral("shot.png")),
                    QStringLiteral("--settings"), folder.filePath(QStringLiteral("demo.ini")) });
    QCOMPARE(result.exitCode, 2);
    // Qt may say something about the environment first; the demo's line is the last.
    QCOMPARE(result.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts).constLast(),
             QStringLiteral(
                 "zelvane-demo: --show takes editor, file-menu, plugins or about, not menus"));
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("shot.png"))));
}

void tst_Demo::pluginsScreenshot_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QRect>("lists"); // where the plugins are listed
    QTest::addColumn<QRect>("details"); // the details pane

    QTest::newRow("widgets") << QStringList() << QRect(20, 50, 280, 200)
                             << QRect(312, 50, 426, 380);
    QTest::newRow("QML") << QStringList { QStringLiteral("--qml") } << QRect(0, 40, 240, 200)
                         << QRect(250, 35, 500, 200);
}

void tst_Demo::pluginsScreenshot()
{
    QFETCH(QStringList, arguments);
    QFETCH(QRect, lists);
    QFETCH(QRect, details);

    // A hand-edited selection that leaves Spellcheck without Documents: the plugins
    // screen opened on Spellcheck explains why it will not load.
    QTemporaryDir folder;
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    QVERIFY(ZelvaneTest::writeFile(settingsFile, "[plugin]\nDocuments=false\nSpellcheck=true\n"));
    const auto screenshot = [&](const QStringList& more) {
        const QString file = folder.filePath(QStringLiteral("plugins.png"));
        QFile::remove(file);
        const Result result
            = runDemo(QStringList { QStringLiteral("--show"), QStringLiteral("plugins"),
                                    QStringLiteral("--screenshot"), file,
                                    QStringLiteral("--settings"), settingsFile }
                      + arguments + more);
        return result.exitCode == 0 && result.out.isEmpty() ? QImage(file) : QImage();
    };

    const QImage image = screenshot({ QStringLiteral("--select"), QStringLiteral("Spellcheck") });
    QVERIFY2(!image.isNull(), "the demo failed or wrote no PNG");
    QCOMPARE(image.size(), QSize(760, 480));
    // A blank or single-colour picture fails these: the screen has text (dark pixels in
    // the plugin lists and the details pane) and anti-aliased edges (many shades).
    QVERIFY2(colourCount(image) > 50, qPrintable(QString::number(colourCount(image))));
    const int listed = countPixels(image.copy(lists), isText);
    QVERIFY2(listed > 300, qPrintable(QString::number(listed)));
    const int explained = countPixels(image.copy(details), isText);
    QVERIFY2(explained > 3000, qPrintable(QString::number(explained)));

    // Without --select no plugin is current, and the details pane is all but empty.
    const QImage unselected = screenshot({});
    QVERIFY(!unselected.isNull());
    const int empty = countPixels(unselected.copy(details), isText);
    QVERIFY2(empty < 1000, qPrintable(QString::number(empty)));
}

void tst_Demo::aboutScreenshot()
{
    // About plugins: the loaded plugins above, the objects in the pool below.
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("about.png"));
    const Result result = runDemo(
        { QStringLiteral("--show"), QStringLiteral("about"), QStringLiteral("--screenshot"), file,
          QStringLiteral("--settings"), folder.filePath(QStringLiteral("demo.ini")) });
    QCOMPARE(result.out, QString());
    QCOMPARE(result.exitCode, 0);
    const QImage image(file);
    QVERIFY2(!image.isNull(), "no PNG written");
    QCOMPARE(image.size(), QSize(640, 480));
    const int plugins = countPixels(image.copy(QRect(20, 40, 300, 80)), isText);
    const int objects = countPixels(image.copy(QRect(20, 250, 400, 110)), isText);
    QVERIFY2(plugins > 400, qPrintable(QString::number(plugins)));
    QVERIFY2(objects > 1000, qPrintable(QString::number(objects)));
}

void tst_Demo::troublemaker_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("outcome"); // the error line; empty when every plugin loads

    // Help > Problem Plugin writes both keys; the trouble reaches the plugin as its
    // argument, and the command line's own --trouble wins over the setting.
    QTest::newRow("switched on, slow typing") << QByteArray("[plugin]\nTroublemaker=true\n"
                                                            "[demo]\ntrouble=slow-typing\n")
                                              << QStringList() << QString();
    QTest::newRow("the setting's trouble reaches the plugin")
        << QByteArray("[plugin]\nTroublemaker=true\n[demo]\ntrouble=smoke\n") << QStringList()
        << QStringLiteral("Error: The plugin \"Troublemaker\" failed to initialize. Error: "
                          "\"unknown trouble \"smoke\" (there are slow-typing, slow-start, "
                          "crash-at-start and crash-at-exit)\"");
    QTest::newRow("the command line wins")
        << QByteArray("[plugin]\nTroublemaker=true\n[demo]\ntrouble=smoke\n")
        << QStringList { QStringLiteral("--trouble"), QStringLiteral("slow-typing") } << QString();
}

void tst_Demo::troublemaker()
{
    QFETCH(QByteArray, settings);
    QFETCH(QStringList, arguments);
    QFETCH(QString, outcome);

    QTemporaryDir folder;
    const QString settingsFile = folder.filePath(QStringLiteral("demo.ini"));
    QVERIFY(ZelvaneTest::writeFile(settingsFile, settings));
    const Result result = runDemo(
        QStringList { QStringLiteral("--list"), QStringLiteral("--settings"), settingsFile }
        + arguments);
    const QStringList lines = result.out.split(QLatin1Char('\n'));
    if (outcome.isEmpty()) {
        QVERIFY2(result.out.contains(QStringLiteral(". Troublemaker\n")), qPrintable(result.out));
        QVERIFY2(lines.contains(QStringLiteral("  Troublemaker: Trouble \"troublemaker\"")),
                 qPrintable(result.out));
        QCOMPARE(result.exitCode, 0);
    } else {
        // A plugin that fails is not in the load order; the library's text says why.
        QVERIFY2(!result.out.contains(QStringLiteral(". Troublemaker\n")), qPrintable(result.out));
        QVERIFY2(lines.contains(outcome), qPrintable(result.out));
        QCOMPARE(result.exitCode, 1);
    }
}

QTEST_GUILESS_MAIN(tst_Demo)
#include "tst_demo.moc"
