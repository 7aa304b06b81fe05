// The example editor's plugins loaded as the demo loads them, in this process, and used
// as a user would: the menus that the extensions add, typing, New, Open and Save
// through the file dialog, the spell checker's underlines and the export. Each test
// function runs in a process of its own, with the selection it names.

#include "settingsfixture.h"

#include "../../examples/plugins/published.h"
#include "../../examples/plugins/workbench.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtGui/QTextBlock>
#include <QtGui/QTextLayout>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTabWidget>

#include <memory>

namespace {

// The texts of a menu's actions, "-" for a separator.
QStringList actionTexts(const QMenu* menu)
{
    QStringList texts;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions)
        texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return texts;
}

// The window's menus by title, each with its actions' texts.
QStringList menuBar(const QMainWindow* window)
{
    QStringList menus;
    const QList<QAction*> actions = window->menuBar()->actions();
    for (const QAction* action : actions)
        menus.append(action->text() + QStringLiteral(": ")
                     + actionTexts(action->menu()).join(QStringLiteral(", ")));
    return menus;
}

// The words that the spell checker underlined in the editor's text.
QStringList underlinedWords(const QPlainTextEdit* editor)
{
    QStringList words;
    for (QTextBlock block = editor->document()->begin(); block.isValid(); block = block.next()) {
        const QList<QTextLayout::FormatRange> formats = block.layout()->formats();
        for (const QTextLayout::FormatRange& range : formats) {
            if (range.format.underlineStyle() == QTextCharFormat::WaveUnderline)
                words.append(block.text().mid(range.start, range.length));
        }
    }
    return words;
}

// Answers the file dialog that the next action opens with fileName, as a user typing
// the name and pressing Enter would. The dialog runs its own event loop, in which this
// call comes first.
void answerFileDialog(const QString& fileName)
{
    QTimer::singleShot(0, qApp, [fileName] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        QVERIFY2(dialog, "no file dialog opened");
        dialog->selectFile(fileName);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

// An action of the window's menus; the actions belong to the plugins that added them.
QAction* findAction(const QMainWindow* window, const QString& objectName)
{
    const QList<QAction*> menus = window->menuBar()->actions();
    for (const QAction* menu : menus) {
        const QList<QAction*> actions = menu->menu()->actions();
        for (QAction* action : actions) {
            if (action->objectName() == objectName)
                return action;
        }
    }
    qWarning("no action %s in the menus", qPrintable(objectName));
    return nullptr;
}

} // namespace

class tst_EditorPlugins : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void workbenchWithAllPlugins();
    void workbenchAlone();
    void focusHasOneEditor();
    void newAndCloseCountDocuments();
    void spellcheckUnderlines_data();
    void spellcheckUnderlines();
    void spellcheckFollowsTyping();
    void openEditSave();
    void exportDocument_data();
    void exportDocument();

private:
    // Loads the example plugins with this selection (INI text) and these plugin
    // arguments; the workbench that the core plugin published, or null.
    Editor::IWorkbench* load(const QByteArray& selection,
                             const QMap<QString, QString>& arguments = {});

    QTemporaryDir m_folder;
    std::unique_ptr<QSettings> m_settings;
};

Editor::IWorkbench* tst_EditorPlugins::load(const QByteArray& selection,
                                            const QMap<QString, QString>& arguments)
{
    if (!m_folder.isValid())
        return nullptr;
    const QString settingsFile = m_folder.filePath(QStringLiteral("editor.ini"));
    if (!ZelvaneTest::writeFile(settingsFile, selection))
        return nullptr;
    m_settings = std::make_unique<QSettings>(settingsFile, QSettings::IniFormat);
    Zelvane::PluginController* controller = Zelvane::PluginController::instance();
    controller->setPluginIID(QStringLiteral(ZELVANE_EXAMPLE_IID));
    controller->setSettings(m_settings.get());
    controller->setArguments(arguments);
    if (!controller->loadPlugins(QDir(QStringLiteral(ZELVANE_EXAMPLE_PLUGIN_DIR)))) {
        qWarning("%s", qPrintable(controller->errorString()));
        return nullptr;
    }
    auto* workbench
        = qobject_cast<Editor::IWorkbench*>(Editor::findPublished(QStringLiteral("workbench")));
    if (workbench && workbench->window())
        workbench->window()->show();
    return workbench;
}

