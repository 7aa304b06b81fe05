#include "pluginspage.h"

#include <zelvane/quick/qmlplugins.h>

#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtQml/QQmlError>

namespace ZelvaneDemo {

PluginsPage::PluginsPage(const QDir& pluginDir, const QString& selectedPlugin, QWindow* parent)
    : QQuickView(parent)
{
    setTitle(tr("Plugins"));
    setResizeMode(QQuickView::SizeRootObjectToView);
    resize(760, 480);
    // The module as built beside the demo; an installed host finds it in the prefix's
    // QML import path instead.
    engine()->addImportPath(QStringLiteral(ZELVANE_DEMO_QML_IMPORT_DIR));
    Zelvane::QmlPlugins::setDefaultPluginDirectory(pluginDir);
    // The demo can restart itself: the page offers "Restart now".
    if (Zelvane::QmlPlugins* plugins = Zelvane::QmlPlugins::instance(engine())) {
        plugins->setRestartOffered(true);
        connect(plugins, &Zelvane::QmlPlugins::restartRequested, this,
                &PluginsPage::restartRequested);
    }

    // The page is the module's component as it stands: nothing of the demo's own.
    auto* component = new QQmlComponent(engine(), this);
    component->setData(QByteArrayLiteral("import Zelvane\nPluginsPage {}\n"),
                       QUrl(QStringLiteral("qrc:/zelvane-demo/plugins.qml")));
    QObject* page = component->create();
    if (!page) {
        QStringList lines;
        for (const QQmlError& error : component->errors())
            lines.append(error.toString());
        m_errors = lines.join(QLatin1Char('\n'));
        return;
    }
    if (!selectedPlugin.isEmpty())
        page->setProperty("currentPlugin", selectedPlugin);
    setContent(component->url(), component, page);
}

QString PluginsPage::errorText() const
{
    return m_errors;
}

} // namespace ZelvaneDemo
