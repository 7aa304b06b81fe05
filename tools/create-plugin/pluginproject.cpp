#include "pluginproject.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace ZelvaneCreatePlugin {

namespace {

class Texts
{
    Q_DECLARE_TR_FUNCTIONS(ZelvaneCreatePlugin)
};

bool isAsciiLetterOrDigit(QChar c)
{
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
        || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
        || (c >= QLatin1Char('0') && c <= QLatin1Char('9'));
}

// The runs of ASCII letters and digits in a name: the parts of its identifiers.
QStringList words(const QString& name)
{
    QStringList result;
    QString word;
    for (const QChar c : name) {
        if (isAsciiLetterOrDigit(c)) {
            word.append(c);
        } else if (!word.isEmpty()) {
            result.append(word);
            word.clear();
        }
    }
    if (!word.isEmpty())
        result.append(word);
    return result;
}

// A JSON string literal, quotes included.
QString jsonString(const QString& text)
{
    const QByteArray array = QJsonDocument(QJsonArray { text }).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

// The inside of a C++ string literal. Octal escapes end after three digits, so a
// digit that follows one cannot be read as part of it.
QString cppString(const QString& text)
{
    QString result;
    for (const QChar c : text) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('"')) {
            result += QLatin1Char('\\');
            result += c;
        } else if (c.unicode() < 0x20 || c.unicode() == 0x7f) {
            result += QStringLiteral("\\%1").arg(c.unicode(), 3, 8, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result;
}

// A name on one line of a comment or of the README.
QString oneLine(const QString& text)
{
    QString result = text;
    for (QChar& c : result) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            c = QLatin1Char(' ');
    }
    return result;
}

QByteArray fill(const QString& templateName, const QList<std::pair<QString, QString>>& values)
{
    QFile file(QStringLiteral(":/templates/") + templateName);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("zelvane-create-plugin: the template %s is missing", qPrintable(templateName));
    QString text = QString::fromUtf8(file.readAll());
    // One pass, left to right: a value that happens to hold "@...@" stays as it is.
    QString result;
    qsizetype from = 0;
    while (true) {
        const qsizetype start = text.indexOf(QLatin1Char('@'), from);
        const qsizetype end = start < 0 ? -1 : text.indexOf(QLatin1Char('@'), start + 1);
        if (end < 0) {
            result += QStringView(text).mid(from);
            break;
        }
        const QString key = text.mid(start + 1, end - start - 1);
        const auto value = std::find_if(values.cbegin(), values.cend(),
                                        [&key](const auto& pair) { return pair.first == key; });
        if (value == values.cend()) {
            result += QStringView(text).mid(from, end - from);
            from = end;
            continue;
        }
        result += QStringView(text).mid(from, start - from);
        result += value->second;
        from = end + 1;
    }
    return result.toUtf8();
}

} // namespace

QString PluginProject::classPrefix() const
{
    QString prefix;
    const QStringList parts = words(name);
    for (const QString& part : parts)
        prefix += part.front().toUpper() + part.mid(1);
    // A class name cannot start with a digit, nor be empty.
    if (prefix.isEmpty() || prefix.front().isDigit())
        prefix.prepend(QStringLiteral("My"));
    return prefix;
}

QString PluginProject::target() const
{
    return classPrefix().toLower();
}

// The build-time metadata check refuses an empty "Name" (the library refuses the
// plugin) and warns about a plugin that names itself as a dependency; a generated
// project must pass it without a word, so the same rules refuse the values here.
QString nameProblem(const QString& name)
{
    if (name.isEmpty())
        return Texts::tr("a plugin name must not be empty; the library refuses a plugin "
                         "without one");
    return QString();
}

QString dependencyProblem(const QString& dependency, const QString& name)
{
    if (dependency.isEmpty())
        return Texts::tr("a dependency must not be empty; no plugin has an empty name, so "
                         "the plugin would never be loaded");
    if (dependency == name)
        return Texts::tr("the plugin names itself, so it would never be loaded");
    return QString();
}

// The IID is written into a C++ string literal and a CMake string, and compared byte
// for byte with the host's: the characters that IIDs are made of, and no others.
QString iidProblem(const QString& iid)
{
    const QString allowed = QStringLiteral("._-/+:");
    const bool valid = !iid.isEmpty() && std::all_of(iid.cbegin(), iid.cend(), [&](QChar c) {
        return isAsciiLetterOrDigit(c) || allowed.contains(c);
    });
    if (valid)
        return QString();
    return Texts::tr("an IID is made of ASCII letters, digits and . _ - / + :, like "
                     "org.example.MyEditor/1.0");
}

QString categoryProblem(const QString& category)
{
    if (category == QLatin1String("Core") || category == QLatin1String("Extension"))
        return QString();
    return Texts::tr("the category is \"Core\" or \"Extension\", letter case included; a "
                     "plugin of any other category is never loaded");
}

QList<ProjectFile> projectFiles(const PluginProject& project)
{
    const QString target = project.target();
    const QString classPrefix = project.classPrefix();

    QString dependenciesReadme;
    QString trialPluginsReadme;
    if (!project.dependencies.isEmpty())
        dependenciesReadme = QStringLiteral(" It needs: %1.")
                                 .arg(oneLine(project.dependencies.join(QStringLiteral(", "))));
    if (project.category == QLatin1String("Extension") || !project.dependencies.isEmpty())
        trialPluginsReadme
            = QStringLiteral(
                  " \\\n    -D%1_TRIAL_PLUGINS=\"<a Core plugin's .so>;<the dependencies' .so>\"")
                  .arg(target);

    QString dependencies = QStringLiteral("[");
    for (const QString& dependency : project.dependencies) {
        if (dependencies.size() > 1)
            dependencies += QStringLiteral(", ");
        dependencies += jsonString(dependency);
    }
    dependencies += QLatin1Char(']');

    const QList<std::pair<QString, QString>> values {
        { QStringLiteral("NAME"), oneLine(project.name) },
        { QStringLiteral("NAME_JSON"), jsonString(project.name) },
        { QStringLiteral("NAME_CPP"), cppString(project.name) },
        { QStringLiteral("IID"), project.iid },
        { QStringLiteral("CATEGORY"), project.category },
        { QStringLiteral("DEPENDENCIES_JSON"), dependencies },
        { QStringLiteral("DESCRIPTION_JSON"),
          jsonString(QStringLiteral("The %1 plugin").arg(project.name)) },
        { QStringLiteral("DEPENDENCIES_README"), dependenciesReadme },
        { QStringLiteral("TRIAL_PLUGINS_README"), trialPluginsReadme },
        { QStringLiteral("CLASS"), classPrefix },
        { QStringLiteral("TARGET"), target },
    };
    return {
        { QStringLiteral("CMakeLists.txt"), fill(QStringLiteral("CMakeLists.txt.in"), values) },
        { target + QStringLiteral(".json"), fill(QStringLiteral("plugin.json.in"), values) },
        { target + QStringLiteral("plugin.cpp"), fill(QStringLiteral("plugin.cpp.in"), values) },
        { target + QStringLiteral("object.h"), fill(QStringLiteral("object.h.in"), values) },
        { target + QStringLiteral("object.cpp"), fill(QStringLiteral("object.cpp.in"), values) },
        { QStringLiteral("tests/tst_") + target + QStringLiteral("object.cpp"),
          fill(QStringLiteral("tst_object.cpp.in"), values) },
        { QStringLiteral("README.md"), fill(QStringLiteral("README.md.in"), values) },
        { QStringLiteral(".gitignore"), fill(QStringLiteral("gitignore.in"), values) },
    };
}

} // namespace ZelvaneCreatePlugin