void tst_EditorPlugins::cleanup()
{
    Zelvane::PluginController::instance()->shutdown();
}

void tst_EditorPlugins::workbenchWithAllPlugins()
{
    Editor::IWorkbench* workbench = load("[plugin]\nExport=true\n");
    QVERIFY(workbench);
    QMainWindow* window = workbench->window();
    QVERIFY(window);
    QCOMPARE(window->windowTitle(), QStringLiteral("Untitled - Document Editor"));
    QCOMPARE(menuBar(window),
             (QStringList { QStringLiteral("&File: &New, &Open…, &Save, Export as &HTML…, "
                                           "Export as &Markdown…, -, &Quit"),
                            QStringLiteral("&Tools: Underline &Unknown Words (en)") }));
    QCOMPARE(findAction(window, QStringLiteral("exportHtml"))->shortcut(),
             QKeySequence(QStringLiteral("Ctrl+E")));
    auto* tabs = window->findChild<QTabWidget*>(QStringLiteral("documentTabs"));
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 1);
    QCOMPARE(tabs->tabText(0), QStringLiteral("Untitled"));
    auto* count = window->findChild<QLabel*>(QStringLiteral("documentCount"));
    QVERIFY(count);
    QCOMPARE(count->text(), QStringLiteral("1 document"));
}

void tst_EditorPlugins::workbenchAlone()
{
    // Without its extensions the workbench is a window with one empty document and Quit.
    Editor::IWorkbench* workbench
        = load("[plugin]\nStorage=false\nDocuments=false\nSpellcheck=false\n");
    QVERIFY(workbench);
    QMainWindow* window = workbench->window();
    QCOMPARE(menuBar(window), QStringList { QStringLiteral("&File: -, &Quit") });
    QCOMPARE(window->findChild<QTabWidget*>(QStringLiteral("documentTabs"))->count(), 1);
    QVERIFY(!window->findChild<QLabel*>(QStringLiteral("documentCount")));
}

void tst_EditorPlugins::focusHasOneEditor()
{
    Editor::IWorkbench* workbench = load("[plugin]\nWorkbench=false\nFocus=true\n");
    QVERIFY(workbench);
    QMainWindow* window = workbench->window();
    QCOMPARE(window->windowTitle(), QStringLiteral("Untitled - Document Editor (focus mode)"));
    // The same commands, but no tabs and no status bar with a document count.
    QCOMPARE(menuBar(window),
             (QStringList { QStringLiteral("&File: &New, &Open…, &Save, -, &Quit"),
                            QStringLiteral("&Tools: Underline &Unknown Words (en)") }));
    QVERIFY(!window->findChild<QTabWidget*>());
    QVERIFY(!window->findChild<QLabel*>(QStringLiteral("documentCount")));
    QCOMPARE(window->findChildren<QPlainTextEdit*>().size(), 1);

    // New replaces the one document.
    QPlainTextEdit* editor = workbench->currentEditor();
    QTest::keyClicks(editor, QStringLiteral("draft"));
    findAction(window, QStringLiteral("newDocument"))->trigger();
    QCOMPARE(window->findChildren<QPlainTextEdit*>().size(), 1);
    QCOMPARE(workbench->currentEditor(), editor);
    QCOMPARE(editor->toPlainText(), QString());
    QCOMPARE(window->windowTitle(), QStringLiteral("Untitled 2 - Document Editor (focus mode)"));
}

