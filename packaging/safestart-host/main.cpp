// After a start that never finished, SafeStart tries the plugins of plugins/ beside this
// program in its helper, with the arguments of that start; the README's greeter plugin
// refuses the empty greeting given here in its initialize(). Prints the helper it found,
// the culprits and the error, and exits with 1 when no culprit was found.
#include <zelvane/PluginController>
#include <zelvane/diagnostics/SafeStart>

#include <QtCore/QCoreApplication>
#include <QtCore/QSettings>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QSettings settings(QStringLiteral("safestart.ini"), QSettings::IniFormat);
    auto* plugins = Zelvane::PluginController::instance();
    plugins->setSettings(&settings);
    plugins->setPluginIID(QStringLiteral("org.example.MyEditor/1.0"));
    Zelvane::SafeStart safeStart(&settings);
    const QDir dir(QCoreApplication::applicationDirPath() + QStringLiteral("/plugins"));
    const auto culprits
        = safeStart.findCulprits(dir, { { QStringLiteral("greeting"), QString() } });
    std::printf("helper: %s\n", qPrintable(safeStart.trialProgram()));
    for (const auto& culprit : culprits)
        std::printf("culprit: %s: %s\n", qPrintable(culprit.name), qPrintable(culprit.reason));
    std::printf("error: %s\n", qPrintable(safeStart.errorString()));
    return culprits.isEmpty() ? 1 : 0;
}
