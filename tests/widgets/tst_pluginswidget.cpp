// PluginsWidget and PluginsDialog as a user meets them: a window over the controller's
// model after loadPlugins(), ticked with the mouse and the keyboard, filtered by typing,
// with the details of the current plugin and the notice that a change waits for a restart.

#include "../controller/loadingfixture.h"

#include <zelvane/diagnostics/LoadDiagnostics>
#include <zelvane/widgets/PluginsDialog>
#include <zelvane/widgets/PluginsWidget>

#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtGui/QScreen>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyleOptionViewItem>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QTreeWidget>

namespace {

// "Name" for a clear row, "[Name]" for a ticked one.
QStringList rows(const QAbstractItemView* view)
{
    QStringList result;
    const QAbstractItemModel* model = view->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        const QString name = index.data().toString();
        result.append(index.data(Qt::CheckStateRole).toInt() == Qt::Checked
                          ? QLatin1Char('[') + name + QLatin1Char(']')
                          : name);
    }
    return result;
}

QModelIndex indexOf(const QAbstractItemView* view, const QString& name)
{
    const QModelIndexList found = view->model()->match(view->model()->index(0, 0), Qt::DisplayRole,
                                                       name, 1, Qt::MatchExactly);
    return found.value(0);
}

// The other files as the user sees them: a group per line, "+" when closed and "-" when
// open, and under it each of its files with its reason.
QStringList groups(const QTreeWidget* view)
{
    QStringList result;
    for (int group = 0; group < view->topLevelItemCount(); ++group) {
        const QTreeWidgetItem* item = view->topLevelItem(group);
        result.append((item->isExpanded() ? QStringLiteral("- ") : QStringLiteral("+ "))
                      + item->text(0));
        for (int file = 0; file < item->childCount(); ++file)
            result.append(QStringLiteral("    ") + item->child(file)->text(0)
                          + QStringLiteral(" | ") + item->child(file)->text(1));
    }
    return result;
}

// The name that a file's metadata gives, for names too long to spell in a test.
QString nameOfFile(const Zelvane::LoadDiagnostics& folder, const QString& fileName)
{
    const QList<Zelvane::PluginDiagnostic> plugins = folder.plugins();
    for (const Zelvane::PluginDiagnostic& plugin : plugins) {
        if (plugin.fileName() == fileName)
            return plugin.name();
    }
    return QString();
}

QTreeWidgetItem* otherFile(const QTreeWidget* view, const QString& title)
{
    const QList<QTreeWidgetItem*> found
        = view->findItems(title, Qt::MatchExactly | Qt::MatchRecursive);
    return found.value(0);
}

// Where a click ticks a row: its check box.
QPoint checkBoxOf(QListView* view, const QModelIndex& index)
{
    QStyleOptionViewItem option;
    option.initFrom(view);
    option.rect = view->visualRect(index);
    option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
    option.text = index.data().toString();
    option.widget = view;
    return view->style()
        ->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, view)
        .center();
}

class Screen
{
public:
    Screen(const QStringList& plugins, const QByteArray& settings = QByteArray())
    {
        ok = scenario.create(plugins, settings);
        scenario.configureController();
        ok = ok && Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir()));
        widget.setPluginDirectory(QDir(scenario.pluginDir()));
        widget.resize(720, 480);
        widget.show();
        ok = ok && QTest::qWaitForWindowExposed(&widget);
        filter = widget.findChild<QLineEdit*>(QStringLiteral("filter"));
        core = widget.findChild<QListView*>(QStringLiteral("core"));
        extensions = widget.findChild<QListView*>(QStringLiteral("extensions"));
        details = widget.findChild<QTextBrowser*>(QStringLiteral("details"));
        notice = widget.findChild<QWidget*>(QStringLiteral("notice"));
        restart = widget.findChild<QPushButton*>(QStringLiteral("restart"));
        otherFiles = widget.findChild<QTreeWidget*>(QStringLiteral("otherFiles"));
        ok = ok && filter && core && extensions && details && notice && restart && otherFiles;
    }
    ~Screen() { Zelvane::PluginController::instance()->shutdown(); }

    QString stored(const QString& name) const
    {
        QSettings settings(scenario.settingsFile(), QSettings::IniFormat);
        return settings.value(QStringLiteral("plugin/") + name).toString();
    }

    LoadingTest::Scenario scenario;
    Zelvane::PluginsWidget widget;
    bool ok = false;
    QLineEdit* filter = nullptr;
    QListView* core = nullptr;
    QListView* extensions = nullptr;
    QTextBrowser* details = nullptr;
    QWidget* notice = nullptr;
    QPushButton* restart = nullptr;
    QTreeWidget* otherFiles = nullptr;
};