void tst_EditorPlugins::newAndCloseCountDocuments()
{
    Editor::IWorkbench* workbench = load({});
    QVERIFY(workbench);
    QMainWindow* window = workbench->window();
    auto* tabs = window->findChild<QTabWidget*>(QStringLiteral("documentTabs"));
    auto* count = window->findChild<QLabel*>(QStringLiteral("documentCount"));
    QAction* newDocument = findAction(window, QStringLiteral("newDocument"));
    QCOMPARE(newDocument->shortcut(), QKeySequence(QKeySequence::New));

    newDocument->trigger();
    newDocument->trigger();
    QCOMPARE(tabs->count(), 3);
    QCOMPARE(tabs->tabText(2), QStringLiteral("Untitled 3"));
    QCOMPARE(tabs->currentIndex(), 2);
    QCOMPARE(count->text(), QStringLiteral("3 documents"));
    QCOMPARE(window->windowTitle(), QStringLiteral("Untitled 3 - Document Editor"));

    // Typing marks the tab; closing one takes it out of the count.
    QTest::keyClicks(workbench->currentEditor(), QStringLiteral("x"));
    QCOMPARE(tabs->tabText(2), QStringLiteral("Untitled 3*"));
    emit tabs->tabCloseRequested(0);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(count->text(), QStringLiteral("2 documents"));
}

void tst_EditorPlugins::spellcheckUnderlines_data()
{
    QTest::addColumn<QStringList>("arguments"); // name, value, name, value...
    QTest::addColumn<QStringList>("underlined");

    QTest::newRow("English") << QStringList()
                             << QStringList { QStringLiteral("NASA"), QStringLiteral("teh") };
    QTest::newRow("English, acronyms skipped")
        << QStringList { QStringLiteral("spell-skip-acronyms"), QString() }
        << QStringList { QStringLiteral("teh") };
    QTest::newRow("German, acronyms skipped") << QStringList {
        QStringLiteral("spell-language"), QStringLiteral("de"),
        QStringLiteral("spell-skip-acronyms"), QString()
    } << QStringList { QStringLiteral("The"),     QStringLiteral("report"), QStringLiteral("is"),
                       QStringLiteral("ready"),   QStringLiteral("but"),    QStringLiteral("teh"),
                       QStringLiteral("summary"), QStringLiteral("is"),     QStringLiteral("not") };
}

void tst_EditorPlugins::spellcheckUnderlines()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, underlined);
    QMap<QString, QString> map;
    for (int i = 0; i + 1 < arguments.size(); i += 2)
        map.insert(arguments.at(i), arguments.at(i + 1));

    Editor::IWorkbench* workbench = load({}, map);
    QVERIFY(workbench);
    QPlainTextEdit* editor = workbench->openDocument(
        QStringLiteral("report"),
        QStringLiteral("The NASA report is ready, but teh summary is not."));
    QCoreApplication::processEvents();
    QCOMPARE(underlinedWords(editor), underlined);

    // The Tools menu's switch takes the underlines away and brings them back.
    QAction* underline = findAction(workbench->window(), QStringLiteral("underlineUnknownWords"));
    underline->toggle();
    QCOMPARE(underlinedWords(editor), QStringList());
    underline->toggle();
    QCOMPARE(underlinedWords(editor), underlined);
}

void tst_EditorPlugins::spellcheckFollowsTyping()
{
    Editor::IWorkbench* workbench = load({});
    QVERIFY(workbench);
    // A document opened after start-up is checked as well: the editor arrives through
    // the pool.
    findAction(workbench->window(), QStringLiteral("newDocument"))->trigger();
    QPlainTextEdit* editor = workbench->currentEditor();
    QTest::keyClicks(editor, QStringLiteral("the reprot is ready"));
    QCOMPARE(underlinedWords(editor), QStringList { QStringLiteral("reprot") });
    QTest::keyClick(editor, Qt::Key_Home);
    QTest::keyClicks(editor, QStringLiteral("Teh "));
    QCOMPARE(underlinedWords(editor),
             (QStringList { QStringLiteral("Teh"), QStringLiteral("reprot") }));
}

