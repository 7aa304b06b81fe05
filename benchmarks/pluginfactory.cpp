#include "pluginfactory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace {

// The placeholders of plugin/shapes/*.json; every name written over them has their
// length, 16 characters.
const QByteArray namePlaceholder = QByteArrayLiteral("ZBNAME0000000000");
const QByteArray dependencyPlaceholder = QByteArrayLiteral("ZBDEP00000000000");
const QByteArray optionPlaceholder = QByteArrayLiteral("ZBARG00000000000");

QList<qsizetype> occurrences(const QByteArray& bytes, const QByteArray& pattern)
{
    QList<qsizetype> result;
    for (qsizetype at = bytes.indexOf(pattern); at >= 0; at = bytes.indexOf(pattern, at + 1))
        result.append(at);
    return result;
}

// The metadata holds UTF-8: any name of the placeholder's length in bytes fits.
void overwrite(QByteArray& bytes, const QList<qsizetype>& offsets, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    if (!offsets.isEmpty() && utf8.size() != namePlaceholder.size())
        qFatal("%s is not %d bytes long", utf8.constData(), int(namePlaceholder.size()));
    for (qsizetype offset : offsets)
        std::copy(utf8.cbegin(), utf8.cend(), bytes.begin() + offset);
}

// File names sort as numbers do, since they all have the same number of digits.
QString fileName(int listingPosition)
{
    return QStringLiteral("p%1.so").arg(listingPosition, 6, 10, QLatin1Char('0'));
}

} // namespace

PluginFactory::PluginFactory(const QString& templateDir)
{
    const QDir dir(templateDir);
    read(m_core, dir.filePath(QStringLiteral("core.so")), false, false)
        && read(m_leaf, dir.filePath(QStringLiteral("leaf.so")), false, true)
        && read(m_link, dir.filePath(QStringLiteral("link.so")), true, true)
        && read(m_rich, dir.filePath(QStringLiteral("rich.so")), false, true)
        && read(m_other, dir.filePath(QStringLiteral("other.so")), false, false)
        && read(m_huge, dir.filePath(QStringLiteral("huge.so")), false, false);
}

bool PluginFactory::read(Template& shape, const QString& fileName, bool dependency, bool option)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString());
        return false;
    }
    shape.bytes = file.readAll();
    shape.name = occurrences(shape.bytes, namePlaceholder);
    shape.dependency = occurrences(shape.bytes, dependencyPlaceholder);
    shape.option = occurrences(shape.bytes, optionPlaceholder);
    // Exactly one of each: a second copy elsewhere in the file would be rewritten too.
    if (shape.name.size() != 1 || shape.dependency.size() != (dependency ? 1 : 0)
        || shape.option.size() != (option ? 1 : 0)) {
        m_error = QStringLiteral("%1: the placeholders occur %2, %3 and %4 times")
                      .arg(fileName)
                      .arg(shape.name.size())
                      .arg(shape.dependency.size())
                      .arg(shape.option.size());
        return false;
    }
    return true;
}

QString PluginFactory::pluginName(int index)
{
    return QStringLiteral("plugin-%1").arg(index, 9, 10, QLatin1Char('0'));
}

QString PluginFactory::scriptName(int index)
{
    // Each prefix and its digits make 16 bytes: the Arabic letters take two bytes each,
    // the CJK ones three, the emoji four.
    switch (index % 4) {
    case 1:
        return QStringLiteral("ملحق%1").arg(index, 8, 10, QLatin1Char('0'));
    case 2:
        return QStringLiteral("插件%1").arg(index, 10, 10, QLatin1Char('0'));
    case 3:
        return QStringLiteral("🧩%1").arg(index, 12, 10, QLatin1Char('0'));
    }
    return pluginName(index);
}

QString PluginFactory::optionName(int index)
{
    return QStringLiteral("option-%1").arg(index, 9, 10, QLatin1Char('0'));
}

void PluginFactory::write(const Template& shape, const QString& path, const QString& name,
                          const QString& dependency, const QString& option) const
{
    QByteArray bytes = shape.bytes;
    overwrite(bytes, shape.name, name);
    overwrite(bytes, shape.dependency, dependency);
    overwrite(bytes, shape.option, option);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
}

QStringList PluginFactory::writeFlat(const QString& dir, int count) const
{
    return writeBesideCore(m_leaf, dir, count);
}

QStringList PluginFactory::writeRich(const QString& dir, int count) const
{
    return writeBesideCore(m_rich, dir, count);
}

QStringList PluginFactory::writeBesideCore(const Template& extension, const QString& dir,
                                           int count) const
{
    QDir().mkpath(dir);
    const QDir folder(dir);
    QStringList paths;
    // The Core file lists first; Extensions follow. Their load order is the reverse of
    // the listing, which is what the raw arm loads too.
    const QString corePath = folder.filePath(fileName(0));
    write(m_core, corePath, QStringLiteral("core-00000000000"), {}, {});
    for (int index = 1; index < count; ++index)
        write(extension, folder.filePath(fileName(index)), pluginName(index), {},
              optionName(index));
    for (int index = count - 1; index >= 1; --index)
        paths.append(folder.filePath(fileName(index)));
    paths.prepend(corePath);
    return paths;
}

QStringList PluginFactory::writeChain(const QString& dir, int count, Order order) const
{
    QDir().mkpath(dir);
    const QDir folder(dir);
    const QString corePath = folder.filePath(fileName(0));
    write(m_core, corePath, QStringLiteral("core-00000000000"), {}, {});
    QStringList paths { corePath };
    const int links = count - 1;
    for (int link = 0; link < links; ++link) {
        // Link 0 needs nothing; link n needs link n - 1.
        const int listing = order == Order::Dependencies ? links - link : link + 1;
        const QString path = folder.filePath(fileName(listing));
        if (link == 0)
            write(m_leaf, path, pluginName(link), {}, optionName(link));
        else
            write(m_link, path, pluginName(link), pluginName(link - 1), optionName(link));
        paths.append(path);
    }
    return paths;
}

PluginFactory::ScreenFolder PluginFactory::writeScreen(const QString& dir, int count) const
{
    QDir().mkpath(dir);
    const QDir folder(dir);
    ScreenFolder written;
    write(m_core, folder.filePath(fileName(0)), QStringLiteral("core-00000000000"), {}, {});
    written.huge = QStringLiteral("needs-everything");
    write(m_huge, folder.filePath(fileName(1)), written.huge, {}, {});
    for (int index = 2; index < count; ++index) {
        const QString name = scriptName(index);
        if (index % 10 == 0) {
            write(m_other, folder.filePath(fileName(index)), name, {}, {});
            written.others.append(name);
        } else {
            write(m_leaf, folder.filePath(fileName(index)), name, {}, optionName(index));
            written.extensions.append(name);
        }
    }
    for (int junk = 0; junk < count / 50; ++junk) {
        QFile file(folder.filePath(QStringLiteral("junk%1.so").arg(junk)));
        if (!file.open(QIODevice::WriteOnly) || file.write("not a plugin\n") < 0)
            qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    return written;
}
