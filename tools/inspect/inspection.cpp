#include "inspection.h"

#include "plugin/pluginnames_p.h"

#include <zelvane/plugincontroller.h>

#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QSettings>

#include <algorithm>
#include <numeric>

namespace ZelvaneInspect {

namespace {

// The controller's IID is what discovery compares every file with; it must be set
// before the plan is made, which the member initialiser below relies on.
QDir withIid(const QString& directory, const QString& iid)
{
    Zelvane::PluginController::instance()->setPluginIID(iid);
    return QDir(directory);
}

} // namespace

Inspection::Inspection(const QString& directory, const QString& iid, QSettings* settings,
                       const QString& settingsFile)
    : directory(QDir(directory).absolutePath())
    , iid(iid)
    , settingsFile(settingsFile)
    , settingsFileExists(!settingsFile.isEmpty() && QFileInfo::exists(settingsFile))
    , plan(withIid(directory, iid))
{
    plan.decide(settings);

    const QList<Zelvane::LoadPlan::File> files = plan.files();
    for (const Zelvane::LoadPlan::File& file : files) {
        Selection entry;
        if (file.fate != Zelvane::LoadPlan::Fate::Refused) {
            entry.enabled = Zelvane::isPluginEnabled(*settings, file.plugin);
            entry.fromSettings = settings->contains(Zelvane::selectionSettingsKey(file.name));
        }
        selection.append(entry);
    }

    diagnostics = Zelvane::LoadDiagnostics(QDir(directory), settings);
    const QList<Zelvane::PluginDiagnostic> explained = diagnostics.plugins();
    QHash<QString, int> byPath;
    for (int index = 0; index < explained.size(); ++index)
        byPath.insert(explained.at(index).filePath(), index);
    for (const Zelvane::LoadPlan::File& file : files)
        diagnosticOfFile.append(byPath.value(file.path, -1));

    filesByName.resize(files.size());
    std::iota(filesByName.begin(), filesByName.end(), 0);
    std::stable_sort(filesByName.begin(), filesByName.end(), [&files](int a, int b) {
        return files.at(a).fileName < files.at(b).fileName;
    });
}

Zelvane::PluginDiagnostic Inspection::diagnostic(int file) const
{
    const int index = diagnosticOfFile.value(file, -1);
    return index < 0 ? Zelvane::PluginDiagnostic() : diagnostics.plugins().at(index);
}

bool Inspection::hasProblems() const
{
    if (!plan.error().isEmpty())
        return true;
    const QList<Zelvane::LoadPlan::File> files = plan.files();
    return std::any_of(files.cbegin(), files.cend(), [](const Zelvane::LoadPlan::File& file) {
        return file.fate == Zelvane::LoadPlan::Fate::Dropped;
    });
}

Inspection inspect(const QString& directory, const QString& iid, QSettings* settings,
                   const QString& settingsFile)
{
    return Inspection(directory, iid, settings, settingsFile);
}

} // namespace ZelvaneInspect