void tst_EditorPlugins::openEditSave()
{
    QVERIFY(m_folder.isValid());
    const QString fileName = m_folder.filePath(QStringLiteral("notes.txt"));
    QVERIFY(ZelvaneTest::writeFile(fileName, "First line\n"));
    Editor::IWorkbench* workbench = load({});
    QVERIFY(workbench);
    QMainWindow* window = workbench->window();
    auto* tabs = window->findChild<QTabWidget*>(QStringLiteral("documentTabs"));

    // Opening replaces the untouched empty document that the workbench starts with.
    answerFileDialog(fileName);
    findAction(window, QStringLiteral("openDocument"))->trigger();
    QCOMPARE(tabs->count(), 1);
    QCOMPARE(tabs->tabText(0), QStringLiteral("notes.txt"));
    QPlainTextEdit* editor = workbench->currentEditor();
    QCOMPARE(editor->toPlainText(), QStringLiteral("First line\n"));

    editor->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor, QStringLiteral("Second line"));
    QCOMPARE(tabs->tabText(0), QStringLiteral("notes.txt*"));
    findAction(window, QStringLiteral("saveDocument"))->trigger();
    QCOMPARE(tabs->tabText(0), QStringLiteral("notes.txt"));
    QFile saved(fileName);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(saved.readAll(), QByteArray("First line\nSecond line"));

    // A new document asks for its file name when it is first saved.
    findAction(window, QStringLiteral("newDocument"))->trigger();
    QTest::keyClicks(workbench->currentEditor(), QStringLiteral("Fresh"));
    const QString freshName = m_folder.filePath(QStringLiteral("fresh.txt"));
    answerFileDialog(freshName);
    findAction(window, QStringLiteral("saveDocument"))->trigger();
    QCOMPARE(tabs->tabText(1), QStringLiteral("fresh.txt"));
    QFile fresh(freshName);
    QVERIFY(fresh.open(QIODevice::ReadOnly));
    QCOMPARE(fresh.readAll(), QByteArray("Fresh"));
}

void tst_EditorPlugins::exportDocument_data()
{
    QTest::addColumn<QString>("format"); // --export-format
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("HTML") << QString() << QStringLiteral("exportHtml")
                          << QStringLiteral("plan.html")
                          << QByteArray(
                                 "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
                                 "<title>plan</title>\n</head>\n<body>\n<h1>plan</h1>\n"
                                 "<p>Fish &amp; chips</p>\n<p>at &lt;noon&gt;</p>\n"
                                 "</body>\n</html>\n");
    QTest::newRow("Markdown, the format of Ctrl+E")
        << QStringLiteral("markdown") << QStringLiteral("exportMarkdown")
        << QStringLiteral("plan.md") << QByteArray("# plan\n\nFish & chips\n\nat <noon>\n");
}

void tst_EditorPlugins::exportDocument()
{
    QFETCH(QString, format);
    QFETCH(QString, action);
    QFETCH(QString, file);
    QFETCH(QByteArray, expected);

    QMap<QString, QString> arguments;
    if (!format.isEmpty())
        arguments.insert(QStringLiteral("export-format"), format);
    Editor::IWorkbench* workbench = load("[plugin]\nExport=true\n", arguments);
    QVERIFY(workbench);
    QAction* exportAction = findAction(workbench->window(), action);
    QVERIFY(exportAction);
    QCOMPARE(exportAction->shortcut(), QKeySequence(QStringLiteral("Ctrl+E")));

    workbench->openDocument(QStringLiteral("plan.txt"),
                            QStringLiteral("Fish & chips\n\nat <noon>\n"));
    const QString target = m_folder.filePath(file);
    answerFileDialog(target);
    exportAction->trigger();
    QFile exported(target);
    QVERIFY2(exported.open(QIODevice::ReadOnly), qPrintable(exported.errorString()));
    QCOMPARE(exported.readAll(), expected);
}

QTEST_MAIN(tst_EditorPlugins)
#include "tst_editorplugins.moc"
