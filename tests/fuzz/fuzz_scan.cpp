// Writes arbitrary bytes as a "*.so" file and scans it with PluginLoader::scan, as
// discovery does for every file of a plugin directory: Qt's reading of the file's
// metadata section and the library's tests of it. Nothing is ever loaded.

#include <zelvane/plugincontroller.h>
#include <zelvane/pluginloader.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

QTemporaryDir* directory = nullptr;
quint64 counter = 0;

} // namespace

// Qt reports unreadable metadata on its own log; at thousands of inputs a second that
// is only noise, and slows the run down.
static void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) { }

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qInstallMessageHandler(dropMessage);
    static QCoreApplication application(*argc, *argv);
    directory = new QTemporaryDir;
    Zelvane::PluginController::instance()->setPluginIID(QStringLiteral("org.zelvane.Test/1.0"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    // A new name every time: Qt keeps what it read of a library by its file name for
    // as long as any loader refers to it, and no stale answer must hide a new input.
    const QString path = directory->filePath(QStringLiteral("lib%1.so").arg(counter++));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return 0;
        file.write(reinterpret_cast<const char*>(bytes), qint64(size));
    }
    {
        Zelvane::PluginLoader plugin;
        if (plugin.scan(path)) {
            (void)plugin.name();
            (void)plugin.argumentDescriptions();
        }
        (void)plugin.errorString();
    }
    QFile::remove(path);
    return 0;
}
