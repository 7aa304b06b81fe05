#pragma once

// The world of one loading scenario: a plugin folder holding copies of some test
// plugins and a real INI file for the user's plugin selection, both inside one
// temporary directory, and the controller pointed at them.

#include "zelvanetest.h"

#include <zelvane/objectpool.h>
#include <zelvane/plugincontroller.h>
#include <zelvane/pluginsmodel.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>
#include <QtCore/QSettings>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVariantMap>
#include <QtTest/QAbstractItemModelTester>

#include <algorithm>
#include <memory>

namespace LoadingTest {

class Scenario
{
public:
    // Copies the plugins of the given targets into a folder of their own and writes
    // the INI text; false if either fails. Call once, before using the scenario.
    bool create(const QStringList& targets, const QByteArray& ini = QByteArray())
    {
        if (!m_root.isValid() || !QDir(m_root.path()).mkpath(QStringLiteral("plugins")))
            return false;
        if (!ZelvaneTest::copyPlugins(pluginDir(), targets))
            return false;
        QFile file(settingsFile());
        if (!file.open(QIODevice::WriteOnly) || file.write(ini) != ini.size())
            return false;
        file.close();
        m_settings = std::make_unique<QSettings>(settingsFile(), QSettings::IniFormat);
        return m_settings->status() == QSettings::NoError;
    }

    // Gives the controller this scenario's settings and the test plugins' IID.
    void configureController() const
    {
        Zelvane::PluginController* controller = Zelvane::PluginController::instance();
        controller->setSettings(m_settings.get());
        controller->setPluginIID(QStringLiteral(ZELVANE_TEST_IID));
    }

    QString pluginDir() const { return m_root.filePath(QStringLiteral("plugins")); }
    QString settingsFile() const { return m_root.filePath(QStringLiteral("settings.ini")); }
    QSettings* settings() const { return m_settings.get(); }

private:
    QTemporaryDir m_root;
    std::unique_ptr<QSettings> m_settings;
};

// The plugin's own metadata (the "MetaData" object), read with Qt alone.
inline QJsonObject metaDataOf(const QString& file)
{
    return QPluginLoader(file).metaData().value(QStringLiteral("MetaData")).toObject();
}

// The names of the plugins of one category in the order in which discovery hands
// them to the loading sequence: QMultiMap::values() puts the most recently inserted
// entry first, and files are inserted in the order in which the QDir lists them (its
// own sorting; by name ignoring case for a QDir made from a path), so this is the
// reverse of that listing.
inline QStringList discoveryOrder(const QDir& folder, const QString& category)
{
    const QStringList files
        = folder.entryList(QStringList { QStringLiteral("*.so") }, QDir::Files, QDir::NoSort);
    QStringList names;
    for (const QString& file : files) {
        const QJsonObject metaData = metaDataOf(folder.filePath(file));
        if (metaData.value(QStringLiteral("Category")).toString() == category)
            names.prepend(metaData.value(QStringLiteral("Name")).toString());
    }
    return names;
}

inline QStringList discoveryOrder(const QString& dir, const QString& category)
{
    return discoveryOrder(QDir(dir), category);
}

inline QStringList withPrefix(const QString& prefix, const QStringList& names)
{
    QStringList result;
    for (const QString& name : names)
        result.append(prefix + name);
    return result;
}

inline QStringList withSuffix(const QStringList& names, const QString& suffix)
{
    QStringList result;
    for (const QString& name : names)
        result.append(name + suffix);
    return result;
}

inline QStringList initializeEvents(const QStringList& names)
{
    return withPrefix(QStringLiteral("initialize:"), names);
}

inline QStringList destroyEvents(const QStringList& names)
{
    return withPrefix(QStringLiteral("destroy:"), names);
}

inline QStringList reversed(QStringList list)
{
    std::reverse(list.begin(), list.end());
    return list;
}

// The names of the plugins whose initialize() ran, in the order it ran.
inline QStringList initializedNames()
{
    QStringList names;
    const QStringList events = ZelvaneTest::events();
    for (const QString& event : events) {
        if (event.startsWith(QLatin1String("initialize:")))
            names.append(event.section(QLatin1Char(':'), 1));
    }
    return names;
}

// The model's rows as "<Name>=<checked>", to compare whole tables at once.
inline QStringList modelRows(const Zelvane::PluginsModel* model)
{
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, 0);
        rows.append(index.data(Zelvane::PluginsModel::NameRole).toString()
                    + (index.data(Zelvane::PluginsModel::CheckedRole).toBool()
                           ? QStringLiteral("=on")
                           : QStringLiteral("=off")));
    }
    return rows;
}

using ZelvaneTest::modelTesterComplaints;

// A test plugin's root object, which publishes itself into the pool under its name.
inline QObject* publishedPlugin(const QString& name)
{
    const QList<QObject*> objects = Zelvane::PluginController::instance()->pool()->allObjects();
    for (QObject* object : objects) {
        if (object && object->objectName() == name)
            return object;
    }
    return nullptr;
}

} // namespace LoadingTest
