#pragma once

// Helpers shared by the library's tests.

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include "logcapture.h"
#include "plugin/plugindata_p.h"

#include <QtCore/QCollator>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QTest>

#include <algorithm>
#include <memory>

namespace ZelvaneTest {

// The built test plugin of a CMake target, e.g. "zt_core" → .../libzt_core.so.
inline QString pluginPath(const QString& target)
{
    return QStringLiteral(ZELVANE_TEST_PLUGIN_DIR "/lib") + target + QStringLiteral(".so");
}

// Copies the built plugins of the given targets into dir under their own file names
// (or under fileName when given as "target=fileName"). Returns false if any copy fails.
inline bool copyPlugins(const QString& dir, const QStringList& targets)
{
    for (const QString& entry : targets) {
        const QString target = entry.section(QLatin1Char('='), 0, 0);
        QString fileName = entry.section(QLatin1Char('='), 1);
        if (fileName.isEmpty())
            fileName = QStringLiteral("lib") + target + QStringLiteral(".so");
        if (!QFile::copy(pluginPath(target), QDir(dir).filePath(fileName)))
            return false;
    }
    return true;
}

// A folder as a host may hand it to the controller: a QDir with the given sorting. A
// QDir made from a path sorts by name ignoring case; QDir::NoSort, which discovery
// lists with, means "the QDir's own sorting", so the host's QDir decides the order.
inline QDir sortedFolder(const QString& path, QDir::SortFlags sorting)
{
    QDir folder(path);
    folder.setSorting(sorting);
    return folder;
}

// The listing call that discovery makes, on a QDir with the given sorting.
inline QStringList listing(const QString& dir, QDir::SortFlags sorting)
{
    return sortedFolder(dir, sorting)
        .entryList(QStringList { QStringLiteral("*.so") }, QDir::Files, QDir::NoSort);
}

// The names of dir's plugin files in the file system's own order.
inline QStringList fileSystemListing(const QString& dir)
{
    return listing(dir, QDir::Unsorted);
}

// Only the given files of a listing, in its order.
inline QStringList onlyThese(const QStringList& listing, const QStringList& fileNames)
{
    QStringList result;
    for (const QString& name : listing) {
        if (fileNames.contains(name))
            result.append(name);
    }
    return result;
}

// Every order in which a library might list these files of dir by sorting their
// names: QDir's name sorts (by code unit, ignoring case, by locale), digit runs read as
// numbers, and each of these backwards.
inline QList<QStringList> sortedListings(const QString& dir, const QStringList& fileNames)
{
    QList<QStringList> result;
    for (const QDir::SortFlags flags :
         { QDir::SortFlags(QDir::Name), QDir::Name | QDir::IgnoreCase,
           QDir::Name | QDir::LocaleAware, QDir::Name | QDir::IgnoreCase | QDir::LocaleAware }) {
        for (const QDir::SortFlags direction :
             { QDir::SortFlags(), QDir::SortFlags(QDir::Reversed) }) {
            const QStringList sorted = QDir(dir).entryList(QStringList { QStringLiteral("*.so") },
                                                           QDir::Files, flags | direction);
            result.append(onlyThese(sorted, fileNames));
        }
    }
    for (const Qt::CaseSensitivity cs : { Qt::CaseSensitive, Qt::CaseInsensitive }) {
        QCollator collator;
        collator.setNumericMode(true);
        collator.setCaseSensitivity(cs);
        QStringList sorted = fileNames;
        std::sort(sorted.begin(), sorted.end(), collator);
        result.append(sorted);
        std::reverse(sorted.begin(), sorted.end());
        result.append(sorted);
    }
    return result;
}

// Whether the file system lists these files of dir in an order that no sorting of
// their names gives: only then can a test tell discovery's order from a sorted one.
inline bool listedUnsorted(const QString& dir, const QStringList& fileNames)
{
    const QStringList listed = onlyThese(fileSystemListing(dir), fileNames);
    return listed.size() == fileNames.size() && !sortedListings(dir, fileNames).contains(listed);
}

// Copies the built plugins of targets (at most four) into dir under file names that
// differ only in letter case and in digit runs, such as "p9.so", "P10.so", "p10.so":
// names on which every sorting rule agrees as long as they are in lower case and of
// one length. The file system's order depends on the names (ext4 lists by a hash of
// them), so sets of names are tried in turn until the file system lists the copies
// unsorted. Returns the file names in the order of targets; empty when no set does,
// or a copy fails.
inline QStringList copyUnderUnsortedNames(const QString& dir, const QStringList& targets)
{
    static const QList<QStringList> nameSets {
        { "p9", "P10", "p10", "P9" },
        { "a10", "A2", "a2", "A10" },
        { "Note3", "note12", "note3", "Note12" },
        { "x100", "X7", "x7", "X100" },
        { "Tag1", "tag20", "tag1", "Tag20" },
        { "m5", "M40", "m40", "M5" },
        { "k4", "K30", "k30", "K4" },
        { "Z11", "z7", "z11", "Z7" },
        { "b3", "B20", "b20", "B3" },
        { "Link8", "link10", "link8", "Link10" },
    };
    if (targets.size() > 4)
        return {};
    for (const QStringList& names : nameSets) {
        QStringList fileNames;
        QStringList entries;
        for (qsizetype i = 0; i < targets.size(); ++i) {
            fileNames.append(names.at(i) + QStringLiteral(".so"));
            entries.append(targets.at(i) + QLatin1Char('=') + fileNames.last());
        }
        if (!copyPlugins(dir, entries))
            return {};
        if (listedUnsorted(dir, fileNames))
            return fileNames;
        for (const QString& fileName : std::as_const(fileNames))
            QFile::remove(QDir(dir).filePath(fileName));
    }
    return {};
}

inline bool isUnsorted(QDir::SortFlags sorting)
{
    return (sorting & QDir::SortByMask) == QDir::Unsorted;
}

// Copies the built plugins of targets (at most four) into dir under names that differ
// only in letter case and in digit runs, for a folder listed with the given sorting.
// Sorted by name, the names are "Beta.so", "p10.so", "alpha.so" and "p9.so", in which
// ignoring letter case and reading numbers as numbers both change the order; unsorted,
// they are a set that the file system lists in no sorted order. Returns the file names
// in the order of targets; empty when a copy fails.
inline QStringList copyUnderMixedNames(const QString& dir, const QStringList& targets,
                                       QDir::SortFlags sorting)
{
    if (isUnsorted(sorting))
        return copyUnderUnsortedNames(dir, targets);
    static const QStringList names { "Beta", "p10", "alpha", "p9" };
    if (targets.size() > names.size())
        return {};
    QStringList fileNames;
    QStringList entries;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        fileNames.append(names.at(i) + QStringLiteral(".so"));
        entries.append(targets.at(i) + QLatin1Char('=') + fileNames.last());
    }
    return copyPlugins(dir, entries) ? fileNames : QStringList();
}