const QStringList folder { "zt_core", "zt_inspect_altcore", "zt_viewer", "zt_storage",
                           "zt_notaplugin" };

// Beside the Core and Extension plugins, files of three other categories (two of one,
// one of none) and two refused files: not a plugin, and a plugin of another host.
const QStringList otherCategories { "zt_core",
                                    "zt_viewer",
                                    "zt_storage",
                                    "zt_inspect_tool",
                                    "zt_inspect_tool=libzt_tool2.so",
                                    "zt_loading_sidebar",
                                    "zt_discovery_loose",
                                    "zt_notaplugin",
                                    "zt_discovery_stranger" };

// Texts no screen was laid out for: a name in three scripts and emoji with a 100 KB
// description, a description of 1 MiB without a space, 10,000 dependencies, and a
// category named with a word of 600 characters.
const QStringList worldwide { "zt_core",
                              "zt_viewer",
                              "zt_storage",
                              "zt_widgets_worldwide",
                              "zt_rel_hugedescription",
                              "zt_rel_manydependencies",
                              "zt_widgets_farcategory" };

} // namespace

class tst_PluginsWidget : public QObject
{
    Q_OBJECT

private slots:
    void groupsAndAccessibleNames();
    void modelsBehindTheLists();
    void typingFilters();
    void spaceTicksAndTheNoticeAppears();
    void clickingACoreRowChoosesIt();
    void arrowsMoveBetweenTheLists();
    void detailsOfAPluginThatWillNotLoad();
    void detailsOfARefusedFile();
    void otherCategoriesGroupedByCategory();
    void filterReachesEveryGroup();
    void longTextsKeepTheWindowOnTheScreen();
    void longTextsAreElidedInTheListsAndWrappedInTheDetails();
    void aTickKeepsTheReadersPlace();
    void dialogClosesAndRelaysRestart();
    void screenshot();
};

void tst_PluginsWidget::groupsAndAccessibleNames()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    QCOMPARE(rows(screen.core), QStringList({ "AltCore", "[Core]" }));
    QCOMPARE(rows(screen.extensions), QStringList({ "[Viewer]", "[Storage]" }));
    QCOMPARE(groups(screen.otherFiles).value(0),
             QStringLiteral("+ Refused by the library: 1 file"));
    QCOMPARE(groups(screen.otherFiles).size(), 2);
    QVERIFY(groups(screen.otherFiles).value(1).startsWith("    libzt_notaplugin.so | "));
    QCOMPARE(screen.notice->isVisible(), false);
    QCOMPARE(screen.widget.isRestartNeeded(), false);

    QCOMPARE(screen.filter->accessibleName(), QStringLiteral("Filter plugins"));
    QCOMPARE(screen.filter->placeholderText(), QStringLiteral("Filter plugins"));
    QCOMPARE(screen.core->accessibleName(), QStringLiteral("Core plugins"));
    QCOMPARE(screen.extensions->accessibleName(), QStringLiteral("Extension plugins"));
    QCOMPARE(screen.otherFiles->accessibleName(),
             QStringLiteral("Other files of the plugin folder"));
    QCOMPARE(screen.details->accessibleName(), QStringLiteral("Plugin details"));
    QCOMPARE(screen.restart->accessibleName(), QStringLiteral("Restart now"));
    // Every label names the list it stands above, so Alt+letter reaches it.
    QStringList labels;
    const QList<QLabel*> found = screen.widget.findChildren<QLabel*>();
    for (const QLabel* label : found) {
        if (label->buddy())
            labels.append(label->text() + QStringLiteral(" → ") + label->buddy()->accessibleName());
    }
    labels.sort();
    QCOMPARE(labels,
             QStringList({ "&Core → Core plugins", "&Extensions → Extension plugins",
                           "Other &files → Other files of the plugin folder" }));
}

