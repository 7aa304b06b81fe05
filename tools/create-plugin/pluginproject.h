#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ZelvaneCreatePlugin {

// What the user asked for, and the names derived from it for the code and the build.
struct PluginProject
{
    QString name; // the metadata's "Name"
    QString iid;
    QString category; // "Core" or "Extension"
    QStringList dependencies;

    // "Spell Check" gives the classes SpellCheckPlugin and SpellCheckObject, and the
    // CMake target and file names spellcheck.
    QString classPrefix() const;
    QString target() const;
};

// Why a value cannot be used, as one sentence for the user; empty when it can.
QString nameProblem(const QString& name);
QString dependencyProblem(const QString& dependency, const QString& name);
QString iidProblem(const QString& iid);
QString categoryProblem(const QString& category);

struct ProjectFile
{
    QString path; // relative to the project folder
    QByteArray content;
};

// The files of the project, filled in from the templates compiled into the program.
QList<ProjectFile> projectFiles(const PluginProject& project);

} // namespace ZelvaneCreatePlugin