// Whether the listing of these files of dir with the given sorting tells that sorting
// from the others: unsorted, it matches no sorted order; sorted by name ignoring case,
// it is not the case-sensitive order.
inline bool listingTellsTheSorting(const QString& dir, const QStringList& fileNames,
                                   QDir::SortFlags sorting)
{
    if (isUnsorted(sorting))
        return listedUnsorted(dir, fileNames);
    return onlyThese(listing(dir, sorting), fileNames)
        != onlyThese(listing(dir, QDir::Name), fileNames);
}

// The rows of a test over copyUnderMixedNames(): the two listings that a host's QDir
// can give, as a column "sorting" holding the QDir::SortFlags.
inline void addSortingRows()
{
    QTest::addColumn<int>("sorting");
    QTest::newRow("a QDir's own sorting: by name, ignoring case") << int(QDir().sorting());
    QTest::newRow("unsorted: the file system's order") << int(QDir::Unsorted);
}

// Copies one built test plugin into a new folder of its own below parent and returns
// its path. The path is canonical, so it is also the file name that Qt's plugin loader
// reports in error texts. Empty when the copy fails.
inline QString copyToOwnFolder(const QString& parent, const QString& target)
{
    static int counter = 0;
    const QString folder
        = QFileInfo(parent).canonicalFilePath() + QLatin1Char('/') + QString::number(++counter);
    if (!QDir().mkpath(folder) || !copyPlugins(folder, { target }))
        return QString();
    return folder + QStringLiteral("/lib") + target + QStringLiteral(".so");
}

// What the test plugins have recorded: "initialize:<Name>" and "destroy:<Name>", in
// the order it happened.
inline QStringList events()
{
    return Zelvane::PluginController::instance()
        ->pool()
        ->property("zelvaneTestEvents")
        .toStringList();
}

inline void clearEvents()
{
    Zelvane::PluginController::instance()->pool()->setProperty("zelvaneTestEvents", QStringList());
}

// The names of the test plugins whose library code has run (static initialisers).
inline QStringList staticInitialised()
{
    const QByteArray value = qgetenv("ZELVANE_TEST_STATIC_INIT");
    return value.isEmpty() ? QStringList() : QString::fromUtf8(value).split(QLatin1Char(','));
}

// A handle whose record is filled from a "MetaData" map, without any plugin file:
// for the tests of ordering and of the model, which only read metadata.
inline Zelvane::PluginLoader makePlugin(const QVariantMap& metaData,
                                        const QString& fileName = QStringLiteral("/nowhere/x.so"))
{
    auto data = std::make_shared<Zelvane::PluginData>(fileName);
    data->extractPluginMetadata(metaData);
    return Zelvane::PluginData::handle(data);
}

inline Zelvane::PluginLoader makePlugin(const QString& name, const QString& category,
                                        const QStringList& dependencies = {},
                                        bool loadByDefault = false, const QString& description = {})
{
    return makePlugin(QVariantMap {
        { QStringLiteral("Name"), name },
        { QStringLiteral("Category"), category },
        { QStringLiteral("Dependencies"), dependencies },
        { QStringLiteral("Default"), loadByDefault },
        { QStringLiteral("Description"), description },
    });
}

// PluginsModel's rowCount() answers the same for every parent, on purpose. The model
// tester reports two consequences for the first row's index: it has rows but no
// children, and its first "child" is a row of the root. Any other message is a defect.
inline bool isExpectedModelTesterWarning(const LogRecord& record)
{
    if (record.category != QLatin1String("qt.modeltest") || record.type != QtWarningMsg)
        return false;
    if (record.message.startsWith(
            QLatin1String("FAIL! model->hasChildren(topIndex) () returned FALSE (")))
        return true;
    return record.message.startsWith(QLatin1String("FAIL! Compared values are not the same:\n"))
        && record.message.contains(QLatin1String(
            "\n   Actual (model->parent(childIndex)) QModelIndex(-1,-1,(nil),(nil))\n"));
}

// Runs QAbstractItemModelTester over the model once and returns what it says beyond the
// two expected warnings.
inline QStringList modelTesterComplaints(QAbstractItemModel* model)
{
    LogCapture capture;
    {
        QAbstractItemModelTester tester(model,
                                        QAbstractItemModelTester::FailureReportingMode::Warning);
    }
    QStringList complaints;
    const QList<LogRecord> records = capture.records();
    for (const LogRecord& record : records) {
        if (!isExpectedModelTesterWarning(record))
            complaints.append(record.message);
    }
    return complaints;
}

} // namespace ZelvaneTest