void tst_PluginsWidget::modelsBehindTheLists()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    QAbstractItemModelTester coreTester(screen.core->model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
    QAbstractItemModelTester extensionTester(
        screen.extensions->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    // Filtering, and a tick that resets the model, under the testers' eyes.
    QTest::keyClicks(screen.filter, QStringLiteral("o"));
    QCOMPARE(rows(screen.extensions), QStringList({ "[Viewer]", "[Storage]" }));
    QTest::keyClicks(screen.filter, QStringLiteral("c"));
    QCOMPARE(rows(screen.extensions), QStringList({ "[Viewer]", "[Storage]" })); // "documents"
    screen.filter->clear();
    QVERIFY(screen.extensions->model()->setData(indexOf(screen.extensions, "Storage"),
                                                Qt::Unchecked, Qt::CheckStateRole));
    QCOMPARE(rows(screen.extensions), QStringList({ "Viewer", "Storage" }));
    QCOMPARE(screen.stored("Viewer"), QStringLiteral("false"));
}

void tst_PluginsWidget::typingFilters()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    // Name or description, ignoring case.
    QTest::keyClicks(screen.filter, QStringLiteral("SHOWS"));
    QCOMPARE(rows(screen.extensions), QStringList({ "[Viewer]" }));
    QCOMPARE(rows(screen.core), QStringList());
    screen.filter->clear();
    QTest::keyClicks(screen.filter, QStringLiteral("altc"));
    QCOMPARE(rows(screen.core), QStringList({ "AltCore" }));
    QCOMPARE(rows(screen.extensions), QStringList());
    screen.filter->clear();

    // Typing in a list goes to the filter.
    screen.extensions->setFocus();
    QTest::keyClicks(screen.extensions, QStringLiteral("stor"));
    QCOMPARE(screen.filter->text(), QStringLiteral("stor"));
    QCOMPARE(screen.widget.filterText(), QStringLiteral("stor"));
    QVERIFY(screen.filter->hasFocus());
    QCOMPARE(rows(screen.extensions), QStringList({ "[Storage]" }));
    // Down goes back to the first plugin shown.
    QTest::keyClick(screen.filter, Qt::Key_Down);
    QVERIFY(screen.extensions->hasFocus());
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Storage"));
}

void tst_PluginsWidget::spaceTicksAndTheNoticeAppears()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    QSignalSpy restartNeeded(&screen.widget, &Zelvane::PluginsWidget::restartNeededChanged);
    QSignalSpy restartRequested(&screen.widget, &Zelvane::PluginsWidget::restartRequested);

    screen.extensions->setFocus();
    screen.extensions->setCurrentIndex(indexOf(screen.extensions, "Storage"));
    QTest::keyClick(screen.extensions, Qt::Key_Space);
    QCoreApplication::processEvents(); // the screen reads the saved selection
    // Viewer needs Storage: both are cleared, both are saved at once.
    QCOMPARE(rows(screen.extensions), QStringList({ "Viewer", "Storage" }));
    QCOMPARE(screen.stored("Storage"), QStringLiteral("false"));
    QCOMPARE(screen.stored("Viewer"), QStringLiteral("false"));
    // The keyboard stays on the plugin it ticked.
    QCOMPARE(screen.extensions->currentIndex().data().toString(), QStringLiteral("Storage"));
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Storage"));

    QCOMPARE(restartNeeded.size(), 1);
    QCOMPARE(restartNeeded.at(0).at(0).toBool(), true);
    QVERIFY(screen.notice->isVisible());
    const QLabel* text = screen.notice->findChild<QLabel*>();
    QCOMPARE(text->text(), QStringLiteral("Changes apply at the next start."));
    // The button waits for the host to offer a restart; listening is not offering.
    QVERIFY(!screen.restart->isVisible());
    QSignalSpy restartOffered(&screen.widget, &Zelvane::PluginsWidget::restartOfferedChanged);
    screen.widget.setRestartOffered(true);
    QCOMPARE(restartOffered.size(), 1);
    QCOMPARE(screen.widget.isRestartOffered(), true);
    QCOMPARE(screen.widget.property("restartOffered").toBool(), true);
    QVERIFY(screen.restart->isVisible());
    QTest::mouseClick(screen.restart, Qt::LeftButton);
    QCOMPARE(restartRequested.size(), 1);

    // Ticking Viewer again ticks Storage with it: what runs is what will run.
    screen.extensions->setCurrentIndex(indexOf(screen.extensions, "Viewer"));
    QTest::keyClick(screen.extensions, Qt::Key_Space);
    QCoreApplication::processEvents();
    QCOMPARE(rows(screen.extensions), QStringList({ "[Viewer]", "[Storage]" }));
    QCOMPARE(restartNeeded.size(), 2);
    QVERIFY(!screen.notice->isVisible());
}

void tst_PluginsWidget::clickingACoreRowChoosesIt()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    const QModelIndex altCore = indexOf(screen.core, "AltCore");
    QTest::mouseClick(screen.core->viewport(), Qt::LeftButton, {},
                      checkBoxOf(screen.core, altCore));
    QCOMPARE(rows(screen.core), QStringList({ "[AltCore]", "Core" }));
    QCOMPARE(screen.stored("AltCore"), QStringLiteral("true"));
    QCOMPARE(screen.stored("Core"), QStringLiteral("false"));
    // A ticked core row is not cleared by a click: one core plugin always loads.
    QTest::mouseClick(screen.core->viewport(), Qt::LeftButton, {},
                      checkBoxOf(screen.core, indexOf(screen.core, "AltCore")));
    QCOMPARE(rows(screen.core), QStringList({ "[AltCore]", "Core" }));
    QCoreApplication::processEvents();
    QVERIFY(screen.widget.isRestartNeeded());
}

void tst_PluginsWidget::arrowsMoveBetweenTheLists()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    screen.core->setFocus();
    screen.core->setCurrentIndex(indexOf(screen.core, "AltCore"));
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("AltCore"));
    QTest::keyClick(screen.core, Qt::Key_Down);
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Core"));
    QTest::keyClick(screen.core, Qt::Key_Down);
    QVERIFY(screen.extensions->hasFocus());
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Viewer"));
    QTest::keyClick(screen.extensions, Qt::Key_Down);
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Storage"));
    QTest::keyClick(screen.extensions, Qt::Key_Up);
    QTest::keyClick(screen.extensions, Qt::Key_Up);
    QVERIFY(screen.core->hasFocus());
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Core"));
}

void tst_PluginsWidget::detailsOfAPluginThatWillNotLoad()
{
    Screen screen(folder, QByteArray("[plugin]\nStorage=false\n"));
    QVERIFY(screen.ok);
    screen.widget.setCurrentPlugin(QStringLiteral("Viewer"));
    QCOMPARE(screen.extensions->currentIndex().data().toString(), QStringLiteral("Viewer"));
    const QString path = QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_viewer.so");
    QCOMPARE(screen.details->toPlainText(),
             QStringLiteral("Viewer\n"
                            "Shows documents\n"
                            "State: Will not load: its dependencies cannot be met.\n"
                            "Needs Storage, which is switched off.\n"
                            "Needs:\n"
                            "Storage\n"
                            "Needed by: nothing\n"
                            "Command-line options:\n"
                            "--viewer-theme <theme> Colour theme\n"
                            "--viewer-readonly Opens documents read-only\n"
                            "File: %1")
                 .arg(path));

    screen.widget.setCurrentPlugin(QStringLiteral("AltCore"));
    QCOMPARE(
        screen.details->toPlainText(),
        QStringLiteral("AltCore\n"
                       "A second core plugin\n"
                       "State: Will not load: another Core plugin, Core, is chosen.\n"
                       "Needs: nothing\n"
                       "Needed by: nothing\n"
                       "File: %1")
            .arg(QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_inspect_altcore.so")));
}

void tst_PluginsWidget::detailsOfARefusedFile()
{
    Screen screen(folder);
    QVERIFY(screen.ok);
    screen.otherFiles->setCurrentItem(otherFile(screen.otherFiles, "libzt_notaplugin.so"));
    const QString path = QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_notaplugin.so");
    QCOMPARE(screen.details->toPlainText(),
             QStringLiteral("libzt_notaplugin.so\n"
                            "State: Will not load: the library refuses the file: %1 is not a "
                            "plugin (no string IID found).\n"
                            "File: %1")
                 .arg(path));
}

void tst_PluginsWidget::otherCategoriesGroupedByCategory()
{
    Screen screen(otherCategories);
    QVERIFY(screen.ok);
    const QString stranger
        = QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_discovery_stranger.so");
    const QString notAPlugin
        = QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_notaplugin.so");
    // In the order the folder lists each category's first file; the refused ones last.
    // Every group starts closed.
    const QStringList closed {
        "+ No category: 1 file",
        "    Loose | Will not load: its category \"\" is neither Core nor Extension.",
        "+ Category \"Tool\": 2 files",
        "    Tool | Will not load: its category \"Tool\" is neither Core nor Extension.",
        "    Tool | Will not load: its category \"Tool\" is neither Core nor Extension.",
        "+ Category \"Sidebar\": 1 file",
        "    Sidebar | Will not load: its category \"Sidebar\" is neither Core nor Extension.",
        "+ Refused by the library: 2 files",
        QStringLiteral("    libzt_discovery_stranger.so | Will not load: the library refuses the "
                       "file: %1 plugin ignored (IID does not match).")
            .arg(stranger),
        QStringLiteral("    libzt_notaplugin.so | Will not load: the library refuses the file: "
                       "%1 is not a plugin (no string IID found).")
            .arg(notAPlugin),
    };
    QCOMPARE(groups(screen.otherFiles), closed);

    // A group's row explains nothing; a file's row shows the file.
    screen.otherFiles->setFocus();
    screen.otherFiles->setCurrentItem(screen.otherFiles->topLevelItem(1));
    QCOMPARE(screen.widget.currentPlugin(), QString());
    QTest::keyClick(screen.otherFiles, Qt::Key_Right);
    QTest::keyClick(screen.otherFiles, Qt::Key_Down);
    QTest::keyClick(screen.otherFiles, Qt::Key_Down);
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Tool"));
    QCOMPARE(screen.details->toPlainText(),
             QStringLiteral("Tool\n"
                            "Of a category that is never loaded\n"
                            "State: Will not load: its category \"Tool\" is neither Core nor "
                            "Extension.\n"
                            "Needs: nothing\n"
                            "Needed by: nothing\n"
                            "File: %1")
                 .arg(QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_tool2.so")));

    // What the user opened stays open across a tick, and the current file stays current.
    QVERIFY(screen.extensions->model()->setData(indexOf(screen.extensions, "Viewer"), Qt::Unchecked,
                                                Qt::CheckStateRole));
    QCoreApplication::processEvents(); // the screen reads the saved selection
    QStringList opened = closed;
    opened[2] = "- Category \"Tool\": 2 files";
    QCOMPARE(groups(screen.otherFiles), opened);
    QCOMPARE(screen.otherFiles->currentItem()->data(0, Qt::UserRole).toString(),
             QDir(screen.scenario.pluginDir()).absoluteFilePath("libzt_tool2.so"));
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("Tool"));
}

void tst_PluginsWidget::filterReachesEveryGroup()
{
    Screen screen(otherCategories);
    QVERIFY(screen.ok);
    // Descriptions, whatever the case the user types in: the groups that hold a match
    // open, with their counts of what is shown.
    screen.widget.setFilterText(QStringLiteral("CaTeGoRy"));
    QCOMPARE(groups(screen.otherFiles),
             QStringList({
                 "- No category: 1 file",
                 "    Loose | Will not load: its category \"\" is neither Core nor Extension.",
                 "- Category \"Tool\": 2 files",
                 "    Tool | Will not load: its category \"Tool\" is neither Core nor Extension.",
                 "    Tool | Will not load: its category \"Tool\" is neither Core nor Extension.",
                 "- Category \"Sidebar\": 1 file",
                 "    Sidebar | Will not load: its category \"Sidebar\" is neither Core nor "
                 "Extension.",
             }));
    QCOMPARE(rows(screen.core), QStringList());
    QCOMPARE(rows(screen.extensions), QStringList());

    // Names, of plugins and of refused files alike.
    screen.filter->clear();
    QTest::keyClicks(screen.filter, QStringLiteral("sIDEbar"));
    QCOMPARE(groups(screen.otherFiles),
             QStringList({ "- Category \"Sidebar\": 1 file",
                           "    Sidebar | Will not load: its category \"Sidebar\" is neither "
                           "Core nor Extension." }));
    screen.filter->clear();
    QTest::keyClicks(screen.filter, QStringLiteral("LibZT_NotA"));
    QCOMPARE(groups(screen.otherFiles).value(0),
             QStringLiteral("- Refused by the library: 1 file"));
    QCOMPARE(groups(screen.otherFiles).size(), 2);
    QVERIFY(groups(screen.otherFiles).value(1).startsWith("    libzt_notaplugin.so | "));
    screen.filter->clear();
    QTest::keyClicks(screen.filter, QStringLiteral("sTRANGER"));
    QCOMPARE(groups(screen.otherFiles).value(0),
             QStringLiteral("- Refused by the library: 1 file"));
    QVERIFY(groups(screen.otherFiles).value(1).startsWith("    libzt_discovery_stranger.so | "));

    // Nothing matches: no group, no label.
    screen.filter->clear();
    QTest::keyClicks(screen.filter, QStringLiteral("no such plugin"));
    QCOMPARE(groups(screen.otherFiles), QStringList());
    QVERIFY(!screen.otherFiles->isVisible());
    // Cleared: every group again, closed.
    screen.filter->clear();
    QCOMPARE(groups(screen.otherFiles).size(), 10);
    QVERIFY(screen.otherFiles->isVisible());
    QCOMPARE(screen.otherFiles->topLevelItem(0)->isExpanded(), false);
}

// However long the texts of a folder, the screen asks for no more room than a screen
// has, and a dialog made from it fits.
void tst_PluginsWidget::longTextsKeepTheWindowOnTheScreen()
{
    Screen screen(worldwide);
    QVERIFY(screen.ok);
    const QSize available = screen.widget.screen()->availableGeometry().size();
    const QString longName
        = nameOfFile(screen.widget.diagnostics(), QStringLiteral("libzt_widgets_worldwide.so"));
    QVERIFY(longName.size() > 400);
    for (const QString& name :
         { longName, QStringLiteral("HugeDescription"), QStringLiteral("ManyDependencies"),
           QStringLiteral("FarCategory") }) {
        screen.widget.setCurrentPlugin(name);
        QCOMPARE(screen.widget.currentPlugin(), name);
        for (const QSize& hint : { screen.widget.sizeHint(), screen.widget.minimumSizeHint() }) {
            QVERIFY2(hint.width() <= available.width() && hint.height() <= available.height(),
                     qPrintable(QStringLiteral("%1: %2x%3 on a screen of %4x%5")
                                    .arg(name.left(20))
                                    .arg(hint.width())
                                    .arg(hint.height())
                                    .arg(available.width())
                                    .arg(available.height())));
        }
    }
    Zelvane::PluginsDialog dialog(QDir(screen.scenario.pluginDir()));
    dialog.pluginsWidget()->setCurrentPlugin(longName);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(dialog.width() <= available.width());
    QVERIFY(dialog.height() <= available.height());
}

void tst_PluginsWidget::longTextsAreElidedInTheListsAndWrappedInTheDetails()
{
    Screen screen(worldwide);
    QVERIFY(screen.ok);
    const QString longName
        = nameOfFile(screen.widget.diagnostics(), QStringLiteral("libzt_widgets_worldwide.so"));
    QVERIFY(longName.size() > 400);

    // The lists: no row wider than its list, so none scrolls sideways, and the view
    // elides what does not fit.
    const QModelIndex row = indexOf(screen.extensions, longName);
    QVERIFY(row.isValid());
    QVERIFY(screen.extensions->visualRect(row).width() <= screen.extensions->viewport()->width());
    QCOMPARE(screen.extensions->horizontalScrollBar()->maximum(), 0);
    QCOMPARE(screen.extensions->textElideMode(), Qt::ElideRight);
    QTreeWidgetItem* far = otherFile(screen.otherFiles, "FarCategory");
    QVERIFY(far);
    screen.otherFiles->expandAll();
    QCOMPARE(screen.otherFiles->horizontalScrollBar()->maximum(), 0);
    QVERIFY(far->parent()->text(0).size() > 600);
    QCOMPARE(far->parent()->toolTip(0), far->parent()->text(0));

    // The details pane wraps every text, words of any script and a word of 1 MiB alike.
    for (const QString& name :
         { longName, QStringLiteral("HugeDescription"), QStringLiteral("ManyDependencies") }) {
        screen.widget.setCurrentPlugin(name);
        QCOMPARE(screen.widget.currentPlugin(), name);
        QCOMPARE(screen.details->horizontalScrollBar()->maximum(), 0);
        QVERIFY(screen.details->document()->size().width() <= screen.details->viewport()->width());
    }
    screen.widget.setCurrentPlugin(longName);
    QVERIFY(screen.details->toPlainText().startsWith(longName + QLatin1Char('\n')));
}

// Reading down a long explanation while ticking another plugin: the pane stays where
// the reader is, since what it says has not changed.
void tst_PluginsWidget::aTickKeepsTheReadersPlace()
{
    Screen screen(worldwide);
    QVERIFY(screen.ok);
    screen.widget.setCurrentPlugin(QStringLiteral("ManyDependencies"));
    QScrollBar* scroll = screen.details->verticalScrollBar();
    QVERIFY(scroll->maximum() > 1000);
    scroll->setValue(scroll->maximum() / 2);
    const int where = scroll->value();
    QVERIFY(screen.extensions->model()->setData(indexOf(screen.extensions, "Storage"),
                                                Qt::Unchecked, Qt::CheckStateRole));
    QCoreApplication::processEvents(); // the screen reads the saved selection
    QCOMPARE(rows(screen.extensions).contains("Viewer"), true);
    QCOMPARE(screen.widget.currentPlugin(), QStringLiteral("ManyDependencies"));
    QCOMPARE(scroll->value(), where);
}

void tst_PluginsWidget::dialogClosesAndRelaysRestart()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create({ "zt_core", "zt_storage" }));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));

    Zelvane::PluginsDialog dialog(QDir(scenario.pluginDir()));
    QSignalSpy restartRequested(&dialog, &Zelvane::PluginsDialog::restartRequested);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Plugins"));
    auto* restart = dialog.findChild<QPushButton*>(QStringLiteral("restart"));
    Q_EMIT dialog.pluginsWidget()->restartRequested();
    QCOMPARE(restartRequested.size(), 1);
    QVERIFY(!restart->isVisibleTo(dialog.findChild<QWidget*>(QStringLiteral("notice"))));
    dialog.pluginsWidget()->setRestartOffered(true);
    QVERIFY(restart->isVisibleTo(dialog.findChild<QWidget*>(QStringLiteral("notice"))));

    auto* close = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close);
    QCOMPARE(close->accessibleName(), QStringLiteral("Close"));
    QTest::mouseClick(close, Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    Zelvane::PluginController::instance()->shutdown();
}

// The picture of docs/widgets.md: the dialog with the details of a plugin that will not
// load. Written to $ZELVANE_SCREENSHOT_DIR when set.
void tst_PluginsWidget::screenshot()
{
    LoadingTest::Scenario scenario;
    QVERIFY(scenario.create(folder));
    scenario.configureController();
    QVERIFY(Zelvane::PluginController::instance()->loadPlugins(QDir(scenario.pluginDir())));
    Zelvane::PluginsDialog dialog(QDir(scenario.pluginDir()));
    dialog.pluginsWidget()->setRestartOffered(true);
    connect(&dialog, &Zelvane::PluginsDialog::restartRequested, this, [] {});
    // Storage switched off after loading, and Viewer with it: the notice says that this
    // waits for the next start.
    Zelvane::PluginsModel* model = dialog.pluginsWidget()->model();
    const QModelIndexList storage
        = model->match(model->index(0, 0), Zelvane::PluginsModel::NameRole,
                       QStringLiteral("Storage"), 1, Qt::MatchExactly);
    QCOMPARE(storage.size(), 1);
    QVERIFY(model->setData(storage.constFirst(), Qt::Unchecked, Qt::CheckStateRole));
    QCoreApplication::processEvents();
    dialog.pluginsWidget()->setCurrentPlugin(QStringLiteral("Viewer"));
    dialog.resize(760, 440);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(dialog.pluginsWidget()->isRestartNeeded());

    QTemporaryDir scratch;
    const QByteArray target = qgetenv("ZELVANE_SCREENSHOT_DIR");
    const QString dir = target.isEmpty() ? scratch.path() : QString::fromLocal8Bit(target);
    const QImage image = dialog.grab().toImage();
    QCOMPARE(image.size(), dialog.size() * dialog.devicePixelRatio());
    QVERIFY(image.save(QDir(dir).filePath(QStringLiteral("plugins-widget.png"))));
    Zelvane::PluginController::instance()->shutdown();
}

QTEST_MAIN(tst_PluginsWidget)
#include "tst_pluginswidget.moc"
